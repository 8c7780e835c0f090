#include "store/AccountStore.h"

#include "model/UuidText.h"
#include "store/StoreFile.h"

#include <QElapsedTimer>
#include <QFileInfo>
#include <QPointer>
#include <QScopeGuard>
#include <QSet>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#ifdef TALLYFEN_SQLITE_HANDLE
#include <sqlite3.h>
#endif

#include <algorithm>
#include <utility>

const QString AccountStore::kTableName = QStringLiteral("ProviderAccount");

const QStringList AccountStore::kColumns = {
    QStringLiteral("id"),
    QStringLiteral("providerRaw"),
    QStringLiteral("label"),
    QStringLiteral("accountKindRaw"),
    QStringLiteral("planName"),
    QStringLiteral("detectedMetadataData"),
    QStringLiteral("identityDetail"),
    QStringLiteral("modelScope"),
    QStringLiteral("agentScope"),
    QStringLiteral("agentRosterText"),
    QStringLiteral("agentBudgetsData"),
    QStringLiteral("agentCount"),
    QStringLiteral("renewalDate"),
    QStringLiteral("connectionModeRaw"),
    QStringLiteral("createdAt"),
    QStringLiteral("lastRefreshAt"),
    QStringLiteral("syncStatusRaw"),
    QStringLiteral("syncMessage"),
    QStringLiteral("snapshotData"),
    QStringLiteral("snapshotHistoryData"),
    QStringLiteral("sampleDataEnabled"),
};

