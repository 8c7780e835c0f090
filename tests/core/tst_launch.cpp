#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

// Starts the real binary offscreen, as an operator would start it.
class TestLaunch final : public QObject {
    Q_OBJECT

private slots:
    void binaryStartsAndStaysUp() {
        QTemporaryDir home;
        QVERIFY(home.isValid());
        QProcess app;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("HOME", home.path());
        environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
        environment.insert("XDG_DATA_HOME", home.filePath("data"));
        app.setProcessEnvironment(environment);
        app.setProgram(QStringLiteral(TALLYFEN_BINARY));
        app.start();
        QVERIFY2(app.waitForStarted(5000), qPrintable(app.errorString()));
        // Still running after a second and a half: the window is up and the event loop runs.
        QVERIFY2(!app.waitForFinished(1500), app.readAllStandardError().constData());
        // There is no shutdown logic to wait for: the operator's quit is a plain termination.
        app.terminate();
        QVERIFY(app.waitForFinished(5000));
    }
};

QTEST_GUILESS_MAIN(TestLaunch)
#include "tst_launch.moc"
