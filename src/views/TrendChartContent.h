#pragma once

#include "model/Timestamp.h"
#include "model/UsagePoint.h"

#include <QList>
#include <QLocale>
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
    // What the chart shows, for a screen reader: its dates, its range and its last value.
    QString accessibleDescription;
    // x: seconds since 2001, y: the value; in list order.
    QList<QPointF> points;
    // The data's range; equal ends when every point shares a value or a date.
    double minX = 0;
    double maxX = 0;
    double minY = 0;
    double maxY = 0;
    // The range the y axis spans, as the chart chooses it: from 0 to a round number above
    // the highest value when no value is negative (so the area stands on 0 and 90 against
    // 100 looks like it), else the data's range with room around it.
    double axisMinY = 0;
    double axisMaxY = 0;
    // Marks at the bottom, middle and top of the y axis, written in the locale's digits and
    // grouping, never as an exponent (trend chart only).
    struct YMark {
        double value = 0;
        QString text;
        friend bool operator==(const YMark&, const YMark&) = default;
    };
    QList<YMark> yMarks;
    // Local midnights every second calendar day within the range, with their dates in the
    // locale's order (trend chart only).
    struct XMark {
        Timestamp at;
        QString text;
        friend bool operator==(const XMark&, const XMark&) = default;
    };
    QList<XMark> xMarks;

    bool isEmpty() const noexcept { return points.isEmpty(); }

    static TrendChartContent trend(const QList<UsagePoint>& points,
                                   const QTimeZone& timeZone = QTimeZone::systemTimeZone(),
                                   const QLocale& locale = QLocale());
    static TrendChartContent sparkline(const QList<UsagePoint>& points,
                                       const QTimeZone& timeZone = QTimeZone::systemTimeZone(),
                                       const QLocale& locale = QLocale());
};
