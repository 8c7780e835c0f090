#include "services/KeychainStore.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

// A key the operator trusts us with lives in the keychain and nowhere else.
class TestSecretsAtRest final : public QObject {
    Q_OBJECT

private slots:
    void keyIsOnlyInTheKeychain() {
        QTemporaryDir folder;
        const QString secret =
            QStringLiteral("sk-admin-") + QUuid::createUuid().toString(QUuid::Id128) + QStringLiteral("-Zq9");
        QProcess probe;
        probe.start(QStringLiteral(KEYCHAIN_PROBE), {QStringLiteral("persist"), folder.path()});
        QVERIFY(probe.waitForStarted());
        probe.write(secret.toUtf8() + '\n');
        QByteArray output;
        while (!output.contains('\n')) {
            QVERIFY(probe.waitForReadyRead(30000));
            output += probe.readAllStandardOutput();
        }
        QVERIFY2(output.contains(" verified"), output.constData());

        // The key is really kept: in the keychain, under the account's reference.
        const QString account = QString::fromUtf8(output.split(' ').value(1));
        QCOMPARE(KeychainStore::read(account), std::optional<QString>(secret));

        const QList<QByteArray> forms{
            secret.toUtf8(), QByteArray(reinterpret_cast<const char*>(secret.utf16()), secret.size() * 2),
            secret.toUtf8().toBase64(), secret.toUtf8().toHex()};
        QStringList scanned;
        QDirIterator files(folder.path(), QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            QVERIFY(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            scanned.append(QFileInfo(file).fileName());
            for (const QByteArray& form : forms) {
                QVERIFY2(!bytes.contains(form), qPrintable(file.fileName()));
            }
        }
        // The store with its write-ahead log and shared memory, and the preferences, were
        // all looked at while the process still had them open.
        QVERIFY2(scanned.contains(QStringLiteral("accounts.store")), qPrintable(scanned.join(u',')));
        QVERIFY2(scanned.contains(QStringLiteral("accounts.store-wal")), qPrintable(scanned.join(u',')));
        QVERIFY(scanned.contains(QStringLiteral("accounts.store-shm")));
        QVERIFY(scanned.contains(QStringLiteral("preferences.ini")));

        // Then everything else the process printed, to its end.
        probe.write("done\n");
        probe.closeWriteChannel();
        QVERIFY(probe.waitForFinished(30000));
        QCOMPARE(probe.exitCode(), 0);
        output += probe.readAllStandardOutput();
        const QByteArray errors = probe.readAllStandardError();
        QVERIFY(errors.contains("stored"));
        for (const QByteArray& form : forms) {
            QVERIFY(!output.contains(form));
            QVERIFY(!errors.contains(form));
        }
        KeychainStore::deleteItem(account);
    }
};

QTEST_GUILESS_MAIN(TestSecretsAtRest)
#include "tst_secretsatrest.moc"
