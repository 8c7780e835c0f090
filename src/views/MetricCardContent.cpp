#include "views/MetricCardContent.h"

#include "model/QuotaMath.h"
#include "views/Badge.h"
#include "views/DisplayFormatters.h"

MetricCardContent MetricCardContent::make(const UsageWindow& window, Timestamp now, const QLocale& locale,
                                          const QTimeZone& timeZone) {
    const bool over = QuotaMath::isOverLimit(window.used, window.limit);
    MetricCardContent content;
    content.title = window.title;
    content.unitSymbol = Badge::unitSymbol(window.unit);
    content.valueReported = window.used.has_value();
    content.value = window.used ? DisplayFormatters::metric(window.used, window.unit, locale)
                                : QStringLiteral("Not available from provider");
    content.limitReported = window.limit.has_value();
    if (window.limit) {
        content.ceiling = DisplayFormatters::ofLimit(window, locale);
        content.remainder = DisplayFormatters::remaining(window, locale);
        content.remainderTone = over ? Tone::critical : Tone::muted;
    } else {
        content.ceiling = QStringLiteral("Limit not reported");
    }
    content.progress = window.progress();
    content.progressTone = over ? Tone::critical : Tone::accent;
    content.resetSymbol = QStringLiteral("arrow.clockwise");
    content.countdown = DisplayFormatters::resetCountdown(window.resetAt, now);
    if (window.resetAt) {
        content.resetDate = DisplayFormatters::dateTime(window.resetAt, timeZone, locale);
    }
    content.note = window.note.value_or(QString());
    return content;
}
