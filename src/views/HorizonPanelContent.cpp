#include "views/HorizonPanelContent.h"

#include "views/DisplayFormatters.h"

HorizonPanelContent::Row HorizonPanelContent::row(const UsageWindow& window, Timestamp now,
                                                  const QLocale& locale, const QTimeZone& timeZone) {
    const UsageHealth health = window.health();
    Row row;
    row.dot = Badge::dot(health);
    row.title = window.title;
    row.used = DisplayFormatters::metric(window.used, window.unit, locale);
    row.limitReported = window.limit.has_value();
    row.tone = Tones::forHealth(health);
    if (window.limit) {
        row.progress = window.progress().value_or(0);
        row.remainder = DisplayFormatters::remaining(window, locale);
        row.ceiling = DisplayFormatters::ofLimit(window, locale);
    } else {
        row.noLimit = QStringLiteral("Limit not reported by provider");
    }
    row.resetSymbol = QStringLiteral("arrow.clockwise");
    row.countdown = DisplayFormatters::resetCountdown(window.resetAt, now);
    if (window.resetAt) {
        row.resetDate = DisplayFormatters::dateTime(window.resetAt, timeZone, locale);
    }
    if (window.modelName) {
        row.modelName = *window.modelName;
        row.modelSymbol = QStringLiteral("cpu");
    }
    return row;
}

HorizonPanelContent HorizonPanelContent::make(const QString& title, const QString& symbol,
                                              const QList<UsageWindow>& windows, Timestamp now,
                                              const QLocale& locale, const QTimeZone& timeZone) {
    HorizonPanelContent panel;
    panel.title = title;
    panel.symbol = symbol;
    for (const UsageWindow& window : windows) {
        panel.rows.append(row(window, now, locale, timeZone));
    }
    if (panel.rows.isEmpty()) {
        panel.unavailableTitle = QStringLiteral("Not available from provider");
        panel.unavailableMessage = QStringLiteral("This horizon is not exposed for this subscription.");
        panel.unavailableSymbol = QStringLiteral("minus.circle");
    }
    return panel;
}