namespace {
// SQLite column types, in the order of kColumns.
const QStringList kColumnTypes = {
    QStringLiteral("TEXT"),    QStringLiteral("TEXT"), QStringLiteral("TEXT"), QStringLiteral("TEXT"),
    QStringLiteral("TEXT"),    QStringLiteral("BLOB"), QStringLiteral("TEXT"), QStringLiteral("TEXT"),
    QStringLiteral("TEXT"),    QStringLiteral("TEXT"), QStringLiteral("BLOB"), QStringLiteral("INTEGER"),
    QStringLiteral("REAL"),    QStringLiteral("TEXT"), QStringLiteral("REAL"), QStringLiteral("REAL"),
    QStringLiteral("TEXT"),    QStringLiteral("TEXT"), QStringLiteral("BLOB"), QStringLiteral("BLOB"),
    QStringLiteral("INTEGER"),
};

constexpr int kBusyTimeoutMilliseconds = 2000;
// The longest the structure check at start may take, in milliseconds.
constexpr qint64 kCheckBudget = 150;
// The size the log is cut back to once its pages are in the store.
constexpr qint64 kJournalSizeLimit = 4LL * 1024 * 1024;

QString describe(const QSqlError& error) {
    const QString text = error.databaseText().isEmpty() ? error.driverText() : error.databaseText();
    return text.isEmpty() ? QStringLiteral("unknown database error") : text;
}

bool run(QSqlDatabase& db, const QString& statement, QString* errorMessage) {
    QSqlQuery query(db);
    if (!query.exec(statement)) {
        if (errorMessage) {
            *errorMessage = describe(query.lastError());
        }
        return false;
    }
    return true;
}

// SQLite binds a null QString or QByteArray as NULL; a present empty value must stay
// an empty value.
QVariant text(const QString& value) {
    return value.isNull() ? QVariant(QString::fromLatin1("")) : QVariant(value);
}
QVariant optionalText(const std::optional<QString>& value) {
    return value ? text(*value) : QVariant(QMetaType::fromType<QString>());
}
QVariant optionalBytes(const std::optional<QByteArray>& value) {
    if (!value) {
        return QVariant(QMetaType::fromType<QByteArray>());
    }
    return value->isNull() ? QVariant(QByteArray("", 0)) : QVariant(*value);
}
QVariant optionalTimestamp(const std::optional<Timestamp>& value) {
    return value ? QVariant(value->secondsSinceReference()) : QVariant(QMetaType::fromType<double>());
}

std::optional<QString> readOptionalText(const QVariant& value) {
    return value.isNull() ? std::nullopt : std::optional<QString>(value.toString());
}
std::optional<QByteArray> readOptionalBytes(const QVariant& value) {
    return value.isNull() ? std::nullopt : std::optional<QByteArray>(value.toByteArray());
}
std::optional<Timestamp> readOptionalTimestamp(const QVariant& value) {
    return value.isNull() ? std::nullopt : std::optional<Timestamp>(Timestamp(value.toDouble()));
}

QList<QVariant> bindings(const ProviderAccountRow& row) {
    return {
        UuidText::toText(row.id),
        text(row.providerRaw),
        text(row.label),
        text(row.accountKindRaw),
        text(row.planName),
        optionalBytes(row.detectedMetadataData),
        optionalText(row.identityDetail),
        optionalText(row.modelScope),
        optionalText(row.agentScope),
        optionalText(row.agentRosterText),
        optionalBytes(row.agentBudgetsData),
        row.agentCount ? QVariant(*row.agentCount) : QVariant(QMetaType::fromType<qint64>()),
        optionalTimestamp(row.renewalDate),
        text(row.connectionModeRaw),
        row.createdAt.secondsSinceReference(),
        optionalTimestamp(row.lastRefreshAt),
        text(row.syncStatusRaw),
        text(row.syncMessage),
        optionalBytes(row.snapshotData),
        optionalBytes(row.snapshotHistoryData),
        row.sampleDataEnabled ? 1 : 0,
    };
}

// Text read either as text or as the UTF-8 bytes of a text.
QString textOf(const QVariant& value) {
    return value.typeId() == QMetaType::QByteArray ? QString::fromUtf8(value.toByteArray())
                                                   : value.toString();
}

// Whether the file keeps its text in UTF-8 (SQLite's default; a file made elsewhere may
// use UTF-16).
bool storedAsUtf8(QSqlDatabase& db) {
    QSqlQuery encoding(db);
    return encoding.exec(QStringLiteral("PRAGMA encoding")) && encoding.next() &&
           encoding.value(0).toString() == QStringLiteral("UTF-8");
}

std::optional<ProviderAccountRow> rowFrom(const QSqlQuery& query) {
    const auto id = UuidText::fromText(query.value(0).toString());
    if (!id) {
        return std::nullopt;
    }
    return ProviderAccountRow{.id = *id,
                              .providerRaw = query.value(1).toString(),
                              .label = textOf(query.value(2)),
                              .accountKindRaw = query.value(3).toString(),
                              .planName = query.value(4).toString(),
                              .detectedMetadataData = readOptionalBytes(query.value(5)),
                              .identityDetail = readOptionalText(query.value(6)),
                              .modelScope = readOptionalText(query.value(7)),
                              .agentScope = readOptionalText(query.value(8)),
                              .agentRosterText = readOptionalText(query.value(9)),
                              .agentBudgetsData = readOptionalBytes(query.value(10)),
                              .agentCount = query.value(11).isNull()
                                                ? std::nullopt
                                                : std::optional<qint64>(query.value(11).toLongLong()),
                              .renewalDate = readOptionalTimestamp(query.value(12)),
                              .connectionModeRaw = query.value(13).toString(),
                              .createdAt = Timestamp(query.value(14).toDouble()),
                              .lastRefreshAt = readOptionalTimestamp(query.value(15)),
                              .syncStatusRaw = query.value(16).toString(),
                              .syncMessage = query.value(17).toString(),
                              .snapshotData = readOptionalBytes(query.value(18)),
                              .snapshotHistoryData = readOptionalBytes(query.value(19)),
                              .sampleDataEnabled = query.value(20).toLongLong() != 0};
}

// What the engine finds wrong with the file's structure, or nothing. The check reads
// every page once; on a file so large that it would hold up the start, it stops after its
// time and the file counts as sound (a damaged page then fails the read or save that
// meets it, and says so).
std::optional<QString> damageIn(QSqlDatabase& db) {
#ifdef TALLYFEN_SQLITE_HANDLE
    sqlite3* handle = nullptr;
    const QVariant driverHandle = db.driver()->handle();
    if (qstrcmp(driverHandle.typeName(), "sqlite3*") == 0) {
        handle = *static_cast<sqlite3* const*>(driverHandle.constData());
    }
    QElapsedTimer clock;
    clock.start();
    if (handle) {
        sqlite3_progress_handler(
            handle, 1000,
            [](void* started) {
                return static_cast<QElapsedTimer*>(started)->elapsed() > kCheckBudget ? 1 : 0;
            },
            &clock);
    }
    const auto done = qScopeGuard([handle] {
        if (handle) {
            sqlite3_progress_handler(handle, 0, nullptr, nullptr);
        }
    });
#endif
    QSqlQuery check(db);
    if (!check.exec(QStringLiteral("PRAGMA quick_check(3)"))) {
        if (check.lastError().nativeErrorCode() == QStringLiteral("9")) {
            return std::nullopt; // interrupted: out of time
        }
        return describe(check.lastError());
    }
    QStringList findings;
    while (check.next()) {
        findings.append(check.value(0).toString());
    }
    if (check.lastError().isValid()) {
        return describe(check.lastError());
    }
    if (findings == QStringList{QStringLiteral("ok")}) {
        return std::nullopt;
    }
    return findings.join(QStringLiteral("; "));
}

// Turns the checked file into a store: log, syncing and size of the log, the table when
// it is missing, and this version's schema stamp.
bool prepareForWriting(QSqlDatabase& db, bool hasTable, QString* errorMessage) {
    // WAL with full syncs: a committed save survives a crash or power loss, and a
    // crash in the middle of one leaves the previous state.
    QSqlQuery journal(db);
    if (!journal.exec(QStringLiteral("PRAGMA journal_mode=WAL")) || !journal.next()) {
        *errorMessage = describe(journal.lastError());
        return false;
    }
    journal.finish();
    if (!run(db, QStringLiteral("PRAGMA synchronous=FULL"), errorMessage)) {
        return false;
    }
    // After a large save the log shrinks back instead of staying the size of the store.
    run(db, QStringLiteral("PRAGMA journal_size_limit=%1").arg(kJournalSizeLimit), nullptr);
    if (!hasTable) {
        QStringList definitions;
        for (qsizetype i = 0; i < AccountStore::kColumns.size(); ++i) {
            definitions.append(AccountStore::kColumns.at(i) + u' ' + kColumnTypes.at(i));
        }
        const QString create = QStringLiteral("CREATE TABLE %1 (%2)")
                                   .arg(AccountStore::kTableName, definitions.join(QStringLiteral(", ")));
        if (!run(db, create, errorMessage)) {
            return false;
        }
    }
    QSqlQuery version(db);
    if (!version.exec(QStringLiteral("PRAGMA user_version")) || !version.next()) {
        *errorMessage = describe(version.lastError());
        return false;
    }
    if (version.value(0).toUInt() < StoreFile::kSchemaVersion) {
        version.finish();
        return run(db, QStringLiteral("PRAGMA user_version=%1").arg(StoreFile::kSchemaVersion), errorMessage);
    }
    return true;
}

QString nextConnectionName() {
    static int counter = 0;
    return QStringLiteral("tallyfen-store-%1").arg(++counter);
}
} // namespace

