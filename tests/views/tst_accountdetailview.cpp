#include "views/AccountDetailView.h"

#include "model/Clock.h"
#include "store/ProviderAccount.h"

#include <QTest>

namespace {
const QLocale kEnglish(QStringLiteral("en_US"));
const QTimeZone kUTC(QByteArrayLiteral("UTC"));
const Timestamp kNow = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30), kUTC));

ProviderAccount::Init details(ConnectionMode mode, AIProvider provider = AIProvider::openAI) {
    return ProviderAccount::Init{.provider = provider,
                                 .label = QStringLiteral("Work"),
                                 .accountKind = AccountKind::api,
                                 .connectionMode = mode,
                                 .createdAt = kNow,
                                 .lastRefreshAt = kNow.addingSeconds(-300),
                                 .syncStatus = SyncStatus::current,
                                 .syncMessage = QStringLiteral("Refreshed")};
}

UsageSnapshot snapshot(UsageSource source = UsageSource::manual) {
    return UsageSnapshot{.source = source,
                         .capturedAt = kNow,
                         .windows = {UsageWindow{.id = QStringLiteral("rpm"),
                                                 .title = QStringLiteral("Requests / minute"),
                                                 .unit = UsageUnit::requests,
                                                 .horizon = UsageHorizon::shortTerm,
                                                 .used = 10,
                                                 .limit = 60}},
                         .history = {},
                         .warnings = {}};
}

UsagePoint dollars(double value) {
    return UsagePoint{.date = kNow, .value = value, .unit = UsageUnit::dollars};
}
} // namespace

class TestAccountDetailView final : public QObject {
    Q_OBJECT

private slots:
    void init() { Clock::setFixedNow(kNow); }
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void connectionStylesPerMode() {
        const auto mock = AccountDetailView::connectionStyle(ConnectionMode::mock);
        QCOMPARE(mock.icon, QStringLiteral("wand.and.stars"));
        QCOMPARE(mock.tone, Tone::sample);
        QCOMPARE(mock.title, QStringLiteral("Sample connection"));
        QCOMPARE(mock.message, QStringLiteral("Safe local data — no provider requests are made."));
        const auto manual = AccountDetailView::connectionStyle(ConnectionMode::manual);
        QCOMPARE(manual.icon, QStringLiteral("pencil.and.outline"));
        QCOMPARE(manual.tone, Tone::caution);
        QCOMPARE(manual.title, QStringLiteral("Manual tracking"));
        const auto key = AccountDetailView::connectionStyle(ConnectionMode::apiKey);
        QCOMPARE(key.icon, QStringLiteral("key.fill"));
        QCOMPARE(key.tone, Tone::accent);
        QCOMPARE(key.title, QStringLiteral("Official API connection"));
#ifdef Q_OS_MACOS
        QCOMPARE(key.message, QStringLiteral("Credential is stored in macOS Keychain; refresh is explicit."));
#else
        QCOMPARE(key.message,
                 QStringLiteral("Credential is stored in the system keychain; refresh is explicit."));
#endif
        QCOMPARE(
            key.emptyMessage,
            QStringLiteral("Refresh is explicit and only uses an official supported provider endpoint."));
        const auto browser = AccountDetailView::connectionStyle(ConnectionMode::browser);
        QCOMPARE(browser.icon, QStringLiteral("globe"));
        QCOMPARE(browser.tone, Tone::reference);
        QCOMPARE(browser.title, QStringLiteral("Provider page reference"));
        QCOMPARE(browser.emptyMessage,
                 QStringLiteral("Reference page only; choose Manual tracking for operator-entered "
                                "limits. Browser cookies are never read by the app."));
    }

    void aBrowserAccountKeepsRefreshAndEditButNoSignOut() {
        const ProviderAccount account(details(ConnectionMode::browser));
        const auto panel = AccountDetailView::connectionPanel(account, false);
        QCOMPARE(panel.refreshTitle, QStringLiteral("Smart refresh"));
        QVERIFY(panel.refreshEnabled);
        QCOMPARE(panel.editTitle, QStringLiteral("Edit connection"));
        QVERIFY(!panel.signOutTitle);
        const auto toolbar = AccountDetailView::toolbar(false);
        QCOMPARE(toolbar.refreshTitle, QStringLiteral("Refresh"));
        QCOMPARE(toolbar.refreshIcon, QStringLiteral("arrow.clockwise"));
        QCOMPARE(toolbar.editTitle, QStringLiteral("Edit"));
    }

