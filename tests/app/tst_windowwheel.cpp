// The wheel in the real window: scrolling past a picker scrolls the page and leaves the
// picker, the preferences and what is saved as they were.
#include "app/MainWindow.h"

#include "MainWindowFixtures.h"
#include "WidgetTree.h"
#include "core/ContentView.h"
#include "core/Preferences.h"
#include "editor/widgets/AccountEditorView.h"
#include "editor/widgets/ManualHorizonEditor.h"
#include "ui/SelectableTile.h"
#include "ui/WheelGuard.h"
#include "views/widgets/OverviewScreen.h"
#include "views/widgets/SettingsView.h"

#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QWheelEvent>

namespace {
// Twenty accounts: an overview taller than the window, so the page has somewhere to scroll.
struct TallWindow {
    CoreFixture fixture;
    ContentView content;
    MainWindow window;

    TallWindow()
        : content((addAccounts(fixture), fixture.store.get()), fixture.preferences.get())
        , window(&content) {
        window.resize(1200, 800);
        window.show();
    }

    static void addAccounts(CoreFixture& fixture) {
        for (int i = 0; i < 20; ++i) {
            windowfixtures::refreshed(fixture, QStringLiteral("Account %1").arg(i), AIProvider::openAI, i);
        }
    }
};
} // namespace

class TestWindowWheel final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { WheelGuard::install(); }

    void scrollingPastTheSortPickerKeepsTheSort() {
        TallWindow tall;
        MainWindow& window = tall.window;
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        auto* picker = window.overview()->findChild<QComboBox*>(QStringLiteral("sortPicker"));
        QVERIFY(picker);
        // Bring the picker into view, then wheel over it the way a mouse does.
        window.overview()->ensureWidgetVisible(picker);
        QApplication::processEvents();
        const int sort = picker->currentIndex();
        const int scrolled = window.overview()->verticalScrollBar()->value();
        const QPoint local = picker->rect().center();
        QWheelEvent wheel(local, picker->mapToGlobal(local), QPoint(), QPoint(0, -120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(picker, &wheel);
        QCOMPARE(picker->currentIndex(), sort);
        QVERIFY(!picker->hasFocus());
        QVERIFY(window.overview()->verticalScrollBar()->value() > scrolled);
    }

    void theWheelOverAMatrixRowIsLeftToThePage() {
        TallWindow tall;
        MainWindow& window = tall.window;
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        window.overview()->setViewMode(MonitoringViewMode::matrix);
        QApplication::processEvents();
        QWidget* row = window.overview()->findChild<QWidget*>(QStringLiteral("matrixRow"));
        QVERIFY(row);
        window.overview()->ensureWidgetVisible(row);
        QApplication::processEvents();
        const QPoint local = row->rect().center();
        QWheelEvent wheel(local, row->mapToGlobal(local), QPoint(), QPoint(0, -120), Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(row, &wheel);
        // The row leaves the wheel alone: a mouse's wheel (a spontaneous event, which a test
        // cannot send) goes on to the page; this one stops here, as Qt keeps sent ones put.
        QVERIFY(!wheel.isAccepted());
        QCOMPARE(tall.content.selection(), SidebarSelection::overview());
    }

    void aWheelStormOverTheIntervalWritesNoPreference() {
        CoreFixture fixture;
        fixture.preferences->setAutoRefreshEnabled(true);
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        SettingsView* settings = window.settingsWindow();
        settings->resize(settings->width(), 260); // short enough to scroll
        settings->show();
        QVERIFY(QTest::qWaitForWindowExposed(settings));
        QComboBox* interval = settings->intervalPicker();
        QVERIFY(interval->isVisible());
        const int minutes = fixture.preferences->autoRefreshMinutes();
        const int index = interval->currentIndex();
        QSignalSpy written(fixture.preferences.get(), &Preferences::changed);
        const QPoint local = interval->rect().center();
        for (int i = 0; i < 400; ++i) {
            QWheelEvent wheel(local, interval->mapToGlobal(local), QPoint(),
                              QPoint(0, i % 3 == 0 ? 120 : -120), Qt::NoButton, Qt::NoModifier,
                              Qt::NoScrollPhase, false);
            QApplication::sendEvent(interval, &wheel);
        }
        QCOMPARE(interval->currentIndex(), index);
        QCOMPARE(fixture.preferences->autoRefreshMinutes(), minutes);
        QCOMPARE(written.count(), 0);
    }

    void aWheelStormOverTheUnitSavesTheUnitChosen() {
        CoreFixture fixture;
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.show();
        content.setEditorState(EditorState::newAccount());
        AccountEditorView* sheet = window.editor();
        QVERIFY(QTest::qWaitForWindowExposed(sheet));
        shown<SelectableTile>(sheet, QStringLiteral("Manual tracking"))->click();
        auto* unit = sheet->findChild<QComboBox*>(QStringLiteral("manualUnit"));
        const QString chosen = unit->currentText();
        const QPoint local = unit->rect().center();
        for (int i = 0; i < 400; ++i) {
            QWheelEvent wheel(local, unit->mapToGlobal(local), QPoint(), QPoint(0, i % 2 == 0 ? -120 : 120),
                              Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
            QApplication::sendEvent(unit, &wheel);
        }
        QCOMPARE(unit->currentText(), chosen);
        auto* shortTerm = sheet->findChild<ManualHorizonEditor*>(QStringLiteral("manualShortTerm"));
        type(shortTerm->limitField(), QStringLiteral("10"));
        type(shortTerm->usedField(), QStringLiteral("1"));
        sheet->saveButton()->click();
        QTRY_VERIFY(!window.editor());
        QCOMPARE(fixture.store->accounts().first()->snapshot()->windows.first().unit.title(), chosen);
    }
};

QTEST_MAIN(TestWindowWheel)
#include "tst_windowwheel.moc"
