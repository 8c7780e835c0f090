#include "store/AccountStore.h"

#include "FileProtection.h"
#include "StoreFixtures.h"
#include "model/UsageJson.h"
#include "model/UuidText.h"

#include <QCryptographicHash>
#include <QFile>
#include <QProcess>
#include <QSignalSpy>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTest>

namespace {
ProviderAccountRow fullRow() {
    return ProviderAccountRow{.id = QUuid::createUuid(),
                              .providerRaw = QStringLiteral("anthropic"),
                              .label = QStringLiteral("Team “Max” ✓"),
                              .accountKindRaw = QStringLiteral("consumer"),
                              .planName = QStringLiteral("Max 20×"),
                              .detectedMetadataData = QByteArrayLiteral("{\"x\":1}"),
                              .identityDetail = QStringLiteral("org-123"),
                              .modelScope = QStringLiteral("claude-sonnet"),
                              .agentScope = QStringLiteral("research"),
                              .agentRosterText = QStringLiteral("a, b"),
                              .agentBudgetsData = QByteArrayLiteral("[]"),
                              .agentCount = 9'007'199'254'740'993LL,
                              .renewalDate = Timestamp(800000000.123456789),
                              .connectionModeRaw = QStringLiteral("manual"),
                              .createdAt = Timestamp(790000000.5),
                              .lastRefreshAt = Timestamp(-12.25),
                              .syncStatusRaw = QStringLiteral("partial"),
                              .syncMessage = QStringLiteral("Costs unavailable.\nSecond line"),
                              .snapshotData = QByteArray("\x00\x01\xff", 3),
                              .snapshotHistoryData = QByteArray(100'000, 'h'),
                              .sampleDataEnabled = false};
}

ProviderAccountRow sparseRow() {
    return ProviderAccountRow{.id = QUuid::createUuid(),
                              .providerRaw = QString(),
                              .label = QString(),
                              .accountKindRaw = QStringLiteral("api"),
                              .planName = QString(),
                              .connectionModeRaw = QStringLiteral("mock"),
                              .createdAt = Timestamp(1),
                              .syncStatusRaw = QStringLiteral("needsAttention"),
                              .syncMessage = QString(),
                              .sampleDataEnabled = true};
}

QByteArray digest(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        return {};
    }
    return QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256);
}

} // namespace

class TestAccountStore final : public QObject {
    Q_OBJECT

private slots:
    void init() {
        m_dir.reset(new QTemporaryDir);
        QVERIFY(m_dir->isValid());
        m_path = m_dir->filePath(QStringLiteral("accounts.store"));
    }

