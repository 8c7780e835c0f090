#include "views/CatmullRom.h"

QList<CatmullRom::Segment> CatmullRom::bezierSegments(const QList<QPointF>& points) {
    QList<Segment> segments;
    if (points.size() < 2) {
        return segments;
    }
    segments.reserve(points.size() - 1);
    for (qsizetype i = 0; i + 1 < points.size(); ++i) {
        const QPointF& p0 = points[i > 0 ? i - 1 : i];
        const QPointF& p1 = points[i];
        const QPointF& p2 = points[i + 1];
        const QPointF& p3 = points[i + 2 < points.size() ? i + 2 : i + 1];
        // A uniform Catmull-Rom segment written as a cubic Bézier.
        segments.append(Segment{p1 + (p2 - p0) / 6.0, p2 - (p3 - p1) / 6.0, p2});
    }
    return segments;
}

QList<QPointF> CatmullRom::curve(const QList<QPointF>& points, int steps) {
    if (points.size() < 2 || steps < 1) {
        return points;
    }
    QList<QPointF> polyline;
    polyline.reserve((points.size() - 1) * steps + 1);
    polyline.append(points.first());
    QPointF start = points.first();
    for (const Segment& segment : bezierSegments(points)) {
        for (int step = 1; step <= steps; ++step) {
            const double t = static_cast<double>(step) / steps;
            const double u = 1.0 - t;
            polyline.append(u * u * u * start + 3 * u * u * t * segment.control1 +
                            3 * u * t * t * segment.control2 + t * t * t * segment.end);
        }
        start = segment.end;
    }
    return polyline;
}
