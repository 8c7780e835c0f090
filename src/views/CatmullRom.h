#pragma once

#include <QList>
#include <QPointF>

// A smooth curve through every point in list order (centripetal-free, uniform
// Catmull-Rom, as charting layers draw it): each segment between two points is shaped by
// their neighbours, and the ends repeat their own point. Nothing is sorted or added.
class CatmullRom final {
public:
    CatmullRom() = delete;

    // The curve as a polyline: every given point, with `steps - 1` points between each
    // pair. One point gives that point alone; none gives none.
    static QList<QPointF> curve(const QList<QPointF>& points, int steps = 12);

    // The curve's cubic Bézier segments: for each pair of neighbours, the two control
    // points that a painter path joins them with (QPainterPath::cubicTo).
    struct Segment {
        QPointF control1;
        QPointF control2;
        QPointF end;
    };
    static QList<Segment> bezierSegments(const QList<QPointF>& points);
};
