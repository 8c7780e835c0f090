#include "core/RefreshEngine.h"

#include "core/ContentView.h"

#include "CoreFixtures.h"
#include "ScriptedProvider.h"
#include "core/CommandCenter.h"
#include "services/FakeNotificationServer.h"

#include <QSignalSpy>
#include <QTest>
#include <QTimeZone>

#include <limits>

namespace {
// How long a check that nothing is posted waits: far beyond a round trip on the bus.
constexpr int kQuietMilliseconds = 300;

UsageWindow shortWindow(double used, double limit = 100) {
    return UsageWindow{.id = QStringLiteral("requests-rate-window"),
                       .title = QStringLiteral("Requests / minute"),
                       .unit = UsageUnit::requests,
                       .horizon = UsageHorizon::shortTerm,
                       .modelName = QStringLiteral("gpt-4o"),
                       .used = used,
                       .limit = limit};
}

UsageSnapshot officialSnapshot(double used, QStringList warnings = {}) {
    return UsageSnapshot{.source = UsageSource::officialAPI,
                         .capturedAt = Clock::now(),
                         .windows = {shortWindow(used)},
                         .history = {},
                         .warnings = std::move(warnings)};
}

// Waits until no refresh is in flight and the coalesced save has run.
template <typename Owner>
void settle(Owner& owner) {
    QTRY_VERIFY(owner.refreshingIDs().isEmpty());
    QTRY_VERIFY(!owner.store()->hasChanges());
}
} // namespace

class TestRefreshEngine final : public QObject {
    Q_OBJECT

private:
    std::shared_ptr<Script> script(Script::Outcome outcome) {
        auto result = std::make_shared<Script>();
        result->outcome = std::move(outcome);
        return result;
    }

    template <typename Owner>
    static void useScript(Owner& owner, std::shared_ptr<Script> scripted) {
        owner.setProviderMaker(
            [scripted](const ProviderAccount&) { return std::make_unique<ScriptedProvider>(scripted); });
    }

private slots:
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void statusMapping_data() {
        QTest::addColumn<int>("kind");
        QTest::addColumn<QString>("status");
        QTest::newRow("unsupported") << int(UsageProviderError::Kind::unsupported) << "unsupported";
        QTest::newRow("server") << int(UsageProviderError::Kind::server) << "offline";
        QTest::newRow("missing credential")
            << int(UsageProviderError::Kind::missingCredential) << "unauthorized";
        QTest::newRow("unauthorized") << int(UsageProviderError::Kind::unauthorized) << "unauthorized";
        QTest::newRow("rate limited") << int(UsageProviderError::Kind::rateLimited) << "rateLimited";
        QTest::newRow("malformed") << int(UsageProviderError::Kind::malformedResponse) << "offline";
    }
    void statusMapping() {
        QFETCH(int, kind);
        QFETCH(QString, status);
        const std::array errors{UsageProviderError::unsupported(QStringLiteral("u")),
                                UsageProviderError::server(QStringLiteral("s")),
                                UsageProviderError::missingCredential(),
                                UsageProviderError::unauthorized(),
                                UsageProviderError::rateLimited(),
                                UsageProviderError::malformedResponse()};
        QCOMPARE(RefreshEngine::status(errors[static_cast<std::size_t>(kind)]).rawValue(), status);
    }

