#include "views/TrendChartContent.h"

#include "views/DisplayFormatters.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {
// The smallest round number (1, 1.5, 2, 2.5, 3, 4, 5, 6 or 8 times a power of ten) at or
// above `value`, which is above 0.
double roundUp(double value) {
    const double power = std::pow(10.0, std::floor(std::log10(value)));
    for (const double step : {1.0, 1.5, 2.0, 2.5, 3.0, 4.0, 5.0, 6.0, 8.0}) {
        if (step * power >= value * (1 - 1e-12)) {
            return step * power;
        }
    }
    return 10 * power;
}

// The decimals that write every multiple of `step` exactly, for a round step; a few more
// than its magnitude for any other.
int decimalsFor(double step, bool round) {
    if (round) {
        for (int digits = 0; digits <= 10; ++digits) {
            const double scaled = step * std::pow(10.0, digits);
            if (std::abs(scaled - std::round(scaled)) < 1e-9 * std::max(1.0, scaled)) {
                return digits;
            }
        }
    }
    return std::clamp(2 - static_cast<int>(std::floor(std::log10(step))), 0, 6);
}

// A value as the description says it: whole numbers whole, others with one decimal.
QString valueText(double value, const QLocale& locale) {
    return DisplayFormatters::decimal(value, std::trunc(value) == value ? 0 : 1, locale);
}

void fillAxis(TrendChartContent& content, const QLocale& locale) {
    const bool finite = std::isfinite(content.minY) && std::isfinite(content.maxY);
    if (!finite) {
        content.axisMinY = content.minY;
        content.axisMaxY = content.maxY;
        return;
    }
    double step = 0;
    bool round = true;
    if (content.minY >= 0) {
        step = content.maxY > 0 ? roundUp(content.maxY / 2) : 0.5;
        content.axisMinY = 0;
        content.axisMaxY = 2 * step;
    } else {
        const double spread = content.maxY - content.minY;
        const double half = spread > 0 ? 0 : std::abs(content.minY) * 0.5;
        content.axisMinY = content.minY - half;
        content.axisMaxY = content.maxY + half;
        step = (content.axisMaxY - content.axisMinY) / 2;
        round = false;
    }
    if (content.kind != TrendChartContent::Kind::trend || !(step > 0) || !std::isfinite(step)) {
        return;
    }
    const int digits = decimalsFor(step, round);
    for (int i = 0; i <= 2; ++i) {
        const double value = content.axisMinY + step * i;
        content.yMarks.append({value, DisplayFormatters::decimal(value, digits, locale)});
    }
}

void describe(TrendChartContent& content, const QTimeZone& timeZone, const QLocale& locale) {
    if (content.isEmpty()) {
        return;
    }
    const QPointF last = content.points.last();
    const auto day = [&](double seconds) {
        return DisplayFormatters::monthDay(Timestamp(seconds), timeZone, locale);
    };
    if (content.points.size() == 1) {
        content.accessibleDescription = QStringLiteral("One value: ") + valueText(last.y(), locale) +
                                        QStringLiteral(", on ") + day(last.x()) + u'.';
        return;
    }
    content.accessibleDescription =
        QStringLiteral("From ") + day(content.minX) + QStringLiteral(" to ") + day(content.maxX) +
        QStringLiteral(", between ") + valueText(content.minY, locale) + QStringLiteral(" and ") +
        valueText(content.maxY, locale) + QStringLiteral("; the last value is ") +
        valueText(last.y(), locale) + QStringLiteral(", on ") + day(last.x()) + u'.';
}

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

TrendChartContent TrendChartContent::trend(const QList<UsagePoint>& points, const QTimeZone& timeZone,
                                           const QLocale& locale) {
    TrendChartContent content;
    content.kind = Kind::trend;
    content.emptyText = QStringLiteral("No history available");
    fill(content, points);
    if (content.isEmpty()) {
        return content;
    }
    fillAxis(content, locale);
    describe(content, timeZone, locale);
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
        const Timestamp midnight = Timestamp::fromDateTime(day.startOfDay(timeZone));
        content.xMarks.append({midnight, DisplayFormatters::monthDay(midnight, timeZone, locale)});
    }
    return content;
}

TrendChartContent TrendChartContent::sparkline(const QList<UsagePoint>& points, const QTimeZone& timeZone,
                                               const QLocale& locale) {
    TrendChartContent content;
    content.kind = Kind::sparkline;
    content.emptyText = QStringLiteral("No history");
    content.accessibleName = QStringLiteral("Recent usage trend");
    fill(content, points);
    if (!content.isEmpty()) {
        fillAxis(content, locale);
        describe(content, timeZone, locale);
    }
    return content;
}