    void createsOneTableWithExactlyTheAttributes() {
        QString error;
        auto store = AccountStore::open(m_path, &error);
        QVERIFY2(store, qPrintable(error));
        QVERIFY(QFile::exists(m_path));
        store.reset();

        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("inspect"));
        db.setDatabaseName(m_path);
        QVERIFY(db.open());
        {
            QSqlQuery tables(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"), db);
            QStringList names;
            while (tables.next()) {
                names.append(tables.value(0).toString());
            }
            QCOMPARE(names, QStringList{"ProviderAccount"});
            QSqlQuery columns(QStringLiteral("PRAGMA table_info(ProviderAccount)"), db);
            QStringList columnNames;
            while (columns.next()) {
                columnNames.append(columns.value(1).toString());
                QCOMPARE(columns.value(3).toInt(), 0); // no NOT NULL
                QVERIFY(columns.value(4).isNull());    // no default
                QCOMPARE(columns.value(5).toInt(), 0); // no key
            }
            QCOMPARE(columnNames.size(), 21);
            QCOMPARE(columnNames, AccountStore::kColumns);
            QSqlQuery journal(QStringLiteral("PRAGMA journal_mode"), db);
            QVERIFY(journal.next());
            QCOMPARE(journal.value(0).toString(), QStringLiteral("wal"));
        }
        db.close();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("inspect"));
    }

    void everyAttributeSurvivesAReopen() {
        const ProviderAccountRow full = fullRow();
        const ProviderAccountRow sparse = sparseRow();
        ProviderAccountRow emptyValues = sparseRow();
        emptyValues.identityDetail = QString();
        emptyValues.modelScope = QString();
        emptyValues.detectedMetadataData = QByteArray();
        emptyValues.agentCount = 0;
        emptyValues.createdAt = Timestamp(2);
        {
            QString error;
            auto store = AccountStore::open(m_path, &error);
            QVERIFY2(store, qPrintable(error));
            store->insert(new ProviderAccount(full));
            store->insert(new ProviderAccount(sparse));
            store->insert(new ProviderAccount(emptyValues));
            QVERIFY(store->hasChanges());
            QVERIFY2(store->save(&error), qPrintable(error));
            QVERIFY(!store->hasChanges());
        }
        QString error;
        auto reopened = AccountStore::open(m_path, &error);
        QVERIFY2(reopened, qPrintable(error));
        QCOMPARE(reopened->accounts().size(), 3);
        QCOMPARE(reopened->accounts().at(0)->row(), sparse);
        QCOMPARE(reopened->accounts().at(1)->row(), emptyValues);
        QCOMPARE(reopened->accounts().at(2)->row(), full);
        // Present-but-empty stays present; absent stays absent.
        QVERIFY(reopened->accounts().at(1)->identityDetail().has_value());
        QVERIFY(reopened->accounts().at(1)->detectedMetadataData().has_value());
        QVERIFY(!reopened->accounts().at(0)->identityDetail().has_value());
        QVERIFY(!reopened->accounts().at(0)->agentCount().has_value());
    }

    void labelsOfEveryScriptAndLengthReadBack_data() {
        QTest::addColumn<QString>("encoding");
        QTest::newRow("a file in UTF-8, as this program makes them") << QStringLiteral("UTF-8");
        QTest::newRow("a file in UTF-16, as another program may") << QStringLiteral("UTF-16le");
    }
    void labelsOfEveryScriptAndLengthReadBack() {
        QFETCH(QString, encoding);
        {
            // The encoding is fixed by the first thing written to a file.
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("maker"));
            db.setDatabaseName(m_path);
            QVERIFY(db.open());
            QSqlQuery(QStringLiteral("PRAGMA encoding = '%1'").arg(encoding), db);
            QSqlQuery(QStringLiteral("CREATE TABLE scratch (x)"), db);
            QSqlQuery(QStringLiteral("DROP TABLE scratch"), db);
            QSqlQuery check(QStringLiteral("PRAGMA encoding"), db);
            QVERIFY(check.next());
            QCOMPARE(check.value(0).toString(), encoding);
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("maker"));
        // Accents, a combining mark, CJK, an emoji (a surrogate pair), then a long tail.
        const QString mixed = QStringLiteral("Équipe e\u0301 東京 🙂 ");
        const QString label = mixed + QString(200'000, u'w') + mixed;
        ProviderAccountRow row = sparseRow();
        row.label = label;
        ProviderAccountRow empty = sparseRow();
        empty.id = QUuid::createUuid();
        empty.label = QString();
        empty.createdAt = Timestamp(5);
        {
            QString error;
            auto store = AccountStore::open(m_path, &error);
            QVERIFY2(store, qPrintable(error));
            store->insert(new ProviderAccount(row));
            store->insert(new ProviderAccount(empty));
            QVERIFY(store->save());
        }
        QString error;
        auto reopened = AccountStore::open(m_path, &error);
        QVERIFY2(reopened, qPrintable(error));
        QCOMPARE(reopened->account(row.id)->label(), label);
        QCOMPARE(reopened->account(empty.id)->label(), QString());
    }

    void historiesAreReadOnlyWhenAskedFor() {
        const ProviderAccountRow full = fullRow();
        QVERIFY(storeRows({full}));
        {
            QString error;
            auto store = AccountStore::open(m_path, &error);
            ProviderAccount* account = store->accounts().first();
            QVERIFY(!account->isSnapshotHistoryLoaded());
            // A save of other fields leaves the unread history as it is stored.
            account->setLabel(QStringLiteral("renamed"));
            QVERIFY(store->save());
            QVERIFY(!account->isSnapshotHistoryLoaded());
        }
        QString error;
        auto store = AccountStore::open(m_path, &error);
        ProviderAccount* account = store->accounts().first();
        QCOMPARE(account->snapshotHistoryData(), full.snapshotHistoryData);
        QVERIFY(account->isSnapshotHistoryLoaded());
        QCOMPARE(account->label(), QStringLiteral("renamed"));
    }

    void anUnreadableHistoryIsNeverOverwritten() {
        const ProviderAccountRow full = fullRow();
        QVERIFY(storeRows({full}));
        QString error;
        auto store = AccountStore::open(m_path, &error);
        ProviderAccount* account = store->accounts().first();
        {
            // Someone moves the table away for a moment: the read fails.
            QSqlDatabase other =
                QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("mover"));
            other.setDatabaseName(m_path);
            QVERIFY(other.open());
            QSqlQuery(QStringLiteral("ALTER TABLE ProviderAccount RENAME TO Elsewhere"), other);
            QVERIFY(!account->snapshotHistoryData().has_value());
            QVERIFY(account->snapshotHistory().isEmpty());
            QVERIFY(!account->isSnapshotHistoryLoaded());
            QSqlQuery(QStringLiteral("ALTER TABLE Elsewhere RENAME TO ProviderAccount"), other);
            other.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("mover"));
        account->setSyncMessage(QStringLiteral("saved after the failed read"));
        QVERIFY(store->save());
        QCOMPARE(account->snapshotHistoryData(), full.snapshotHistoryData);
    }

    void aRefreshDuringAFailedHistoryReadKeepsTheStoredHistory() {
        ProviderAccountRow full = fullRow();
        QList<UsageSnapshot> recorded;
        for (int i = 0; i < 3; ++i) {
            recorded.append(UsageSnapshot{.source = UsageSource::manual, .capturedAt = Timestamp(i)});
        }
        full.snapshotHistoryData = UsageJson::encode(recorded).value();
        QVERIFY(storeRows({full}));
        const qsizetype storedCount = recorded.size();
        QString error;
        auto store = AccountStore::open(m_path, &error);
        ProviderAccount* account = store->accounts().first();
        const UsageSnapshot fresh{.source = UsageSource::mock, .capturedAt = Timestamp(123'456)};
        {
            QSqlDatabase other =
                QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("mover"));
            other.setDatabaseName(m_path);
            QVERIFY(other.open());
            QSqlQuery(QStringLiteral("ALTER TABLE ProviderAccount RENAME TO Elsewhere"), other);
            // The refresh's writes while the history can't be read.
            QVERIFY(account->setSnapshot(fresh));
            QVERIFY(!account->record(fresh));
            QSqlQuery(QStringLiteral("ALTER TABLE Elsewhere RENAME TO ProviderAccount"), other);
            other.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("mover"));
        QVERIFY(store->save());
        store.reset();

        auto reopened = AccountStore::open(m_path, &error);
        ProviderAccount* again = reopened->accounts().first();
        QCOMPARE(again->snapshot(), std::optional<UsageSnapshot>(fresh)); // the new snapshot is kept
        QCOMPARE(again->snapshotHistoryData(), full.snapshotHistoryData); // the 90 are not replaced by 1
        QCOMPARE(again->snapshotHistory().size(), storedCount);
    }

    void liveListIsSortedAndSignalled() {
        QString error;
        auto store = AccountStore::open(m_path, &error);
        QVERIFY(store);
        QSignalSpy listSpy(store.get(), &AccountStore::accountsChanged);
        QSignalSpy fieldSpy(store.get(), &AccountStore::accountChanged);

        ProviderAccount::Init later = accountInit(QStringLiteral("later"));
        later.createdAt = Timestamp(200);
        ProviderAccount::Init earlier = accountInit(QStringLiteral("earlier"));
        earlier.createdAt = Timestamp(100);
        store->insert(new ProviderAccount(later));
        store->insert(new ProviderAccount(earlier));
        QCOMPARE(listSpy.count(), 2);
        QCOMPARE(store->accounts().first()->label(), QStringLiteral("earlier"));

        ProviderAccount* first = store->accounts().first();
        first->setSyncMessage(QStringLiteral("changed"));
        QCOMPARE(fieldSpy.count(), 1);
        QCOMPARE(fieldSpy.first().first().value<ProviderAccount*>(), first);
        QCOMPARE(listSpy.count(), 2);

        first->setCreatedAt(Timestamp(300)); // moves to the end
        QCOMPARE(listSpy.count(), 3);
        QCOMPARE(store->accounts().last(), first);
        QCOMPARE(store->account(first->id()), first);
        QCOMPARE(store->account(QUuid::createUuid()), nullptr);
    }

    void equalCreationTimesKeepInsertionOrder() {
        {
            QString error;
            auto store = AccountStore::open(m_path, &error);
            for (const char* label : {"one", "two", "three"}) {
                ProviderAccount::Init init = accountInit(QString::fromLatin1(label));
                init.createdAt = Timestamp(5);
                store->insert(new ProviderAccount(init));
            }
            QVERIFY(store->save());
        }
        QString error;
        auto store = AccountStore::open(m_path, &error);
        QStringList labels;
        for (const ProviderAccount* account : store->accounts()) {
            labels.append(account->label());
        }
        QCOMPARE(labels, QStringList({"one", "two", "three"}));
    }

    void deleteRemovesOnSave() {
        QUuid keptId;
        {
            QString error;
            auto store = AccountStore::open(m_path, &error);
            auto* gone = new ProviderAccount(accountInit(QStringLiteral("gone")));
            auto* kept = new ProviderAccount(accountInit(QStringLiteral("kept")));
            keptId = kept->id();
            store->insert(gone);
            store->insert(kept);
            QVERIFY(store->save());
            QPointer<ProviderAccount> watcher(gone);
            store->remove(gone);
            QCOMPARE(store->accounts().size(), 1);
            QVERIFY(watcher); // still alive this turn
            QVERIFY(store->hasChanges());
            QVERIFY(store->save());
            // Kept until the removal is saved (a refused save brings it back), then gone.
            QTRY_VERIFY(!watcher);
        }
        QString error;
        auto store = AccountStore::open(m_path, &error);
        QCOMPARE(store->accounts().size(), 1);
        QCOMPARE(store->accounts().first()->id(), keptId);
    }

    void unsavedChangesAreNotWritten() {
        {
            QString error;
            auto store = AccountStore::open(m_path, &error);
            store->insert(new ProviderAccount(accountInit(QStringLiteral("saved"))));
            QVERIFY(store->save());
            store->accounts().first()->setLabel(QStringLiteral("not saved"));
            store->insert(new ProviderAccount(accountInit(QStringLiteral("never saved"))));
        }
        QString error;
        auto store = AccountStore::open(m_path, &error);
        QCOMPARE(store->accounts().size(), 1);
        QCOMPARE(store->accounts().first()->label(), QStringLiteral("saved"));
    }

    void failedSaveWhileLockedKeepsThePreviousState() {
        QString error;
        auto store = AccountStore::open(m_path, &error);
        store->insert(new ProviderAccount(accountInit(QStringLiteral("before"))));
        QVERIFY(store->save());

        // Another process holds the write lock.
        QSqlDatabase other = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("locker"));
        other.setDatabaseName(m_path);
        QVERIFY(other.open());
        QSqlQuery lock(other);
        QVERIFY(lock.exec(QStringLiteral("BEGIN IMMEDIATE")));

        store->accounts().first()->setLabel(QStringLiteral("after"));
        store->insert(new ProviderAccount(accountInit(QStringLiteral("new"))));
        error.clear();
        QVERIFY(!store->save(&error));
        QVERIFY2(error.contains(QStringLiteral("locked")), qPrintable(error));
        QVERIFY(store->hasChanges());

        QSqlQuery read(other);
        QVERIFY(read.exec(QStringLiteral("SELECT label FROM ProviderAccount")));
        QStringList labels;
        while (read.next()) {
            labels.append(read.value(0).toString());
        }
        QCOMPARE(labels, QStringList{"before"});
        QVERIFY(lock.exec(QStringLiteral("ROLLBACK")));
        lock = QSqlQuery();
        read = QSqlQuery();
        other.close();
        other = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("locker"));

        // The changes were kept, so the next save writes them.
        QVERIFY2(store->save(&error), qPrintable(error));
        store.reset();
        auto reopened = AccountStore::open(m_path, &error);
        QCOMPARE(reopened->accounts().size(), 2);
        QCOMPARE(reopened->accounts().first()->label(), QStringLiteral("after"));
    }

    void failedSaveOnAReadOnlyFileKeepsItsBytes() {
        QString error;
        auto store = AccountStore::open(m_path, &error);
        store->insert(new ProviderAccount(accountInit(QStringLiteral("before"))));
        QVERIFY(store->save());
        // Made read-only while open (a backup tool, a full quota): the save is refused.
        QVERIFY(makeStoreReadOnly(m_path, true));
        const QByteArray before = digest(m_path);
        store->accounts().first()->setLabel(QStringLiteral("after"));
        QVERIFY(!store->save(&error));
        QVERIFY2(error.contains(QStringLiteral("read-only")) || error.contains(QStringLiteral("readonly")),
                 qPrintable(error));
        store.reset();
        QCOMPARE(digest(m_path), before);
        // Opened read-only, it is refused at once instead of taking changes it can't keep.
        QVERIFY(!AccountStore::open(m_path, &error));
        QVERIFY2(error.contains(QStringLiteral("is read-only, so nothing could be kept")), qPrintable(error));
        QCOMPARE(digest(m_path), before);
        QVERIFY(makeStoreReadOnly(m_path, false));
        auto reopened = AccountStore::open(m_path, &error);
        QVERIFY2(reopened, qPrintable(error));
        QCOMPARE(reopened->accounts().first()->label(), QStringLiteral("before"));
    }

    void missingFolderFails() {
        QString error;
        auto store = AccountStore::open(m_dir->filePath(QStringLiteral("no/such/folder/a.store")), &error);
        QVERIFY(!store);
        QVERIFY(!error.isEmpty());
    }

    void folderInsteadOfFileFails() {
        QString error;
        QVERIFY(!AccountStore::open(m_dir->path(), &error));
        QVERIFY(error.contains(QStringLiteral("folder")));
    }

    void notADatabaseFailsAndStaysUntouched() {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(QByteArray(8192, 'z'));
        file.close();
        const QByteArray before = digest(m_path);
        QString error;
        QVERIFY(!AccountStore::open(m_path, &error));
        QVERIFY2(error.contains(QStringLiteral("not a database")), qPrintable(error));
        QCOMPARE(digest(m_path), before);
    }

    void foreignTableIsLeftAlone() {
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("foreign"));
            db.setDatabaseName(m_path);
            QVERIFY(db.open());
            QSqlQuery(QStringLiteral("CREATE TABLE ProviderAccount (id TEXT, other TEXT)"), db);
            QSqlQuery(QStringLiteral("INSERT INTO ProviderAccount VALUES ('x', 'y')"), db);
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("foreign"));
        QString error;
        QVERIFY(!AccountStore::open(m_path, &error));
        QVERIFY2(error.contains(QStringLiteral("other columns")), qPrintable(error));
    }

    void refusedFilesKeepEveryByte_data() {
        QTest::addColumn<QStringList>("statements");
        QTest::addColumn<QString>("reason");
        QTest::newRow("another program's tables")
            << QStringList{QStringLiteral("CREATE TABLE notes (body TEXT)"),
                           QStringLiteral("INSERT INTO notes VALUES ('keep me')")}
            << QStringLiteral("another program's database");
        QTest::newRow("an account table of other columns")
            << QStringList{QStringLiteral("CREATE TABLE ProviderAccount (id TEXT, other TEXT)"),
                           QStringLiteral("INSERT INTO ProviderAccount VALUES ('x', 'y')")}
            << QStringLiteral("other columns");
        const QString id = QUuid::createUuid().toString(QUuid::WithoutBraces);
        QTest::newRow("two rows with one id, spelt two ways")
            << QStringList{QStringLiteral(
                               "INSERT INTO ProviderAccount (id, label, createdAt) VALUES ('%1', 'a', 1)")
                               .arg(id.toUpper()),
                           QStringLiteral(
                               "INSERT INTO ProviderAccount (id, label, createdAt) VALUES ('{%1}', 'b', 2)")
                               .arg(id.toLower())}
            << QStringLiteral("same id");
    }
    void refusedFilesKeepEveryByte() {
        QFETCH(QStringList, statements);
        QFETCH(QString, reason);
        if (reason == QStringLiteral("same id")) {
            QString error;
            QVERIFY(AccountStore::open(m_path, &error)); // our table, empty
        }
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("writer"));
            db.setDatabaseName(m_path);
            QVERIFY(db.open());
            // Back to a plain rollback journal, as another program would leave it.
            QSqlQuery(QStringLiteral("PRAGMA journal_mode=DELETE"), db);
            for (const QString& statement : statements) {
                QSqlQuery query(db);
                QVERIFY2(query.exec(statement), qPrintable(query.lastError().text()));
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("writer"));
        const QByteArray before = digest(m_path);
        QString error;
        QVERIFY(!AccountStore::open(m_path, &error));
        QVERIFY2(error.contains(reason), qPrintable(error));
        QCOMPARE(digest(m_path), before);
        QVERIFY(!QFile::exists(m_path + QStringLiteral("-wal")));
        // The start-up sentence names the reason.
        QVERIFY(error.size() > 10);
    }

    void idsSpeltAnyWayAreFoundAgain_data() {
        QTest::addColumn<QString>("spelling");
        QTest::newRow("lower case") << QStringLiteral("lower");
        QTest::newRow("braces") << QStringLiteral("braces");
    }
    void idsSpeltAnyWayAreFoundAgain() {
        QFETCH(QString, spelling);
        const QUuid editedID = QUuid::createUuid();
        const QUuid deletedID = QUuid::createUuid();
        const auto spelt = [&spelling](const QUuid& id) {
            return spelling == QStringLiteral("lower") ? id.toString(QUuid::WithoutBraces).toLower()
                                                       : id.toString(QUuid::WithBraces).toLower();
        };
        QList<UsageSnapshot> recorded{
            UsageSnapshot{.source = UsageSource::manual, .capturedAt = Timestamp(1)},
            UsageSnapshot{.source = UsageSource::manual, .capturedAt = Timestamp(2)}};
        {
            QString error;
            QVERIFY(AccountStore::open(m_path, &error));
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("writer"));
            db.setDatabaseName(m_path);
            QVERIFY(db.open());
            for (const QUuid& id : {editedID, deletedID}) {
                QSqlQuery insert(db);
                insert.prepare(
                    QStringLiteral("INSERT INTO ProviderAccount (id, providerRaw, label, accountKindRaw, "
                                   "planName, connectionModeRaw, createdAt, syncStatusRaw, syncMessage, "
                                   "snapshotHistoryData, sampleDataEnabled) "
                                   "VALUES (?, 'openai', 'x', 'api', '', 'manual', ?, 'current', '', ?, 0)"));
                insert.addBindValue(spelt(id));
                insert.addBindValue(id == editedID ? 1.0 : 2.0);
                insert.addBindValue(UsageJson::encode(recorded).value());
                QVERIFY2(insert.exec(), qPrintable(insert.lastError().text()));
            }
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("writer"));

        QString error;
        {
            auto store = AccountStore::open(m_path, &error);
            QVERIFY2(store, qPrintable(error));
            QCOMPARE(store->accounts().size(), 2);
            ProviderAccount* edited = store->account(editedID);
            QVERIFY(edited);
            QCOMPARE(edited->snapshotHistory().size(), 2); // the history is found
            const UsageSnapshot fresh{.source = UsageSource::manual, .capturedAt = Timestamp(3)};
            QVERIFY(edited->setSnapshot(fresh));
            QVERIFY(edited->record(fresh));
            edited->setLabel(QStringLiteral("edited"));
            store->remove(store->account(deletedID));
            QVERIFY(store->save());
            // A second edit finds the row again now that it is spelt canonically.
            edited->setSyncMessage(QStringLiteral("again"));
            QVERIFY(store->save());
        }
        auto reopened = AccountStore::open(m_path, &error);
        QVERIFY2(reopened, qPrintable(error));
        QCOMPARE(reopened->accounts().size(), 1); // no second row, no resurrection
        QCOMPARE(reopened->accounts().first()->id(), editedID);
        QCOMPARE(reopened->accounts().first()->label(), QStringLiteral("edited"));
        QCOMPARE(reopened->accounts().first()->syncMessage(), QStringLiteral("again"));
        QCOMPARE(reopened->accounts().first()->snapshotHistory().size(), 3);
        QVERIFY(!reopened->account(deletedID));
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("count"));
        db.setDatabaseName(m_path);
        QVERIFY(db.open());
        {
            QSqlQuery count(QStringLiteral("SELECT COUNT(*), MIN(id) FROM ProviderAccount"), db);
            QVERIFY(count.next());
            QCOMPARE(count.value(0).toInt(), 1);
            QCOMPARE(count.value(1).toString(), UuidText::toText(editedID));
        }
        db.close();
        QSqlDatabase::removeDatabase(QStringLiteral("count"));
    }

    void unreadableRowsSurviveSaves() {
        {
            QString error;
            auto store = AccountStore::open(m_path, &error);
            store->insert(new ProviderAccount(accountInit()));
            QVERIFY(store->save());
        }
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("raw"));
            db.setDatabaseName(m_path);
            QVERIFY(db.open());
            QSqlQuery(QStringLiteral("INSERT INTO ProviderAccount (id, label) VALUES ('not-a-uuid', 'odd')"),
                      db);
            db.close();
        }
        QSqlDatabase::removeDatabase(QStringLiteral("raw"));
        QString error;
        auto store = AccountStore::open(m_path, &error);
        QCOMPARE(store->accounts().size(), 1);
        store->accounts().first()->setLabel(QStringLiteral("edited"));
        QVERIFY(store->save());
        store.reset();
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("count"));
        db.setDatabaseName(m_path);
        QVERIFY(db.open());
        {
            QSqlQuery count(QStringLiteral("SELECT COUNT(*) FROM ProviderAccount"), db);
            QVERIFY(count.next());
            QCOMPARE(count.value(0).toInt(), 2);
        }
        db.close();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(QStringLiteral("count"));
    }

    void killedWriterLeavesTheLastCommittedState() {
        QProcess writer;
        writer.setProgram(QStringLiteral(STORE_WRITER));
        writer.setArguments({m_path});
        writer.start();
        QVERIFY(writer.waitForStarted());
        qint64 lastPrinted = 0;
        QByteArray pending;
        while (lastPrinted < 40) {
            QVERIFY2(writer.waitForReadyRead(10000), writer.readAllStandardError().constData());
            pending += writer.readAllStandardOutput();
            while (pending.contains('\n')) {
                const qsizetype end = pending.indexOf('\n');
                lastPrinted = pending.left(end).toLongLong();
                pending.remove(0, end + 1);
            }
        }
        writer.kill(); // SIGKILL, in the middle of whatever save comes next
        QVERIFY(writer.waitForFinished());
        pending += writer.readAllStandardOutput();
        for (const QByteArray& line : pending.split('\n')) {
            if (!line.isEmpty()) {
                lastPrinted = line.toLongLong();
            }
        }

        QString error;
        auto store = AccountStore::open(m_path, &error);
        QVERIFY2(store, qPrintable(error));
        QCOMPARE(store->accounts().size(), 1);
        const ProviderAccount* account = store->accounts().first();
        const qint64 committed = account->agentCount().value_or(-1);
        // Every printed round was committed; the next one may have committed before the kill.
        QVERIFY2(committed == lastPrinted || committed == lastPrinted + 1,
                 qPrintable(QStringLiteral("%1 vs %2").arg(committed).arg(lastPrinted)));
        // One save is one transaction: its fields were never split.
        QCOMPARE(account->syncMessage(), QString::number(committed));
        QCOMPARE(account->snapshotHistoryData()->size(), 4096 + committed % 1024);
    }

private:
    // Writes these rows into a fresh store at m_path and closes it.
    bool storeRows(const QList<ProviderAccountRow>& rows) {
        QString error;
        auto store = AccountStore::open(m_path, &error);
        if (!store) {
            return false;
        }
        for (const ProviderAccountRow& row : rows) {
            store->insert(new ProviderAccount(row));
        }
        return store->save(&error);
    }

    std::unique_ptr<QTemporaryDir> m_dir;
    QString m_path;
};

QTEST_GUILESS_MAIN(TestAccountStore)
#include "tst_accountstore.moc"