    void aSampleAccountHasNoEditConnectionAndLoadsSamples() {
        const ProviderAccount account(details(ConnectionMode::mock));
        const auto screen = AccountDetailView::make(account, false, kNow, kEnglish, kUTC);
        QVERIFY(!screen.connection.editTitle);
        QVERIFY(!screen.connection.signOutTitle);
        QCOMPARE(screen.toolbar.editTitle, QStringLiteral("Edit")); // the toolbar keeps it
        QVERIFY(screen.emptyState);
        QCOMPARE(screen.emptyState->title, QStringLiteral("No usage snapshot yet"));
        QCOMPARE(screen.emptyState->message,
                 QStringLiteral("Sample mode is safe to refresh and never sends a provider request."));
        QCOMPARE(screen.emptyState->actionTitle, QStringLiteral("Load sample data"));
        QVERIFY(!screen.metrics && !screen.history && !screen.provenance && !screen.warnings);
    }

    void aManualAccountCannotSignOut() {
        const ProviderAccount account(details(ConnectionMode::manual));
        const auto screen = AccountDetailView::make(account, false, kNow, kEnglish, kUTC);
        QVERIFY(!screen.connection.signOutTitle);
        QCOMPARE(screen.connection.editTitle, QStringLiteral("Edit connection"));
        QCOMPARE(screen.emptyState->actionTitle, QStringLiteral("Refresh account"));
    }

    void aKeyAccountSignsOutThroughADialog() {
        const ProviderAccount account(details(ConnectionMode::apiKey));
        QCOMPARE(AccountDetailView::connectionPanel(account, false).signOutTitle, QStringLiteral("Sign out"));
        const auto dialog = AccountDetailView::signOutDialog();
        QCOMPARE(dialog.title, QStringLiteral("Sign out this account?"));
        QCOMPARE(dialog.message,
                 QStringLiteral("The saved credential will be removed from Keychain. Your last "
                                "snapshot stays visible until you authenticate again."));
        QCOMPARE(dialog.confirmTitle, QStringLiteral("Sign Out"));
        QCOMPARE(dialog.cancelTitle, QStringLiteral("Cancel"));
    }

    void whileRefreshingBothRefreshButtonsWaitAndTheRestStays() {
        const ProviderAccount account(details(ConnectionMode::apiKey));
        const auto screen = AccountDetailView::make(account, true, kNow, kEnglish, kUTC);
        QCOMPARE(screen.toolbar.refreshTitle, QStringLiteral("Refreshing"));
        QVERIFY(!screen.toolbar.refreshEnabled);
        QCOMPARE(screen.connection.refreshTitle, QStringLiteral("Refreshing"));
        QVERIFY(!screen.connection.refreshEnabled);
        QCOMPARE(screen.connection.editTitle, QStringLiteral("Edit connection"));
        QCOMPARE(screen.connection.signOutTitle, QStringLiteral("Sign out"));
        QCOMPARE(screen.toolbar.editTitle, QStringLiteral("Edit"));
    }

