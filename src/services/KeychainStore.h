#pragma once

#include "services/KeychainError.h"

#include <QString>

#include <optional>

// The only home of secrets at rest: one keychain item per account under one service,
// holding the secret's UTF-8 bytes. Every call goes to the keychain and returns within
// a bounded time; nothing is cached.
class KeychainStore final {
public:
    KeychainStore() = delete;

    static const QString service;

    // Adds or updates the account's item. Throws KeychainError on any failure.
    static void save(const QString& value, const QString& account);
    // The stored value; absent for a missing item, a locked or unreachable keychain, or
    // bytes that are not UTF-8. An empty string is a stored value.
    static std::optional<QString> read(const QString& account);
    // Removes the account's item, if any. Reports nothing.
    static void deleteItem(const QString& account);
};
