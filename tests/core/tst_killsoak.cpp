// Kills a process with SIGKILL while it changes accounts and their keys (editor saves,
// guided creations, sign-outs, changes of connection, deletes), again and again, on a
// real store and the real keyring; after each kill, a start settles what was owed and
// then every key has its signed-in record and every signed-in record its key.
#include "core/AccountLifecycle.h"
#include "core/Preferences.h"
#include "services/KeychainStore.h"
#include "store/AccountStore.h"

#include "KeyringControl.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

class TestKillSoak final : public QObject {
    Q_OBJECT

private slots:
    // Each kind of debt, settled on its own.
    void whatAKilledProcessOwedIsSettledAtStart() {
        for (const QString& account : keychainAccounts()) {
            KeychainStore::deleteItem(account);
        }
        QTemporaryDir dir;
        QString error;
        auto store = AccountStore::open(dir.filePath(QStringLiteral("debt.store")), &error);
        QVERIFY2(store, qPrintable(error));
        Preferences preferences(dir.filePath(QStringLiteral("debt.ini")));
        const auto add = [&](const QString& label, ConnectionMode mode) {
            auto* account = new ProviderAccount(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                                      .label = label,
                                                                      .accountKind = AccountKind::api,
                                                                      .connectionMode = mode});
            store->insert(account);
            return account;
        };
        // Saved for a key that never came: signed out, its data kept.
        ProviderAccount* keyless = add(QStringLiteral("keyless"), ConnectionMode::apiKey);
        // Signed out, its key still there: the key goes.
        ProviderAccount* signedOut = add(QStringLiteral("signed out"), ConnectionMode::manual);
        KeychainStore::save(QStringLiteral("sk-admin-old"), signedOut->secretReference());
        // A delete that was never saved: the key stays with its record.
        ProviderAccount* kept = add(QStringLiteral("kept"), ConnectionMode::apiKey);
        KeychainStore::save(QStringLiteral("sk-admin-kept"), kept->secretReference());
        QVERIFY(store->save());
        // A record that was never saved, its key written: the key goes.
        const QString neverSaved = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
        KeychainStore::save(QStringLiteral("sk-admin-never"), neverSaved);
        KeyJournal(store->path())
            .note({{KeyJournal::Change::createKey, keyless->secretReference()},
                   {KeyJournal::Change::deleteKey, signedOut->secretReference()},
                   {KeyJournal::Change::deleteKey, kept->secretReference()},
                   {KeyJournal::Change::createKey, neverSaved}});

        AccountLifecycle lifecycle(store.get(), &preferences);
        lifecycle.settleKeyJournal();
        QVERIFY(KeyJournal(store->path()).entries().isEmpty());
        QCOMPARE(keychainAccounts(), QStringList{kept->secretReference()});
        QCOMPARE(keyless->connectionMode(), ConnectionMode(ConnectionMode::manual));
        QCOMPARE(keyless->syncMessage(),
                 QStringLiteral("Signed out — enter manual limits or reconnect an official API key"));
        QVERIFY(!store->hasChanges());
        KeychainStore::deleteItem(kept->secretReference());
    }

    void killedMidChangeRecordsAndKeysStillAgree() {
        for (const QString& account : keychainAccounts()) {
            KeychainStore::deleteItem(account);
        }
        QTemporaryDir dir;
        const QString storePath = dir.filePath(QStringLiteral("soak.store"));
        const QString preferencesPath = dir.filePath(QStringLiteral("soak.ini"));
        QRandomGenerator random(20261124);
        QElapsedTimer clock;
        clock.start();
        int kills = 0;
        qint64 rounds = 0;
        // Bounded: thirty kills, or as many as fit in twenty seconds.
        while (kills < 30 && clock.elapsed() < 20000) {
            QProcess writer;
            writer.start(QStringLiteral(LIFECYCLE_WRITER), {storePath, preferencesPath});
            QVERIFY(writer.waitForStarted(5000));
            QVERIFY2(writer.waitForReadyRead(30000), writer.readAllStandardError().constData());
            QTest::qWait(static_cast<int>(random.bounded(5, 120)));
            writer.kill();
            QVERIFY(writer.waitForFinished(5000));
            const QList<QByteArray> lines = writer.readAllStandardOutput().split('\n');
            rounds += lines.size() > 1 ? lines.at(lines.size() - 2).toLongLong() : 0;
            ++kills;

            // The next start, as the application makes it.
            QString error;
            auto store = AccountStore::open(storePath, &error);
            QVERIFY2(store, qPrintable(error));
            Preferences preferences(preferencesPath);
            AccountLifecycle lifecycle(store.get(), &preferences);
            lifecycle.settleKeyJournal();
            QVERIFY(KeyJournal(store->path()).entries().isEmpty());
            QStringList signedIn;
            for (const ProviderAccount* account : store->accounts()) {
                if (account->connectionMode() == ConnectionMode::apiKey) {
                    signedIn.append(account->secretReference());
                }
            }
            signedIn.sort();
            QCOMPARE(keychainAccounts(), signedIn);
        }
        qInfo("%d kills after %lld rounds of changes in all", kills, static_cast<long long>(rounds));
        QVERIFY(kills >= 10);
        for (const QString& account : keychainAccounts()) {
            KeychainStore::deleteItem(account);
        }
    }
};

QTEST_GUILESS_MAIN(TestKillSoak)
#include "tst_killsoak.moc"
