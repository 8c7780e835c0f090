#pragma once

#include "store/ProviderAccount.h"

#include <QHash>
#include <QList>
#include <QObject>
#include <QSet>
#include <QString>
#include <QUuid>

#include <memory>

// The local database: one SQLite file with one table of accounts. It owns every
// ProviderAccount, offers them as a list sorted by `createdAt`, and writes changes only
// on save(), all of them in one transaction. A failed save leaves the file as it was
// and keeps the changes pending, so a later save can still write them.
class AccountStore final : public QObject {
    Q_OBJECT

public:
    // The table and its columns, in the order of the stored attributes.
    static const QString kTableName;
    static const QStringList kColumns;

    ~AccountStore() override;

    // Opens (creating if needed) the store file at `path`. The folder must exist.
    // Null with a reason in `errorMessage` when the file can't be opened, is another
    // program's database, holds an account table of other columns, or holds two accounts
    // with one id; a refused file is not changed in any byte.
    static std::unique_ptr<AccountStore> open(const QString& path, QString* errorMessage);

    const QString& path() const noexcept { return m_path; }

    // Every account, oldest `createdAt` first (ties in order of insertion).
    const QList<ProviderAccount*>& accounts() const noexcept { return m_accounts; }
    ProviderAccount* account(const QUuid& id) const;

    // Takes ownership; the account is written on the next save.
    void insert(ProviderAccount* account);
    // Removes the account from the list at once and from the file on the next save.
    // The object itself is deleted later, so callers holding it this turn stay safe.
    void remove(ProviderAccount* account);

    bool hasChanges() const noexcept;
    [[nodiscard]] bool save(QString* errorMessage = nullptr);

    // The accounts in memory as they stand, to go back to when the save of a change is
    // refused: the list, each account's attributes and what is waiting to be saved.
    class Savepoint {
        friend class AccountStore;
        QList<ProviderAccount*> m_accounts;
        QList<ProviderAccount::State> m_states;
        QSet<QUuid> m_dirty;
        QSet<QUuid> m_deleted;
        quint64 m_saves = 0;
    };
    Savepoint savepoint() const;
    // Memory as it was at `point`: accounts inserted since go, accounts removed since
    // come back, and every attribute reads as it did.
    void rollBack(const Savepoint& point);

signals:
    // The set of accounts or their order changed.
    void accountsChanged();
    // Fields of one account changed, in the groups given.
    void accountChanged(ProviderAccount* account, ProviderAccount::Fields fields);

private:
    AccountStore(QString path, QString connectionName);

    // Whether the file holds our table (and nothing else) with exactly our columns.
    bool checkTables(bool* hasOurTable, QString* errorMessage);
    bool load(QString* errorMessage);
    // Where an account's row sits and how the file spells its id.
    struct RowKey {
        qint64 rowID;
        QString idText;
    };
    RowKey rowKey(const QUuid& id) const;
    std::optional<std::optional<QByteArray>> readHistory(const QUuid& id) const;
    void adopt(ProviderAccount* account);
    void follow(ProviderAccount* account);
    void sortAccounts();

    QString m_path;
    QString m_connectionName;
    QList<ProviderAccount*> m_accounts;
    QSet<QUuid> m_dirty;
    QSet<QUuid> m_deleted;
    // Removed accounts, kept until their removal is saved: a refused save brings them back.
    QList<ProviderAccount*> m_removed;
    // Successful saves so far: whether the file moved on since a savepoint.
    quint64 m_saves = 0;
    // Where each account's row sits, as far as this store knows.
    QHash<QUuid, RowKey> m_rowKeys;
};