AccountStore::AccountStore(QString path, QString connectionName)
    : m_path(std::move(path))
    , m_connectionName(std::move(connectionName)) {}

AccountStore::~AccountStore() {
    qDeleteAll(m_accounts);
    m_accounts.clear();
    {
        QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
        if (db.isOpen()) {
            db.close();
        }
    }
    QSqlDatabase::removeDatabase(m_connectionName);
}

std::unique_ptr<AccountStore> AccountStore::open(const QString& path, QString* errorMessage) {
    QString reason;
    const auto fail = [&](const QString& why) {
        if (errorMessage) {
            *errorMessage = StoreFile::explain(why, path);
        }
        return nullptr;
    };
    if (QFileInfo(path).isDir()) {
        return fail(QStringLiteral("“%1” is a folder, not a file").arg(path));
    }
    // Read from the header before the engine touches the file: a file this version
    // refuses gets no log or index file beside it.
    if (const auto version = StoreFile::schemaVersion(path);
        version && *version > StoreFile::kSchemaVersion) {
        return fail(QStringLiteral("the file was written by a newer version of Tallyfen (schema %1; this "
                                   "version reads up to %2) and was left as it was")
                        .arg(*version)
                        .arg(StoreFile::kSchemaVersion));
    }
    // A store that can't be written would take every change and keep none of them.
    if (const auto why = StoreFile::whyNotWritable(path)) {
        return fail(*why);
    }
    if (!StoreFile::createPrivately(path)) {
        return fail(QStringLiteral("the file “%1” could not be created").arg(path));
    }

    std::unique_ptr<AccountStore> store(new AccountStore(path, nextConnectionName()));
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), store->m_connectionName);
        db.setDatabaseName(path);
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(kBusyTimeoutMilliseconds));
        if (!db.open()) {
            return fail(describe(db.lastError()));
        }
        // Everything is checked before anything is written: a file this version refuses
        // keeps every byte it had.
        bool hasOurTable = false;
        if (!store->checkTables(&hasOurTable, &reason)) {
            return fail(reason);
        }
        // Reads through memory mapping (which writes nothing): the last column sits behind
        // each row's large history blob, and following that blob's overflow pages then
        // copies nothing.
        run(db, QStringLiteral("PRAGMA mmap_size=268435456"), nullptr);
        if (hasOurTable) {
            if (const auto damage = damageIn(db)) {
                return fail(QStringLiteral("the file is damaged (%1); it was left as it was").arg(*damage));
            }
            // Read while the file is still as it was found: a refusal (two accounts with
            // one id) must leave every byte of it.
            if (!store->load(&reason)) {
                return fail(reason);
            }
        }
        if (!prepareForWriting(db, hasOurTable, &reason)) {
            return fail(reason);
        }
    }
    return store;
}

