#include "core/ContentView.h"

#include "CoreFixtures.h"
#include "core/CommandCenter.h"
#include "services/KeychainStore.h"

#include <QSignalSpy>
#include <QTest>

class TestContentView final : public QObject {
    Q_OBJECT

private slots:
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void initialState() {
        CoreFixture fixture;
        Clock::setFixedNow(Timestamp(5000));
        const ContentView content(fixture.store.get(), fixture.preferences.get());
        QCOMPARE(content.selection(), SidebarSelection::overview());
        QVERIFY(!content.editorState());
        QVERIFY(content.refreshingIDs().isEmpty());
        QVERIFY(!content.showDeleteConfirmation());
        QVERIFY(!content.deleteTargetID());
        QCOMPARE(content.engine().heartbeat(), Timestamp(5000));
        QVERIFY(content.engine().lastAutoRefreshAt() <
                Timestamp::fromUnixSeconds(-62'000'000'000.0)); // distant past
        QVERIFY(content.engine().notifiedUrgentIDs().isEmpty());
        QVERIFY(!content.showOnboarding());
        QVERIFY(!content.showSampleClearConfirmation());
        QVERIFY(!content.engine().heartbeatTimer().isActive()); // nothing runs before the screen appears
    }

    void accountsAreTheStoresLiveList() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        QSignalSpy listSpy(&content, &ContentView::accountListChanged);
        QSignalSpy fieldSpy(&content, &ContentView::accountChanged);
        fixture.addAccount(QStringLiteral("b"), AIProvider::openAI, 20);
        fixture.addAccount(QStringLiteral("a"), AIProvider::openAI, 10);
        QCOMPARE(content.accounts().size(), 2);
        QCOMPARE(content.accounts().first()->label(), QStringLiteral("a"));
        content.accounts().first()->setSyncMessage(QStringLiteral("x"));
        QCOMPARE(listSpy.count(), 2);
        QCOMPARE(fieldSpy.count(), 1);
        QCOMPARE(fieldSpy.first().at(0).value<ProviderAccount*>(), content.accounts().first());
        QCOMPARE(fieldSpy.first().at(1).value<ProviderAccount::Fields>(),
                 ProviderAccount::Fields(ProviderAccount::Field::status));
    }

    void firstLaunchWithEmptyStoreShowsOnboarding() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.onAppear();
        QVERIFY(!content.showOnboarding()); // deferred to the next turn
        QTRY_VERIFY(content.showOnboarding());
        QVERIFY(content.onboardingDismissDisabled());
        QVERIFY(!fixture.preferences->onboardingCompleted());

        // The flow creates an account: the sheet may now be dismissed, the flag stays.
        fixture.addAccount(QStringLiteral("First"));
        QVERIFY(!content.onboardingDismissDisabled());
        QVERIFY(!fixture.preferences->onboardingCompleted());

        content.finishOnboarding();
        QVERIFY(fixture.preferences->onboardingCompleted());
        QVERIFY(!content.showOnboarding());
    }

    void accountsPresentCompleteOnboardingWithoutASheet() {
        CoreFixture fixture;
        fixture.addAccount(QStringLiteral("Existing"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.onAppear();
        QVERIFY(fixture.preferences->onboardingCompleted());
        QCoreApplication::processEvents();
        QVERIFY(!content.showOnboarding());
    }

    void emptyStoreWithCompletedOnboardingShowsTheEmptyOverview() {
        CoreFixture fixture;
        fixture.preferences->setOnboardingCompleted(true);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.onAppear();
        QCoreApplication::processEvents();
        QVERIFY(!content.showOnboarding());
        QVERIFY(!content.onboardingDismissDisabled());
        QCOMPARE(content.selection(), SidebarSelection::overview());
    }

    void appearingStartsTheClockFromNow() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        Clock::setFixedNow(Timestamp(123456));
        content.onAppear();
        QCOMPARE(content.engine().lastAutoRefreshAt(), Timestamp(123456));
        QVERIFY(content.engine().heartbeatTimer().isActive());
        QCOMPARE(content.engine().heartbeatTimer().interval(), 60'000);
        content.engine().tick(Timestamp(123516));
        QCOMPARE(content.engine().heartbeat(), Timestamp(123516));
    }

    void nothingIsRefreshedOrWrittenAtLaunch() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Quiet"));
        QVERIFY(fixture.store->save());
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.onAppear();
        QCoreApplication::processEvents();
        QVERIFY(!fixture.store->hasChanges());
        QVERIFY(!account->lastRefreshAt());
        QCOMPARE(account->syncMessage(), QStringLiteral("Not refreshed yet"));
        QVERIFY(content.refreshingIDs().isEmpty());
    }

    void addAccountCommandOpensTheEditor() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        CommandCenter::shared().post(CommandCenter::kAddAccount);
        QVERIFY(content.editorState());
        QVERIFY(content.editorState()->isNew());
    }

