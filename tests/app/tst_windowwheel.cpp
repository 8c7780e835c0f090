// The wheel in the real window: scrolling the overview past "Sort subscriptions" scrolls
// the page and leaves the sort as it was.
#include "app/MainWindow.h"

#include "MainWindowFixtures.h"
#include "core/ContentView.h"
#include "ui/WheelGuard.h"
#include "views/widgets/OverviewScreen.h"

#include <QApplication>
#include <QComboBox>
#include <QScrollBar>
#include <QTest>
#include <QWheelEvent>

class TestWindowWheel final : public QObject {
    Q_OBJECT

private slots:
    void initTestCase() { WheelGuard::install(); }

    void scrollingPastTheSortPickerKeepsTheSort() {
        CoreFixture fixture;
        for (int i = 0; i < 20; ++i) {
            windowfixtures::refreshed(fixture, QStringLiteral("Account %1").arg(i), AIProvider::openAI, i);
        }
        ContentView content(fixture.store.get(), fixture.preferences.get());
        MainWindow window(&content);
        window.resize(1200, 800);
        window.show();
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
};

QTEST_MAIN(TestWindowWheel)
#include "tst_windowwheel.moc"
