#include "views/widgets/MainWindow.h"

#include "core/CommandCenter.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "services/KeychainStore.h"
#include "views/SidebarModel.h"
#include "views/widgets/SettingsView.h"
#include "views/widgets/TrackerCommands.h"

#include <QAction>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QSplitter>
#include <QTest>
#include <QTreeView>

namespace {
QTreeView* sidebarOf(const MainWindow& window) {
    return window.findChild<QTreeView*>(QStringLiteral("sidebar"));
}

SidebarModel* modelOf(const QTreeView* sidebar) {
    return qobject_cast<SidebarModel*>(sidebar->model());
}

// The texts of the rows under "Accounts", top to bottom; empty without the section.
QStringList accountRows(const QTreeView* sidebar) {
    const SidebarModel* model = modelOf(sidebar);
    const QModelIndex section = model->sectionIndex(SidebarModel::Section::accounts);
    QStringList rows;
    for (int row = 0; section.isValid() && row < model->rowCount(section); ++row) {
        rows.append(model->index(row, 0, section).data().toString());
    }
    return rows;
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
        QTreeView* sidebar = sidebarOf(window);
        QVERIFY(sidebar);
        QCOMPARE(sidebar->minimumWidth(), 230);
        QCOMPARE(sidebar->width(), 270);
        QCOMPARE(sidebar->maximumWidth(), QWIDGETSIZE_MAX);
    }

    void appearingRunsTheLaunchStepsOnce() {
        CoreFixture fixture;
        fixture.addAccount(QStringLiteral("Existing"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        QSignalSpy shown(&window, &MainWindow::firstShown);
        window.show();
        QCOMPARE(shown.count(), 1);
        QVERIFY(content.heartbeatTimer().isActive());
        QVERIFY(fixture.preferences->onboardingCompleted());
        window.hide();
        window.show();
        QCOMPARE(shown.count(), 1);
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

    void shortcutsReachTheController() {
        CoreFixture fixture;
        ProviderAccount* account = fixture.addAccount(QStringLiteral("Doomed"));
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QTest::keyClick(&window, Qt::Key_N, Qt::ControlModifier);
        QVERIFY(content.editorState() && content.editorState()->isNew());

        QTest::keyClick(&window, Qt::Key_Delete, Qt::ControlModifier);
        QVERIFY(!content.showDeleteConfirmation()); // the overview is selected

        QTreeView* sidebar = sidebarOf(window);
        choose(sidebar, accountRow(sidebar, 0));
        QCOMPARE(content.selection(), SidebarSelection::account(account->id()));
        QTest::keyClick(&window, Qt::Key_Delete, Qt::ControlModifier);
        QVERIFY(content.showDeleteConfirmation());
        QCOMPARE(content.deleteTargetID(), std::optional<QUuid>(account->id()));
    }

    void sidebarAndDetailFollowTheStore() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        QTreeView* sidebar = sidebarOf(window);
        auto* detail = window.findChild<QLabel*>(QStringLiteral("detail"));
        QCOMPARE(accountRows(sidebar), QStringList());
        QCOMPARE(overviewRow(sidebar).data().toString(), QStringLiteral("Overview"));
        QCOMPARE(sidebar->currentIndex(), overviewRow(sidebar));
        auto* title = window.findChild<QLabel*>(QStringLiteral("detailTitle"));
        QCOMPARE(title->text(), QStringLiteral("Overview"));
        QCOMPARE(detail->text(), QStringLiteral("No accounts yet."));

        ProviderAccount* account = fixture.addAccount(QStringLiteral(""), AIProvider::anthropic);
        QCOMPARE(accountRows(sidebar), QStringList{QStringLiteral("Anthropic / Claude")});
        account->setLabel(QStringLiteral("Claude Max"));
        QCOMPARE(accountRows(sidebar), QStringList{QStringLiteral("Claude Max")});

        choose(sidebar, accountRow(sidebar, 0));
        QCOMPARE(title->text(), QStringLiteral("Claude Max"));
        QVERIFY(detail->text().contains(QStringLiteral("Not refreshed yet")));

        // The controller's selection moves the sidebar too.
        content.setSelection(SidebarSelection::overview());
        QCOMPARE(sidebar->currentIndex(), overviewRow(sidebar));
        content.setSelection(SidebarSelection::account(account->id()));
        QCOMPARE(sidebar->currentIndex(), accountRow(sidebar, 0));

        fixture.store->remove(account);
        QCOMPARE(accountRows(sidebar), QStringList());
        QCOMPARE(title->text(), QStringLiteral("Account unavailable"));
        QCOMPARE(detail->text(), QStringLiteral("This account may have been removed."));
    }

    void sampleWorkspaceThenDeleteEndToEnd() {
        CoreFixture fixture;
        const QString storePath = fixture.store->path();
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));

        // First launch on an empty store: the welcome, with the sample workspace.
        QTRY_VERIFY(window.findChild<QWidget*>(QStringLiteral("welcome")));
        auto* welcome = window.findChild<QWidget*>(QStringLiteral("welcome"));
        QTRY_VERIFY(welcome->isVisible());
        auto* sample = window.findChild<QPushButton*>(QStringLiteral("trySampleWorkspaceButton"));
        QCOMPARE(sample->text(), QStringLiteral("Try sample workspace"));
        QTest::mouseClick(sample, Qt::LeftButton);
        QVERIFY(!welcome->isVisible());
        QVERIFY(fixture.preferences->onboardingCompleted());

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
        QTRY_VERIFY(window.deleteDialog() && window.deleteDialog()->isVisible());
        QMessageBox* dialog = window.deleteDialog();
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
        auto* deleteButton = window.findChild<QPushButton*>(QStringLiteral("deleteAccountButton"));
        QVERIFY(deleteButton->isVisible());
        QTest::mouseClick(deleteButton, Qt::LeftButton);
        QTRY_VERIFY(window.deleteDialog());
        QTest::mouseClick(window.deleteDialog()->findChild<QPushButton*>(QStringLiteral("cancelButton")),
                          Qt::LeftButton);
        QTRY_VERIFY(!window.deleteDialog());
        QVERIFY(!content.showDeleteConfirmation());
        QCOMPARE(content.selection(), SidebarSelection::account(account->id()));
        QCOMPARE(content.accounts().size(), 1);
    }

