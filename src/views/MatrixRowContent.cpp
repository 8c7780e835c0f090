#include "views/MatrixRowContent.h"

#include "store/ProviderAccount.h"
#include "views/DisplayFormatters.h"
#include "views/SubscriptionCardContent.h"

const QStringList MatrixRowContent::kColumns{QStringLiteral("Subscription"), QStringLiteral("Short term"),
                                             QStringLiteral("Weekly"), QStringLiteral("Pulse / status")};

MatrixRowContent::Cell MatrixRowContent::cell(const QList<UsageWindow>& windows, const QLocale& locale) {
    Cell cell;
    if (windows.isEmpty()) {
        cell.empty = QStringLiteral("—");
        return cell;
    }
    for (const UsageWindow& window : windows.mid(0, 3)) {
        cell.lines.append(Cell::Line{.dot = Badge::dot(window.health()),
                                     .used = DisplayFormatters::metric(window.used, window.unit, locale),
                                     .limit = window.limit ? DisplayFormatters::ofLimit(window, locale)
                                                           : QStringLiteral("No limit")});
    }
    if (windows.size() > 3) {
        cell.more =
            QStringLiteral("+%1 more").arg(locale.toString(static_cast<qlonglong>(windows.size() - 3)));
    }
    return cell;
}

QString MatrixRowContent::statusLine() const {
    QStringList parts;
    for (const QString& part : {subtitle, status, source, billingOnly, countdown}) {
        if (!part.isEmpty()) {
            parts.append(part);
        }
    }
    return parts.join(QStringLiteral(" · "));
}

MatrixRowContent MatrixRowContent::make(const ProviderAccount& account, Timestamp now,
                                        const QLocale& locale) {
    const std::optional<UsageSnapshot> snapshot = account.snapshot();
    MatrixRowContent row;
    row.id = account.id();
    row.name = account.displayName();
    row.subtitle = account.provider().shortName() + QStringLiteral(" · #") + account.shortIdentifier();
    row.shortTerm = cell(snapshot ? snapshot->shortTermWindows() : QList<UsageWindow>(), locale);
    row.weekly = cell(snapshot ? snapshot->weeklyWindows() : QList<UsageWindow>(), locale);
    row.pulse = Badge::pulse(account.pulse());
    const SyncStatus status = account.effectiveSyncStatus();
    row.status = status.title();
    row.statusTone = Tones::forStatus(status);
    if (snapshot) {
        row.source = snapshot->source.title();
        if (SubscriptionCardContent::isBillingOnly(*snapshot)) {
            row.billingOnly = QStringLiteral("Billing only");
        }
    }
    row.countdown = DisplayFormatters::resetCountdown(snapshot ? snapshot->nextReset() : std::nullopt, now);
    return row;
}
