#pragma once

#include "model/Timestamp.h"
#include "model/UsagePoint.h"

#include <QList>
#include <QPointF>
#include <QString>
#include <QTimeZone>

// What a history chart draws: every point in list order, as it stands (nothing sorted,
// filled in or invented), the axes' labels and ranges taken from the data, and the x
// marks every two calendar days. The trend chart and the sparkline both start here.
struct TrendChartContent {
    enum class Kind { trend, sparkline };

    Kind kind = Kind::trend;
    // Shown instead of a chart when there are no points.
    QString emptyText;
    QString xAxisLabel;
    QString yAxisLabel;
    // The sparkline's name for a screen reader; empty for the trend chart.
    QString accessibleName;
    // x: seconds since 2001, y: the value; in list order.
    QList<QPointF> points;
    // The data's range; equal ends when every point shares a value or a date.
    double minX = 0;
    double maxX = 0;
    double minY = 0;
    double maxY = 0;
    // Local midnights every second calendar day within the range (trend chart only).
    QList<Timestamp> xMarks;

    bool isEmpty() const noexcept { return points.isEmpty(); }

    static TrendChartContent trend(const QList<UsagePoint>& points,
                                   const QTimeZone& timeZone = QTimeZone::systemTimeZone());
    static TrendChartContent sparkline(const QList<UsagePoint>& points);
};
