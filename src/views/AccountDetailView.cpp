#include "views/AccountDetailView.h"

#include "model/PlatformWording.h"
#include "store/ProviderAccount.h"
#include "views/DisplayFormatters.h"
#include "views/SubscriptionCardContent.h"

namespace {
AccountDetailView::SectionHeading heading(const char* title, const char* subtitle) {
    return {QString::fromUtf8(title), QString::fromUtf8(subtitle)};
}
} // namespace

AccountDetailView::ConnectionStyle AccountDetailView::connectionStyle(ConnectionMode mode) {
    switch (mode.value()) {
    case ConnectionMode::mock:
        return {QStringLiteral("wand.and.stars"), Tone::sample, QStringLiteral("Sample connection"),
                QStringLiteral("Safe local data — no provider requests are made."),
                QStringLiteral("Sample mode is safe to refresh and never sends a provider request.")};
    case ConnectionMode::manual:
        return {QStringLiteral("pencil.and.outline"), Tone::caution, QStringLiteral("Manual tracking"),
                QStringLiteral("Limits and reset windows are entered by the operator."),
                QStringLiteral(
                    "Enter a limit, choose a real reset time or leave it unprovided, then refresh this "
                    "account.")};
    case ConnectionMode::apiKey:
        return {QStringLiteral("key.fill"), Tone::accent, QStringLiteral("Official API connection"),
                PlatformWording::apply(
                    QStringLiteral("Credential is stored in macOS Keychain; refresh is explicit.")),
                QStringLiteral("Refresh is explicit and only uses an official supported provider endpoint.")};
    case ConnectionMode::browser:
        return {
            QStringLiteral("globe"), Tone::reference, QStringLiteral("Provider page reference"),
            QStringLiteral("Reference link only; choose Manual tracking for usage monitoring. The app never "
                           "reads browser cookies."),
            QStringLiteral("Reference page only; choose Manual tracking for operator-entered limits. Browser "
                           "cookies are never read by the app.")};
    }
    Q_UNREACHABLE();
    return {};
}

AccountDetailView::Screen AccountDetailView::make(const ProviderAccount& account, bool isRefreshing,
                                                  Timestamp now, const QLocale& locale,
                                                  const QTimeZone& timeZone) {
    Screen screen;
    screen.header = header(account, now, locale, timeZone);
    screen.toolbar = toolbar(isRefreshing);
    screen.connection = connectionPanel(account, isRefreshing);
    const std::optional<UsageSnapshot> snapshot = account.snapshot();
    if (!snapshot) {
        screen.emptyState = emptyState(account.connectionMode());
        return screen;
    }
    screen.warnings = warningCallout(*snapshot);
    screen.billingOnly = billingOnlyCallout(*snapshot);
    screen.metrics = metrics(account, *snapshot);
    screen.history = history(account, *snapshot);
    screen.billingHistory = billingHistory(account, *snapshot);
    screen.provenance = provenance(account, *snapshot, locale, timeZone);
    return screen;
}

AccountDetailView::Header AccountDetailView::header(const ProviderAccount& account, Timestamp now,
                                                    const QLocale& locale, const QTimeZone& timeZone) {
    Header header;
    header.provider = account.provider();
    header.name = account.displayName();
    header.subtitle =
        account.provider().displayName() + QStringLiteral(" · ") + account.accountKind().title();
    header.planName = account.effectivePlanName();
    if (!header.planName.isEmpty() && account.planNameIsDetected()) {
        header.planDetected = Chip{QStringLiteral("wand.and.stars"), QStringLiteral("Auto-detected")};
    }
    if (const QStringList roster = account.agentNames(); !roster.isEmpty()) {
        header.roster = QStringLiteral("Roster: ") + roster.join(QStringLiteral(" · "));
    }
    if (const QString identity = account.identityText(); !identity.isEmpty()) {
        header.chips.append(Chip{QStringLiteral("person.crop.circle"), identity});
    }
    if (const QString models = account.modelScopeText(); !models.isEmpty()) {
        header.chips.append(Chip{QStringLiteral("cpu"), models});
    }
    if (const QString agents = account.agentScopeText(); !agents.isEmpty()) {
        header.chips.append(Chip{QStringLiteral("person.crop.circle.badge.checkmark"), agents});
    }
    if (const qint64 agents = account.configuredAgentCount(); agents > 0) {
        header.chips.append(
            Chip{QStringLiteral("person.3.fill"), locale.toString(agents) + QStringLiteral(" agents")});
    }
    header.status = Badge::status(account.effectiveSyncStatus());
    if (const std::optional<UsageSnapshot> snapshot = account.snapshot()) {
        header.source = Badge::source(snapshot->source);
    }
    header.updated = QStringLiteral("Updated ") +
                     DisplayFormatters::relative(account.lastRefreshAt(), now, locale, timeZone);
    return header;
}

AccountDetailView::Toolbar AccountDetailView::toolbar(bool isRefreshing) {
    return Toolbar{isRefreshing ? QStringLiteral("Refreshing") : QStringLiteral("Refresh"),
                   QStringLiteral("arrow.clockwise"), !isRefreshing, QStringLiteral("Edit")};
}

