#include "MainWindow.h"

#include <QProcess>
#include <QTest>

class TestMainWindow final : public QObject {
    Q_OBJECT

private slots:
    void titleAndMinimumSize() {
        MainWindow window;
        QCOMPARE(window.windowTitle(), QStringLiteral("Tallyfen"));
        QCOMPARE(window.minimumSize(), QSize(980, 650));
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
    }
};

QTEST_MAIN(TestMainWindow)
#include "tst_mainwindow.moc"
