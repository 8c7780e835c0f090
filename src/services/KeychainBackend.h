#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>

#include <optional>

// The platform keychain's four item operations on generic-password items of one
// service, keyed by account. Each returns a keychain status code: 0 for success,
// kItemNotFound when no item matches, another code for any other failure. One
// implementation per platform: the Secret Service on Linux, the Security framework
// on Apple platforms.
class KeychainBackend final {
public:
    KeychainBackend() = delete;

    static constexpr qint32 kSuccess = 0;
    static constexpr qint32 kItemNotFound = -25300;
    // The keychain is locked and would have to ask the user.
    static constexpr qint32 kInteractionNotAllowed = -25308;
    // No keychain could be reached, or it did not answer in time.
    static constexpr qint32 kNotAvailable = -25291;

    // Looks the item up; with `data`, its bytes are read too (absent when the keychain
    // found the item but could not give its value).
    static qint32 copyMatching(const QString& service, const QString& account,
                               std::optional<QByteArray>* data = nullptr);
    // Replaces the value of the existing item.
    static qint32 update(const QString& service, const QString& account, const QByteArray& data);
    // Creates the item.
    static qint32 add(const QString& service, const QString& account, const QByteArray& data);
    static qint32 deleteItem(const QString& service, const QString& account);
};