    void headerReadsIdentityPlanRosterAndChips() {
        ProviderAccount::Init fields = details(ConnectionMode::apiKey);
        fields.agentRosterText = QStringLiteral("Scout, Builder");
        fields.identityDetail = QStringLiteral("org-123");
        fields.modelScope = QStringLiteral("gpt-4o");
        fields.agentScope = QStringLiteral("Research team");
        ProviderAccount account(fields);
        account.setDetectedMetadata(ProviderConnectionMetadata{.displayName = QStringLiteral("Tier 3"),
                                                               .sourceDescription = QStringLiteral("Headers"),
                                                               .capturedAt = kNow});
        account.setSnapshot(snapshot(UsageSource::officialAPI));
        const auto header = AccountDetailView::header(account, kNow, kEnglish, kUTC);
        QCOMPARE(header.name, QStringLiteral("Work"));
        QCOMPARE(header.subtitle, QStringLiteral("OpenAI · ") + AccountKind(AccountKind::api).title());
        QCOMPARE(header.planName, QStringLiteral("Tier 3"));
        QCOMPARE(header.planDetected->text, QStringLiteral("Auto-detected"));
        QCOMPARE(header.planDetected->symbol, QStringLiteral("wand.and.stars"));
        QCOMPARE(header.roster, QStringLiteral("Roster: Scout · Builder"));
        QCOMPARE(header.chips.size(), 4);
        QCOMPARE(header.chips[1], (AccountDetailView::Chip{"cpu", "gpt-4o"}));
        QCOMPARE(header.chips[2],
                 (AccountDetailView::Chip{"person.crop.circle.badge.checkmark", "Research team"}));
        QCOMPARE(header.chips[3], (AccountDetailView::Chip{"person.3.fill", "2 agents"}));
        QCOMPARE(header.status, Badge::status(SyncStatus::current));
        QCOMPARE(header.source, Badge::source(UsageSource::officialAPI));
        QCOMPARE(header.updated, QStringLiteral("Updated 5 min. ago"));
    }

    void oneAgentStillReadsAgents() {
        ProviderAccount::Init fields = details(ConnectionMode::manual);
        fields.agentCount = 1;
        const ProviderAccount account(fields);
        const auto header = AccountDetailView::header(account, kNow, kEnglish, kUTC);
        QCOMPARE(header.chips.last().text, QStringLiteral("1 agents"));
        QVERIFY(!header.source); // no snapshot, no source badge
        QVERIFY(header.roster.isEmpty());
        QVERIFY(!header.planDetected);
    }

    void noWarningsNoCallout() {
        ProviderAccount account(details(ConnectionMode::manual));
        account.setSnapshot(snapshot());
        QVERIFY(!AccountDetailView::make(account, false, kNow, kEnglish, kUTC).warnings);
        UsageSnapshot partial = snapshot();
        partial.warnings = {QStringLiteral("One"), QStringLiteral("Two")};
        const auto callout = AccountDetailView::warningCallout(partial);
        QCOMPARE(callout->label, QStringLiteral("Partial data"));
        QCOMPARE(callout->symbol, QStringLiteral("exclamationmark.triangle.fill"));
        QCOMPARE(callout->lines, (QStringList{"One", "Two"}));
    }

    void billingOnlySignalGetsItsCallout() {
        UsageSnapshot billing = snapshot();
        billing.windows = {UsageWindow{.id = QStringLiteral("credits"),
                                       .title = QStringLiteral("Credits"),
                                       .unit = UsageUnit::credits,
                                       .horizon = UsageHorizon::billing,
                                       .used = 95,
                                       .limit = 100}};
        const auto callout = AccountDetailView::billingOnlyCallout(billing);
        QVERIFY(callout);
        QCOMPARE(callout->title, QStringLiteral("Billing signal only"));
        QCOMPARE(callout->symbol, QStringLiteral("creditcard.fill"));
        QCOMPARE(callout->pulse, Badge::pulse(UsageHealth::urgent));
        QCOMPARE(callout->tone, Tone::critical);
        QVERIFY(!AccountDetailView::billingOnlyCallout(snapshot()));
    }

    void anEmptyHistoryStillShowsTheUsageBox() {
        ProviderAccount account(details(ConnectionMode::manual));
        account.setSnapshot(snapshot());
        const auto screen = AccountDetailView::make(account, false, kNow, kEnglish, kUTC);
        QVERIFY(screen.history);
        QCOMPARE(screen.history->heading.title, QStringLiteral("Recent usage"));
        QCOMPARE(screen.history->leading, QStringLiteral("Usage"));
        QCOMPARE(screen.history->trailing, QStringLiteral("Persisted daily view · up to 90 days"));
        QVERIFY(!screen.billingHistory); // no billing points: no spend section at all
        QCOMPARE(screen.metrics->heading.title, QStringLiteral("Allowances"));
        QVERIFY(AccountDetailView::Metrics::kMinimumColumnWidth >= 280); // columns at least 280 wide
        QCOMPARE(screen.metrics->windows.size(), 1);
    }