    void deleteCommandNeedsOneSelectedAccount() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("One"));
        ContentView content(fixture.store.get(), fixture.preferences.get());

        CommandCenter::shared().post(CommandCenter::kDeleteSelectedAccount);
        QVERIFY(!content.showDeleteConfirmation());
        QVERIFY(!content.deleteTargetID());

        content.setSelection(SidebarSelection::provider(AIProvider::openAI));
        CommandCenter::shared().post(CommandCenter::kDeleteSelectedAccount);
        QVERIFY(!content.showDeleteConfirmation());

        content.setSelection(SidebarSelection::account(account->id()));
        CommandCenter::shared().post(CommandCenter::kDeleteSelectedAccount);
        QVERIFY(content.showDeleteConfirmation());
        QCOMPARE(content.deleteTargetID(), std::optional<QUuid>(account->id()));
        QCOMPARE(content.accounts().size(), 1); // only the dialog; nothing deleted
    }

    void refreshTargetsFollowTheSelection() {
        CoreFixture fixture;
        ProviderAccount* openAI = fixture.addAccount(QStringLiteral("o"), AIProvider::openAI, 1);
        ProviderAccount* claude = fixture.addAccount(QStringLiteral("c"), AIProvider::anthropic, 2);
        ProviderAccount* claude2 = fixture.addAccount(QStringLiteral("c2"), AIProvider::anthropic, 3);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        QCOMPARE(content.accountsForSelection(), (QList<ProviderAccount*>{openAI, claude, claude2}));
        content.setSelection(SidebarSelection::provider(AIProvider::anthropic));
        QCOMPARE(content.accountsForSelection(), (QList<ProviderAccount*>{claude, claude2}));
        content.setSelection(SidebarSelection::account(claude2->id()));
        QCOMPARE(content.accountsForSelection(), QList<ProviderAccount*>{claude2});
        content.setSelection(SidebarSelection::account(QUuid::createUuid()));
        QVERIFY(content.accountsForSelection().isEmpty());
    }

    void labels() {
        CoreFixture fixture;
        fixture.addAccount(QStringLiteral("  Work Team "), AIProvider::openAI, 1);
        fixture.addAccount(QStringLiteral(""), AIProvider::gemini, 2);
        fixture.addAccount(QStringLiteral("İstanbul"), AIProvider::xAI, 3);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        QCOMPARE(content.existingLabels(),
                 QStringList({QStringLiteral("  Work Team "), QStringLiteral("Google Gemini"),
                              QStringLiteral("İstanbul")}));
        QVERIFY(content.labelExists(QStringLiteral("work team")));
        QVERIFY(content.labelExists(QStringLiteral("\nWORK TEAM\t")));
        QVERIFY(content.labelExists(QStringLiteral("google gemini")));
        QVERIFY(content.labelExists(QStringLiteral("İSTANBUL")));
        QVERIFY(!content.labelExists(QStringLiteral("work")));
        QVERIFY(!content.labelExists(QString()));
    }

    void defaultPreferencesOnAFreshMachine() {
        CoreFixture fixture;
        QVERIFY(!fixture.preferences->autoRefreshEnabled());
        QCOMPARE(fixture.preferences->autoRefreshMinutes(), 30);
        QVERIFY(!fixture.preferences->thresholdNotificationsEnabled());
        QVERIFY(!fixture.preferences->onboardingCompleted());
        QVERIFY(fixture.preferences->useSampleDataByDefault());
    }

    // ---- where the selection goes after deletes and saves ----
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

QTEST_GUILESS_MAIN(TestContentView)
#include "tst_contentview.moc"
