#include "core/SingleInstance.h"

#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

// One process per store, through real processes: the second launch hands over to the
// first and ends, a lock left by a killed process is taken over, and different stores
// run side by side.
class TestSingleInstance final : public QObject {
    Q_OBJECT

private:
    static void start(QProcess& process, const QString& store, int waitMilliseconds) {
        const QStringList arguments{store, QStringLiteral("--wait"), QString::number(waitMilliseconds)};
        process.start(QStringLiteral(INSTANCE_PROBE), arguments);
        QVERIFY(process.waitForStarted());
    }

    // A launch without --wait on `store`, run to its end: what it printed, or "no end"
    // when it did not end within three seconds, or "exit N" when it failed.
    static QString launchToTheEnd(const QString& store) {
        QProcess launch;
        launch.start(QStringLiteral(INSTANCE_PROBE), {store});
        if (!launch.waitForFinished(3000)) {
            launch.kill();
            launch.waitForFinished();
            return QStringLiteral("no end");
        }
        if (launch.exitCode() != 0) {
            return QStringLiteral("exit %1").arg(launch.exitCode());
        }
        return QString::fromUtf8(launch.readAllStandardOutput()).trimmed();
    }

    static QString firstLine(QProcess& process) {
        if (!process.canReadLine() && !process.waitForReadyRead(5000)) {
            return QString();
        }
        return QString::fromUtf8(process.readLine()).trimmed();
    }

private slots:
    void aSecondLaunchHandsOverAndEnds() {
        QTemporaryDir dir;
        const QString store = dir.filePath(QStringLiteral("a.store"));
        QProcess owner;
        start(owner, store, 8000);
        QCOMPARE(firstLine(owner), QStringLiteral("first"));
        QVERIFY(QFile::exists(SingleInstance::lockPath(store)));

        QElapsedTimer clock;
        clock.start();
        QCOMPARE(launchToTheEnd(store), QStringLiteral("handed-over"));
        QVERIFY2(clock.elapsed() < 1000, qPrintable(QString::number(clock.elapsed())));
        // The owner was asked to bring its window forward.
        QCOMPARE(firstLine(owner), QStringLiteral("activated"));
        owner.kill();
        owner.waitForFinished();
    }

    void theSameStoreSpelledAnotherWayIsTheSameStore() {
        QTemporaryDir dir;
        QVERIFY(QDir(dir.path()).mkdir(QStringLiteral("sub")));
        const QString store = dir.filePath(QStringLiteral("a.store"));
        const QString detour = dir.filePath(QStringLiteral("sub/../a.store"));
        QCOMPARE(SingleInstance::serverName(store), SingleInstance::serverName(detour));
        QProcess owner;
        start(owner, store, 5000);
        QCOMPARE(firstLine(owner), QStringLiteral("first"));
        QCOMPARE(launchToTheEnd(detour), QStringLiteral("handed-over"));
        owner.kill();
        owner.waitForFinished();
    }

    void aLockLeftByAKilledProcessIsTakenOver() {
        QTemporaryDir dir;
        const QString store = dir.filePath(QStringLiteral("a.store"));
        QProcess crashed;
        start(crashed, store, 30000);
        QCOMPARE(firstLine(crashed), QStringLiteral("first"));
        ::kill(static_cast<pid_t>(crashed.processId()), SIGKILL);
        QVERIFY(crashed.waitForFinished());
        QVERIFY(QFile::exists(SingleInstance::lockPath(store))); // left behind

        QProcess next;
        start(next, store, 3000);
        QCOMPARE(firstLine(next), QStringLiteral("first"));
        // And it answers on the name the dead one had.
        QCOMPARE(launchToTheEnd(store), QStringLiteral("handed-over"));
        QCOMPARE(firstLine(next), QStringLiteral("activated"));
        next.kill();
        next.waitForFinished();
    }

    void differentStoresRunSideBySide() {
        QTemporaryDir dir;
        QProcess one;
        QProcess two;
        start(one, dir.filePath(QStringLiteral("one.store")), 3000);
        start(two, dir.filePath(QStringLiteral("two.store")), 3000);
        QCOMPARE(firstLine(one), QStringLiteral("first"));
        QCOMPARE(firstLine(two), QStringLiteral("first"));
        one.kill();
        two.kill();
        one.waitForFinished();
        two.waitForFinished();
    }

    void aLaunchBeforeTheOwnerListensWaitsForIt() {
        QTemporaryDir dir;
        const QString store = dir.filePath(QStringLiteral("a.store"));
        SingleInstance::Outcome outcome = SingleInstance::Outcome::unguarded;
        const auto instance = SingleInstance::claim(store, &outcome);
        QCOMPARE(outcome, SingleInstance::Outcome::first);
        bool activated = false;
        connect(instance.get(), &SingleInstance::activationRequested, this,
                [&activated] { activated = true; });
        // The owner is still drawing its first frame when the second launch comes.
        QProcess later;
        later.start(QStringLiteral(INSTANCE_PROBE), {store});
        QVERIFY(later.waitForStarted());
        QTest::qWait(300);
        QVERIFY(!activated);
        instance->listen();
        instance->listen(); // again is harmless
        QTRY_VERIFY(activated);
        QTRY_COMPARE_WITH_TIMEOUT(later.state(), QProcess::NotRunning, 3000);
        QCOMPARE(later.exitCode(), 0);
        QCOMPARE(QString::fromUtf8(later.readAllStandardOutput()).trimmed(), QStringLiteral("handed-over"));
    }

    void theLockGoesWithTheProcess() {
        QTemporaryDir dir;
        const QString store = dir.filePath(QStringLiteral("a.store"));
        {
            SingleInstance::Outcome outcome = SingleInstance::Outcome::unguarded;
            const auto instance = SingleInstance::claim(store, &outcome);
            QCOMPARE(outcome, SingleInstance::Outcome::first);
            QVERIFY(QFile::exists(SingleInstance::lockPath(store)));
        }
        QVERIFY(!QFile::exists(SingleInstance::lockPath(store)));
    }
};

QTEST_GUILESS_MAIN(TestSingleInstance)
#include "tst_singleinstance.moc"
