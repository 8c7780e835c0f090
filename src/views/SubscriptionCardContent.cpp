#include "views/SubscriptionCardContent.h"

#include "store/ProviderAccount.h"
#include "views/DisplayFormatters.h"

bool SubscriptionCardContent::isBillingOnly(const UsageSnapshot& snapshot) {
    return snapshot.health() == UsageHealth::unavailable &&
           snapshot.billingHealth() != UsageHealth::unavailable;
}

SubscriptionCardContent::AdditionalRow SubscriptionCardContent::additionalRow(const UsageWindow& window,
                                                                              const QLocale& locale) {
    return AdditionalRow{.dot = Badge::dot(window.health()),
                         .title = window.title,
                         .used = DisplayFormatters::metric(window.used, window.unit, locale),
                         .limitText = window.limit ? DisplayFormatters::remaining(window, locale)
                                                   : QStringLiteral("No limit")};
}

SubscriptionCardContent SubscriptionCardContent::make(const ProviderAccount& account, Timestamp now,
                                                      const QLocale& locale, const QTimeZone& timeZone) {
    SubscriptionCardContent card;
    card.providerRaw = account.provider().rawValue();
    card.name = account.displayName();
    card.subtitle = account.provider().displayName() + QStringLiteral(" · #") + account.shortIdentifier() +
                    QStringLiteral(" · ") + account.accountKind().title();
    if (const QString models = account.modelScopeText(); !models.isEmpty()) {
        card.chips.append(Chip{QStringLiteral("cpu"), models});
    }
    if (const QString agents = account.agentScopeText(); !agents.isEmpty()) {
        card.chips.append(Chip{QStringLiteral("person.crop.circle.badge.checkmark"), agents});
    }
    if (const qint64 count = account.configuredAgentCount(); count > 0) {
        // The plural also for one agent, as the card has always read.
        card.chips.append(
            Chip{QStringLiteral("person.3.fill"), locale.toString(count) + QStringLiteral(" agents")});
    }
    if (const std::optional<Timestamp> renewal = account.renewalDate()) {
        card.chips.append(
            Chip{QStringLiteral("calendar"),
                 QStringLiteral("Renews ") + DisplayFormatters::dateTime(renewal, timeZone, locale)});
    }
    const std::optional<UsageSnapshot> snapshot = account.snapshot();
    card.badges.append(Badge::pulse(account.pulse()));
    card.badges.append(Badge::status(account.effectiveSyncStatus()));
    if (snapshot) {
        card.badges.append(Badge::source(snapshot->source));
    }
    card.updated = QStringLiteral("Updated ") +
                   DisplayFormatters::relative(account.lastRefreshAt(), now, locale, timeZone);

    card.hasSnapshot = snapshot.has_value();
    if (!snapshot) {
        card.noSnapshotSymbol = QStringLiteral("exclamationmark.circle");
        card.noSnapshotTitle = QStringLiteral("No snapshot yet");
        card.noSnapshotMessage = account.syncMessage();
        return card;
    }
    card.horizons = {HorizonPanelContent::make(QStringLiteral("Short term"), QStringLiteral("bolt.fill"),
                                               snapshot->shortTermWindows(), now, locale, timeZone),
                     HorizonPanelContent::make(QStringLiteral("Weekly"), QStringLiteral("calendar"),
                                               snapshot->weeklyWindows(), now, locale, timeZone)};
    if (!snapshot->modelSummaries.isEmpty()) {
        card.models = ModelBreakdownContent::make(snapshot->modelSummaries, locale);
    }
    if (const QList<AgentBudget> budgets = account.agentBudgets(); !budgets.isEmpty()) {
        card.budgets = AgentBudgetPanelContent::make(budgets, locale);
    }
    if (isBillingOnly(*snapshot)) {
        card.billingOnly = Badge::pulse(snapshot->billingHealth());
        card.billingOnlyText =
            QStringLiteral("Billing-only signal — no short-term or weekly quota is published");
        card.billingOnlySymbol = QStringLiteral("creditcard.fill");
    }
    const QList<UsageWindow> additional = snapshot->additionalWindows();
    if (!additional.isEmpty()) {
        card.additionalHeading = QStringLiteral("Other tracked signals");
        for (const UsageWindow& window : additional) {
            card.additional.append(additionalRow(window, locale));
        }
    }
    card.trendTitle = QStringLiteral("Daily trend");
    if (snapshot->history.isEmpty()) {
        card.trendUnit = QStringLiteral("No history");
    } else {
        QString unit = snapshot->history.first().unit.title();
        unit[0] = unit[0].toUpper();
        card.trendUnit = unit;
    }
    card.resetTitle = QStringLiteral("Next reset");
    const std::optional<Timestamp> next = snapshot->nextReset();
    card.resetCountdown = DisplayFormatters::resetCountdown(next, now);
    card.resetDate =
        next ? DisplayFormatters::dateTime(next, timeZone, locale) : QStringLiteral("No reset reported");
    return card;
}
