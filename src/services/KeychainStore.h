#pragma once

#include "services/KeychainError.h"

#include <QString>
#include <QStringList>

#include <optional>

// The only home of secrets at rest: one keychain item per account under one service,
// holding the secret's UTF-8 bytes. Every call goes to the keychain and returns within
// a bounded time; nothing is cached.
//
// A deletion the keychain refuses (locked, unreachable, too slow) is not forgotten: the
// account names (never a secret) wait in the settings and are deleted again at the next
// start and after every later keychain call the keychain answered, until it agrees. Until
// then such an item reads as absent. A keychain that is away costs no extra time-out.
class KeychainStore final {
public:
    KeychainStore() = delete;

    static const QString service;

    // Adds or updates the account's item. Throws KeychainError on any failure.
    static void save(const QString& value, const QString& account);
    // The stored value; absent for a missing item, a locked or unreachable keychain, or
    // bytes that are not UTF-8. An empty string is a stored value.
    static std::optional<QString> read(const QString& account, qint32* status = nullptr);
    // Whether a status of read means the keychain itself could not be asked (locked,
    // away), as opposed to having no item.
    static bool isUnreachable(qint32 status) noexcept;
    // What a status means, in words that fit after "Reason:" and in this platform's terms.
    static QString reason(qint32 status);
    // Removes the account's item, if any. Reports nothing; a refusal is retried later.
    // With `status`, the keychain's answer is kept there for a caller that explains it.
    static void deleteItem(const QString& account, qint32* status = nullptr);
    // Whether a status of deleteItem means the item is gone (or never was).
    static bool isDeleted(qint32 status) noexcept;

    // Tries the deletions still waiting; cheap when none is.
    static void retryPendingDeletions();
    // The accounts whose items are still to be deleted.
    static QStringList pendingDeletions();
    static const QString kPendingDeletionsKey;
};
