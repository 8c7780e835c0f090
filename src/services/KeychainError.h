#pragma once

#include <QString>
#include <QtGlobal>

// A keychain operation that failed, with the keychain's status code. The code is kept
// for diagnosis and never shown; callers say what failed in their own words.
class KeychainError final {
public:
    explicit KeychainError(qint32 status) noexcept
        : m_status(status) {}

    qint32 status() const noexcept { return m_status; }
    QString errorDescription() const { return QStringLiteral("Keychain operation failed."); }
    // What went wrong, in words that fit after "Reason:" and in this platform's terms
    // ("the system keychain is locked").
    QString reason() const;

private:
    qint32 m_status;
};
