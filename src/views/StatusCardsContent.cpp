#include "views/StatusCardsContent.h"

#include "model/QuotaMath.h"
#include "store/ProviderAccount.h"
#include "views/DisplayFormatters.h"

StatusCardsContent::EmptyState StatusCardsContent::emptyState(const QString& title, const QString& message,
                                                              const std::optional<QString>& actionTitle,
                                                              bool hasAction) {
    return EmptyState{.symbol = QStringLiteral("tray"),
                      .title = title,
                      .message = message,
                      .actionTitle = actionTitle && hasAction ? actionTitle : std::nullopt};
}

StatusCardsContent::Unavailable StatusCardsContent::unavailable(const QString& title,
                                                                const QString& message) {
    return Unavailable{.symbol = QStringLiteral("minus.circle"), .title = title, .message = message};
}

StatusCardsContent::AccountSummary StatusCardsContent::accountSummary(const ProviderAccount& account,
                                                                      Timestamp now, const QLocale& locale,
                                                                      const QTimeZone& timeZone) {
    AccountSummary summary{.name = account.displayName(),
                           .symbol = account.provider().systemImage(),
                           .status = Badge::status(account.syncStatus()),
                           .provider = account.provider().displayName()};
    if (const std::optional<UsageSnapshot> snapshot = account.snapshot()) {
        for (const UsageWindow& window : snapshot->windows.mid(0, 2)) {
            summary.windows.append({window.title, DisplayFormatters::remaining(window, locale)});
        }
        summary.updated = QStringLiteral("Updated ") +
                          DisplayFormatters::relative(account.lastRefreshAt(), now, locale, timeZone);
    } else {
        summary.noSnapshot = QStringLiteral("No snapshot yet — refresh or add manual data.");
    }
    return summary;
}

StatusCardsContent::MetricCell StatusCardsContent::metricCell(const UsageWindow& window, Timestamp now,
                                                              const QLocale& locale) {
    MetricCell cell{.title = window.title,
                    .used = DisplayFormatters::metric(window.used, window.unit, locale)};
    if (window.limit) {
        cell.progress = window.progress().value_or(0);
        cell.progressTone = QuotaMath::isOverLimit(window.used, window.limit) ? Tone::critical : Tone::accent;
        cell.remainder = DisplayFormatters::remaining(window, locale);
        cell.ceiling = DisplayFormatters::ofLimit(window, locale);
    } else {
        cell.noLimit = QStringLiteral("Limit not reported");
    }
    cell.resetSymbol = QStringLiteral("arrow.clockwise");
    cell.countdown = DisplayFormatters::resetCountdown(window.resetAt, now);
    return cell;
}