bool AccountStore::checkTables(bool* hasOurTable, QString* errorMessage) {
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    QSqlQuery tables(db);
    if (!tables.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table'"))) {
        *errorMessage = describe(tables.lastError());
        return false;
    }
    QStringList others;
    while (tables.next()) {
        const QString name = tables.value(0).toString();
        if (name == kTableName) {
            *hasOurTable = true;
        } else if (!name.startsWith(QStringLiteral("sqlite_"))) {
            others.append(name);
        }
    }
    tables.finish();
    if (!others.isEmpty()) {
        *errorMessage = QStringLiteral("the file is another program's database (it holds the table “%1”)")
                            .arg(others.first());
        return false;
    }
    if (!*hasOurTable) {
        return true;
    }
    QSqlQuery columns(db);
    if (!columns.exec(QStringLiteral("PRAGMA table_info(%1)").arg(kTableName))) {
        *errorMessage = describe(columns.lastError());
        return false;
    }
    QStringList existing;
    while (columns.next()) {
        existing.append(columns.value(1).toString());
    }
    if (existing != kColumns) {
        // Someone else's table, or a future one: leave it untouched.
        *errorMessage = QStringLiteral("the file holds a %1 table with other columns than this version of "
                                       "Tallyfen knows")
                            .arg(kTableName);
        return false;
    }
    return true;
}

