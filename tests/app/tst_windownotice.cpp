// What the window says when a change could not be kept: a save in the background that
// failed, a delete the local database refused; and that it ends once saving works again.
#include "app/MainWindow.h"

#include "FileProtection.h"
#include "MainWindowFixtures.h"
#include "WidgetTree.h"
#include "core/ContentView.h"

#include <QAccessible>
#include <QLabel>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

namespace {
QString storedMessage(const QString& path, const QUuid& id) {
    QString message;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("read"));
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (db.open()) {
            QSqlQuery query(db);
            query.prepare(QStringLiteral("SELECT syncMessage FROM ProviderAccount WHERE id = ?"));
            query.addBindValue(id.toString(QUuid::WithoutBraces).toUpper());
            if (query.exec() && query.next()) {
                message = query.value(0).toString();
            }
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("read"));
    return message;
}
} // namespace

class TestWindowNotice final : public QObject {
    Q_OBJECT

private slots:
    void aFailedBackgroundSaveIsShownUntilASaveWorks() {
        CoreFixture fixture;
        ProviderAccount* account =
            windowfixtures::refreshed(fixture, QStringLiteral("Sample"), AIProvider::openAI, 1);
        QVERIFY(fixture.store->save());
        const QString path = fixture.store->path();
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        QVERIFY(!window.findChild<QWidget*>(QStringLiteral("noticeSlot"))->isVisible());

        QVERIFY(makeStoreReadOnly(path, true));
        content.refresh(account);
        QTRY_VERIFY(content.refreshingIDs().isEmpty());
        QVERIFY(makeStoreReadOnly(path, false));
        QVERIFY(content.notice());
        QVERIFY2(content.notice()->startsWith(
                     QStringLiteral("Recent changes couldn’t be saved to the local database; "
                                    "they stay in this window and are saved with the next "
                                    "change. Reason: ")),
                 qPrintable(*content.notice()));
        // On the window, readable as a person and a screen reader meet it.
        QWidget* notice = window.findChild<QWidget*>(QStringLiteral("windowNotice"));
        QVERIFY(notice && notice->isVisible());
        QVERIFY(texts(notice).contains(*content.notice()));
        QVERIFY(texts(notice).contains(ContentView::noticeTitle()));
        QVERIFY(shownAccessibleNames(notice).contains(*content.notice()));
        // Its one control is a button a screen reader can name and press.
        QPushButton* dismissButton = shown<QPushButton>(notice, QStringLiteral("Dismiss"));
        QVERIFY(dismissButton);
        QAccessibleInterface* node = QAccessible::queryAccessibleInterface(dismissButton);
        QCOMPARE(node->role(), QAccessible::Button);
        QVERIFY(node->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()));
        // Nothing was lost: the refresh waits in memory and goes with the next save.
        QVERIFY(storedMessage(path, account->id()) != account->syncMessage());

        content.refresh(account);
        QTRY_VERIFY(content.refreshingIDs().isEmpty());
        QTRY_VERIFY(!content.notice());
        QVERIFY(!window.findChild<QWidget*>(QStringLiteral("noticeSlot"))->isVisible());
        QCOMPARE(storedMessage(path, account->id()), account->syncMessage());
    }

    void aRefusedDeleteKeepsTheAccountAndSaysWhy() {
        CoreFixture fixture;
        ProviderAccount* account =
            windowfixtures::refreshed(fixture, QStringLiteral("Kept"), AIProvider::openAI, 1);
        QVERIFY(fixture.store->save());
        const QString path = fixture.store->path();
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        content.setSelection(SidebarSelection::account(account->id()));
        content.requestDelete(account->id());
        QVERIFY(makeStoreReadOnly(path, true));
        content.deleteSelectedAccount();
        QVERIFY(makeStoreReadOnly(path, false));
        QCOMPARE(content.accounts(), QList<ProviderAccount*>{account});
        QCOMPARE(content.selection(), SidebarSelection::account(account->id()));
        QVERIFY(content.notice());
        QVERIFY2(content.notice()->startsWith(
                     QStringLiteral("The account wasn’t deleted: the local database couldn’t "
                                    "save the change. Reason: ")),
                 qPrintable(*content.notice()));
        QVERIFY(content.notice()->contains(QStringLiteral("read-only")));
        // Dismissed by hand, it goes.
        QWidget* notice = window.findChild<QWidget*>(QStringLiteral("windowNotice"));
        QVERIFY(notice);
        QPushButton* dismiss = shown<QPushButton>(notice, QStringLiteral("Dismiss"));
        QVERIFY2(dismiss, qPrintable(texts(notice).join(u'|')));
        QTest::mouseClick(dismiss, Qt::LeftButton);
        QVERIFY(!content.notice());
        QVERIFY(!window.findChild<QWidget*>(QStringLiteral("windowNotice")));
    }
};

QTEST_MAIN(TestWindowNotice)
#include "tst_windownotice.moc"
