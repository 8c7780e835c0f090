// Every change to accounts and keys against a store that won't take it: a read-only
// file, a full disk and a write lock another program holds. A refused change leaves the
// records in memory, the rows in the file and the items in the real keyring as they
// were, and says why; after a restart, records and keys still agree.
#include "core/AccountLifecycle.h"
#include "core/Preferences.h"
#include "services/KeychainStore.h"
#include "store/AccountStore.h"

#include "FileProtection.h"
#include "KeyringControl.h"

#include <QDir>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

#include <functional>

namespace {
enum class Refusal { readOnlyFile, fullDisk, writeLockHeld };
enum class Operation {
    remove,
    clearSamples,
    signOut,
    editorSignOut,
    editorChangesConnection,
    editorNewWithKey,
    onboardingNewWithKey
};

// The rows of the store file, read by a connection of its own.
int rowsIn(const QString& path) {
    int rows = -1;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("count"));
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (db.open()) {
            QSqlQuery query(db);
            if (query.exec(QStringLiteral("SELECT count(*) FROM ProviderAccount")) && query.next()) {
                rows = query.value(0).toInt();
            }
        }
    }
    QSqlDatabase::removeDatabase(QStringLiteral("count"));
    return rows;
}

QList<ProviderAccountRow> rowsOf(const AccountStore& store) {
    QList<ProviderAccountRow> rows;
    for (const ProviderAccount* account : store.accounts()) {
        rows.append(account->row());
    }
    return rows;
}
} // namespace

class TestRefusedWrites final : public QObject {
    Q_OBJECT

    // The folder the store lives in: a 64 KiB tmpfs for the full disk, else a temporary one.
    QString m_folder;
    QTemporaryDir m_dir;
    bool m_mounted = false;
    std::unique_ptr<AccountStore> m_store;
    std::unique_ptr<Preferences> m_preferences;
    std::unique_ptr<AccountLifecycle> m_lifecycle;
    QSqlDatabase m_locker;

    QString path() const { return m_folder + QStringLiteral("/accounts.store"); }

    void open() {
        QString error;
        m_store = AccountStore::open(path(), &error);
        QVERIFY2(m_store, qPrintable(error));
        m_lifecycle = std::make_unique<AccountLifecycle>(m_store.get(), m_preferences.get());
    }

    ProviderAccount* add(const QString& label, ConnectionMode mode, bool sample) {
        auto* account = new ProviderAccount(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                                  .label = label,
                                                                  .accountKind = AccountKind::api,
                                                                  .connectionMode = mode,
                                                                  .sampleDataEnabled = sample});
        m_store->insert(account);
        KeychainStore::save(QStringLiteral("sk-admin-") + label, account->secretReference());
        return account;
    }

    // Makes the store refuse every write; the returned function lifts it.
    std::function<void()> refuse(Refusal refusal) {
        switch (refusal) {
        case Refusal::readOnlyFile:
            makeStoreReadOnly(path(), true);
            return [this] { makeStoreReadOnly(path(), false); };
        case Refusal::fullDisk:
            return [filler = fillDisk(m_folder)] { QFile::remove(filler); };
        case Refusal::writeLockHeld: {
            m_locker = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("locker"));
            m_locker.setDatabaseName(path());
            m_locker.open();
            QSqlQuery(m_locker).exec(QStringLiteral("BEGIN IMMEDIATE"));
            return [this] {
                QSqlQuery(m_locker).exec(QStringLiteral("ROLLBACK"));
                m_locker.close();
                m_locker = QSqlDatabase();
                QSqlDatabase::removeDatabase(QStringLiteral("locker"));
            };
        }
        }
        return [] {};
    }