    void mockAccountRefreshesLocally() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Sample"), AIProvider::anthropic);
        account->setConnectionMode(ConnectionMode::mock);
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        QSignalSpy finished(&engine, &RefreshEngine::refreshFinished);
        Clock::setFixedNow(Timestamp(800'000'000));
        engine.refresh(account);
        QVERIFY(engine.refreshingIDs().contains(account->id()));
        settle(engine);
        QCOMPARE(finished.count(), 1);
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::current));
        QCOMPARE(account->syncMessage(), QStringLiteral("Refresh completed"));
        QCOMPARE(account->lastRefreshAt(), std::optional<Timestamp>(Timestamp(800'000'000)));
        QCOMPARE(account->snapshot()->source, UsageSource(UsageSource::mock));
        QCOMPARE(account->snapshotHistory().size(), 1);
        QVERIFY(!account->detectedMetadataData()); // only official snapshots touch metadata
    }

    void partialSnapshotIsPartial() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Manual"), AIProvider::anthropic);
        account->setConnectionMode(ConnectionMode::manual);
        account->setSnapshot(
            UsageSnapshot{.source = UsageSource::manual,
                          .capturedAt = Timestamp(1),
                          .windows = {shortWindow(10)},
                          .history = {},
                          .warnings = {QStringLiteral("Only one manual window is configured.")}});
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        engine.refresh(account);
        settle(engine);
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::partial));
        QCOMPARE(account->syncMessage(), QStringLiteral("Refresh completed with warnings"));
        QCOMPARE(account->snapshot()->source, UsageSource(UsageSource::manual));
    }

    void failureKeepsTheLastGoodSnapshot() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Claude"), AIProvider::anthropic);
        account->setConnectionMode(ConnectionMode::apiKey); // no documented API: unsupported
        const UsageSnapshot old = officialSnapshot(10);
        account->setSnapshot(old);
        account->record(old);
        account->setLastRefreshAt(Timestamp(123));
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        engine.refresh(account);
        settle(engine);
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::unsupported));
        QCOMPARE(account->syncMessage(),
                 QStringLiteral(
                     "Live usage is not available from a documented provider API for this account type."));
        QCOMPARE(account->snapshot(), std::optional<UsageSnapshot>(old));
        QCOMPARE(account->snapshotHistory().size(), 1);
        QCOMPARE(account->lastRefreshAt(), std::optional<Timestamp>(Timestamp(123)));
    }

    void aSnapshotThatCantBeStoredIsAFailedRefresh() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Org"));
        account->setConnectionMode(ConnectionMode::apiKey);
        const UsageSnapshot old = officialSnapshot(10);
        account->setSnapshot(old);
        account->record(old);
        account->record(old);
        const ProviderConnectionMetadata metadata{.displayName = QStringLiteral("Acme"),
                                                  .sourceDescription = QStringLiteral("Official")};
        account->setDetectedMetadata(metadata);
        account->setLastRefreshAt(Timestamp(123));
        QVERIFY(fixture.store->save());
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        UsageSnapshot broken = officialSnapshot(std::numeric_limits<double>::quiet_NaN());
        broken.windows[0].limit = std::numeric_limits<double>::infinity();
        useScript(engine, script(broken));
        engine.refresh(account);
        settle(engine);
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::offline));
        QCOMPARE(account->syncMessage(), QStringLiteral("Refresh failed; existing snapshot was kept"));
        QCOMPARE(account->snapshot(), std::optional<UsageSnapshot>(old));
        QCOMPARE(account->snapshotHistory().size(), 2);
        QCOMPARE(account->detectedMetadata(), std::optional(metadata));
        QCOMPARE(account->lastRefreshAt(), std::optional<Timestamp>(Timestamp(123)));

        QString error;
        auto reopened = AccountStore::open(fixture.store->path(), &error);
        QVERIFY2(reopened, qPrintable(error));
        QCOMPARE(reopened->accounts().first()->snapshot(), std::optional<UsageSnapshot>(old));
        QCOMPARE(reopened->accounts().first()->snapshotHistory().size(), 2);
    }

    void failureWithoutASnapshotLeavesNone() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Manual"), AIProvider::gemini);
        account->setConnectionMode(ConnectionMode::manual);
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        engine.refresh(account);
        settle(engine);
        QVERIFY(!account->snapshotData());
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::unsupported));
        QCOMPARE(account->syncMessage(),
                 QStringLiteral("Add a manual limit and reset time to start tracking this account."));
    }

    void liveFailuresMapToTheirStatus_data() {
        QTest::addColumn<int>("which");
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("message");
        QTest::newRow("server") << 0 << "offline"
                                << "Provider server error (503).";
        QTest::newRow("unauthorized") << 1 << "unauthorized"
                                      << "The provider rejected this credential.";
        QTest::newRow("rate limited") << 2 << "rateLimited"
                                      << "The provider asked the app to try again later.";
        QTest::newRow("malformed") << 3 << "offline"
                                   << "The provider returned data the app could not read.";
        QTest::newRow("missing credential") << 4 << "unauthorized"
                                            << "No credential is stored for this account.";
        QTest::newRow("cancelled") << 5 << "offline"
                                   << "Refresh failed; existing snapshot was kept";
        QTest::newRow("transport") << 6 << "offline"
                                   << "Refresh failed; existing snapshot was kept";
        QTest::newRow("unsupported without words: the empty sentence stands") << 7 << "unsupported"
                                                                              << "";
    }
    void liveFailuresMapToTheirStatus() {
        QFETCH(int, which);
        QFETCH(QString, status);
        QFETCH(QString, message);
        const std::array<Script::Outcome, 8> outcomes{UsageProviderError::fromHTTPStatus(503).value(),
                                                      UsageProviderError::unauthorized(),
                                                      UsageProviderError::rateLimited(),
                                                      UsageProviderError::malformedResponse(),
                                                      UsageProviderError::missingCredential(),
                                                      ProviderCancelled(),
                                                      Script::OtherFailure(),
                                                      UsageProviderError::unsupported(QString())};
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Org"));
        account->setConnectionMode(ConnectionMode::apiKey);
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        useScript(engine, script(outcomes[static_cast<std::size_t>(which)]));
        engine.refresh(account);
        settle(engine);
        QCOMPARE(account->syncStatus().rawValue(), status);
        QCOMPARE(account->syncMessage(), message);
        QVERIFY(!account->lastRefreshAt());
    }

    void officialSnapshotsMergeDetectedMetadata() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Org"));
        account->setConnectionMode(ConnectionMode::apiKey);
        account->setModelScope(QString());
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        Clock::setFixedNow(Timestamp(900'000'000));
        useScript(engine, script(officialSnapshot(10)));
        engine.refresh(account);
        settle(engine);
        const auto metadata = account->detectedMetadata();
        QVERIFY(metadata);
        QCOMPARE(metadata->displayName, std::optional<QString>(QStringLiteral("OpenAI API organization")));
        QCOMPARE(metadata->sourceDescription, QStringLiteral("Official provider usage API"));
        QCOMPARE(metadata->windows, QList<UsageWindow>{shortWindow(10)});
        QCOMPARE(metadata->capturedAt, Timestamp(900'000'000));
        QCOMPARE(account->modelScope(), std::optional<QString>(QStringLiteral("gpt-4o"))); // a blank filled
        QCOMPARE(account->effectivePlanName(), QStringLiteral("OpenAI API organization"));
    }

    void inFlightUntilTheResultIsStored() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Org"));
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        auto scripted = script(officialSnapshot(1));
        useScript(engine, scripted);
        bool unsavedAtFinish = true;
        connect(&engine, &RefreshEngine::refreshFinished, this,
                [&] { unsavedAtFinish = fixture.store->hasChanges(); });
        // The moment the result lands on the account, before the shared save: a second
        // request is still refused.
        connect(account, &ProviderAccount::changed, this, [&](ProviderAccount::Fields fields) {
            if (fields.testFlag(ProviderAccount::Field::status) &&
                account->syncMessage() == QStringLiteral("Refresh completed")) {
                QVERIFY(engine.refreshingIDs().contains(account->id()));
                engine.refresh(account);
            }
        });
        engine.refresh(account);
        settle(engine);
        QCOMPARE(scripted->calls, 1);
        QVERIFY(!unsavedAtFinish); // it left the set only once its result was stored
    }

    void guardDropsSecondRequests() {
        CoreFixture fixture;
        ProviderAccount* a = fixture.addAccount(QStringLiteral("a"), AIProvider::openAI, 1);
        ProviderAccount* b = fixture.addAccount(QStringLiteral("b"), AIProvider::xAI, 2);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        auto scripted = script(officialSnapshot(1));
        useScript(content.engine(), scripted);
        CommandCenter::shared().post(CommandCenter::kRefreshAccounts);
        CommandCenter::shared().post(CommandCenter::kRefreshAccounts);
        settle(content);
        QCOMPARE(scripted->calls, 2); // one per account
        QCOMPARE(a->snapshotHistory().size(), 1);
        QCOMPARE(b->snapshotHistory().size(), 1);
    }

    void selectionDecidesWhatRefreshes() {
        CoreFixture fixture;
        ProviderAccount* openAI = fixture.addAccount(QStringLiteral("o"), AIProvider::openAI, 1);
        ProviderAccount* claude = fixture.addAccount(QStringLiteral("c"), AIProvider::anthropic, 2);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.setSelection(SidebarSelection::provider(AIProvider::anthropic));
        content.refreshSelection();
        settle(content);
        QVERIFY(claude->lastRefreshAt());
        QVERIFY(!openAI->lastRefreshAt());

        content.setSelection(SidebarSelection::account(QUuid::createUuid()));
        content.refreshSelection();
        QVERIFY(content.refreshingIDs().isEmpty());

        content.setSelection(SidebarSelection::account(openAI->id()));
        content.refreshSelection();
        QCOMPARE(content.refreshingIDs(), QSet<QUuid>{openAI->id()});
        settle(content);
        QVERIFY(openAI->lastRefreshAt());
    }

    void deletedWhileInFlight() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Gone soon"));
        const QUuid id = account->id();
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        engine.refresh(account);
        fixture.store->remove(account);
        QTRY_VERIFY(engine.refreshingIDs().isEmpty());
        QVERIFY(!fixture.store->account(id));
    }

    void queryRangeIsThirtyCalendarDays() {
        const QTimeZone berlin(QByteArrayLiteral("Europe/Berlin"));
        const Timestamp april = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 10), QTime(12, 0), berlin));
        const DateInterval acrossSpring = RefreshEngine::queryRange(april);
        QCOMPARE(acrossSpring.end, april);
        QCOMPARE(acrossSpring.duration(), 30 * 86400.0 - 3600.0);
        const Timestamp november =
            Timestamp::fromDateTime(QDateTime(QDate(2026, 11, 10), QTime(12, 0), berlin));
        QCOMPARE(RefreshEngine::queryRange(november).duration(), 30 * 86400.0 + 3600.0);
        const Timestamp july = Timestamp::fromDateTime(QDateTime(QDate(2026, 7, 10), QTime(12, 0), berlin));
        QCOMPARE(RefreshEngine::queryRange(july).duration(), 30 * 86400.0);
    }

    // ---- heartbeat ----
    void heartbeatFiresOnWholeIntervals() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Tick"), AIProvider::gemini);
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        Clock::setFixedNow(Timestamp(1000));
        engine.start(Clock::now());
        QCOMPARE(engine.lastAutoRefreshAt(), Timestamp(1000));

        engine.tick(Timestamp(1000 + 3600)); // off by default: nothing
        QCOMPARE(engine.heartbeat(), Timestamp(4600));
        QVERIFY(engine.refreshingIDs().isEmpty());
        QCOMPARE(engine.lastAutoRefreshAt(), Timestamp(1000));

        fixture.preferences->setAutoRefreshEnabled(true);
        fixture.preferences->setAutoRefreshMinutes(15);
        engine.lastAutoRefreshAt(); // unchanged by the preference itself
        QCOMPARE(engine.lastAutoRefreshAt(), Timestamp(1000));
        engine.tick(Timestamp(1000 + 3600)); // a whole interval passed long ago: fires at once
        QCOMPARE(engine.lastAutoRefreshAt(), Timestamp(4600));
        QVERIFY(engine.refreshingIDs().contains(account->id()));
        settle(engine);

        engine.tick(Timestamp(4600 + 899));
        QVERIFY(engine.refreshingIDs().isEmpty());
        QCOMPARE(engine.lastAutoRefreshAt(), Timestamp(4600));
        engine.tick(Timestamp(4600 + 900)); // equal fires
        QCOMPARE(engine.lastAutoRefreshAt(), Timestamp(5500));
        settle(engine);

        fixture.preferences->setAutoRefreshMinutes(1); // takes effect at the next tick
        engine.tick(Timestamp(5560));
        QCOMPARE(engine.lastAutoRefreshAt(), Timestamp(5560));
        settle(engine);

        fixture.preferences->setAutoRefreshEnabled(false);
        engine.tick(Timestamp(9000));
        QCOMPARE(engine.lastAutoRefreshAt(), Timestamp(5560));
        QVERIFY(engine.heartbeatTimer().isActive()); // the timer itself keeps running
        QCOMPARE(account->snapshotHistory().size(), 3);
    }

    void heartbeatWithTheRealTimer() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Real"), AIProvider::xAI);
        fixture.preferences->setAutoRefreshEnabled(true);
        fixture.preferences->setAutoRefreshMinutes(1);
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        engine.start(Clock::now());
        // The real timer, shortened; its tick reads the real clock, a minute ahead.
        Clock::setFixedNow(Clock::now().addingSeconds(61));
        engine.heartbeatTimer().setInterval(20);
        QTRY_VERIFY(account->lastRefreshAt().has_value());
        settle(engine);
        QCOMPARE(account->syncMessage(), QStringLiteral("Refresh completed"));
    }

    // ---- notifications ----
    void oneNotificationPerUrgentEpisode() {
        FakeNotificationServer server;
        QVERIFY(server.isRegistered());
        CoreFixture fixture;
        fixture.preferences->setThresholdNotificationsEnabled(true);
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Work API"));
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        auto scripted = script(officialSnapshot(95));
        useScript(engine, scripted);
        for (int i = 0; i < 5; ++i) {
            engine.refresh(account);
            settle(engine);
        }
        QTRY_COMPARE(server.calls().size(), 1);
        QCOMPARE(server.calls().first().body,
                 QStringLiteral("Work API is at or above a tracked usage limit."));
        QVERIFY(engine.notifiedUrgentIDs().contains(account->id()));

        scripted->outcome = UsageProviderError::fromHTTPStatus(500).value(); // a failure in between
        engine.refresh(account);
        settle(engine);
        scripted->outcome = officialSnapshot(96);
        QSignalSpy repeated(&server, &FakeNotificationServer::notified);
        engine.refresh(account);
        settle(engine);
        QVERIFY(!repeated.wait(kQuietMilliseconds)); // no second notification, however long we wait
        QCOMPARE(server.calls().size(), 1);

        scripted->outcome = officialSnapshot(10); // recovers
        engine.refresh(account);
        settle(engine);
        QVERIFY(!engine.notifiedUrgentIDs().contains(account->id()));
        scripted->outcome = officialSnapshot(99); // a new episode
        engine.refresh(account);
        settle(engine);
        QTRY_COMPARE(server.calls().size(), 2);
        QCOMPARE(server.calls().at(1).replacesId, server.calls().at(0).assignedId);
    }

    void preferenceOffMeansNoNotification() {
        FakeNotificationServer server;
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Quiet"));
        RefreshEngine engine(fixture.store.get(), fixture.preferences.get());
        auto scripted = script(officialSnapshot(95));
        useScript(engine, scripted);
        engine.refresh(account);
        settle(engine);
        QVERIFY(!engine.notifiedUrgentIDs().contains(account->id()));

        QSignalSpy posted(&server, &FakeNotificationServer::notified);
        fixture.preferences->setThresholdNotificationsEnabled(true); // asks permission, posts nothing
        QVERIFY(!posted.wait(kQuietMilliseconds));
        QCOMPARE(server.calls().size(), 0);
        engine.refresh(account);
        settle(engine);
        QTRY_COMPARE(server.calls().size(), 1);

        // Off and on again within the episode: no repeat.
        fixture.preferences->setThresholdNotificationsEnabled(false);
        engine.refresh(account);
        settle(engine);
        fixture.preferences->setThresholdNotificationsEnabled(true);
        posted.clear();
        engine.refresh(account);
        settle(engine);
        QVERIFY(!posted.wait(kQuietMilliseconds));
        QCOMPARE(server.calls().size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestRefreshEngine)
#include "tst_refreshengine.moc"
