#include "store/ProviderAccount.h"

#include "StoreFixtures.h"
#include "TestSupport.h"
#include "model/UsageJson.h"
#include "model/UuidText.h"

#include <QScopeGuard>
#include <QSignalSpy>
#include <QTest>
#include <QTimeZone>

namespace {
// 2026-03-10 12:00 in the test time zone (Europe/Berlin), as a timestamp.
Timestamp berlin(int year, int month, int day, int hour, int minute = 0) {
    return Timestamp::fromDateTime(QDateTime(QDate(year, month, day), QTime(hour, minute),
                                             QTimeZone(QByteArrayLiteral("Europe/Berlin"))));
}
} // namespace

using AccountChange = std::function<void(ProviderAccount&)>;
Q_DECLARE_METATYPE(AccountChange)

class TestProviderAccount final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { QCOMPARE(qgetenv("TZ"), QByteArray("Europe/Berlin")); }
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void initialiserDefaults() {
        Clock::setFixedNow(Timestamp(1000));
        const ProviderAccount account(accountInit(QStringLiteral("Personal")));
        const ProviderAccountRow& row = account.row();
        QVERIFY(!row.id.isNull());
        QCOMPARE(row.providerRaw, QStringLiteral("openai"));
        QCOMPARE(row.label, QStringLiteral("Personal"));
        QCOMPARE(row.accountKindRaw, QStringLiteral("api"));
        QCOMPARE(row.planName, QString());
        QVERIFY(!row.detectedMetadataData);
        // Strings the initialiser stores are empty, not absent; the count is 0.
        QCOMPARE(row.identityDetail, std::optional<QString>(QString()));
        QCOMPARE(row.modelScope, std::optional<QString>(QString()));
        QCOMPARE(row.agentScope, std::optional<QString>(QString()));
        QCOMPARE(row.agentRosterText, std::optional<QString>(QString()));
        QVERIFY(!row.agentBudgetsData);
        QCOMPARE(row.agentCount, std::optional<qint64>(0));
        QVERIFY(!row.renewalDate);
        QCOMPARE(row.connectionModeRaw, QStringLiteral("mock"));
        QCOMPARE(row.createdAt, Timestamp(1000));
        QVERIFY(!row.lastRefreshAt);
        QCOMPARE(row.syncStatusRaw, QStringLiteral("needsAttention"));
        QCOMPARE(row.syncMessage, QStringLiteral("Not refreshed yet"));
        QVERIFY(!row.snapshotData && !row.snapshotHistoryData);
        QVERIFY(row.sampleDataEnabled);

        const ProviderAccount other(accountInit());
        QVERIFY(other.id() != account.id());
    }

    void typedViewsFallBack_data() {
        QTest::addColumn<QString>("raw");
        QTest::addColumn<QString>("provider");
        QTest::addColumn<QString>("kind");
        QTest::addColumn<QString>("mode");
        QTest::addColumn<QString>("status");
        QTest::newRow("unknown everywhere") << "bogus"
                                            << "openai"
                                            << "consumer"
                                            << "mock"
                                            << "needsAttention";
        QTest::newRow("empty") << ""
                               << "openai"
                               << "consumer"
                               << "mock"
                               << "needsAttention";
    }
    void typedViewsFallBack() {
        QFETCH(QString, raw);
        ProviderAccount account(accountInit());
        account.setProviderRaw(raw);
        account.setAccountKindRaw(raw);
        account.setConnectionModeRaw(raw);
        account.setSyncStatusRaw(raw);
        QCOMPARE(account.provider().rawValue(), fetched<QString>("provider"));
        QCOMPARE(account.accountKind().rawValue(), fetched<QString>("kind"));
        QCOMPARE(account.connectionMode().rawValue(), fetched<QString>("mode"));
        QCOMPARE(account.syncStatus().rawValue(), fetched<QString>("status"));
    }

    void browserModeReadsBrowser() {
        ProviderAccount account(accountInit());
        account.setConnectionModeRaw(QStringLiteral("browser"));
        QCOMPARE(account.connectionMode(), ConnectionMode(ConnectionMode::browser));
        account.setConnectionModeRaw(QStringLiteral("cookies"));
        QCOMPARE(account.connectionMode(), ConnectionMode(ConnectionMode::mock));
    }

    void typedSettersWriteRawValues() {
        ProviderAccount account(accountInit());
        account.setProvider(AIProvider::xAI);
        account.setAccountKind(AccountKind::consumer);
        account.setConnectionMode(ConnectionMode::apiKey);
        account.setSyncStatus(SyncStatus::rateLimited);
        QCOMPARE(account.providerRaw(), QStringLiteral("xai"));
        QCOMPARE(account.accountKindRaw(), QStringLiteral("consumer"));
        QCOMPARE(account.connectionModeRaw(), QStringLiteral("apiKey"));
        QCOMPARE(account.syncStatusRaw(), QStringLiteral("rateLimited"));
    }

    void displayName() {
        ProviderAccount account(accountInit(QStringLiteral("   ")));
        account.setProvider(AIProvider::anthropic);
        QCOMPARE(account.displayName(), QStringLiteral("Anthropic / Claude"));
        account.setLabel(QStringLiteral(" \n\t"));
        QCOMPARE(account.displayName(), QStringLiteral("Anthropic / Claude"));
        account.setLabel(QStringLiteral("  Team Max  "));
        QCOMPARE(account.displayName(), QStringLiteral("  Team Max  "));
    }

    void textViewsOfAbsentValues() {
        ProviderAccount account(accountInit());
        account.setIdentityDetail(std::nullopt);
        account.setModelScope(std::nullopt);
        account.setAgentScope(std::nullopt);
        account.setAgentRosterText(std::nullopt);
        account.setAgentCount(std::nullopt);
        QCOMPARE(account.identityText(), QString());
        QCOMPARE(account.modelScopeText(), QString());
        QCOMPARE(account.agentScopeText(), QString());
        QCOMPARE(account.agentNames(), QStringList());
        QCOMPARE(account.configuredAgentCount(), 0);
        account.setIdentityDetail(QStringLiteral("org-123"));
        account.setAgentScope(QStringLiteral("research"));
        QCOMPARE(account.identityText(), QStringLiteral("org-123"));
        QCOMPARE(account.agentScopeText(), QStringLiteral("research"));
    }

    void agentNames() {
        ProviderAccount account(accountInit());
        account.setAgentRosterText(QStringLiteral(",, Scout ,Writer,,\n Reviewer\t, , Scout,"));
        QCOMPARE(account.agentNames(), QStringList({"Scout", "Writer", "Reviewer", "Scout"}));
    }

    void configuredAgentCount() {
        ProviderAccount account(accountInit());
        account.setAgentRosterText(QStringLiteral("a, b, c"));
        account.setAgentCount(5);
        QCOMPARE(account.configuredAgentCount(), 5);
        account.setAgentCount(1);
        QCOMPARE(account.configuredAgentCount(), 3);
    }

    void planNames() {
        ProviderAccount account(accountInit());
        account.setPlanName(QStringLiteral("  Pro  "));
        QCOMPARE(account.effectivePlanName(), QStringLiteral("Pro"));
        QVERIFY(!account.planNameIsDetected());

        account.setPlanName(QStringLiteral("   "));
        QCOMPARE(account.effectivePlanName(), QString());
        QVERIFY(!account.planNameIsDetected());

        account.setDetectedMetadata(ProviderConnectionMetadata{
            .displayName = QStringLiteral("Acme org"), .sourceDescription = QStringLiteral("OpenAI")});
        QCOMPARE(account.effectivePlanName(), QStringLiteral("Acme org"));
        QVERIFY(account.planNameIsDetected());

        // Even an empty detected name counts as detected.
        account.setDetectedMetadata(ProviderConnectionMetadata{
            .displayName = QString(), .sourceDescription = QStringLiteral("OpenAI")});
        QCOMPARE(account.effectivePlanName(), QString());
        QVERIFY(account.planNameIsDetected());

        account.setPlanName(QStringLiteral("Team"));
        QVERIFY(!account.planNameIsDetected());
    }

    void identifiers() {
        ProviderAccount account(
            ProviderAccount::Init{.id = QUuid::fromString(u"e621e1f8-c36c-495a-93fc-0c247a3e6e5f"),
                                  .provider = AIProvider::gemini,
                                  .label = QString(),
                                  .accountKind = AccountKind::consumer});
        QCOMPARE(account.secretReference(), QStringLiteral("E621E1F8-C36C-495A-93FC-0C247A3E6E5F"));
        QCOMPARE(account.secretReference().size(), 36);
        QCOMPARE(account.shortIdentifier(), QStringLiteral("E621E1"));
    }

    void absentSnapshotAndMetadataAreStoredAsNull() {
        ProviderAccount account(accountInit());
        account.setSnapshot(snapshotAt(Timestamp(5)));
        QVERIFY(account.snapshot().has_value());
        account.setSnapshot(std::nullopt);
        QCOMPARE(account.snapshotData(), std::optional<QByteArray>(QByteArrayLiteral("null")));
        QVERIFY(!account.snapshot().has_value());

        account.setDetectedMetadata(std::nullopt);
        QCOMPARE(account.detectedMetadataData(), std::optional<QByteArray>(QByteArrayLiteral("null")));
        QVERIFY(!account.detectedMetadata().has_value());
    }

    void blobViewsNeverFail() {
        ProviderAccount account(accountInit());
        const QByteArray garbage = QByteArrayLiteral("\x00\xff not json");
        account.setSnapshotData(garbage);
        account.setDetectedMetadataData(garbage);
        account.setAgentBudgetsData(garbage);
        account.setSnapshotHistoryData(garbage);
        QVERIFY(!account.snapshot());
        QVERIFY(!account.detectedMetadata());
        QVERIFY(account.agentBudgets().isEmpty());
        QVERIFY(account.snapshotHistory().isEmpty());
        // The bad bytes stay until the next write.
        QCOMPARE(account.snapshotData(), std::optional<QByteArray>(garbage));
        QCOMPARE(account.agentBudgetHealth(), UsageHealth(UsageHealth::unavailable));
        QVERIFY(account.trendHistory().isEmpty());
    }

    void agentBudgetsAreWrittenEvenWhenEmpty() {
        ProviderAccount account(accountInit());
        account.setAgentBudgets({});
        QCOMPARE(account.agentBudgetsData(), std::optional<QByteArray>(QByteArrayLiteral("[]")));
        const AgentBudget budget{.id = QStringLiteral("b1"),
                                 .name = QStringLiteral("Scout"),
                                 .unit = UsageUnit::messages,
                                 .weeklyUsed = 95,
                                 .weeklyLimit = 100};
        account.setAgentBudgets({budget});
        QCOMPARE(account.agentBudgets(), QList<AgentBudget>{budget});
        QCOMPARE(account.agentBudgetHealth(), UsageHealth(UsageHealth::urgent));

        // A budget that cannot be written leaves no bytes behind.
        AgentBudget broken = budget;
        broken.shortUsed = std::numeric_limits<double>::quiet_NaN();
        account.setAgentBudgets({broken});
        QVERIFY(!account.agentBudgetsData().has_value());
    }

    void recordKeepsTheLast90() {
        ProviderAccount account(accountInit());
        for (int i = 0; i < 90; ++i) {
            account.record(snapshotAt(Timestamp(i)));
        }
        QCOMPARE(account.snapshotHistory().size(), 90);
        account.record(snapshotAt(Timestamp(90)));
        const QList<UsageSnapshot> history = account.snapshotHistory();
        QCOMPARE(history.size(), 90);
        QCOMPARE(history.first().capturedAt, Timestamp(1));
        QCOMPARE(history.last().capturedAt, Timestamp(90));
        QVERIFY(!account.snapshotData()); // record does not touch the snapshot
    }

    void recordOverwritesGarbageHistory() {
        ProviderAccount account(accountInit());
        account.setSnapshotHistoryData(QByteArrayLiteral("{garbage"));
        QVERIFY(account.snapshotHistory().isEmpty());
        account.record(snapshotAt(Timestamp(7)));
        QCOMPARE(account.snapshotHistory().size(), 1);
        QCOMPARE(account.snapshotHistory().first().capturedAt, Timestamp(7));
    }

    void recordWithoutDedupOrTimeRule() {
        ProviderAccount account(accountInit());
        const UsageSnapshot same = snapshotAt(Timestamp(3));
        account.record(same);
        account.record(same);
        QCOMPARE(account.snapshotHistory().size(), 2);
    }

    // ---- effectiveSyncStatus ----
    void currentWithoutRefreshNeedsAttention() {
        ProviderAccount account(accountInit());
        account.setSyncStatus(SyncStatus::current);
        QCOMPARE(account.effectiveSyncStatus(), SyncStatus(SyncStatus::needsAttention));
    }

    void onlyCurrentAges() {
        Clock::setFixedNow(Timestamp(1'000'000));
        ProviderAccount account(accountInit());
        account.setSyncStatus(SyncStatus::partial);
        account.setLastRefreshAt(Timestamp(0));
        QCOMPARE(account.effectiveSyncStatus(), SyncStatus(SyncStatus::partial));
        account.setSyncStatus(SyncStatus::offline);
        QCOMPARE(account.effectiveSyncStatus(), SyncStatus(SyncStatus::offline));
    }

    void sixHoursIsNotYetStale() {
        Clock::setFixedNow(Timestamp(100'000));
        ProviderAccount account(accountInit());
        account.setSyncStatus(SyncStatus::current);
        account.setLastRefreshAt(Timestamp(100'000 - 21600));
        QCOMPARE(account.effectiveSyncStatus(), SyncStatus(SyncStatus::current));
        account.setLastRefreshAt(Timestamp(100'000 - 21600.001));
        QCOMPARE(account.effectiveSyncStatus(), SyncStatus(SyncStatus::stale));
    }

    void resetBetweenRefreshAndNowMakesStale_data() {
        QTest::addColumn<double>("resetOffset"); // seconds from now
        QTest::addColumn<QString>("expected");
        QTest::newRow("between refresh and now") << -1800.0 << "stale";
        QTest::newRow("before the refresh") << -7200.0 << "current";
        QTest::newRow("in the future") << 600.0 << "current";
        QTest::newRow("exactly at the refresh") << -3600.0 << "current";
    }
    void resetBetweenRefreshAndNowMakesStale() {
        QFETCH(double, resetOffset);
        QFETCH(QString, expected);
        const Timestamp now(500'000);
        Clock::setFixedNow(now);
        ProviderAccount account(accountInit());
        account.setSyncStatus(SyncStatus::current);
        account.setLastRefreshAt(now.addingSeconds(-3600));
        UsageWindow window{
            .id = QStringLiteral("w"), .title = QStringLiteral("W"), .unit = UsageUnit::tokens};
        window.resetAt = now.addingSeconds(resetOffset);
        account.setSnapshot(snapshotAt(now.addingSeconds(-3600), {}, {window}));
        QCOMPARE(account.effectiveSyncStatus().rawValue(), expected);
    }

    void earliestResetHidesLaterOnes() {
        const Timestamp now(500'000);
        Clock::setFixedNow(now);
        ProviderAccount account(accountInit());
        account.setSyncStatus(SyncStatus::current);
        account.setLastRefreshAt(now.addingSeconds(-3600));
        UsageWindow old{
            .id = QStringLiteral("old"), .title = QStringLiteral("Old"), .unit = UsageUnit::tokens};
        old.resetAt = now.addingSeconds(-86400); // before the refresh
        UsageWindow passed{
            .id = QStringLiteral("p"), .title = QStringLiteral("P"), .unit = UsageUnit::tokens};
        passed.resetAt = now.addingSeconds(-60); // between refresh and now
        account.setSnapshot(snapshotAt(now.addingSeconds(-3600), {}, {passed, old}));
        QCOMPARE(account.effectiveSyncStatus(), SyncStatus(SyncStatus::current));
    }

    // ---- pulse ----
    void pulse_data() {
        QTest::addColumn<QString>("status");
        QTest::addColumn<double>("used"); // of 100 in a short-term window; -1 for no snapshot
        QTest::addColumn<QString>("expected");
        QTest::newRow("current healthy") << "current" << 10.0 << "healthy";
        QTest::newRow("current urgent") << "current" << 95.0 << "urgent";
        QTest::newRow("current without limits") << "current" << -1.0 << "unavailable";
        QTest::newRow("stale without limits reads watch") << "stale" << -1.0 << "watch";
        QTest::newRow("stale healthy") << "stale" << 10.0 << "watch";
        QTest::newRow("stale urgent") << "stale" << 95.0 << "urgent";
        QTest::newRow("partial healthy") << "partial" << 10.0 << "watch";
        QTest::newRow("needs attention") << "needsAttention" << 10.0 << "watch";
        QTest::newRow("offline healthy reads urgent") << "offline" << 10.0 << "urgent";
        QTest::newRow("unauthorized") << "unauthorized" << -1.0 << "urgent";
        QTest::newRow("rate limited") << "rateLimited" << 10.0 << "urgent";
        QTest::newRow("unsupported") << "unsupported" << 95.0 << "unavailable";
    }
    void pulse() {
        QFETCH(QString, status);
        QFETCH(double, used);
        QFETCH(QString, expected);
        const Timestamp now(900'000);
        Clock::setFixedNow(now);
        ProviderAccount account(accountInit());
        account.setSyncStatusRaw(status);
        account.setLastRefreshAt(now.addingSeconds(-60));
        if (used >= 0) {
            account.setSnapshot(snapshotAt(now, {},
                                           {UsageWindow{.id = QStringLiteral("s"),
                                                        .title = QStringLiteral("S"),
                                                        .unit = UsageUnit::requests,
                                                        .horizon = UsageHorizon::shortTerm,
                                                        .used = used,
                                                        .limit = 100}}));
        }
        QCOMPARE(account.pulse().rawValue(), expected);
    }

    void pulseCountsAgentBudgets() {
        const Timestamp now(900'000);
        Clock::setFixedNow(now);
        ProviderAccount account(accountInit());
        account.setSyncStatus(SyncStatus::current);
        account.setLastRefreshAt(now);
        account.setAgentBudgets({AgentBudget{.id = QStringLiteral("a"),
                                             .name = QStringLiteral("A"),
                                             .unit = UsageUnit::tokens,
                                             .shortUsed = 80,
                                             .shortLimit = 100}});
        QCOMPARE(account.pulse(), UsageHealth(UsageHealth::watch));
    }

    // ---- trend history ----
    void trendKeepsTheLatestPointOfADay() {
        ProviderAccount account(accountInit());
        const Timestamp morning = berlin(2026, 3, 10, 8);
        const Timestamp evening = berlin(2026, 3, 10, 20);
        account.record(snapshotAt(morning, {pointAt(evening, 2)}));
        account.record(snapshotAt(evening, {pointAt(morning, 1)}));
        account.setSnapshot(snapshotAt(evening, {pointAt(evening, 2)}));
        const QList<UsagePoint> trend = account.trendHistory();
        QCOMPARE(trend.size(), 1);
        QCOMPARE(trend.first().date, evening);
        QCOMPARE(trend.first().value, 2.0);
    }

    void datesFarBeyondAnyCalendarAreSafeToDraw() {
        // A hand-edited blob may hold any finite date; the day of it is computed on a
        // clamped date, never by an integer overflow.
        ProviderAccount account(accountInit());
        const Timestamp now = berlin(2026, 3, 10, 8);
        account.setSnapshot(
            snapshotAt(now, {pointAt(Timestamp(1e300), 5), pointAt(Timestamp(-1e300), 3), pointAt(now, 1)}));
        account.setLastRefreshAt(Timestamp(1e300));
        const QList<UsagePoint> trend = account.trendHistory();
        QVERIFY(!trend.isEmpty());
        QVERIFY(account.effectiveSyncStatus().rawValue().size() > 0);
        QVERIFY(Timestamp(1e300).toDateTime().isValid());
    }

    void trendSameTimestampKeepsTheOlderSnapshotsPoint() {
        ProviderAccount account(accountInit());
        const Timestamp noon = berlin(2026, 3, 10, 12);
        account.record(snapshotAt(noon, {pointAt(noon, 1)}));
        account.record(snapshotAt(noon, {pointAt(noon, 2)}));
        account.setSnapshot(snapshotAt(noon, {pointAt(noon, 2)}));
        QCOMPARE(account.trendHistory(), QList<UsagePoint>{pointAt(noon, 1)});
    }

    void trendDaysFollowTheLocalCalendar() {
        ProviderAccount account(accountInit());
        // 23:30 and 00:30 Berlin time are different local days, though the same UTC day.
        const Timestamp late = berlin(2026, 3, 10, 23, 30);
        const Timestamp early = berlin(2026, 3, 11, 0, 30);
        // 00:30 and 23:30 of one local day are one day, across the spring DST change.
        const Timestamp dstMorning = berlin(2026, 3, 29, 0, 30);
        const Timestamp dstNight = berlin(2026, 3, 29, 23, 30);
        account.record(snapshotAt(
            dstNight, {pointAt(late, 1), pointAt(early, 2), pointAt(dstMorning, 3), pointAt(dstNight, 4)}));
        account.setSnapshot(snapshotAt(dstNight, {pointAt(dstNight, 4)}));
        const QList<UsagePoint> trend = account.trendHistory();
        QCOMPARE(trend.size(), 3);
        QCOMPARE(trend.at(0).date, late);
        QCOMPARE(trend.at(1).date, early);
        QCOMPARE(trend.at(2).date, dstNight); // each keeps its exact date
    }

    void trendIsSortedAndLimitedTo90Days() {
        ProviderAccount account(accountInit());
        QList<UsagePoint> points;
        for (int day = 120; day >= 1; --day) { // newest first on purpose
            points.append(pointAt(berlin(2026, 1, 1, 12).addingSeconds(day * 86400.0), day));
        }
        account.record(snapshotAt(Timestamp(0), points));
        account.setSnapshot(snapshotAt(Timestamp(0), {points.first()}));
        const QList<UsagePoint> trend = account.trendHistory();
        QCOMPARE(trend.size(), 90);
        QCOMPARE(trend.first().value, 31.0);
        QCOMPARE(trend.last().value, 120.0);
        QVERIFY(std::is_sorted(trend.cbegin(), trend.cend(),
                               [](const UsagePoint& a, const UsagePoint& b) { return a.date < b.date; }));
    }

    void emptyCurrentHistoryGivesEmptyTrend() {
        ProviderAccount account(accountInit());
        account.record(snapshotAt(Timestamp(1), {pointAt(Timestamp(1), 1)}));
        account.setSnapshot(snapshotAt(Timestamp(2), {}));
        QVERIFY(account.trendHistory().isEmpty());
        account.setSnapshot(std::nullopt);
        QVERIFY(account.trendHistory().isEmpty());
    }

    void otherUnitsOnlyGiveTheCurrentHistory() {
        ProviderAccount account(accountInit());
        account.record(snapshotAt(Timestamp(1), {pointAt(Timestamp(1), 1, UsageUnit::dollars)}));
        const QList<UsagePoint> current{pointAt(Timestamp(5), 7), pointAt(Timestamp(3), 6)};
        account.setSnapshot(snapshotAt(Timestamp(5), current));
        QCOMPARE(account.trendHistory(), current); // as it stands, unsorted
    }

    void trendFiltersByTheFirstPointsUnit() {
        ProviderAccount account(accountInit());
        const Timestamp d1 = berlin(2026, 3, 1, 12);
        const Timestamp d2 = berlin(2026, 3, 2, 12);
        account.record(snapshotAt(d1, {pointAt(d1, 1, UsageUnit::dollars), pointAt(d1, 100)}));
        account.record(snapshotAt(d2, {pointAt(d2, 200)}));
        account.setSnapshot(snapshotAt(d2, {pointAt(d2, 200), pointAt(d2, 9, UsageUnit::dollars)}));
        QCOMPARE(account.trendHistory(), (QList<UsagePoint>{pointAt(d1, 100), pointAt(d2, 200)}));
    }

    void billingTrendUsesBillingHistory() {
        ProviderAccount account(accountInit());
        const Timestamp d1 = berlin(2026, 3, 1, 12);
        UsageSnapshot stored = snapshotAt(d1, {pointAt(d1, 1)});
        stored.billingHistory = {pointAt(d1, 4.5, UsageUnit::dollars)};
        account.record(stored);
        account.setSnapshot(stored);
        QCOMPARE(account.billingTrendHistory(), QList<UsagePoint>{pointAt(d1, 4.5, UsageUnit::dollars)});
        QCOMPARE(account.trendHistory(), QList<UsagePoint>{pointAt(d1, 1)});
    }

    void repeatedReadsFollowEveryChange() {
        ProviderAccount account(accountInit());
        const Timestamp d1 = berlin(2026, 3, 1, 12);
        const Timestamp d2 = berlin(2026, 3, 2, 12);
        account.record(snapshotAt(d1, {pointAt(d1, 1)}));
        account.setSnapshot(snapshotAt(d1, {pointAt(d1, 1)}));
        QCOMPARE(account.trendHistory().size(), 1);
        QCOMPARE(account.trendHistory().size(), 1);
        account.record(snapshotAt(d2, {pointAt(d2, 2)}));
        QCOMPARE(account.trendHistory().size(), 2);
        // The same bytes written anew give the same answer.
        account.setSnapshotHistoryData(
            QByteArray(account.snapshotHistoryData()->constData(), account.snapshotHistoryData()->size()));
        QCOMPARE(account.trendHistory().size(), 2);
        account.setSnapshot(snapshotAt(d2, {pointAt(d2, 2, UsageUnit::dollars)}));
        QCOMPARE(account.trendHistory(), QList<UsagePoint>{pointAt(d2, 2, UsageUnit::dollars)});
    }

    void dayBoundariesFollowTheTimeZone() {
        ProviderAccount account(accountInit());
        // 23:30 and 00:30 in Berlin are 17:30 and 18:30 of one day in New York.
        const Timestamp late = berlin(2026, 3, 10, 23, 30);
        const Timestamp early = berlin(2026, 3, 11, 0, 30);
        account.record(snapshotAt(early, {pointAt(late, 1), pointAt(early, 2)}));
        account.setSnapshot(snapshotAt(early, {pointAt(early, 2)}));
        QCOMPARE(account.trendHistory().size(), 2);
        qputenv("TZ", "America/New_York");
        const auto restore = qScopeGuard([] { qputenv("TZ", "Europe/Berlin"); });
        QCOMPARE(account.trendHistory(), QList<UsagePoint>{pointAt(early, 2)});
    }

    // ---- detected metadata ----
    void applyDetectedMetadataFillsBlanksOnly() {
        ProviderAccount account(accountInit());
        account.setIdentityDetail(QStringLiteral("  "));
        account.applyDetectedMetadata(
            ProviderConnectionMetadata{.identityDetail = QStringLiteral("detail"),
                                       .connectionIdentifier = QStringLiteral("org-1"),
                                       .modelScope = QStringLiteral("gpt-4o"),
                                       .sourceDescription = QStringLiteral("OpenAI")});
        QCOMPARE(account.identityDetail(), std::optional<QString>(QStringLiteral("org-1")));
        QCOMPARE(account.modelScope(), std::optional<QString>(QStringLiteral("gpt-4o")));
        QVERIFY(account.detectedMetadata().has_value());

        account.applyDetectedMetadata(
            ProviderConnectionMetadata{.identityDetail = QStringLiteral("other"),
                                       .modelScope = QStringLiteral("o3"),
                                       .sourceDescription = QStringLiteral("OpenAI")});
        QCOMPARE(account.identityDetail(), std::optional<QString>(QStringLiteral("org-1")));
        QCOMPARE(account.modelScope(), std::optional<QString>(QStringLiteral("gpt-4o")));
        QCOMPARE(account.planName(), QString());
    }

    void applyDetectedMetadataFallsBackToIdentityDetail() {
        ProviderAccount account(accountInit());
        account.applyDetectedMetadata(
            ProviderConnectionMetadata{.identityDetail = QStringLiteral("detail"),
                                       .modelScope = QString(),
                                       .sourceDescription = QStringLiteral("OpenAI")});
        QCOMPARE(account.identityDetail(), std::optional<QString>(QStringLiteral("detail")));
        QCOMPARE(account.modelScope(), std::optional<QString>(QString())); // empty scope not taken

        ProviderAccount emptyIdentifier(accountInit());
        emptyIdentifier.applyDetectedMetadata(ProviderConnectionMetadata{
            .identityDetail = QStringLiteral("detail"),
            .connectionIdentifier = QString(), // present though empty: it is taken, and it is empty
            .sourceDescription = QStringLiteral("OpenAI")});
        QCOMPARE(emptyIdentifier.identityDetail(), std::optional<QString>(QString()));
    }

    void applyAbsentMetadataChangesNothingElse() {
        ProviderAccount account(accountInit());
        account.setIdentityDetail(QStringLiteral("from earlier"));
        account.applyDetectedMetadata(std::nullopt);
        QCOMPARE(account.detectedMetadataData(), std::optional<QByteArray>(QByteArrayLiteral("null")));
        QCOMPARE(account.identityDetail(), std::optional<QString>(QStringLiteral("from earlier")));
    }

    void everyChangeIsSignalled() {
        ProviderAccount account(accountInit());
        QSignalSpy spy(&account, &ProviderAccount::changed);
        account.setLabel(QStringLiteral("New"));
        account.setLabel(QStringLiteral("New")); // no change, no signal
        account.setSampleDataEnabled(false);
        account.record(snapshotAt(Timestamp(1)));
        QCOMPARE(spy.count(), 3);
    }

    void changesSayTheirGroup_data() {
        using Field = ProviderAccount::Field;
        QTest::addColumn<AccountChange>("change");
        QTest::addColumn<int>("group");
        const auto row = [](const char* name, std::function<void(ProviderAccount&)> change, Field group) {
            QTest::newRow(name) << std::move(change) << static_cast<int>(group);
        };
        row(
            "label", [](ProviderAccount& a) { a.setLabel(QStringLiteral("x")); }, Field::identity);
        row(
            "provider", [](ProviderAccount& a) { a.setProvider(AIProvider::gemini); }, Field::identity);
        row(
            "kind", [](ProviderAccount& a) { a.setAccountKind(AccountKind::consumer); }, Field::identity);
        row(
            "plan", [](ProviderAccount& a) { a.setPlanName(QStringLiteral("Pro")); }, Field::identity);
        row(
            "identity", [](ProviderAccount& a) { a.setIdentityDetail(QStringLiteral("me")); },
            Field::identity);
        row(
            "model scope", [](ProviderAccount& a) { a.setModelScope(QStringLiteral("m")); }, Field::identity);
        row(
            "renewal", [](ProviderAccount& a) { a.setRenewalDate(Timestamp(5)); }, Field::identity);
        row(
            "created", [](ProviderAccount& a) { a.setCreatedAt(Timestamp(5)); }, Field::identity);
        row(
            "agent scope", [](ProviderAccount& a) { a.setAgentScope(QStringLiteral("key:1")); },
            Field::agents);
        row(
            "roster", [](ProviderAccount& a) { a.setAgentRosterText(QStringLiteral("a, b")); },
            Field::agents);
        row(
            "budgets", [](ProviderAccount& a) { a.setAgentBudgetsData(QByteArrayLiteral("[]")); },
            Field::agents);
        row(
            "agent count", [](ProviderAccount& a) { a.setAgentCount(4); }, Field::agents);
        row(
            "mode", [](ProviderAccount& a) { a.setConnectionMode(ConnectionMode::manual); },
            Field::connection);
        row(
            "metadata", [](ProviderAccount& a) { a.setDetectedMetadataData(QByteArrayLiteral("{}")); },
            Field::connection);
        row(
            "sample flag", [](ProviderAccount& a) { a.setSampleDataEnabled(false); }, Field::connection);
        row(
            "last refresh", [](ProviderAccount& a) { a.setLastRefreshAt(Timestamp(9)); }, Field::status);
        row(
            "status", [](ProviderAccount& a) { a.setSyncStatus(SyncStatus::offline); }, Field::status);
        row(
            "message", [](ProviderAccount& a) { a.setSyncMessage(QStringLiteral("m")); }, Field::status);
        row(
            "snapshot", [](ProviderAccount& a) { a.setSnapshotData(QByteArrayLiteral("{}")); }, Field::usage);
        row(
            "history", [](ProviderAccount& a) { a.setSnapshotHistoryData(QByteArrayLiteral("[]")); },
            Field::usage);
    }
    void changesSayTheirGroup() {
        QFETCH(AccountChange, change);
        QFETCH(int, group);
        ProviderAccount account(accountInit());
        QSignalSpy spy(&account, &ProviderAccount::changed);
        change(account);
        QCOMPARE(spy.count(), 1);
        QCOMPARE(spy.first().first().value<ProviderAccount::Fields>(),
                 ProviderAccount::Fields(static_cast<ProviderAccount::Field>(group)));
    }
};

QTEST_GUILESS_MAIN(TestProviderAccount)
#include "tst_provideraccount.moc"