AccountDetailView::ConnectionPanel AccountDetailView::connectionPanel(const ProviderAccount& account,
                                                                      bool isRefreshing) {
    const ConnectionMode mode = account.connectionMode();
    ConnectionPanel panel;
    panel.style = connectionStyle(mode);
    panel.status = Badge::status(account.effectiveSyncStatus());
    panel.refreshTitle = isRefreshing ? QStringLiteral("Refreshing") : QStringLiteral("Smart refresh");
    panel.refreshIcon = QStringLiteral("arrow.clockwise");
    panel.refreshEnabled = !isRefreshing;
    if (mode != ConnectionMode::mock) {
        panel.editTitle = QStringLiteral("Edit connection");
    }
    if (mode == ConnectionMode::apiKey) {
        panel.signOutTitle = QStringLiteral("Sign out");
    }
    return panel;
}

AccountDetailView::SignOutDialog AccountDetailView::signOutDialog() {
    return SignOutDialog{
        QStringLiteral("Sign out this account?"),
        QStringLiteral("The saved credential will be removed from Keychain. Your last snapshot stays "
                       "visible until you authenticate again."),
        QStringLiteral("Sign Out"), QStringLiteral("Cancel")};
}

StatusCardsContent::EmptyState AccountDetailView::emptyState(ConnectionMode mode) {
    return StatusCardsContent::emptyState(
        QStringLiteral("No usage snapshot yet"), connectionStyle(mode).emptyMessage,
        mode == ConnectionMode::mock ? QStringLiteral("Load sample data") : QStringLiteral("Refresh account"),
        true);
}

std::optional<AccountDetailView::WarningCallout>
AccountDetailView::warningCallout(const UsageSnapshot& snapshot) {
    if (snapshot.warnings.isEmpty()) {
        return std::nullopt;
    }
    return WarningCallout{QStringLiteral("exclamationmark.triangle.fill"), QStringLiteral("Partial data"),
                          snapshot.warnings};
}

std::optional<AccountDetailView::BillingOnlyCallout>
AccountDetailView::billingOnlyCallout(const UsageSnapshot& snapshot) {
    if (!SubscriptionCardContent::isBillingOnly(snapshot)) {
        return std::nullopt;
    }
    const UsageHealth billing = snapshot.billingHealth();
    return BillingOnlyCallout{
        QStringLiteral("creditcard.fill"), QStringLiteral("Billing signal only"),
        QStringLiteral(
            "This provider exposes credits or spend for the billing period, but no short-term or weekly "
            "quota."),
        Badge::pulse(billing), DisplayFormatters::healthColor(billing)};
}

AccountDetailView::Metrics AccountDetailView::metrics(const ProviderAccount& account,
                                                      const UsageSnapshot& snapshot) {
    return Metrics{
        heading("Allowances", "Used, remaining, and reset timing are shown in the provider's native units."),
        snapshot.windows, snapshot.modelSummaries, account.agentBudgets()};
}

AccountDetailView::History AccountDetailView::history(const ProviderAccount& account,
                                                      const UsageSnapshot& snapshot) {
    return History{heading("Recent usage", "The trend is scoped to this account and its displayed unit."),
                   snapshot.history.isEmpty() ? QStringLiteral("Usage")
                                              : snapshot.history.first().unit.capitalizedTitle(),
                   QStringLiteral("Persisted daily view · up to 90 days"), account.trendHistory()};
}

std::optional<AccountDetailView::History> AccountDetailView::billingHistory(const ProviderAccount& account,
                                                                            const UsageSnapshot& snapshot) {
    const QList<UsagePoint> points = account.billingTrendHistory();
    if (points.isEmpty()) {
        return std::nullopt;
    }
    const UsageUnit unit = points.first().unit;
    const bool officialSpend = snapshot.source == UsageSource::officialAPI && unit == UsageUnit::dollars;
    SectionHeading section =
        officialSpend
            ? heading("Spend trend", "Daily USD buckets from the provider's official costs endpoint.")
            : SectionHeading{unit.capitalizedTitle() + QStringLiteral(" trend"),
                             snapshot.source.title() + QStringLiteral(" history in the provider's native ") +
                                 unit.title() + QStringLiteral(" units.")};
    return History{section, unit.title().toUpper(), QStringLiteral("Selected range"), points};
}

AccountDetailView::Provenance AccountDetailView::provenance(const ProviderAccount& account,
                                                            const UsageSnapshot& snapshot,
                                                            const QLocale& locale,
                                                            const QTimeZone& timeZone) {
    Provenance provenance;
    provenance.heading = heading(
        "Data source", "Secrets are kept in Keychain; only metadata and snapshots are persisted locally.");
    provenance.rows = {
        {QStringLiteral("Source"), snapshot.source.title()},
        {QStringLiteral("Connection"), account.connectionMode().title()},
        {QStringLiteral("Last refresh"),
         DisplayFormatters::dateTime(account.lastRefreshAt(), timeZone, locale)},
        {QStringLiteral("Status"), account.syncMessage()},
    };
    if (const std::optional<ProviderConnectionMetadata> metadata = account.detectedMetadata()) {
        provenance.rows.append({QStringLiteral("Metadata"), metadata->sourceDescription});
        provenance.rows.append({QStringLiteral("Detected"),
                                DisplayFormatters::dateTime(metadata->capturedAt, timeZone, locale)});
    }
    if (account.provider() != AIProvider::openAI && account.connectionMode() == ConnectionMode::apiKey) {
        provenance.note = QStringLiteral(
            "Consumer subscription access is manual unless the provider publishes a supported usage API.");
    }
    return provenance;
}
