#include "services/KeychainStore.h"

#include "model/PlatformWording.h"
#include "model/SecretText.h"
#include "services/ApplicationSettings.h"
#include "services/KeychainBackend.h"

#include <QScopeGuard>
#include <QStringDecoder>

const QString KeychainStore::service = QStringLiteral("Tallyfen.credentials");
const QString KeychainStore::kPendingDeletionsKey = QStringLiteral("pendingCredentialDeletions");

namespace {
void writePending(const QStringList& accounts) {
    QSettings store = ApplicationSettings::open();
    if (accounts.isEmpty()) {
        store.remove(KeychainStore::kPendingDeletionsKey);
    } else {
        store.setValue(KeychainStore::kPendingDeletionsKey, accounts);
    }
    store.sync();
}

void forgetPending(const QString& account) {
    QStringList pending = KeychainStore::pendingDeletions();
    if (pending.removeAll(account) > 0) {
        writePending(pending);
    }
}

void rememberPending(const QString& account) {
    QStringList pending = KeychainStore::pendingDeletions();
    if (!pending.contains(account)) {
        pending.append(account);
        writePending(pending);
    }
}

} // namespace

bool KeychainStore::isUnreachable(qint32 status) noexcept {
    return status == KeychainBackend::kInteractionNotAllowed || status == KeychainBackend::kNotAvailable;
}

bool KeychainStore::isDeleted(qint32 status) noexcept {
    return status == KeychainBackend::kSuccess || status == KeychainBackend::kItemNotFound;
}

QString KeychainError::reason() const {
    return KeychainStore::reason(m_status);
}

QString KeychainStore::reason(qint32 status) {
    switch (status) {
    case KeychainBackend::kInteractionNotAllowed:
        return PlatformWording::apply(QStringLiteral("macOS Keychain is locked"));
    case KeychainBackend::kNotAvailable:
        return PlatformWording::apply(QStringLiteral("macOS Keychain did not answer"));
    case KeychainBackend::kItemNotFound:
        return PlatformWording::apply(QStringLiteral("the key is not in macOS Keychain"));
    default:
        return PlatformWording::apply(
            QStringLiteral("macOS Keychain refused the request (status %1)").arg(status));
    }
}

QStringList KeychainStore::pendingDeletions() {
    return ApplicationSettings::open().value(kPendingDeletionsKey).toStringList();
}

void KeychainStore::retryPendingDeletions() {
    const QStringList pending = pendingDeletions();
    if (pending.isEmpty()) {
        return;
    }
    QStringList still;
    for (qsizetype i = 0; i < pending.size(); ++i) {
        if (!isDeleted(KeychainBackend::deleteItem(service, pending[i]))) {
            // The keychain is locked or away: the rest would fare no better, and each
            // try could cost a whole time-out.
            still += pending.mid(i);
            break;
        }
    }
    if (still != pending) {
        writePending(still);
    }
}

void KeychainStore::save(const QString& value, const QString& account) {
    QByteArray bytes = value.toUtf8();
    const auto wipeBytes = qScopeGuard([&bytes] { SecretText::wipe(bytes); });
    const qint32 existing = KeychainBackend::copyMatching(service, account);
    qint32 status = existing;
    if (existing == KeychainBackend::kSuccess) {
        status = KeychainBackend::update(service, account, bytes);
    } else if (existing == KeychainBackend::kItemNotFound) {
        status = KeychainBackend::add(service, account, bytes);
    }
    if (status != KeychainBackend::kSuccess) {
        throw KeychainError(status);
    }
    // The new value is wanted: an older deletion of this account no longer applies.
    forgetPending(account);
    // The keychain just answered: a good moment for the deletions still waiting.
    retryPendingDeletions();
}

std::optional<QString> KeychainStore::read(const QString& account, qint32* answer) {
    const QStringList pending = pendingDeletions();
    if (answer) {
        *answer = KeychainBackend::kItemNotFound;
    }
    if (pending.contains(account)) {
        // Deleted as far as anyone is concerned; try again to make it so.
        retryPendingDeletions();
        return std::nullopt;
    }
    std::optional<QByteArray> bytes;
    const qint32 status = KeychainBackend::copyMatching(service, account, &bytes);
    if (answer) {
        *answer = status;
    }
    if (!pending.isEmpty() && isDeleted(status)) {
        // The keychain answered: a good moment for the deletions still waiting.
        retryPendingDeletions();
    }
    if (status != KeychainBackend::kSuccess || !bytes) {
        return std::nullopt;
    }
    // Every byte counts: a leading byte-order mark is part of the secret, not a marker.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(*bytes);
    SecretText::wipe(*bytes);
    if (decoder.hasError()) {
        return std::nullopt;
    }
    return text;
}

void KeychainStore::deleteItem(const QString& account, qint32* status) {
    const qint32 answer = KeychainBackend::deleteItem(service, account);
    if (status) {
        *status = answer;
    }
    if (isDeleted(answer)) {
        forgetPending(account);
        retryPendingDeletions(); // the keychain answered: the others may go too
    } else {
        rememberPending(account);
    }
}
