#include "FileProtection.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>
#include <QTest>

#include <sys/stat.h>
#include <unistd.h>

// Starts the real binary offscreen, as an operator would start it, in a private home.
class TestLaunch final : public QObject {
    Q_OBJECT

private:
    std::unique_ptr<QTemporaryDir> m_home;
    QTemporaryDir m_runtime;

    QProcessEnvironment environment(const std::optional<QString>& storePath) const {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("QT_QPA_PLATFORM", "offscreen");
        environment.insert("HOME", m_home->path());
        environment.insert("XDG_CONFIG_HOME", m_home->filePath("config"));
        environment.insert("XDG_DATA_HOME", m_home->filePath("data"));
        environment.insert("XDG_RUNTIME_DIR", m_runtime.path());
        environment.remove("TALLYFEN_STORE_PATH");
        if (storePath) {
            environment.insert("TALLYFEN_STORE_PATH", *storePath);
        }
        return environment;
    }

    static void expectStaysUp(QProcess& app) {
        QVERIFY2(app.waitForStarted(5000), qPrintable(app.errorString()));
        // Still running after a second and a half: the window is up and the event loop runs.
        QVERIFY2(!app.waitForFinished(1500), app.readAllStandardError().constData());
        // There is no shutdown logic to wait for: quitting is a plain termination.
        app.terminate();
        QVERIFY(app.waitForFinished(5000));
    }

private slots:
    void init() {
        m_home = std::make_unique<QTemporaryDir>();
        QVERIFY(m_home->isValid());
    }

    void storeInAMissingFolderIsFatal() {
        QProcess app;
        app.setProcessEnvironment(environment(m_home->filePath("no/such/folder/t.store")));
        app.start(QStringLiteral(TALLYFEN_BINARY), {});
        QVERIFY(app.waitForStarted(5000));
        QVERIFY(app.waitForFinished(10000));
        QCOMPARE(app.exitStatus(), QProcess::NormalExit);
        QVERIFY(app.exitCode() != 0);
        const QString errors = QString::fromUtf8(app.readAllStandardError());
        QVERIFY2(errors.startsWith(QStringLiteral("Unable to create the local tracker store: ")),
                 qPrintable(errors));
        QVERIFY(errors.trimmed().size() >
                QStringLiteral("Unable to create the local tracker store: ").size());
        QVERIFY(app.readAllStandardOutput().isEmpty());
        QVERIFY(!QFileInfo::exists(m_home->filePath("no")));
    }

    void storeInAFolderThatCannotBeWrittenIsFatal() {
        const QString folder = m_home->filePath("locked");
        QVERIFY(QDir().mkpath(folder));
        QVERIFY(makeReadOnly(folder, true)); // exists, but nothing can be created in it
        QProcess app;
        app.setProcessEnvironment(environment(folder + QStringLiteral("/t.store")));
        app.start(QStringLiteral(TALLYFEN_BINARY), {});
        const bool finished = app.waitForFinished(10000);
        QVERIFY(makeReadOnly(folder, false));
        QVERIFY(finished);
        QVERIFY(app.exitCode() != 0);
        const QString errors = QString::fromUtf8(app.readAllStandardError());
        QVERIFY2(errors.startsWith(QStringLiteral("Unable to create the local tracker store: ")),
                 qPrintable(errors));
        QVERIFY(!QFileInfo::exists(folder + QStringLiteral("/t.store")));
    }

    void storeThatIsAFolderIsFatal() {
        QProcess app;
        app.setProcessEnvironment(environment(m_home->path()));
        app.start(QStringLiteral(TALLYFEN_BINARY), {});
        QVERIFY(app.waitForFinished(10000));
        QVERIFY(app.exitCode() != 0);
        const QString errors = QString::fromUtf8(app.readAllStandardError());
        QVERIFY2(errors.startsWith(QStringLiteral("Unable to create the local tracker store: ")),
                 qPrintable(errors));
        QVERIFY(errors.contains(QStringLiteral("is a folder")));
    }

    void theRunningAppIsNotDumpable() {
        QProcess app;
        app.setProcessEnvironment(environment(m_home->filePath("dump.store")));
        app.start(QStringLiteral(TALLYFEN_BINARY), {});
        QVERIFY(app.waitForStarted(5000));
        QVERIFY2(!app.waitForFinished(1500), app.readAllStandardError().constData());
        if (geteuid() == 0) {
            app.terminate();
            app.waitForFinished(5000);
            QSKIP("run as root, every /proc entry belongs to root anyway (tst_processhardening covers it)");
        }
        // The kernel hands a process that is not dumpable to root: its /proc entries
        // belong to root, whoever runs it.
        struct stat status {};
        QVERIFY(::stat(QFile::encodeName(QStringLiteral("/proc/%1/status").arg(app.processId())).constData(),
                       &status) == 0);
        QCOMPARE(status.st_uid, uid_t(0));
        app.terminate();
        QVERIFY(app.waitForFinished(5000));
    }