    void historyHeadsWithItsUnit() {
        UsageSnapshot withHistory = snapshot();
        withHistory.history = {UsagePoint{.date = kNow, .value = 4, .unit = UsageUnit::tokens}};
        ProviderAccount account(details(ConnectionMode::manual));
        account.setSnapshot(withHistory);
        QCOMPARE(AccountDetailView::history(account, withHistory).leading, QStringLiteral("Tokens"));
    }

    void officialDollarsReadSpendTrendOtherSourcesTheirUnit() {
        UsageSnapshot official = snapshot(UsageSource::officialAPI);
        official.billingHistory = {dollars(2)};
        ProviderAccount account(details(ConnectionMode::apiKey));
        account.setSnapshot(official);
        auto section = AccountDetailView::billingHistory(account, official);
        QCOMPARE(section->heading.title, QStringLiteral("Spend trend"));
        QCOMPARE(section->heading.subtitle,
                 QStringLiteral("Daily USD buckets from the provider's official costs endpoint."));
        QCOMPARE(section->leading, QStringLiteral("USD"));
        QCOMPARE(section->trailing, QStringLiteral("Selected range"));

        UsageSnapshot manual = snapshot(UsageSource::manual);
        manual.billingHistory = {dollars(2)};
        account.setSnapshot(manual);
        section = AccountDetailView::billingHistory(account, manual);
        QCOMPARE(section->heading.title, QStringLiteral("USD trend"));
        QCOMPARE(section->heading.subtitle,
                 QStringLiteral("Manual history in the provider's native USD units."));
    }

    void provenanceHasFourRowsWithoutMetadataAndSixWithIt() {
        ProviderAccount account(details(ConnectionMode::manual));
        account.setSnapshot(snapshot());
        auto provenance = AccountDetailView::provenance(account, *account.snapshot(), kEnglish, kUTC);
        QCOMPARE(provenance.heading.title, QStringLiteral("Data source"));
        QCOMPARE(provenance.rows.size(), 4);
        QCOMPARE(provenance.rows[0], (QPair<QString, QString>{"Source", "Manual"}));
        QCOMPARE(provenance.rows[1], (QPair<QString, QString>{"Connection", "Manual tracking"}));
        QCOMPARE(provenance.rows[2], (QPair<QString, QString>{"Last refresh", "Apr 2, 2026, 9:25\u202FAM"}));
        QCOMPARE(provenance.rows[3], (QPair<QString, QString>{"Status", "Refreshed"}));
        account.setDetectedMetadata(ProviderConnectionMetadata{
            .sourceDescription = QStringLiteral("Rate-limit headers"), .capturedAt = kNow});
        provenance = AccountDetailView::provenance(account, *account.snapshot(), kEnglish, kUTC);
        QCOMPARE(provenance.rows.size(), 6);
        QCOMPARE(provenance.rows[4], (QPair<QString, QString>{"Metadata", "Rate-limit headers"}));
        QCOMPARE(provenance.rows[5], (QPair<QString, QString>{"Detected", "Apr 2, 2026, 9:30\u202FAM"}));
    }

    void theConsumerNoteShowsForAKeyOfAnotherProvider() {
        ProviderAccount claude(details(ConnectionMode::apiKey, AIProvider::anthropic));
        claude.setSnapshot(snapshot());
        QCOMPARE(
            AccountDetailView::provenance(claude, *claude.snapshot()).note,
            QStringLiteral("Consumer subscription access is manual unless the provider publishes a supported "
                           "usage API."));
        ProviderAccount openAI(details(ConnectionMode::apiKey, AIProvider::openAI));
        openAI.setSnapshot(snapshot());
        QVERIFY(!AccountDetailView::provenance(openAI, *openAI.snapshot()).note);
        ProviderAccount manualClaude(details(ConnectionMode::manual, AIProvider::anthropic));
        manualClaude.setSnapshot(snapshot());
        QVERIFY(!AccountDetailView::provenance(manualClaude, *manualClaude.snapshot()).note);
    }
};

QTEST_GUILESS_MAIN(TestAccountDetailView)
#include "tst_accountdetailview.moc"
