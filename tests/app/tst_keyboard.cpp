#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "editor/widgets/AccountEditorView.h"
#include "model/Clock.h"
#include "providers/MockDataFactory.h"
#include "ui/SelectableTile.h"
#include "views/widgets/AccountDetailScreen.h"
#include "views/widgets/OverviewScreen.h"
#include "views/widgets/SettingsView.h"
#include "views/widgets/SidebarView.h"

#include "WidgetTree.h"

#include <QAccessible>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTest>

// The window by keyboard alone.
namespace {
QString nameOf(QWidget* widget) {
    if (!widget) {
        return QStringLiteral("(none)");
    }
    QAccessibleInterface* node = QAccessible::queryAccessibleInterface(widget);
    const QString name = node ? node->text(QAccessible::Name) : QString();
    return name.isEmpty()
               ? QString::fromLatin1(widget->metaObject()->className()) + u':' + widget->objectName()
               : name;
}

// The controls Tab visits from the focus it has now, `count` presses.
QStringList tabThrough(QWidget* window, int count) {
    QStringList visited;
    for (int i = 0; i < count; ++i) {
        QTest::keyClick(QApplication::focusWidget() ? QApplication::focusWidget() : window, Qt::Key_Tab);
        visited.append(nameOf(QApplication::focusWidget()));
    }
    return visited;
}

struct Window {
    CoreFixture fixture;
    std::unique_ptr<ContentView> content;
    std::unique_ptr<MainWindow> window;

    explicit Window(ConnectionMode mode = ConnectionMode::mock) {
        for (int i = 0; i < 3; ++i) {
            ProviderAccount* account =
                fixture.addAccount(QStringLiteral("Account %1").arg(i + 1), AIProvider::openAI, i + 1);
            account->setConnectionMode(mode);
            account->setSnapshot(MockDataFactory::snapshot(*account));
        }
        content = std::make_unique<ContentView>(fixture.store.get(), fixture.preferences.get());
        window = std::make_unique<MainWindow>(content.get());
        window->resize(1240, 820);
        window->show();
        if (!QTest::qWaitForWindowActive(window.get())) {
            qWarning("the window was not activated");
        }
    }

    ProviderAccount* account(int i) const { return fixture.store->accounts().at(i); }

    // Tabs from the search field until `name` has the focus.
    QWidget* tabTo(const QString& name) const {
        window->sidebar()->searchField()->setFocus();
        for (int i = 0; i < 40; ++i) {
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
            if (nameOf(QApplication::focusWidget()) == name) {
                return QApplication::focusWidget();
            }
        }
        return nullptr;
    }
};

// A widget's picture with and without the keyboard focus.
bool focusShows(QWidget* widget) {
    widget->clearFocus();
    QApplication::processEvents();
    const QImage plain = widget->grab().toImage();
    widget->setFocus(Qt::TabFocusReason);
    QApplication::processEvents();
    const QImage focused = widget->grab().toImage();
    return widget->hasFocus() && plain != focused;
}
} // namespace

