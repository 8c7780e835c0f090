#include "app/MainWindow.h"

#include "MainWindowFixtures.h"
#include "WidgetTree.h"
#include "app/TrackerCommands.h"
#include "core/CommandCenter.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "model/Clock.h"
#include "onboarding/widgets/OnboardingView.h"
#include "services/KeychainStore.h"
#include "ui/CardButton.h"
#include "ui/ElidedLabel.h"
#include "ui/SubscriptionCardWidget.h"
#include "ui/SubscriptionMatrixWidget.h"
#include "ui/SummaryTileWidget.h"
#include "ui/ToggleSwitch.h"
#include "views/SidebarModel.h"
#include "views/widgets/AccountDetailScreen.h"
#include "views/widgets/OverviewScreen.h"
#include "views/widgets/SettingsView.h"
#include "views/widgets/SidebarView.h"

#include <QAccessible>
#include <QAction>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QSplitter>
#include <QTest>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

namespace {
using windowfixtures::accountRows;
using windowfixtures::refreshed;

QTreeView* sidebarOf(const MainWindow& window) {
    return window.sidebar()->list();
}

SidebarModel* modelOf(const QTreeView* sidebar) {
    return qobject_cast<SidebarModel*>(sidebar->model());
}

QModelIndex accountRow(const QTreeView* sidebar, int row) {
    const SidebarModel* model = modelOf(sidebar);
    return model->index(row, 0, model->sectionIndex(SidebarModel::Section::accounts));
}

QModelIndex overviewRow(const QTreeView* sidebar) {
    const SidebarModel* model = modelOf(sidebar);
    return model->index(0, 0, model->sectionIndex(SidebarModel::Section::workspace));
}

// What choosing a row with the keyboard or the mouse does.
void choose(QTreeView* sidebar, const QModelIndex& index) {
    sidebar->selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect);
}

QToolButton* toolbarButton(const MainWindow& window, const QString& action) {
    return window.findChild<QToolButton*>(action + QStringLiteral("Button"));
}

QStringList cardNames(const OverviewScreen* overview) {
    QStringList names;
    for (const CardButton* card : overview->cards()) {
        names.append(card->accessibleName());
    }
    return names;
}
} // namespace

