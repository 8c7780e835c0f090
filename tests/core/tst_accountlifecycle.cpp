#include "core/AccountLifecycle.h"

#include "CoreFixtures.h"
#include "Drafts.h"
#include "model/OnboardingResetMode.h"
#include "model/UuidText.h"
#include "onboarding/OnboardingDraft.h"
#include "providers/MockDataFactory.h"
#include "services/KeychainStore.h"

#include <QSignalSpy>
#include <QTest>

// The account operations on their own: a real store, real preferences and the real
// keychain, no controller and no selection.
class TestAccountLifecycle final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void createdAccountIsSavedAndNamed() {
        CoreFixture fixture;
        AccountLifecycle lifecycle(fixture.store.get(), fixture.preferences.get());
        OnboardingDraft draft = draftFor(AIProvider::xAI, AccountKind::consumer, ConnectionMode::manual,
                                         QStringLiteral("  Grok at home "));
        draft.manualShortUsed = 3;
        draft.manualShortLimit = 10;
        draft.manualWeeklyUsed = 30;
        draft.manualWeeklyLimit = 100;
        const std::optional<QUuid> id = lifecycle.createOnboardingAccount(draft.accountDraft());
        QVERIFY(id);
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
        const std::optional<QUuid> id = lifecycle.createOnboardingAccount(draft.accountDraft());
        QVERIFY(id);
        const ProviderAccount* account = fixture.store->account(*id);
        QCOMPARE(KeychainStore::read(account->secretReference()), std::optional(draft.apiKey));
        QVERIFY(!account->rowAsLoaded().syncMessage.contains(draft.apiKey));

        QVERIFY(lifecycle.deleteAccount(*id));
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
        QVERIFY(!lifecycle.deleteAccount(QUuid::createUuid()));
        QCOMPARE(list.count(), 0);
        QCOMPARE(fixture.store->accounts().size(), 1);
    }

    void demoAccountsAndClearingThem() {
        CoreFixture fixture;
        AccountLifecycle lifecycle(fixture.store.get(), fixture.preferences.get());
        QVERIFY(!lifecycle.clearSampleData()); // nothing to clear
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
        QVERIFY(lifecycle.clearSampleData());
        QCOMPARE(fixture.store->accounts(), QList<ProviderAccount*>{mine});
        QVERIFY(!fixture.store->hasChanges());
        QVERIFY(!lifecycle.clearSampleData());
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
};

QTEST_GUILESS_MAIN(TestAccountLifecycle)
#include "tst_accountlifecycle.moc"