class TestKeyboard final : public QObject {
    Q_OBJECT

private slots:
    void theOverviewInReadingOrder() {
        Window w;
        w.window->sidebar()->searchField()->setFocus();
        QCOMPARE(
            tabThrough(w.window.get(), 11),
            (QStringList{"Sidebar", "Add Account", "Overview", "Add Account", "Clear sample data", "Cards",
                         "Attention first", "Account 1", "Account 2", "Account 3", "Find subscriptions"}));
        // Shift+Tab walks back the same way.
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backtab);
        QCOMPARE(nameOf(QApplication::focusWidget()), QStringLiteral("Account 3"));
    }

    void anAccountsPageInReadingOrder() {
        Window w(ConnectionMode::apiKey);
        w.content->setSelection(SidebarSelection::account(w.account(0)->id()));
        QApplication::processEvents();
        w.window->sidebar()->searchField()->setFocus();
        QCOMPARE(tabThrough(w.window.get(), 10),
                 (QStringList{"Sidebar", "Add Account", "Refresh", "Edit", "Delete Account", "Account 1",
                              "Smart refresh", "Edit connection", "Sign out", "Find subscriptions"}));
    }

    void cardsOpenWithReturnAndSpace() {
        Window w;
        QWidget* card = w.tabTo(QStringLiteral("Account 2"));
        QVERIFY(card);
        QVERIFY(focusShows(card));
        QTest::keyClick(card, Qt::Key_Return);
        QCOMPARE(w.content->selection(), SidebarSelection::account(w.account(1)->id()));
        w.content->setSelection(SidebarSelection::overview());
        QApplication::processEvents();
        card = w.tabTo(QStringLiteral("Account 3"));
        QTest::keyClick(card, Qt::Key_Space);
        QCOMPARE(w.content->selection(), SidebarSelection::account(w.account(2)->id()));
    }

    void theMatrixByKeyboard() {
        Window w;
        QWidget* cards = w.tabTo(QStringLiteral("Cards"));
        QVERIFY(cards);
        QVERIFY(focusShows(cards));
        // A screen reader meets a radio button, on, that it can press.
        QAccessibleInterface* segment = QAccessible::queryAccessibleInterface(cards);
        QCOMPARE(segment->role(), QAccessible::RadioButton);
        QVERIFY(segment->state().checkable && segment->state().checked);
        QVERIFY(
            segment->actionInterface()->actionNames().contains(QAccessibleActionInterface::pressAction()));
        // The segments are one group: an arrow moves to the next and turns it on.
        QTest::keyClick(cards, Qt::Key_Right);
        QCOMPARE(w.window->overview()->viewMode(), MonitoringViewMode::matrix);
        QCOMPARE(nameOf(QApplication::focusWidget()), QStringLiteral("Matrix"));

        QWidget* row = w.tabTo(QStringLiteral("Account 2"));
        QVERIFY(row);
        QCOMPARE(row->objectName(), QStringLiteral("matrixRow"));
        QVERIFY(focusShows(row));
        QTest::keyClick(row, Qt::Key_Space);
        QCOMPARE(w.content->selection(), SidebarSelection::account(w.account(1)->id()));
    }

    void tilesShowTheFocusSelectedOrNot() {
        Window w;
        w.content->setEditorState(EditorState::newAccount());
        AccountEditorView* sheet = w.window->editor();
        QVERIFY(QTest::qWaitForWindowActive(sheet));
        auto* selected = shown<SelectableTile>(sheet, QStringLiteral("OpenAI"));
        auto* other = shown<SelectableTile>(sheet, QStringLiteral("Claude"));
        QVERIFY(selected->isSelected() && !other->isSelected());
        QVERIFY(focusShows(other));
        QVERIFY(focusShows(selected));
        QTest::keyClick(other, Qt::Key_Space);
        QVERIFY(other->isSelected());
        QTest::keyClick(sheet, Qt::Key_Escape);
        QTRY_VERIFY(!w.window->editor());
    }

    void escapeClosesTheSettingsWindowAndMenus() {
        Window w;
        SettingsView* settings = w.window->settingsWindow();
        settings->show();
        QVERIFY(QTest::qWaitForWindowActive(settings));
        QTest::keyClick(settings, Qt::Key_Escape);
        QTRY_VERIFY(!settings->isVisible());

        // The menu key on an account's row opens its menu; Escape closes it.
        w.window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(w.window.get()));
        w.content->setSelection(SidebarSelection::account(w.account(0)->id()));
        QApplication::processEvents();
        QWidget* list = w.tabTo(QStringLiteral("Sidebar"));
        QVERIFY(list);
        // The desktop turns the menu key into a context menu event for the focused widget.
        QContextMenuEvent menuKey(QContextMenuEvent::Keyboard, QPoint(4, 4), list->mapToGlobal(QPoint(4, 4)));
        QApplication::sendEvent(list, &menuKey);
        QMenu* menu = nullptr;
        QTRY_VERIFY((menu = w.window->findChild<QMenu*>(QStringLiteral("accountMenu"))) && menu->isVisible());
        QCOMPARE(menu->actions().first()->text(), QStringLiteral("Edit Subscription"));
        QTest::keyClick(menu, Qt::Key_Escape);
        QTRY_VERIFY(!w.window->findChild<QMenu*>(QStringLiteral("accountMenu")));
    }
};

QTEST_MAIN(TestKeyboard)
#include "tst_keyboard.moc"
