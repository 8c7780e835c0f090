#include "core/Preferences.h"
#include "store/AccountStore.h"

#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

// A keychain that is missing or locked while the editor saves: the sheet's sentence,
// everything typed kept, and no record written. Each case runs the form in a process
// of its own, on a bus of its own.
class TestEditorKeychain final : public QObject {
    Q_OBJECT

private:
    QStringList runProbe(const QString& command, const QString& folder) {
        QProcess process;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PROBE"), QStringLiteral(EDITOR_PROBE));
        environment.insert(QStringLiteral("FOLDER"), folder);
        environment.insert(QStringLiteral("HOME"), folder);
        environment.insert(QStringLiteral("XDG_DATA_HOME"), folder + QStringLiteral("/data"));
        environment.insert(QStringLiteral("XDG_CONFIG_HOME"), folder + QStringLiteral("/config"));
        environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), folder);
        environment.remove(QStringLiteral("GNOME_KEYRING_CONTROL"));
        process.setProcessEnvironment(environment);
        process.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command});
        if (!process.waitForFinished(30000)) {
            process.kill();
            process.waitForFinished();
            return {QStringLiteral("timed out")};
        }
        return QString::fromUtf8(process.readAllStandardOutput()).split(u'\n', Qt::SkipEmptyParts);
    }

    // The probe on a bus of its own with an unlocked throw-away keyring, `arguments` added.
    static QString onAKeyringOfItsOwn(const QString& arguments) {
        return QStringLiteral("exec dbus-run-session -- sh -c '"
                              "eval \"$(printf tallyfen-probe | gnome-keyring-daemon "
                              "--unlock --components=secrets --daemonize)\"; "
                              "exec \"$PROBE\" \"$FOLDER\"%1'")
            .arg(arguments);
    }

    static void expectRefused(const QStringList& lines, const QString& folder, const QString& reason) {
        QCOMPARE(lines, (QStringList{"error The credential could not be saved in Keychain. Reason: " + reason,
                                     "accounts 0", "label Work API", "key kept"}));
        QString error;
        auto store = AccountStore::open(folder + QStringLiteral("/accounts.store"), &error);
        QVERIFY2(store, qPrintable(error));
        QVERIFY(store->accounts().isEmpty());
    }

private slots:
    void noKeychainOnTheBus() {
        QTemporaryDir folder;
        const QStringList lines = runProbe(
            QStringLiteral("DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent/bus exec \"$PROBE\" \"$FOLDER\""),
            folder.path());
        expectRefused(lines, folder.path(), QStringLiteral("the system keychain did not answer."));
    }

    void lockedKeychain() {
        QTemporaryDir folder;
        const QStringList lines = runProbe(onAKeyringOfItsOwn(QStringLiteral(" --lock")), folder.path());
        expectRefused(lines, folder.path(), QStringLiteral("the system keychain is locked."));
    }

    void anUnlockedKeychainTakesTheKey() {
        QTemporaryDir folder;
        const QStringList lines = runProbe(onAKeyringOfItsOwn(QString()), folder.path());
        QCOMPARE(lines.value(0), QStringLiteral("saved"));
        QCOMPARE(lines.value(1), QStringLiteral("accounts 1"));
    }
};

QTEST_GUILESS_MAIN(TestEditorKeychain)
#include "tst_editorkeychain.moc"
