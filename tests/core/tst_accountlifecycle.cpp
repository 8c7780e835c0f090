#include "core/AccountLifecycle.h"

#include "CoreFixtures.h"
#include "Drafts.h"
#include "FileProtection.h"
#include "KeyringControl.h"
#include "core/ContentView.h"
#include "model/OnboardingResetMode.h"
#include "model/UuidText.h"
#include "onboarding/OnboardingDraft.h"
#include "providers/MockDataFactory.h"
#include "services/KeychainStore.h"

#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

// What happens to accounts as a whole: the lifecycle on its own and as the controller
// drives it, on a real store, real preferences and the real keychain.
class TestAccountLifecycle final : public QObject {
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
        QVERIFY(fixture.store->save());
        QVERIFY(makeStoreReadOnly(path, true));
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
        std::optional<AccountLifecycle::Refusal> refusal;
        QVERIFY(!content.createOnboardingAccount(draft.accountDraft(), &refusal));
        QVERIFY(makeStoreReadOnly(path, false));
        QVERIFY(!reference.isEmpty());
        // The record went first and was refused: the key never reached the keychain.
        QVERIFY(!keychainAccounts().contains(reference));
        QCOMPARE(refusal->source, AccountLifecycle::Refusal::Source::store);
        QVERIFY2(refusal->reason.contains(QStringLiteral("read-only")) ||
                     refusal->reason.contains(QStringLiteral("readonly")),
                 qPrintable(refusal->reason));
        QVERIFY(content.accounts().isEmpty());
        QCOMPARE(content.selection(), SidebarSelection::overview());
    }

    static QString onAKeyringOfItsOwn(const QString& argument) {
        return QStringLiteral("exec dbus-run-session -- sh -c '"
                              "eval \"$(printf tallyfen-probe | gnome-keyring-daemon --unlock "
                              "--components=secrets --daemonize)\"; "
                              "exec \"$PROBE\" %1'")
            .arg(argument);
    }

    void keychainFailureInsertsNothing_data() {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray notCreated(
            "created=false accounts=0 unsaved=false\n"
            "We couldn’t save your key in the system keychain. Your setup is still here; "
            "try again. Reason: ");
        QTest::newRow("locked keyring")
            << onAKeyringOfItsOwn(QStringLiteral("--lock")) << notCreated + "the system keychain is locked.";
        QTest::newRow("no keychain at all")
            << QStringLiteral("DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus exec \"$PROBE\"")
            << notCreated + "the system keychain did not answer.";
        // Created with the keychain open, refreshed once it is locked: the keychain is named.
        QTest::newRow("locked before a refresh")
            << onAKeyringOfItsOwn(QStringLiteral("--lock-then-refresh"))
            << QByteArray("created=true accounts=1 unsaved=false\n"
                          "We couldn’t save this account locally. Your setup is still here; try again.\n"
                          "offline: The API key couldn’t be read, so nothing was fetched. Reason: the system "
                          "keychain is locked. Unlock it and refresh again.");
        // Deleted while the keychain is locked: gone, and the person is told the key stays.
        QTest::newRow("locked before a delete")
            << onAKeyringOfItsOwn(QStringLiteral("--lock-then-delete"))
            << QByteArray(
                   "created=true accounts=1 unsaved=false\n"
                   "We couldn’t save this account locally. Your setup is still here; try again.\n"
                   "accounts=0 pending=true\n"
                   "The key couldn’t be removed from the system keychain yet; Tallyfen removes it at the "
                   "next chance. Reason: the system keychain is locked.");
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
        QFETCH(QByteArray, expected);
        QCOMPARE(output.trimmed(), expected);
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

    // ---- delete ----

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

    // ---- the lifecycle on its own ----
    void createdAccountIsSavedAndNamed() {
        CoreFixture fixture;
        AccountLifecycle lifecycle(fixture.store.get(), fixture.preferences.get());
        OnboardingDraft draft = draftFor(AIProvider::xAI, AccountKind::consumer, ConnectionMode::manual,
                                         QStringLiteral("  Grok at home "));
        draft.manualShortUsed = 3;
        draft.manualShortLimit = 10;
        draft.manualWeeklyUsed = 30;
        draft.manualWeeklyLimit = 100;
        const AccountLifecycle::Outcome created = lifecycle.createOnboardingAccount(draft.accountDraft());
        QVERIFY(created.done);
        const std::optional<QUuid> id = created.account;
        QVERIFY(!fixture.store->hasChanges());
        const ProviderAccount* account = fixture.store->account(*id);
        QVERIFY(account);
        QCOMPARE(account->label(), draft.normalizedLabel());
        QCOMPARE(account->syncMessage(), QStringLiteral("Manual limits saved"));
        QCOMPARE(account->snapshot()->windows.size(), 2);
        QCOMPARE(account->snapshotHistory().size(), 1);

        QString error;
        auto reopened = AccountStore::open(fixture.store->path(), &error);
        QVERIFY2(reopened, qPrintable(error));
        QVERIFY(reopened->account(*id));
    }

    void apiKeyAccountKeepsItsKeyInTheKeychain() {
        CoreFixture fixture;
        AccountLifecycle lifecycle(fixture.store.get(), fixture.preferences.get());
        OnboardingDraft draft = draftFor(AIProvider::openAI, AccountKind::api, ConnectionMode::apiKey);
        draft.apiKey = QStringLiteral("sk-admin-lifecycle");
        const AccountLifecycle::Outcome created = lifecycle.createOnboardingAccount(draft.accountDraft());
        QVERIFY(created.done);
        const std::optional<QUuid> id = created.account;
        const ProviderAccount* account = fixture.store->account(*id);
        QCOMPARE(KeychainStore::read(account->secretReference()), std::optional(draft.apiKey));
        QVERIFY(!account->rowAsLoaded().syncMessage.contains(draft.apiKey));

        QVERIFY(lifecycle.deleteAccount(*id).done);
        QVERIFY(!KeychainStore::read(UuidText::toText(*id)));
        QVERIFY(!fixture.store->account(*id));
        QVERIFY(!fixture.store->hasChanges());
    }

    void deletingWhatIsNotThere() {
        CoreFixture fixture;
        fixture.addAccount(QStringLiteral("Stays"));
        QVERIFY(fixture.store->save());
        AccountLifecycle lifecycle(fixture.store.get(), fixture.preferences.get());
        QSignalSpy list(fixture.store.get(), &AccountStore::accountsChanged);
        QVERIFY(!lifecycle.deleteAccount(QUuid::createUuid()).done);
        QCOMPARE(list.count(), 0);
        QCOMPARE(fixture.store->accounts().size(), 1);
    }

    void demoAccountsAndClearingThem() {
        CoreFixture fixture;
        AccountLifecycle lifecycle(fixture.store.get(), fixture.preferences.get());
        QVERIFY(!lifecycle.clearSampleData().done); // nothing to clear
        lifecycle.createDemoAccounts();
        QCOMPARE(fixture.store->accounts().size(), 3);
        QVERIFY(fixture.preferences->settings().value(Preferences::kDidSeedSampleAccounts).toBool());
        for (const ProviderAccount* account : fixture.store->accounts()) {
            QVERIFY(account->sampleDataEnabled());
            QVERIFY(account->snapshot());
            QVERIFY(account->snapshotHistory().isEmpty()); // seeded, not recorded
        }
        lifecycle.createDemoAccounts(); // not into a store with accounts
        QCOMPARE(fixture.store->accounts().size(), 3);

        ProviderAccount* mine = fixture.addAccount(QStringLiteral("Mine"), AIProvider::gemini, 1e9);
        mine->setSampleDataEnabled(false);
        QVERIFY(lifecycle.clearSampleData().done);
        QCOMPARE(fixture.store->accounts(), QList<ProviderAccount*>{mine});
        QVERIFY(!fixture.store->hasChanges());
        QVERIFY(!lifecycle.clearSampleData().done);
    }

    void logoutAndMigrationKeepTheData() {
        CoreFixture fixture;
        ProviderAccount* keyed = fixture.addAccount(QStringLiteral("Keyed"), AIProvider::openAI, 1);
        keyed->setConnectionMode(ConnectionMode::apiKey);
        const UsageSnapshot kept = MockDataFactory::snapshot(*keyed, Timestamp(7));
        keyed->setSnapshot(kept);
        ProviderAccount* legacy = fixture.addAccount(QStringLiteral("Legacy"), AIProvider::anthropic, 2);
        legacy->setConnectionModeRaw(QStringLiteral("browser"));
        legacy->setSnapshot(kept);
        QVERIFY(fixture.store->save());
        KeychainStore::save(QStringLiteral("sk-admin-gone"), keyed->secretReference());

        AccountLifecycle lifecycle(fixture.store.get(), fixture.preferences.get());
        lifecycle.logout(keyed);
        QVERIFY(!KeychainStore::read(keyed->secretReference()));
        QCOMPARE(keyed->connectionMode(), ConnectionMode(ConnectionMode::manual));
        QCOMPARE(keyed->snapshot(), std::optional(kept));
        lifecycle.logout(nullptr); // nothing to sign out

        lifecycle.migrateLegacyBrowserConnections();
        QCOMPARE(legacy->connectionMode(), ConnectionMode(ConnectionMode::manual));
        QCOMPARE(legacy->snapshot(), std::optional(kept));
        QVERIFY(!fixture.store->hasChanges());
    }

    void resetNotes_data() {
        QTest::addColumn<int>("mode");
        QTest::addColumn<QString>("note");
        QTest::newRow("later") << int(OnboardingResetMode::later) << "Operator-entered · reset to add later";
        QTest::newRow("not provided")
            << int(OnboardingResetMode::notProvided) << "Operator-entered · reset not provided";
        QTest::newRow("set time") << int(OnboardingResetMode::setTime) << "Operator-entered";
    }
    void resetNotes() {
        QFETCH(int, mode);
        QFETCH(QString, note);
        QCOMPARE(AccountLifecycle::manualResetNote(
                     OnboardingResetMode(static_cast<OnboardingResetModeValue>(mode))),
                 note);
    }

    // ---- the editor's operations ----
    void editorSaveOfANewManualAccount() {
        CoreFixture fixture;
        Clock::setFixedNow(Timestamp(900'000'000.0));
        AccountDraft draft{.provider = AIProvider::anthropic,
                           .accountKind = AccountKind::consumer,
                           .label = QStringLiteral("  "),
                           .connectionMode = ConnectionMode::manual,
                           .manualUnit = UsageUnit::messages,
                           .shortTerm = ManualHorizonDraft{.used = 4, .limit = 45},
                           .sampleDataEnabled = false,
                           .agentCount = -3};
        const AccountLifecycle::EditorSave saved = fixture.lifecycle->saveEditorAccount(draft, nullptr);
        QVERIFY(saved.saved && saved.account && !saved.refusal);
        QVERIFY(!fixture.store->hasChanges());
        const ProviderAccount* account = saved.account;
        QCOMPARE(account->label(), QStringLiteral("Claude · Personal"));
        QCOMPARE(account->agentCount(), std::optional<qint64>(0));
        QCOMPARE(account->syncStatus(), SyncStatus::partial);
        QCOMPARE(account->syncMessage(), QStringLiteral("Manual short-term or weekly allowance updated"));
        QCOMPARE(account->snapshot()->windows.size(), 1);
        const UsageWindow window = account->snapshot()->windows.first();
        QCOMPARE(window.id, QStringLiteral("manual-short"));
        QCOMPARE(window.title, QStringLiteral("Messages / short term"));
        QCOMPARE(window.note, std::optional<QString>(QStringLiteral("Manual value · reset not provided")));
        QCOMPARE(account->snapshot()->warnings,
                 QStringList{QStringLiteral("Only one manual horizon is configured.")});
    }

    void editorSaveOfAChangedConnectionDropsItsKeyAndData() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Work API"));
        account->setConnectionMode(ConnectionMode::apiKey);
        account->setSampleDataEnabled(false);
        const UsageSnapshot snapshot = MockDataFactory::snapshot(*account, Clock::now());
        account->setSnapshot(snapshot);
        account->record(snapshot);
        KeychainStore::save(QStringLiteral("sk-admin-old"), account->secretReference());
        QVERIFY(fixture.store->save());

        AccountDraft draft{.provider = AIProvider::xAI,
                           .accountKind = AccountKind::api,
                           .label = QStringLiteral("Work API"),
                           .connectionMode = ConnectionMode::apiKey,
                           .sampleDataEnabled = false};
        const AccountLifecycle::EditorSave saved = fixture.lifecycle->saveEditorAccount(draft, account);
        QVERIFY(saved.saved);
        QCOMPARE(saved.account, account);
        QCOMPARE(account->provider(), AIProvider::xAI);
        QVERIFY(!account->snapshot());
        QVERIFY(account->snapshotHistory().isEmpty());
        QVERIFY(!KeychainStore::read(account->secretReference()));
        QCOMPARE(account->syncMessage(),
                 QStringLiteral("Add a manual allowance or refresh with an official API connection"));
    }

    void editorSignOutKeepsTheModeUntilTheNextSave() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Work API"));
        account->setConnectionMode(ConnectionMode::apiKey);
        account->setDetectedMetadata(ProviderConnectionMetadata{.displayName = QStringLiteral("Research")});
        KeychainStore::save(QStringLiteral("sk-admin-signed-out"), account->secretReference());
        QVERIFY(fixture.store->save());
        fixture.lifecycle->logoutConnection(account);
        QVERIFY(!KeychainStore::read(account->secretReference()));
        QVERIFY(!account->detectedMetadata());
        QCOMPARE(account->connectionMode(), ConnectionMode::apiKey);
        QCOMPARE(account->syncMessage(),
                 QStringLiteral("Signed out — enter manual limits or reconnect an official API key"));
        QVERIFY(!fixture.store->hasChanges());
    }

    void aRefusedEditorSaveLeavesNoRecordAndNoKey() {
        CoreFixture fixture;
        const QString path = fixture.dir.filePath(QStringLiteral("accounts.store"));
        QVERIFY(fixture.store->save());
        QVERIFY(makeStoreReadOnly(path, true));
        AccountDraft draft{.provider = AIProvider::openAI,
                           .label = QStringLiteral("Refused"),
                           .connectionMode = ConnectionMode::apiKey,
                           .apiKey = QStringLiteral("sk-admin-refused"),
                           .sampleDataEnabled = false};
        const QStringList keysBefore = keychainAccounts();
        const AccountLifecycle::EditorSave refused = fixture.lifecycle->saveEditorAccount(draft, nullptr);
        QVERIFY(makeStoreReadOnly(path, false));
        QVERIFY(!refused.saved);
        QVERIFY(
            refused.refusal->startsWith(QStringLiteral("The account could not be saved locally. Reason: ")));
        QVERIFY(!refused.account);
        QVERIFY(fixture.store->accounts().isEmpty());
        QVERIFY(!fixture.store->hasChanges());
        QCOMPARE(keychainAccounts(), keysBefore);
    }

    void aRefusedSaveLeavesEveryKeyAndEveryRecord() {
        CoreFixture fixture;
        ProviderAccount* signedIn = fixture.addAccount(QStringLiteral("Signed in"));
        signedIn->setConnectionMode(ConnectionMode::apiKey);
        signedIn->setSampleDataEnabled(false);
        ProviderAccount* sample = fixture.addAccount(QStringLiteral("Sample"));
        KeychainStore::save(QStringLiteral("sk-admin-kept"), signedIn->secretReference());
        KeychainStore::save(QStringLiteral("sk-sample-kept"), sample->secretReference());
        QVERIFY(fixture.store->save());
        const ProviderAccountRow signedInRow = signedIn->row();
        const ProviderAccountRow sampleRow = sample->row();
        const QString path = fixture.dir.filePath(QStringLiteral("accounts.store"));
        QVERIFY(makeStoreReadOnly(path, true));
        const QString signedInKey = signedIn->secretReference();
        const QString sampleKey = sample->secretReference();
        const QList<AccountLifecycle::Outcome> outcomes{
            fixture.lifecycle->logoutConnection(signedIn), fixture.lifecycle->logout(signedIn),
            fixture.lifecycle->clearSampleData(), fixture.lifecycle->deleteAccount(signedIn->id())};
        QVERIFY(makeStoreReadOnly(path, false));
        for (const AccountLifecycle::Outcome& outcome : outcomes) {
            QVERIFY(!outcome.done);
            QVERIFY(outcome.refusal);
            QCOMPARE(outcome.refusal->source, AccountLifecycle::Refusal::Source::store);
            QVERIFY(!outcome.refusal->reason.isEmpty());
        }
        // Nothing was saved, so nothing changed in memory and no key went.
        QCOMPARE(fixture.store->accounts(), (QList<ProviderAccount*>{signedIn, sample}));
        QCOMPARE(signedIn->row(), signedInRow);
        QCOMPARE(sample->row(), sampleRow);
        QVERIFY(!fixture.store->hasChanges());
        QCOMPARE(KeychainStore::read(signedInKey), std::optional<QString>(QStringLiteral("sk-admin-kept")));
        QCOMPARE(KeychainStore::read(sampleKey), std::optional<QString>(QStringLiteral("sk-sample-kept")));
    }

    void aSavedDeleteLetsItsKeyGo() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Gone"));
        KeychainStore::save(QStringLiteral("sk-admin-gone"), account->secretReference());
        QVERIFY(fixture.store->save());
        const QString reference = account->secretReference();
        const AccountLifecycle::Outcome deleted = fixture.lifecycle->deleteAccount(account->id());
        QVERIFY(deleted.done && !deleted.keyKept);
        QVERIFY(!fixture.store->hasChanges());
        QVERIFY(!KeychainStore::read(reference));
    }
};

QTEST_GUILESS_MAIN(TestAccountLifecycle)
#include "tst_accountlifecycle.moc"