class TestMainWindow final : public QObject {
    Q_OBJECT

private slots:
    void titleAndSizes() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        QCOMPARE(window.windowTitle(), QStringLiteral("Tallyfen"));
        QCOMPARE(window.minimumSize(), QSize(980, 650));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        SidebarView* sidebar = window.sidebar();
        QCOMPARE(sidebar->minimumWidth(), 230);
        QCOMPARE(sidebar->width(), 270);
        QCOMPARE(sidebar->maximumWidth(), QWIDGETSIZE_MAX);
    }

    void theWindowRemembersItsSizeAndSplitter() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        {
            MainWindow window(&content);
            window.show();
            window.resize(1300, 900);
            auto* splitter = window.findChild<QSplitter*>(QStringLiteral("mainSplitter"));
            splitter->setSizes({320, 980});
            QCOMPARE(window.sidebar()->width(), 320);
            window.close();
        }
        MainWindow again(&content);
        again.show();
        QCOMPARE(again.size(), QSize(1300, 900));
        QCOMPARE(again.sidebar()->width(), 320);
    }

    void appearingRunsTheLaunchStepsOnce() {
        CoreFixture fixture;
        fixture.addAccount(QStringLiteral("Existing"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        QSignalSpy shown(&window, &MainWindow::firstShown);
        window.show();
        QCOMPARE(shown.count(), 1);
        QVERIFY(content.engine().heartbeatTimer().isActive());
        QVERIFY(fixture.preferences->onboardingCompleted());
        window.hide();
        window.show();
        QCOMPARE(shown.count(), 1);
    }

    void whatWaitsForTheFirstFrameComesOnceAfterIt() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        QSignalSpy painted(&window, &MainWindow::firstPainted);
        window.show();
        QCOMPARE(painted.count(), 0);
        // Drawn: well before the wait for a window that never draws is over.
        QTRY_COMPARE_WITH_TIMEOUT(painted.count(), 1, 400);
        window.update();
        QTest::qWait(50);
        window.repaint();
        QTest::qWait(600); // past the wait for a window that never draws
        QCOMPARE(painted.count(), 1);
    }

    void aWindowThatNeverDrawsStillGetsWhatWaited() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        QSignalSpy painted(&window, &MainWindow::firstPainted);
        // Shown, but its frame never drawn (as on a hidden workspace): updates are off.
        window.setUpdatesEnabled(false);
        window.show();
        QCOMPARE(painted.count(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(painted.count(), 1, 2000);
    }

    void menuCommands_data() {
        QTest::addColumn<QString>("title");
        QTest::addColumn<QKeySequence>("shortcut");
        QTest::addColumn<QString>("notification");
        QTest::newRow("add") << "Add Account" << QKeySequence(Qt::CTRL | Qt::Key_N) << "Tallyfen.addAccount";
        QTest::newRow("refresh") << "Refresh Usage" << QKeySequence(Qt::CTRL | Qt::Key_R)
                                 << "Tallyfen.refreshAccounts";
        QTest::newRow("delete") << "Delete Selected Account" << QKeySequence(Qt::CTRL | Qt::Key_Delete)
                                << "Tallyfen.deleteSelectedAccount";
    }
    void menuCommands() {
        QFETCH(QString, title);
        QFETCH(QKeySequence, shortcut);
        QFETCH(QString, notification);
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        auto* action = window.findChild<QAction*>(notification);
        QVERIFY(action);
        QCOMPARE(action->text(), title);
        QCOMPARE(action->shortcut(), shortcut);
        QSignalSpy posted(&CommandCenter::shared(), &CommandCenter::posted);
        action->trigger();
        QCOMPARE(posted.count(), 1);
        QCOMPARE(posted.first().first().toString(), notification);
    }

    void shortcutsReachTheControllerWhateverHasFocus() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Doomed"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        // Typing in the search field does not swallow the commands.
        window.sidebar()->searchField()->setFocus();
        QTest::keyClick(window.sidebar()->searchField(), Qt::Key_N, Qt::ControlModifier);
        QVERIFY(content.editorState() && content.editorState()->isNew());
        content.setEditorState(std::nullopt);

        QTest::keyClick(&window, Qt::Key_Delete, Qt::ControlModifier);
        QVERIFY(!content.showDeleteConfirmation()); // the overview is selected

        QTreeView* sidebar = sidebarOf(window);
        choose(sidebar, accountRow(sidebar, 0));
        QCOMPARE(content.selection(), SidebarSelection::account(account->id()));
        QTest::keyClick(sidebar, Qt::Key_Delete, Qt::ControlModifier);
        QVERIFY(content.showDeleteConfirmation());
        QCOMPARE(content.deleteTargetID(), std::optional<QUuid>(account->id()));
    }

    void historyExportFollowsTheSelection() {
        CoreFixture fixture;
        ProviderAccount* work = refreshed(fixture, QStringLiteral("Work"), AIProvider::openAI, 1);
        work->record(*work->snapshot());
        ProviderAccount* home = refreshed(fixture, QStringLiteral("Home"), AIProvider::anthropic, 2);
        home->record(*home->snapshot());
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QCOMPARE(window.commands()->exportAction()->text(), QStringLiteral("Export History…"));
        const auto idsIn = [](const QString& path) {
            QFile file(path);
            file.open(QIODevice::ReadOnly);
            QSet<QString> ids;
            for (const QByteArray& line : file.readAll().split('\n').mid(1)) {
                if (!line.trimmed().isEmpty()) {
                    ids.insert(QString::fromUtf8(line.left(line.indexOf(','))));
                }
            }
            return ids;
        };
        const QString all = fixture.dir.filePath(QStringLiteral("all.csv"));
        QVERIFY(window.exportHistoryTo(all));
        QCOMPARE(idsIn(all), (QSet<QString>{work->secretReference(), home->secretReference()}));
        content.setSelection(SidebarSelection::account(home->id()));
        const QString one = fixture.dir.filePath(QStringLiteral("one.csv"));
        QVERIFY(window.exportHistoryTo(one));
        QCOMPARE(idsIn(one), QSet<QString>{home->secretReference()});
        // A target that can't be written says so over the window and leaves nothing.
        const QString nowhere = fixture.dir.filePath(QStringLiteral("missing/folder/h.json"));
        QVERIFY(!window.exportHistoryTo(nowhere));
        QMessageBox* failure = window.exportFailureDialog();
        QVERIFY(failure);
        QTRY_VERIFY(failure->isVisible());
        QCOMPARE(failure->text(), QStringLiteral("The history could not be exported."));
        QVERIFY(!failure->informativeText().isEmpty());
        QVERIFY(!QFile::exists(nowhere));
        failure->close();
    }

    void settingsHasAShortcutEverywhere() {
        CoreFixture fixture;
        fixture.preferences->setOnboardingCompleted(true); // no first-run sheet over the window
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QAction* settings = window.commands()->settingsAction();
        QVERIFY(!settings->shortcut().isEmpty());
#ifndef Q_OS_MACOS
        QCOMPARE(settings->shortcut(), QKeySequence(Qt::CTRL | Qt::Key_Comma));
#endif
        QTest::keySequence(&window, settings->shortcut());
        QTRY_VERIFY(window.settingsWindow()->isVisible());
        QCOMPARE(window.settingsWindow()->windowTitle(), QStringLiteral("Settings"));
    }

    void routingFollowsTheSelectionAndTheStore() {
        CoreFixture fixture;
        fixture.preferences->setOnboardingCompleted(true);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QTreeView* sidebar = sidebarOf(window);
        QCOMPARE(accountRows(sidebar), QStringList());
        QCOMPARE(overviewRow(sidebar).data().toString(), QStringLiteral("Overview"));
        QCOMPARE(sidebar->currentIndex(), overviewRow(sidebar));
        QCOMPARE(window.currentScreen(), window.overview());
        QVERIFY(texts(window.overview()).contains(QStringLiteral("Overview")));
        QVERIFY(texts(window.overview()).contains(QStringLiteral("No accounts in this view")));
        QTRY_VERIFY(toolbarButton(window, QStringLiteral("addAccount"))->isVisible());
        QTRY_VERIFY(!toolbarButton(window, QStringLiteral("deleteAccount"))->isVisible());

        ProviderAccount* account = fixture.addAccount(QStringLiteral(""), AIProvider::anthropic);
        QCOMPARE(accountRows(sidebar), QStringList{QStringLiteral("Anthropic / Claude")});
        account->setLabel(QStringLiteral("Claude Max"));
        QCOMPARE(accountRows(sidebar), QStringList{QStringLiteral("Claude Max")});
        QVERIFY(!texts(window.overview()).contains(QStringLiteral("No accounts in this view")));

        choose(sidebar, accountRow(sidebar, 0));
        QCOMPARE(window.currentScreen(), window.detail());
        QVERIFY(texts(window.detail()).contains(QStringLiteral("Claude Max")));
        QVERIFY(texts(window.detail()).contains(QStringLiteral("No usage snapshot yet")));
        QTRY_VERIFY(toolbarButton(window, QStringLiteral("deleteAccount"))->isVisible());
        QTRY_VERIFY(toolbarButton(window, QStringLiteral("refreshAccount"))->isVisible());
        QTRY_VERIFY(!toolbarButton(window, QStringLiteral("addAccount"))->isVisible());
        for (const QString& name : {QStringLiteral("refreshAccount"), QStringLiteral("editAccount"),
                                    QStringLiteral("deleteAccount")}) {
            QVERIFY2(!toolbarButton(window, name)->icon().isNull(), qPrintable(name));
        }

        // A provider's group is an overview under the provider's name.
        content.setSelection(SidebarSelection::provider(AIProvider::anthropic));
        QCOMPARE(window.currentScreen(), window.overview());
        QVERIFY(texts(window.overview()).contains(AIProvider(AIProvider::anthropic).displayName()));

        content.setSelection(SidebarSelection::account(account->id()));
        QCOMPARE(sidebar->currentIndex(), accountRow(sidebar, 0));
        fixture.store->remove(account);
        QCOMPARE(accountRows(sidebar), QStringList());
        QVERIFY(texts(window.currentScreen()).contains(QStringLiteral("Account unavailable")));
        QVERIFY(
            texts(window.currentScreen()).contains(QStringLiteral("This account may have been removed.")));
        QTRY_VERIFY(!toolbarButton(window, QStringLiteral("deleteAccount"))->isVisible());
        QTRY_VERIFY(!toolbarButton(window, QStringLiteral("addAccount"))->isVisible());
        // With every account gone a provider's item still selects its (empty) group.
        content.setSelection(SidebarSelection::provider(AIProvider::xAI));
        QVERIFY(texts(window.overview()).contains(QStringLiteral("No accounts in this view")));
    }

    void sampleWorkspaceThenDeleteEndToEnd() {
        CoreFixture fixture;
        const QString storePath = fixture.store->path();
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        // First launch on an empty store: the guided flow, with the sample workspace.
        QTRY_VERIFY(window.onboarding());
        OnboardingView* welcome = window.onboarding();
        QTRY_VERIFY(welcome->isVisible());
        auto* sample = welcome->findChild<QPushButton*>(QStringLiteral("trySampleButton"));
        QVERIFY(sample);
        QCOMPARE(sample->text(), QStringLiteral("Try sample workspace"));
        QTest::mouseClick(sample, Qt::LeftButton);
        QTRY_VERIFY(!window.onboarding());
        QVERIFY(fixture.preferences->onboardingCompleted());
        window.activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        QTreeView* sidebar = sidebarOf(window);
        QCOMPARE(accountRows(sidebar),
                 (QStringList{QStringLiteral("OpenAI · Work API"), QStringLiteral("Claude · Personal"),
                              QStringLiteral("Grok · Labs")}));

        // Select Claude, give it a credential, and delete it from the menu.
        choose(sidebar, accountRow(sidebar, 1));
        ProviderAccount* claude = content.accounts().at(1);
        const QUuid id = claude->id();
        const QString reference = claude->secretReference();
        KeychainStore::save(QStringLiteral("sk-ant-end-to-end"), reference);
        QTest::keyClick(&window, Qt::Key_Delete, Qt::ControlModifier);
        QTRY_VERIFY(window.deleteDialog() != nullptr);
        QMessageBox* dialog = window.deleteDialog();
        QVERIFY(dialog->isVisible());
        QCOMPARE(dialog->text(),
                 QStringLiteral(
                     "Only this account's metadata, snapshot, and Keychain credential will be removed."));
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Delete this account?"));
        auto* confirm = dialog->findChild<QPushButton*>(QStringLiteral("confirmButton"));
        auto* cancel = dialog->findChild<QPushButton*>(QStringLiteral("cancelButton"));
        QCOMPARE(confirm->text(), QStringLiteral("Delete Account"));
        QCOMPARE(dialog->buttonRole(confirm), QMessageBox::DestructiveRole);
        QCOMPARE(cancel->text(), QStringLiteral("Cancel"));
        QCOMPARE(dialog->buttonRole(cancel), QMessageBox::RejectRole);
        QTest::mouseClick(confirm, Qt::LeftButton);

        QTRY_VERIFY(!window.deleteDialog());
        QCOMPARE(content.selection(), SidebarSelection::overview());
        QCOMPARE(accountRows(sidebar).size(), 2);
        QCOMPARE(sidebar->currentIndex(), overviewRow(sidebar));
        QVERIFY(!content.store()->account(id));
        QVERIFY(!KeychainStore::read(reference));

        fixture.store.reset();
        QString error;
        auto reopened = AccountStore::open(storePath, &error);
        QVERIFY2(reopened, qPrintable(error));
        QCOMPARE(reopened->accounts().size(), 2);
        QVERIFY(!reopened->account(id));
    }

    void cancellingTheDeleteDialogKeepsTheAccount() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Keep me"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        content.setSelection(SidebarSelection::account(account->id()));
        QToolButton* deleteButton = toolbarButton(window, QStringLiteral("deleteAccount"));
        QTRY_VERIFY(deleteButton->isVisible());
        QCOMPARE(deleteButton->accessibleName(), QStringLiteral("Delete Account"));
        // Reachable without a mouse: focus it and press Space.
        QVERIFY(deleteButton->focusPolicy() & Qt::TabFocus);
        deleteButton->setFocus(Qt::TabFocusReason);
        QTest::keyClick(deleteButton, Qt::Key_Space);
        QTRY_VERIFY(window.deleteDialog() != nullptr);
        QTest::mouseClick(window.deleteDialog()->findChild<QPushButton*>(QStringLiteral("cancelButton")),
                          Qt::LeftButton);
        QTRY_VERIFY(!window.deleteDialog());
        QTest::mouseClick(deleteButton, Qt::LeftButton);
        QTRY_VERIFY(window.deleteDialog() != nullptr);
        QTest::mouseClick(window.deleteDialog()->findChild<QPushButton*>(QStringLiteral("cancelButton")),
                          Qt::LeftButton);
        QTRY_VERIFY(!window.deleteDialog());
        QVERIFY(!content.showDeleteConfirmation());
        QCOMPARE(content.selection(), SidebarSelection::account(account->id()));
        QCOMPARE(content.accounts().size(), 1);
    }

    void sampleNoticeClearsThroughItsDialog() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.createDemoAccounts();
        MainWindow window(&content);
        window.show();
        auto* notice = window.overview()->findChild<QWidget*>(QStringLiteral("sampleDataNotice"));
        QVERIFY(notice->isVisible());
        QVERIFY(texts(notice).contains(QStringLiteral("You’re looking at sample data")));
        auto* clear = notice->findChild<QPushButton*>(QStringLiteral("clearSampleDataButton"));
        QCOMPARE(clear->text(), QStringLiteral("Clear sample data"));
        QTest::mouseClick(clear, Qt::LeftButton);
        QTRY_VERIFY(window.sampleClearDialog() != nullptr);
        QMessageBox* dialog = window.sampleClearDialog();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Remove sample data?"));
        QCOMPARE(dialog->text(),
                 QStringLiteral("This removes only accounts created in sample mode. Your manually "
                                "configured and official API accounts stay untouched."));
        auto* confirm = dialog->findChild<QPushButton*>(QStringLiteral("confirmButton"));
        QCOMPARE(confirm->text(), QStringLiteral("Clear Sample Data"));
        QTest::mouseClick(confirm, Qt::LeftButton);
        QTRY_VERIFY(content.accounts().isEmpty());
        QVERIFY(!notice->isVisibleTo(window.overview()));
        QVERIFY(texts(window.overview()).contains(QStringLiteral("No accounts in this view")));
    }

    void goneAccountOffersTheWayBack() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        content.setSelection(SidebarSelection::account(QUuid::createUuid()));
        auto* back = window.findChild<QPushButton*>(QStringLiteral("backToOverviewButton"));
        QVERIFY(back->isVisible());
        QCOMPARE(back->text(), QStringLiteral("Back to Overview"));
        QTest::mouseClick(back, Qt::LeftButton);
        QCOMPARE(content.selection(), SidebarSelection::overview());
    }

    void overviewTilesCardsSortAndViewModes() {
        CoreFixture fixture;
        refreshed(fixture, QStringLiteral("Team 10"), AIProvider::openAI, 1);
        refreshed(fixture, QStringLiteral("Team 2"), AIProvider::openAI, 2);
        refreshed(fixture, QStringLiteral("Gemini Home"), AIProvider::gemini, 3);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        OverviewScreen* overview = window.overview();
        QCOMPARE(overview->sortMode(), MonitoringSort::attention);
        QCOMPARE(overview->viewMode(), MonitoringViewMode::cards);
        QStringList titles;
        for (const SummaryTileWidget* tile : overview->tiles()) {
            titles.append(tile->accessibleName());
        }
        QCOMPARE(titles, (QStringList{"Accounts", "Current", "Attention", "Next reset", "Spend"}));
        QCOMPARE(overview->tiles().first()->tile().value, QStringLiteral("3"));

        // By name: the OpenAI group first (providers keep their order), numbers by value.
        auto* sort = overview->findChild<QComboBox*>(QStringLiteral("sortPicker"));
        QCOMPARE(sort->accessibleName(), QStringLiteral("Sort subscriptions"));
        QCOMPARE(sort->itemText(0), QStringLiteral("Attention first"));
        sort->setCurrentIndex(2);
        Q_EMIT sort->activated(2);
        QCOMPARE(overview->sortMode(), MonitoringSort::name);
        QCOMPARE(cardNames(overview), (QStringList{"Team 2", "Team 10", "Gemini Home"}));

        // A card opens its account.
        CardButton* card = overview->cards().at(1);
        QCOMPARE(card->accessibleDescription(), QStringLiteral("Open subscription details"));
        QTest::mouseClick(card, Qt::LeftButton);
        QCOMPARE(content.selection(), SidebarSelection::account(content.accounts().at(0)->id()));
        content.setSelection(SidebarSelection::overview());

        // The matrix lists every account across providers.
        auto* picker = overview->findChild<QWidget*>(QStringLiteral("monitoringViewPicker"));
        QCOMPARE(picker->accessibleName(), QStringLiteral("Monitoring view"));
        QToolButton* matrixButton = shown<QToolButton>(picker, QStringLiteral("Matrix"));
        QVERIFY(matrixButton);
        QTest::mouseClick(matrixButton, Qt::LeftButton);
        QCOMPARE(overview->viewMode(), MonitoringViewMode::matrix);
        QVERIFY(overview->matrix());
        QSignalSpy opened(overview, &OverviewScreen::selected);
        QVERIFY(texts(overview->matrix()).contains(QStringLiteral("Gemini Home")));

        // Neither choice is kept: a new window starts as the first did.
        MainWindow second(&content);
        QCOMPARE(second.overview()->sortMode(), MonitoringSort::attention);
        QCOMPARE(second.overview()->viewMode(), MonitoringViewMode::cards);
    }

    void aChangedAccountRedrawsItsCardAndNothingElse() {
        CoreFixture fixture;
        ProviderAccount* first = refreshed(fixture, QStringLiteral("First"), AIProvider::openAI, 1);
        refreshed(fixture, QStringLiteral("Second"), AIProvider::openAI, 2);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        OverviewScreen* overview = window.overview();
        overview->setSortMode(MonitoringSort::name);
        // Cards in view are drawn as soon as the event loop turns.
        QTRY_VERIFY(qobject_cast<SubscriptionCardWidget*>(overview->cards().at(1)->card()));
        QVERIFY(qobject_cast<SubscriptionCardWidget*>(overview->cards().at(0)->card()));
        const QList<CardButton*> before = overview->cards();
        QWidget* firstCard = before.at(0)->card();
        QWidget* secondCard = before.at(1)->card();
        first->setLabel(QStringLiteral("First renamed"));
        QTRY_VERIFY(overview->cards().at(0)->card() != firstCard); // the renamed card is made anew
        const QList<CardButton*> after = overview->cards();
        QCOMPARE(after, before);                    // the same buttons, in place
        QVERIFY(after.at(1)->card() == secondCard); // the other one was left alone
        QVERIFY(texts(after.at(0)).contains(QStringLiteral("First renamed")));
        QCOMPARE(after.at(0)->accessibleName(), QStringLiteral("First renamed"));

        // The matrix keeps the rows that read the same, too.
        overview->setViewMode(MonitoringViewMode::matrix);
        const auto rowNamed = [overview](const QString& name) -> QWidget* {
            for (QWidget* row : overview->matrix()->findChildren<QWidget*>()) {
                if (row->accessibleName() == name && row->focusPolicy() == Qt::StrongFocus) {
                    return row;
                }
            }
            return nullptr;
        };
        QWidget* secondRow = rowNamed(QStringLiteral("Second"));
        QVERIFY(secondRow);
        first->setLabel(QStringLiteral("First again"));
        QTRY_VERIFY(rowNamed(QStringLiteral("First again")));
        QVERIFY(rowNamed(QStringLiteral("Second")) == secondRow);
    }

    void detailOfASampleAccountOffersSampleData() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Demo"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        content.setSelection(SidebarSelection::account(account->id()));
        AccountDetailScreen* detail = window.detail();
        QVERIFY(!detail->findChild<QPushButton*>(QStringLiteral("editConnectionButton")));
        QVERIFY(!detail->findChild<QPushButton*>(QStringLiteral("signOutButton")));
        QTRY_VERIFY(toolbarButton(window, QStringLiteral("editAccount"))->isVisible());
        auto* load = detail->findChild<QPushButton*>(QStringLiteral("emptyStateAction"));
        QCOMPARE(load->text(), QStringLiteral("Load sample data"));
        QTest::mouseClick(load, Qt::LeftButton);
        // Refreshing: both refresh buttons wait; the rest stays usable.
        QVERIFY(content.refreshingIDs().contains(account->id()));
        QTRY_COMPARE(detail->refreshButton()->text(), QStringLiteral("Refreshing"));
        QVERIFY(!detail->refreshButton()->isEnabled());
        QToolButton* toolbarRefresh = toolbarButton(window, QStringLiteral("refreshAccount"));
        QCOMPARE(toolbarRefresh->text(), QStringLiteral("Refreshing"));
        QVERIFY(!toolbarRefresh->isEnabled());
        QVERIFY(toolbarButton(window, QStringLiteral("editAccount"))->isEnabled());
        // The mock refresh ends with a snapshot on screen.
        QTRY_VERIFY_WITH_TIMEOUT(!content.refreshingIDs().contains(account->id()), 5000);
        QTRY_COMPARE(detail->refreshButton()->text(), QStringLiteral("Smart refresh"));
        QVERIFY(detail->refreshButton()->isEnabled());
        QCOMPARE(toolbarRefresh->text(), QStringLiteral("Refresh"));
        QTRY_VERIFY(texts(detail).contains(QStringLiteral("Allowances")));
        QVERIFY(texts(detail).contains(QStringLiteral("Recent usage")));
        QVERIFY(texts(detail).contains(QStringLiteral("Data source")));
    }

    void aRedrawnDetailKeepsTheKeyboardFocus() {
        CoreFixture fixture;
        ProviderAccount* account =
            refreshed(fixture, QStringLiteral("Org"), AIProvider::openAI, 1, ConnectionMode::apiKey);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        content.setSelection(SidebarSelection::account(account->id()));
        auto* edit = window.detail()->findChild<QPushButton*>(QStringLiteral("editConnectionButton"));
        edit->setFocus();
        QVERIFY(edit->hasFocus());
        account->setSyncMessage(QStringLiteral("Changed while focused"));
        QTRY_VERIFY(texts(window.detail()).contains(QStringLiteral("Changed while focused")));
        QWidget* focus = QApplication::focusWidget();
        QVERIFY(focus);
        QCOMPARE(focus->objectName(), QStringLiteral("editConnectionButton"));
    }

    void signingOutAsksFirstAndKeepsTheSnapshot() {
        CoreFixture fixture;
        ProviderAccount* account =
            refreshed(fixture, QStringLiteral("Org"), AIProvider::openAI, 1, ConnectionMode::apiKey);
        KeychainStore::save(QStringLiteral("sk-admin-sign-out"), account->secretReference());
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        content.setSelection(SidebarSelection::account(account->id()));
        auto* signOut = window.detail()->findChild<QPushButton*>(QStringLiteral("signOutButton"));
        QCOMPARE(signOut->text(), QStringLiteral("Sign out"));
        QTest::mouseClick(signOut, Qt::LeftButton);
        QTRY_VERIFY(window.detail()->signOutDialog() != nullptr);
        QMessageBox* dialog = window.detail()->signOutDialog();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Sign out this account?"));
        // Cancel first: nothing happens.
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("cancelButton")), Qt::LeftButton);
        QTRY_VERIFY(!window.detail()->signOutDialog());
        QCOMPARE(account->connectionMode(), ConnectionMode::apiKey);
        signOut = window.detail()->findChild<QPushButton*>(QStringLiteral("signOutButton"));
        QTest::mouseClick(signOut, Qt::LeftButton);
        QTRY_VERIFY(window.detail()->signOutDialog() != nullptr);
        dialog = window.detail()->signOutDialog();
        auto* confirm = dialog->findChild<QPushButton*>(QStringLiteral("confirmButton"));
        QCOMPARE(confirm->text(), QStringLiteral("Sign Out"));
        QTest::mouseClick(confirm, Qt::LeftButton);
        QTRY_COMPARE(account->connectionMode(), ConnectionMode::manual);
        QVERIFY(account->snapshot());
        QVERIFY(!KeychainStore::read(account->secretReference()));
        QTRY_VERIFY(!window.detail()->findChild<QPushButton*>(QStringLiteral("signOutButton")));
        QVERIFY(texts(window.detail()).contains(QStringLiteral("Manual tracking")));
    }

    void sidebarSearchKeepsTheSelection() {
        CoreFixture fixture;
        ProviderAccount* work = fixture.addAccount(QStringLiteral("Work"), AIProvider::openAI, 1);
        fixture.addAccount(QStringLiteral("Home"), AIProvider::anthropic, 2);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QLineEdit* search = window.sidebar()->searchField();
        QCOMPARE(search->placeholderText(), QStringLiteral("Find subscriptions"));
        QCOMPARE(search->accessibleName(), QStringLiteral("Find subscriptions"));
        content.setSelection(SidebarSelection::account(work->id()));
        QTest::keyClicks(search, QStringLiteral("CLAUDE"));
        QCOMPARE(accountRows(sidebarOf(window)), QStringList{QStringLiteral("Home")});
        QCOMPARE(content.selection(), SidebarSelection::account(work->id()));
        QCOMPARE(window.currentScreen(), window.detail());
        // The clear button shows while there is text, and clears it.
        QToolButton* clearButton = shown<QToolButton>(search, QStringLiteral("Clear search"));
        QVERIFY(clearButton);
        QVERIFY(clearButton->defaultAction()->isVisible());
        QVERIFY(!clearButton->defaultAction()->icon().isNull()); // drawn with the first letter
        QTest::mouseClick(clearButton, Qt::LeftButton);
        QVERIFY(search->text().isEmpty());
        QVERIFY(!clearButton->defaultAction()->isVisible());
        QCOMPARE(accountRows(sidebarOf(window)), (QStringList{"Work", "Home"}));
        QCOMPARE(sidebarOf(window)->currentIndex(), accountRow(sidebarOf(window), 0));
        // A provider without accounts shows no number.
        const SidebarModel* model = modelOf(sidebarOf(window));
        const QModelIndex providers = model->sectionIndex(SidebarModel::Section::providers);
        QVERIFY(!model->index(2, 0, providers).data(SidebarModel::CountRole).isValid());
        QCOMPARE(model->index(0, 0, providers).data(SidebarModel::CountRole).toInt(), 1);
    }

    void accountRowMenuReadsTheRecordNow() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Work"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QMenu* menu = window.sidebar()->accountMenu(account->id());
        QStringList items;
        for (const QAction* action : menu->actions()) {
            items.append(action->isSeparator() ? QStringLiteral("—") : action->text());
        }
        QCOMPARE(items, (QStringList{"Edit Subscription", "Delete Subscription", "—", "Mock sample data",
                                     "Not refreshed yet"}));
        delete menu;
        account->setSyncMessage(QStringLiteral("Refreshed just now"));
        menu = window.sidebar()->accountMenu(account->id());
        QCOMPARE(menu->actions().last()->text(), QStringLiteral("Refreshed just now"));
        QVERIFY(!menu->actions().last()->isEnabled());
        menu->actions().at(0)->trigger();
        QCOMPARE(content.editorState(), std::optional<EditorState>(EditorState::edit(account->id())));
        menu->actions().at(1)->trigger();
        QVERIFY(content.showDeleteConfirmation());
        delete menu;
    }

    void settingsWriteThroughAtOnce() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        SettingsView* settings = window.settingsWindow();
        settings->show();
        QVERIFY(settings->sampleDataToggle()->isChecked()); // defaults as never written
        QVERIFY(!settings->autoRefreshToggle()->isChecked());
        QVERIFY(!settings->intervalPicker()->isVisible());
        QTest::mouseClick(settings->autoRefreshToggle(), Qt::LeftButton);
        QVERIFY(fixture.preferences->autoRefreshEnabled());
        QVERIFY(settings->intervalPicker()->isVisible());
        QCOMPARE(settings->intervalPicker()->accessibleName(), QStringLiteral("Refresh interval"));
        QCOMPARE(settings->intervalPicker()->currentText(), QStringLiteral("Every 30 minutes"));
        settings->intervalPicker()->setCurrentIndex(2);
        Q_EMIT settings->intervalPicker()->activated(2);
        QCOMPARE(fixture.preferences->autoRefreshMinutes(), 60);
        // Off again: the picker goes, its value stays stored.
        settings->autoRefreshToggle()->click();
        QVERIFY(!settings->intervalPicker()->isVisible());
        QCOMPARE(fixture.preferences->autoRefreshMinutes(), 60);
        settings->sampleDataToggle()->click();
        QVERIFY(!fixture.preferences->useSampleDataByDefault());
        settings->notificationsToggle()->click();
        QVERIFY(fixture.preferences->thresholdNotificationsEnabled());
        QCOMPARE(settings->sampleDataToggle()->accessibleName(),
                 QStringLiteral("Use sample data for new accounts"));
        const QStringList shown = texts(settings);
        for (const char* expected :
             {"Demo and privacy", "Operator refresh", "Provider support", "About", "OpenAI Platform",
              "Official API key · usage, limits, and costs", "Harrowmere",
              "A Harrowmere product for calm, local-first monitoring across independent AI "
              "subscriptions."}) {
            QVERIFY2(shown.contains(QString::fromUtf8(expected)), expected);
        }
        QVERIFY(settings->link()->text().contains(QStringLiteral("https://")));
    }

    void screenReadersFindControlsByTheirNames() {
        CoreFixture fixture;
        ProviderAccount* account =
            refreshed(fixture, QStringLiteral("Work org"), AIProvider::openAI, 1, ConnectionMode::apiKey);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QStringList names = accessibleNames(&window);
        for (const char* expected :
             {"Add Account", "Find subscriptions", "Accounts", "Current", "Attention", "Next reset", "Spend",
              "Work org", "Sort subscriptions", "Monitoring view"}) {
            QVERIFY2(names.contains(QString::fromUtf8(expected)), expected);
        }
        content.setSelection(SidebarSelection::account(account->id()));
        names = accessibleNames(&window);
        for (const char* expected :
             {"Refresh", "Edit", "Delete Account", "Smart refresh", "Edit connection"}) {
            QVERIFY2(names.contains(QString::fromUtf8(expected)), expected);
        }
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
