#include "views/TrendChartContent.h"

#include <algorithm>

namespace {
void fill(TrendChartContent& content, const QList<UsagePoint>& points) {
    content.xAxisLabel = QStringLiteral("Date");
    content.yAxisLabel = QStringLiteral("Usage");
    content.points.reserve(points.size());
    for (const UsagePoint& point : points) {
        content.points.append(QPointF(point.date.clamped().secondsSinceReference(), point.value));
    }
    if (content.points.isEmpty()) {
        return;
    }
    const auto [minX, maxX] =
        std::minmax_element(content.points.cbegin(), content.points.cend(),
                            [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); });
    const auto [minY, maxY] =
        std::minmax_element(content.points.cbegin(), content.points.cend(),
                            [](const QPointF& a, const QPointF& b) { return a.y() < b.y(); });
    content.minX = minX->x();
    content.maxX = maxX->x();
    content.minY = minY->y();
    content.maxY = maxY->y();
}
} // namespace

TrendChartContent TrendChartContent::trend(const QList<UsagePoint>& points, const QTimeZone& timeZone) {
    TrendChartContent content;
    content.kind = Kind::trend;
    content.emptyText = QStringLiteral("No history available");
    fill(content, points);
    if (content.isEmpty()) {
        return content;
    }
    // Every second calendar day at local midnight, from the first midnight within the
    // data's range to its end.
    const QDate first = Timestamp(content.minX).toDateTime().toTimeZone(timeZone).date();
    const QDate last = Timestamp(content.maxX).toDateTime().toTimeZone(timeZone).date();
    QDate day = first;
    if (Timestamp::fromDateTime(day.startOfDay(timeZone)).secondsSinceReference() < content.minX) {
        day = day.addDays(1);
    }
    constexpr qsizetype kMostMarks = 400;
    for (; day <= last && content.xMarks.size() < kMostMarks; day = day.addDays(2)) {
        content.xMarks.append(Timestamp::fromDateTime(day.startOfDay(timeZone)));
    }
    return content;
}

TrendChartContent TrendChartContent::sparkline(const QList<UsagePoint>& points) {
    TrendChartContent content;
    content.kind = Kind::sparkline;
    content.emptyText = QStringLiteral("No history");
    content.accessibleName = QStringLiteral("Recent usage trend");
    fill(content, points);
    return content;
}