bool AccountStore::load(QString* errorMessage) {
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    QSqlQuery query(db);
    query.setForwardOnly(true);
    // The snapshot histories are most of the file and no screen needs them at launch:
    // each is read when its account first asks for it.
    QStringList columns = kColumns;
    columns.replace(kColumns.indexOf(QStringLiteral("snapshotHistoryData")), QStringLiteral("NULL"));
    // A label is the operator's free text and may be of any length. Read as text, SQLite
    // converts it to UTF-16 one character at a time (a pasted 5 MB label: 20 ms); its
    // bytes, in a file kept in UTF-8, are decoded by Qt at memory speed.
    if (storedAsUtf8(db)) {
        columns.replace(kColumns.indexOf(QStringLiteral("label")), QStringLiteral("CAST(label AS BLOB)"));
    }
    columns.append(QStringLiteral("rowid"));
    const QString select =
        QStringLiteral("SELECT %1 FROM %2 ORDER BY createdAt, rowid").arg(columns.join(u", "), kTableName);
    const int rowIDColumn = static_cast<int>(kColumns.size());
    if (!query.exec(select)) {
        *errorMessage = describe(query.lastError());
        return false;
    }
    while (query.next()) {
        // A row whose id can't be read is left in the file untouched.
        if (auto row = rowFrom(query)) {
            const QUuid id = row->id;
            if (m_rowKeys.contains(id)) {
                // Two accounts with one id would share one keychain item and one history;
                // which of them an edit or a delete meant can't be known.
                *errorMessage = QStringLiteral("two accounts in the file have the same id (%1)")
                                    .arg(UuidText::toText(id));
                return false;
            }
            // The id as the file spells it: another program may have written it in lower
            // case or with braces, and the row is found by that spelling until it is saved.
            m_rowKeys.insert(id, RowKey{query.value(rowIDColumn).toLongLong(), query.value(0).toString()});
            adopt(new ProviderAccount(std::move(*row), [store = QPointer<AccountStore>(this), id] {
                return store ? store->readHistory(id) : std::nullopt;
            }));
        }
    }
    // A row the engine could not read ends the list early: the rest is not "no more".
    if (query.lastError().isValid()) {
        *errorMessage =
            QStringLiteral("the file could not be read to its end (%1)").arg(describe(query.lastError()));
        return false;
    }
    return true;
}

std::optional<std::optional<QByteArray>> AccountStore::readHistory(const QUuid& id) const {
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    const RowKey key = rowKey(id);
    QSqlQuery query(db);
    query.prepare(
        QStringLiteral("SELECT snapshotHistoryData FROM %1 WHERE rowid = ? AND id = ?").arg(kTableName));
    query.addBindValue(key.rowID);
    query.addBindValue(key.idText);
    if (!query.exec()) {
        return std::nullopt;
    }
    if (!query.next()) {
        // The row moved (the file was rebuilt by another program): find it by its id.
        query.prepare(QStringLiteral("SELECT snapshotHistoryData FROM %1 WHERE id = ?").arg(kTableName));
        query.addBindValue(key.idText);
        if (!query.exec()) {
            return std::nullopt;
        }
        if (!query.next()) {
            return std::optional<QByteArray>(); // no row: nothing stored
        }
    }
    return readOptionalBytes(query.value(0));
}

ProviderAccount* AccountStore::account(const QUuid& id) const {
    const auto found = std::find_if(m_accounts.cbegin(), m_accounts.cend(),
                                    [&id](const ProviderAccount* account) { return account->id() == id; });
    return found == m_accounts.cend() ? nullptr : *found;
}

AccountStore::RowKey AccountStore::rowKey(const QUuid& id) const {
    return m_rowKeys.value(id, RowKey{-1, UuidText::toText(id)});
}

void AccountStore::adopt(ProviderAccount* account) {
    account->setParent(this);
    m_accounts.append(account);
    follow(account);
}

void AccountStore::follow(ProviderAccount* account) {
    connect(account, &ProviderAccount::changed, this, [this, account](ProviderAccount::Fields fields) {
        m_dirty.insert(account->id());
        Q_EMIT accountChanged(account, fields);
    });
    connect(account, &ProviderAccount::createdAtChanged, this, [this] {
        sortAccounts();
        Q_EMIT accountsChanged();
    });
}

void AccountStore::sortAccounts() {
    std::stable_sort(
        m_accounts.begin(), m_accounts.end(),
        [](const ProviderAccount* a, const ProviderAccount* b) { return a->createdAt() < b->createdAt(); });
}

void AccountStore::insert(ProviderAccount* account) {
    Q_ASSERT(account && !m_accounts.contains(account));
    adopt(account);
    sortAccounts();
    m_dirty.insert(account->id());
    m_deleted.remove(account->id());
    Q_EMIT accountsChanged();
}

