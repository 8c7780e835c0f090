#include "core/ContentView.h"

#include "CoreFixtures.h"
#include "Drafts.h"
#include "FileProtection.h"
#include "onboarding/OnboardingDraft.h"
#include "providers/MockDataFactory.h"
#include "services/KeychainStore.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

class TestLifecycle final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    // ---- onboarding accounts ----
    void manualDraftWithOnlyAShortPair() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        Clock::setFixedNow(Timestamp(800'000'000));
        OnboardingDraft draft = manualDraft();
        draft.manualShortUsed = 12;
        draft.manualShortLimit = 45;
        draft.manualShortResetMode = OnboardingResetMode::setTime;
        draft.manualShortReset = Timestamp(800'003'600);
        QVERIFY(content.createOnboardingAccount(draft.accountDraft()));
        ProviderAccount* account = content.accounts().first();
        QCOMPARE(content.selection(), SidebarSelection::account(account->id()));
        QCOMPARE(account->label(), QStringLiteral("Claude Max"));
        QCOMPARE(account->planName(), QString());
        QVERIFY(!account->sampleDataEnabled());
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::partial));
        QCOMPARE(account->syncMessage(), QStringLiteral("One manual window is being tracked"));
        const UsageSnapshot snapshot = *account->snapshot();
        QCOMPARE(snapshot.source, UsageSource(UsageSource::manual));
        QCOMPARE(snapshot.warnings, QStringList{QStringLiteral("Only one manual window is configured.")});
        QCOMPARE(snapshot.windows.size(), 1);
        const UsageWindow& window = snapshot.windows.first();
        QCOMPARE(window.id, QStringLiteral("onboarding-short"));
        QCOMPARE(window.title, QStringLiteral("Messages / current window"));
        QCOMPARE(window.horizon, UsageHorizon(UsageHorizon::shortTerm));
        QCOMPARE(window.resetAt, std::optional<Timestamp>(Timestamp(800'003'600)));
        QCOMPARE(window.note, std::optional<QString>(QStringLiteral("Operator-entered")));
        const UsagePoint first{.date = Timestamp(800'000'000), .value = 12, .unit = UsageUnit::messages};
        QCOMPARE(snapshot.history, QList<UsagePoint>{first});
        QCOMPARE(account->snapshotHistory().size(), 1);
        QCOMPARE(account->lastRefreshAt(), std::optional<Timestamp>(Timestamp(800'000'000)));
        QVERIFY(!fixture.store->hasChanges());
    }

    void manualDraftWithBothPairsAndAUsedWithoutLimit() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        OnboardingDraft draft = manualDraft();
        draft.manualUnit = UsageUnit::dollars;
        draft.manualShortUsed = 5;
        draft.manualShortLimit = 10;
        draft.manualWeeklyUsed = 3;
        draft.manualWeeklyLimit = 70;
        draft.manualWeeklyResetMode = OnboardingResetMode::notProvided;
        QCOMPARE(AccountLifecycle::onboardingManualWindows(draft.accountDraft()).size(), 2);
        QCOMPARE(AccountLifecycle::onboardingManualWindows(draft.accountDraft())[1].title,
                 QStringLiteral("USD / weekly"));
        QCOMPARE(AccountLifecycle::onboardingManualWindows(draft.accountDraft())[1].note,
                 std::optional<QString>(QStringLiteral("Operator-entered · reset not provided")));
        QCOMPARE(AccountLifecycle::onboardingManualWindows(draft.accountDraft())[0].note,
                 std::optional<QString>(QStringLiteral("Operator-entered · reset to add later")));
        QVERIFY(content.createOnboardingAccount(draft.accountDraft()));
        QCOMPARE(content.accounts().first()->syncStatus(), SyncStatus(SyncStatus::current));
        QCOMPARE(content.accounts().first()->syncMessage(), QStringLiteral("Manual limits saved"));
        QVERIFY(content.accounts().first()->snapshot()->warnings.isEmpty());

        OnboardingDraft usedOnly = manualDraft();
        usedOnly.manualWeeklyUsed = 3; // no limit: no weekly window
        usedOnly.manualShortUsed = 1;
        usedOnly.manualShortLimit = 2;
        const QList<UsageWindow> windows = AccountLifecycle::onboardingManualWindows(usedOnly.accountDraft());
        QCOMPARE(windows.size(), 1);
        QCOMPARE(windows.first().id, QStringLiteral("onboarding-short"));
    }

    void manualDraftWithoutAPair() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        QVERIFY(content.createOnboardingAccount(manualDraft().accountDraft()));
        ProviderAccount* account = content.accounts().first();
        QVERIFY(!account->snapshotData());
        QVERIFY(!account->lastRefreshAt());
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::needsAttention));
        QCOMPARE(account->syncMessage(),
                 QStringLiteral("Add a limit from Edit Subscription when you’re ready"));
    }

    void sampleAndBrowserDrafts() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        OnboardingDraft sample;
        sample.provider = AIProvider::gemini;
        sample.accountKind = AccountKind::consumer;
        QVERIFY(content.createOnboardingAccount(sample.accountDraft()));
        ProviderAccount* mock = fixture.store->account(*content.selection().accountID());
        QCOMPARE(mock->label(), QStringLiteral("Gemini · Personal"));
        QVERIFY(mock->sampleDataEnabled());
        QCOMPARE(mock->syncStatus(), SyncStatus(SyncStatus::current));
        QCOMPARE(mock->syncMessage(), QStringLiteral("Sample snapshot loaded locally"));
        QCOMPARE(mock->snapshot()->source, UsageSource(UsageSource::mock));
        QCOMPARE(mock->snapshotHistory().size(), 1);

        OnboardingDraft browser = manualDraft();
        browser.connectionMode = ConnectionMode::browser;
        browser.label = QStringLiteral("Old link");
        QVERIFY(content.createOnboardingAccount(browser.accountDraft()));
        ProviderAccount* link = fixture.store->account(*content.selection().accountID());
        QCOMPARE(
            link->syncMessage(),
            QStringLiteral("Provider page opened for reference — choose Manual tracking to monitor limits"));
        QVERIFY(!link->snapshotData());
    }

    void apiKeyDrafts() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        OnboardingDraft draft;
        draft.provider = AIProvider::openAI;
        draft.connectionMode = ConnectionMode::apiKey;
        draft.apiKey = QStringLiteral("sk-admin-lifecycle");
        QVERIFY(content.createOnboardingAccount(draft.accountDraft()));
        ProviderAccount* plain = fixture.store->account(*content.selection().accountID());
        QCOMPARE(KeychainStore::read(plain->secretReference()), std::optional<QString>(draft.apiKey));
        QCOMPARE(plain->syncMessage(),
                 QStringLiteral("Key verified — press Refresh for the first usage signal"));
        QVERIFY(!plain->sampleDataEnabled());

        draft.connectionMetadata =
            ProviderConnectionMetadata{.displayName = QStringLiteral("Acme"),
                                       .connectionIdentifier = QStringLiteral("org-acme"),
                                       .windows = {UsageWindow{.id = QStringLiteral("gpt-4o-requests"),
                                                               .title = QStringLiteral("Requests / minute"),
                                                               .unit = UsageUnit::requests,
                                                               .limit = 500}},
                                       .sourceDescription = QStringLiteral("OpenAI"),
                                       .capturedAt = Timestamp(700)};
        QVERIFY(content.createOnboardingAccount(draft.accountDraft()));
        ProviderAccount* detected = fixture.store->account(*content.selection().accountID());
        QCOMPARE(detected->syncStatus(), SyncStatus(SyncStatus::partial));
        QCOMPARE(detected->syncMessage(),
                 QStringLiteral("Connected — caps detected; refresh for current usage"));
        QCOMPARE(detected->lastRefreshAt(), std::optional<Timestamp>(Timestamp(700)));
        QCOMPARE(detected->identityDetail(), std::optional<QString>(QStringLiteral("org-acme")));
        QCOMPARE(detected->effectivePlanName(), QStringLiteral("Acme"));
        QCOMPARE(detected->snapshot()->warnings.size(), 1);
        KeychainStore::deleteItem(plain->secretReference());
        KeychainStore::deleteItem(detected->secretReference());
    }

    void apiKeyAccountWhoseSaveFailsLeavesNoKey() {
        CoreFixture fixture;
        const QString path = fixture.store->path();
        fixture.store.reset();
        QVERIFY(makeReadOnly(path, true));
        QString error;
        fixture.store = AccountStore::open(path, &error); // opens read-only: saves fail
        QVERIFY2(fixture.store, qPrintable(error));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        OnboardingDraft draft;
        draft.connectionMode = ConnectionMode::apiKey;
        draft.apiKey = QStringLiteral("sk-admin-doomed");
        // Note the account's key reference while it is briefly on the list.
        QString reference;
        connect(fixture.store.get(), &AccountStore::accountsChanged, this, [&reference, &fixture] {
            if (!fixture.store->accounts().isEmpty()) {
                reference = fixture.store->accounts().first()->secretReference();
            }
        });
        QVERIFY(!content.createOnboardingAccount(draft.accountDraft()));
        QVERIFY(!reference.isEmpty());
        QVERIFY(!KeychainStore::read(reference)); // saved on the way, removed again
        QVERIFY(content.accounts().isEmpty());
        QCOMPARE(content.selection(), SidebarSelection::overview());
        fixture.store.reset();
        QVERIFY(makeReadOnly(path, false));
    }

    void keychainFailureInsertsNothing_data() {
        QTest::addColumn<QString>("command");
        QTest::newRow("locked keyring")
            << QStringLiteral("exec dbus-run-session -- sh -c '"
                              "eval \"$(printf tallyfen-probe | gnome-keyring-daemon --unlock "
                              "--components=secrets --daemonize)\"; "
                              "exec \"$PROBE\" --lock'");
        QTest::newRow("no keychain at all")
            << QStringLiteral("DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus exec \"$PROBE\"");
    }
    void keychainFailureInsertsNothing() {
        QFETCH(QString, command);
        QTemporaryDir scratch;
        QProcess probe;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PROBE"), QStringLiteral(LIFECYCLE_PROBE));
        environment.insert(QStringLiteral("HOME"), scratch.path());
        environment.insert(QStringLiteral("XDG_DATA_HOME"), scratch.filePath(QStringLiteral("data")));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), scratch.path());
        environment.remove(QStringLiteral("GNOME_KEYRING_CONTROL"));
        probe.setProcessEnvironment(environment);
        probe.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command});
        QVERIFY(probe.waitForFinished(30000));
        const QByteArray output = probe.readAllStandardOutput();
        QVERIFY2(probe.exitCode() == 0, output.constData());
        QCOMPARE(output.trimmed(), QByteArray("created=false accounts=0 unsaved=false"));
    }

    // ---- samples ----
    void demoAccountsOnlyIntoAnEmptyStore() {
        CoreFixture fixture;
        fixture.addAccount(QStringLiteral("Mine"));
        QVERIFY(fixture.store->save());
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.createDemoAccounts();
        QCOMPARE(content.accounts().size(), 1);
        QVERIFY(!fixture.preferences->settings().contains(QStringLiteral("didSeedSampleAccounts")));
    }

    void demoAccountsInTheirOrder() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        Clock::setFixedNow(Timestamp(900'000'000)); // one moment for all three: order by insertion
        content.createDemoAccounts();
        QCOMPARE(content.accounts().size(), 3);
        const QStringList labels{"OpenAI · Work API", "Claude · Personal", "Grok · Labs"};
        const QStringList plans{"Platform project", "Consumer subscription", "API project"};
        const QList<AIProvider> providers{AIProvider::openAI, AIProvider::anthropic, AIProvider::xAI};
        const QList<AccountKind> kinds{AccountKind::api, AccountKind::consumer, AccountKind::api};
        for (int i = 0; i < 3; ++i) {
            const ProviderAccount* account = content.accounts().at(i);
            QCOMPARE(account->label(), labels[i]);
            QCOMPARE(account->planName(), plans[i]);
            QCOMPARE(account->provider(), providers[i]);
            QCOMPARE(account->accountKind(), kinds[i]);
            QCOMPARE(account->connectionMode(), ConnectionMode(ConnectionMode::mock));
            QVERIFY(account->sampleDataEnabled());
            QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::current));
            QCOMPARE(account->syncMessage(), QStringLiteral("Sample snapshot loaded locally"));
            QCOMPARE(account->lastRefreshAt(), std::optional<Timestamp>(Timestamp(900'000'000)));
            QVERIFY(account->snapshot().has_value());
            QVERIFY(account->snapshotHistory().isEmpty()); // seeded without a recorded history
        }
        QCOMPARE(fixture.preferences->settings().value(QStringLiteral("didSeedSampleAccounts")).toBool(),
                 true);
        QVERIFY(!fixture.store->hasChanges());
    }

    void clearSampleDataKeepsOtherAccounts() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.createDemoAccounts();
        ProviderAccount* mine = fixture.addAccount(QStringLiteral("Mine"), AIProvider::gemini, 5e9);
        mine->setSampleDataEnabled(false);
        KeychainStore::save(QStringLiteral("sample-key"), content.accounts().first()->secretReference());
        const QString sampleReference = content.accounts().first()->secretReference();
        content.setSelection(SidebarSelection::account(content.accounts().at(1)->id()));
        content.requestSampleClear();
        QVERIFY(content.showSampleClearConfirmation());
        content.clearSampleData();
        QCOMPARE(content.accounts(), QList<ProviderAccount*>{mine});
        QCOMPARE(content.selection(), SidebarSelection::overview());
        QVERIFY(!KeychainStore::read(sampleReference));
        QVERIFY(!fixture.store->hasChanges());
    }

    void clearWithoutSamplesKeepsTheSelection() {
        CoreFixture fixture;
        ProviderAccount* mine = fixture.addAccount(QStringLiteral("Mine"), AIProvider::xAI);
        mine->setSampleDataEnabled(false);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.setSelection(SidebarSelection::provider(AIProvider::xAI));
        content.clearSampleData();
        QCOMPARE(content.selection(), SidebarSelection::provider(AIProvider::xAI));
        QCOMPARE(content.accounts().size(), 1);
    }

    // ---- delete ----
    void deletingAnotherAccountReturnsToTheOverview() {
        CoreFixture fixture;
        ProviderAccount* shown = fixture.addAccount(QStringLiteral("Shown"), AIProvider::openAI, 1);
        ProviderAccount* doomed = fixture.addAccount(QStringLiteral("Doomed"), AIProvider::openAI, 2);
        const QUuid doomedID = doomed->id();
        KeychainStore::save(QStringLiteral("doomed-key"), doomed->secretReference());
        const QString reference = doomed->secretReference();
        QVERIFY(fixture.store->save());
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.setSelection(SidebarSelection::account(shown->id()));
        content.requestDelete(doomedID); // from a sidebar row
        QCOMPARE(content.deleteTargetID(), std::optional<QUuid>(doomedID));
        QVERIFY(content.showDeleteConfirmation());
        content.deleteSelectedAccount();
        QCOMPARE(content.selection(), SidebarSelection::overview());
        QVERIFY(!content.deleteTargetID());
        QCOMPARE(content.accounts(), QList<ProviderAccount*>{shown});
        QVERIFY(!KeychainStore::read(reference));

        QString error;
        auto reopened = AccountStore::open(fixture.store->path(), &error);
        QCOMPARE(reopened->accounts().size(), 1);
        QVERIFY(!reopened->account(doomedID));
    }

    void cancellingKeepsEverything() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Kept"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.setSelection(SidebarSelection::account(account->id()));
        content.requestDelete(account->id());
        content.setShowDeleteConfirmation(false); // Cancel
        QCOMPARE(content.selection(), SidebarSelection::account(account->id()));
        QCOMPARE(content.accounts().size(), 1);
        QCOMPARE(content.deleteTargetID(),
                 std::optional<QUuid>(account->id())); // kept until the next request
    }

    void deleteWithoutATargetOrAGoneOne() {
        CoreFixture fixture;
        fixture.addAccount(QStringLiteral("Stays"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.deleteSelectedAccount(); // overview, no target: nothing
        QCOMPARE(content.accounts().size(), 1);
        const QUuid gone = QUuid::createUuid();
        content.requestDelete(gone);
        content.deleteSelectedAccount();
        QCOMPARE(content.accounts().size(), 1);
        QCOMPARE(content.deleteTargetID(), std::optional<QUuid>(gone));
    }

    // ---- sign out and legacy records ----
    void logoutKeepsTheSnapshotAndRefreshesManually() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Org"));
        account->setConnectionMode(ConnectionMode::apiKey);
        account->setSampleDataEnabled(true);
        account->setDetectedMetadata(ProviderConnectionMetadata{.sourceDescription = QStringLiteral("x")});
        const UsageSnapshot kept = MockDataFactory::snapshot(*account, Timestamp(5));
        account->setSnapshot(kept);
        KeychainStore::save(QStringLiteral("sk-admin-out"), account->secretReference());
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.logout(account);
        QVERIFY(!KeychainStore::read(account->secretReference()));
        QCOMPARE(account->connectionMode(), ConnectionMode(ConnectionMode::manual));
        QVERIFY(!account->sampleDataEnabled());
        QVERIFY(!account->detectedMetadata());
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::needsAttention));
        QCOMPARE(account->syncMessage(),
                 QStringLiteral("Signed out — enter manual limits or reconnect an official API key"));
        QCOMPARE(account->snapshot(), std::optional<UsageSnapshot>(kept));
        QVERIFY(!fixture.store->hasChanges());

        content.refresh(account); // the manual provider renews the kept snapshot
        QTRY_VERIFY(content.refreshingIDs().isEmpty());
        QCOMPARE(account->snapshot()->source, UsageSource(UsageSource::manual));
        QCOMPARE(account->snapshot()->windows, kept.windows);
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::current));
    }

    void browserRecordsAreConvertedAtStart() {
        CoreFixture fixture;
        ProviderAccount* legacy = fixture.addAccount(QStringLiteral("Legacy"), AIProvider::anthropic, 1);
        legacy->setConnectionModeRaw(QStringLiteral("browser"));
        legacy->setDetectedMetadata(ProviderConnectionMetadata{.sourceDescription = QStringLiteral("web")});
        legacy->setIdentityDetail(QStringLiteral("someone@example.com"));
        legacy->setModelScope(QStringLiteral("Claude"));
        legacy->setPlanName(QStringLiteral("Max"));
        const UsageSnapshot kept = MockDataFactory::snapshot(*legacy, Timestamp(9));
        legacy->setSnapshot(kept);
        ProviderAccount* modern = fixture.addAccount(QStringLiteral("Modern"), AIProvider::gemini, 2);
        modern->setConnectionMode(ConnectionMode::manual);
        modern->setSyncMessage(QStringLiteral("untouched"));
        QVERIFY(fixture.store->save());

        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.onAppear();
        QCOMPARE(legacy->connectionMode(), ConnectionMode(ConnectionMode::manual));
        QVERIFY(!legacy->detectedMetadata());
        QCOMPARE(legacy->identityDetail(), std::optional<QString>(QString()));
        QCOMPARE(legacy->modelScope(), std::optional<QString>(QString()));
        QVERIFY(!legacy->sampleDataEnabled());
        QCOMPARE(legacy->syncStatus(), SyncStatus(SyncStatus::needsAttention));
        QCOMPARE(
            legacy->syncMessage(),
            QStringLiteral("Legacy provider link removed — enter manual limits to monitor this account"));
        QCOMPARE(legacy->snapshot(), std::optional<UsageSnapshot>(kept));
        QCOMPARE(legacy->planName(), QStringLiteral("Max"));
        QCOMPARE(modern->syncMessage(), QStringLiteral("untouched"));
        QVERIFY(!fixture.store->hasChanges());

        // A second appearance finds nothing to convert and saves nothing.
        QSignalSpy changes(fixture.store.get(), &AccountStore::accountChanged);
        content.lifecycle().migrateLegacyBrowserConnections();
        QCOMPARE(changes.count(), 0);
    }

    // ---- the editor sheet ----
    void editorSaveRoutesTheSelection() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Edited"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.setSelection(SidebarSelection::provider(AIProvider::gemini));
        content.editorDidSave(EditorState::newAccount());
        QCOMPARE(content.selection(), SidebarSelection::provider(AIProvider::gemini));
        content.editorDidSave(EditorState::edit(account->id()));
        QCOMPARE(content.selection(), SidebarSelection::account(account->id()));
    }
};

QTEST_GUILESS_MAIN(TestLifecycle)
#include "tst_lifecycle.moc"