private slots:
    void init() {
        // Only this test's items count: the keyring may hold other tests' leftovers.
        for (const QString& account : keychainAccounts()) {
            KeychainStore::deleteItem(account);
        }
        m_folder = m_dir.path() + QStringLiteral("/store");
        QDir().mkpath(m_folder);
        m_preferences = std::make_unique<Preferences>(m_dir.filePath(QStringLiteral("preferences.ini")));
    }

    void cleanup() {
        for (const QString& account : keychainAccounts()) {
            KeychainStore::deleteItem(account);
        }
        m_lifecycle.reset();
        m_store.reset();
        if (m_mounted) {
            unmountSmallDisk(m_folder);
            m_mounted = false;
        }
        QDir(m_folder).removeRecursively();
    }

    void aRefusedChangeLeavesRecordsRowsAndKeys_data() {
        QTest::addColumn<Refusal>("refusal");
        QTest::addColumn<Operation>("operation");
        const QList<std::pair<const char*, Refusal>> refusals{{"read-only file", Refusal::readOnlyFile},
                                                              {"full disk", Refusal::fullDisk},
                                                              {"write lock held", Refusal::writeLockHeld}};
        const QList<std::pair<const char*, Operation>> operations{
            {"delete", Operation::remove},
            {"clear samples", Operation::clearSamples},
            {"sign out", Operation::signOut},
            {"editor sign-out", Operation::editorSignOut},
            {"editor changes connection", Operation::editorChangesConnection},
            {"editor new account with key", Operation::editorNewWithKey},
            {"onboarding new account with key", Operation::onboardingNewWithKey}};
        for (const auto& [refusalName, refusal] : refusals) {
            for (const auto& [operationName, operation] : operations) {
                QTest::addRow("%s, %s", refusalName, operationName) << refusal << operation;
            }
        }
    }

    void aRefusedChangeLeavesRecordsRowsAndKeys() {
        QFETCH(Refusal, refusal);
        QFETCH(Operation, operation);
        if (refusal == Refusal::fullDisk) {
            if (geteuid() != 0) {
                QSKIP("a small tmpfs for the full disk can only be mounted as root");
            }
            m_mounted = mountSmallDisk(m_folder);
            QVERIFY(m_mounted);
        }
        open();
        ProviderAccount* keyed = add(QStringLiteral("keyed"), ConnectionMode::apiKey, false);
        add(QStringLiteral("sample"), ConnectionMode::mock, true);
        QVERIFY(m_store->save());

        const QList<ProviderAccountRow> recordsBefore = rowsOf(*m_store);
        const QStringList keysBefore = keychainAccounts();
        QVERIFY2(keysBefore.size() == 2, qPrintable(keysBefore.join(u',')));
        const int rowsBefore = rowsIn(path());
        QCOMPARE(rowsBefore, 2);

        const std::function<void()> lift = refuse(refusal);
        std::optional<AccountLifecycle::Refusal> refused;
        std::optional<QString> editorRefusal;
        AccountDraft draft{.provider = AIProvider::anthropic,
                           .label = QStringLiteral("changed"),
                           .connectionMode = ConnectionMode::manual,
                           .sampleDataEnabled = false};
        switch (operation) {
        case Operation::remove:
            refused = m_lifecycle->deleteAccount(keyed->id()).refusal;
            break;
        case Operation::clearSamples:
            refused = m_lifecycle->clearSampleData().refusal;
            break;
        case Operation::signOut:
            refused = m_lifecycle->logout(keyed).refusal;
            break;
        case Operation::editorSignOut:
            refused = m_lifecycle->logoutConnection(keyed).refusal;
            break;
        case Operation::editorChangesConnection:
            editorRefusal = m_lifecycle->saveEditorAccount(draft, keyed).refusal;
            break;
        case Operation::editorNewWithKey:
            draft.connectionMode = ConnectionMode::apiKey;
            draft.provider = AIProvider::openAI;
            draft.apiKey = QStringLiteral("sk-admin-new");
            editorRefusal = m_lifecycle->saveEditorAccount(draft, nullptr).refusal;
            break;
        case Operation::onboardingNewWithKey:
            draft.connectionMode = ConnectionMode::apiKey;
            draft.provider = AIProvider::openAI;
            draft.apiKey = QStringLiteral("sk-admin-onboarded");
            refused = m_lifecycle->createOnboardingAccount(draft).refusal;
            break;
        }
        lift();

        // Told, with the store's own reason.
        const QString expectedReason =
            refusal == Refusal::writeLockHeld ? QStringLiteral("database is locked")
            : refusal == Refusal::fullDisk    ? QStringLiteral("database or disk is full")
                                              : QStringLiteral("read-only");
        const QString reason = refused ? refused->reason : editorRefusal.value_or(QString());
        QVERIFY2(refused || editorRefusal, "the change was not refused");
        QVERIFY(!reason.isEmpty());
        if (!expectedReason.isEmpty()) {
            QVERIFY2(reason.contains(expectedReason), qPrintable(reason));
        }
        // Memory, file and keyring as they were.
        QCOMPARE(rowsOf(*m_store), recordsBefore);
        QVERIFY(!m_store->hasChanges());
        QCOMPARE(keychainAccounts(), keysBefore);
        QCOMPARE(rowsIn(path()), rowsBefore);

        // After a restart: every row has its key and every key its row.
        m_lifecycle.reset();
        m_store.reset();
        open();
        QStringList references;
        for (const ProviderAccount* account : m_store->accounts()) {
            references.append(account->secretReference());
        }
        references.sort();
        QCOMPARE(references, keysBefore);
        QCOMPARE(rowsOf(*m_store), recordsBefore);
    }
};

QTEST_GUILESS_MAIN(TestRefusedWrites)
#include "tst_refusedwrites.moc"