void AccountStore::remove(ProviderAccount* account) {
    if (!account || !m_accounts.removeOne(account)) {
        return;
    }
    disconnect(account, nullptr, this, nullptr);
    m_dirty.remove(account->id());
    // Another account may share the id (nothing forbids it); the row goes only when
    // none is left.
    if (!this->account(account->id())) {
        m_deleted.insert(account->id());
    }
    m_removed.append(account);
    Q_EMIT accountsChanged();
}

AccountStore::Savepoint AccountStore::savepoint() const {
    Savepoint point;
    point.m_accounts = m_accounts;
    point.m_states.reserve(m_accounts.size());
    for (const ProviderAccount* account : m_accounts) {
        point.m_states.append(account->state());
    }
    point.m_dirty = m_dirty;
    point.m_deleted = m_deleted;
    point.m_saves = m_saves;
    return point;
}

void AccountStore::rollBack(const Savepoint& point) {
    // What waits to be saved is what waited then, and whatever a save since has written
    // that memory no longer holds: rows of accounts inserted since go, and accounts
    // whose attributes go back are written again.
    const bool savedSince = m_saves != point.m_saves;
    QSet<QUuid> dirty = point.m_dirty;
    QSet<QUuid> deleted = point.m_deleted;
    for (ProviderAccount* account : std::as_const(m_accounts)) {
        if (!point.m_accounts.contains(account)) {
            if (savedSince && m_rowKeys.contains(account->id())) {
                deleted.insert(account->id());
            }
            disconnect(account, nullptr, this, nullptr);
            account->deleteLater(); // callers holding it this turn stay safe
        }
    }
    QList<ProviderAccount*> accounts;
    for (qsizetype i = 0; i < point.m_accounts.size(); ++i) {
        ProviderAccount* account = point.m_accounts.at(i);
        if (m_removed.removeOne(account)) {
            follow(account);
        } else if (!m_accounts.contains(account)) {
            continue; // its removal was saved, and the object is gone with it
        }
        accounts.append(account);
        const ProviderAccount::State& state = point.m_states.at(i);
        if (savedSince && (account->rowAsLoaded() != state.row ||
                           account->isSnapshotHistoryLoaded() != !state.loadHistory)) {
            dirty.insert(account->id());
        }
        account->restore(state);
    }
    m_accounts = std::move(accounts);
    for (const ProviderAccount* account : std::as_const(m_accounts)) {
        deleted.remove(account->id());
    }
    m_dirty = std::move(dirty);
    m_deleted = std::move(deleted);
    Q_EMIT accountsChanged();
}

bool AccountStore::hasChanges() const noexcept {
    return !m_dirty.isEmpty() || !m_deleted.isEmpty();
}