    void sampleClearDialog() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        content.createDemoAccounts();
        MainWindow window(&content);
        window.show();
        auto* clear = window.findChild<QPushButton*>(QStringLiteral("clearSampleDataButton"));
        QVERIFY(clear->isVisible());
        QTest::mouseClick(clear, Qt::LeftButton);
        QTRY_VERIFY(window.sampleClearDialog());
        QMessageBox* dialog = window.sampleClearDialog();
        QCOMPARE(dialog->windowTitle(), QStringLiteral("Remove sample data?"));
        QCOMPARE(dialog->text(),
                 QStringLiteral("This removes only accounts created in sample mode. Your manually "
                                "configured and official API accounts stay untouched."));
        auto* confirm = dialog->findChild<QPushButton*>(QStringLiteral("confirmButton"));
        QCOMPARE(confirm->text(), QStringLiteral("Clear Sample Data"));
        QCOMPARE(dialog->buttonRole(confirm), QMessageBox::DestructiveRole);
        QTest::mouseClick(confirm, Qt::LeftButton);
        QTRY_VERIFY(content.accounts().isEmpty());
        QVERIFY(!clear->isVisible());
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

    void settingsWindow() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        QVERIFY(!window.settingsWindow()->isVisible());
        window.commands()->settingsAction()->trigger();
        QVERIFY(window.settingsWindow()->isVisible());
        QCOMPARE(window.settingsWindow()->windowTitle(), QStringLiteral("Settings"));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