    void storeOfANewerVersionIsFatalAndUntouched() {
        const QString folder = m_home->filePath("newer");
        QVERIFY(QDir().mkpath(folder));
        const QString store = folder + QStringLiteral("/t.store");
        // An SQLite header whose user version says a later schema, as a newer build writes.
        QByteArray header(4096, '\0');
        header.replace(0, 16, QByteArray("SQLite format 3\0", 16));
        header[16] = 0x10; // page size 4096
        header[18] = 1;
        header[19] = 1;
        header[21] = 64;
        header[22] = 32;
        header[23] = 32;
        header[63] = 9; // user version 9
        QFile file(store);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(header);
        file.close();
        QProcess app;
        app.setProcessEnvironment(environment(store));
        app.start(QStringLiteral(TALLYFEN_BINARY), {});
        QVERIFY(app.waitForFinished(10000));
        QVERIFY(app.exitCode() != 0);
        const QString errors = QString::fromUtf8(app.readAllStandardError());
        QVERIFY2(
            errors.startsWith(QStringLiteral("Unable to create the local tracker store: the file was written "
                                             "by a newer version of Tallyfen (schema 9;")),
            qPrintable(errors));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll(), header);
        // Nothing beside it: no log, no index, no lock.
        QCOMPARE(QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System), QStringList{"t.store"});
    }

    void emptyVariableOpensTheDefaultStore() {
        QProcess app;
        app.setProcessEnvironment(environment(QString()));
        app.start(QStringLiteral(TALLYFEN_BINARY), {});
        expectStaysUp(app);
        QVERIFY(QFile::exists(m_home->filePath("data/Tallyfen/Tallyfen/Tallyfen.store")));
    }

    void validPathCreatesTheFile() {
        const QString path = m_home->filePath("chosen.store");
        QProcess app;
        app.setProcessEnvironment(environment(path));
        app.start(QStringLiteral(TALLYFEN_BINARY), {});
        expectStaysUp(app);
        QVERIFY(QFile::exists(path));
        QVERIFY(!QFileInfo::exists(m_home->filePath("data/Tallyfen")));
    }

    void theStartLoadsNoImagePluginNorTheKeychainLibrary() {
        // The bundled PNGs and SVGs are read by Qt's own readers: asking every installed
        // image plugin about them would load each one into the process. libsecret comes
        // with the first keychain operation, which a store without keys never makes.
        QProcess app;
        app.setProcessEnvironment(environment(m_home->filePath("plugins.store")));
        app.start(QStringLiteral(TALLYFEN_BINARY), {});
        QVERIFY(app.waitForStarted(5000));
        QVERIFY2(!app.waitForFinished(1500), app.readAllStandardError().constData());
        QFile maps(QStringLiteral("/proc/%1/maps").arg(app.processId()));
        if (!maps.open(QIODevice::ReadOnly) && geteuid() != 0) {
            app.kill();
            app.waitForFinished();
            QSKIP("the app is not dumpable: only root may read its memory map");
        }
        QVERIFY(maps.open(QIODevice::ReadOnly) || maps.isOpen());
        const QByteArray mapped = maps.readAll();
        QVERIFY(mapped.contains("libQt6Widgets")); // the right process, fully started
        QVERIFY2(!mapped.contains("/imageformats/"), mapped.constData());
        QVERIFY2(!mapped.contains("libsecret"), mapped.constData());
        app.terminate();
        QVERIFY(app.waitForFinished(5000));
    }

    void aSecondLaunchOnTheSameStoreEndsAtOnce() {
        const QString path = m_home->filePath("shared.store");
        QProcess first;
        first.setProcessEnvironment(environment(path));
        first.start(QStringLiteral(TALLYFEN_BINARY), {});
        QVERIFY(first.waitForStarted(5000));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(path), 5000); // the first owns the store now
        QProcess second;
        second.setProcessEnvironment(environment(path));
        QElapsedTimer clock;
        clock.start();
        second.start(QStringLiteral(TALLYFEN_BINARY), {});
        QVERIFY(second.waitForFinished(5000));
        QVERIFY2(clock.elapsed() < 1500, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(second.exitStatus(), QProcess::NormalExit);
        QCOMPARE(second.exitCode(), 0);
        // Another store is another instance.
        QProcess other;
        other.setProcessEnvironment(environment(m_home->filePath("other.store")));
        other.start(QStringLiteral(TALLYFEN_BINARY), {});
        expectStaysUp(other);
        QVERIFY2(first.state() == QProcess::Running, "the first window keeps running");
        first.terminate();
        QVERIFY(first.waitForFinished(5000));
    }
};

QTEST_GUILESS_MAIN(TestLaunch)
#include "tst_launch.moc"