bool AccountStore::save(QString* errorMessage) {
    if (!hasChanges()) {
        return true;
    }
    QSqlDatabase db = QSqlDatabase::database(m_connectionName, false);
    QString reason;
    const auto fail = [&](const QString& why) {
        run(db, QStringLiteral("ROLLBACK"), nullptr);
        if (errorMessage) {
            *errorMessage = StoreFile::explain(why, m_path);
        }
        return false;
    };
    if (!run(db, QStringLiteral("BEGIN IMMEDIATE"), &reason)) {
        if (errorMessage) {
            *errorMessage = StoreFile::explain(reason, m_path);
        }
        return false;
    }

    QSqlQuery remove(db);
    remove.prepare(QStringLiteral("DELETE FROM %1 WHERE rowid = ? AND id = ?").arg(kTableName));
    QSqlQuery removeByID(db);
    removeByID.prepare(QStringLiteral("DELETE FROM %1 WHERE id = ?").arg(kTableName));
    for (const QUuid& id : std::as_const(m_deleted)) {
        const RowKey key = rowKey(id);
        remove.addBindValue(key.rowID);
        remove.addBindValue(key.idText);
        if (!remove.exec()) {
            return fail(describe(remove.lastError()));
        }
        if (remove.numRowsAffected() > 0) {
            continue;
        }
        removeByID.addBindValue(key.idText);
        if (!removeByID.exec()) {
            return fail(describe(removeByID.lastError()));
        }
    }

    const qsizetype historyColumn = kColumns.indexOf(QStringLiteral("snapshotHistoryData"));
    QStringList assignments;
    QStringList placeholders;
    for (const QString& column : kColumns) {
        assignments.append(column + u" = ?");
        placeholders.append(QStringLiteral("?"));
    }
    // Rows are found by the rowid they were read or written with, checked against the
    // id; a row that moved is found by its id.
    const QString where = QStringLiteral(" WHERE rowid = ? AND id = ?");
    QSqlQuery update(db);
    update.prepare(QStringLiteral("UPDATE %1 SET %2").arg(kTableName, assignments.join(u", ")) + where);
    // For an account whose history was never read: every column but that one.
    QStringList assignmentsWithoutHistory = assignments;
    assignmentsWithoutHistory.removeAt(historyColumn);
    QSqlQuery updateWithoutHistory(db);
    updateWithoutHistory.prepare(
        QStringLiteral("UPDATE %1 SET %2").arg(kTableName, assignmentsWithoutHistory.join(u", ")) + where);
    QSqlQuery findRow(db);
    findRow.prepare(QStringLiteral("SELECT rowid FROM %1 WHERE id = ?").arg(kTableName));
    QHash<QUuid, RowKey> rowKeys = m_rowKeys;
    QSqlQuery insert(db);
    insert.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES (%3)")
                       .arg(kTableName, kColumns.join(u", "), placeholders.join(u", ")));
    for (const ProviderAccount* account : std::as_const(m_accounts)) {
        if (!m_dirty.contains(account->id())) {
            continue;
        }
        const bool withHistory = account->isSnapshotHistoryLoaded();
        const QList<QVariant> values = bindings(account->rowAsLoaded());
        QSqlQuery& statement = withHistory ? update : updateWithoutHistory;
        // Written with the id in its canonical spelling; found by the spelling it had.
        const QString canonical = values.first().toString();
        const RowKey key = rowKeys.value(account->id(), RowKey{-1, canonical});
        const auto bindRow = [&](qint64 rowID) {
            for (qsizetype i = 0; i < values.size(); ++i) {
                if (withHistory || i != historyColumn) {
                    statement.addBindValue(values.at(i));
                }
            }
            statement.addBindValue(rowID);
            statement.addBindValue(key.idText);
        };
        bindRow(key.rowID);
        if (!statement.exec()) {
            return fail(describe(statement.lastError()));
        }
        if (statement.numRowsAffected() > 0) {
            rowKeys.insert(account->id(), RowKey{key.rowID, canonical});
            continue;
        }
        findRow.addBindValue(key.idText);
        if (!findRow.exec()) {
            return fail(describe(findRow.lastError()));
        }
        if (findRow.next()) {
            const qint64 rowID = findRow.value(0).toLongLong();
            findRow.finish();
            bindRow(rowID);
            if (!statement.exec()) {
                return fail(describe(statement.lastError()));
            }
            rowKeys.insert(account->id(), RowKey{rowID, canonical});
            continue;
        }
        for (const QVariant& value : values) {
            insert.addBindValue(value);
        }
        if (!insert.exec()) {
            return fail(describe(insert.lastError()));
        }
        rowKeys.insert(account->id(), RowKey{insert.lastInsertId().toLongLong(), canonical});
    }

    if (!run(db, QStringLiteral("COMMIT"), &reason)) {
        return fail(reason);
    }
    for (const QUuid& id : std::as_const(m_deleted)) {
        rowKeys.remove(id);
    }
    m_rowKeys = std::move(rowKeys);
    m_dirty.clear();
    m_deleted.clear();
    ++m_saves;
    // Callers holding a removed account this turn stay safe.
    for (ProviderAccount* account : std::exchange(m_removed, {})) {
        account->deleteLater();
    }
    return true;
}
