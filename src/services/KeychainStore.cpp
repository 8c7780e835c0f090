#include "services/KeychainStore.h"

#include "services/KeychainBackend.h"

#include <QStringDecoder>

const QString KeychainStore::service = QStringLiteral("Tallyfen.credentials");

void KeychainStore::save(const QString& value, const QString& account) {
    const QByteArray bytes = value.toUtf8();
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
}

std::optional<QString> KeychainStore::read(const QString& account) {
    std::optional<QByteArray> bytes;
    if (KeychainBackend::copyMatching(service, account, &bytes) != KeychainBackend::kSuccess || !bytes) {
        return std::nullopt;
    }
    // Every byte counts: a leading byte-order mark is part of the secret, not a marker.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(*bytes);
    if (decoder.hasError()) {
        return std::nullopt;
    }
    return text;
}

void KeychainStore::deleteItem(const QString& account) {
    KeychainBackend::deleteItem(service, account);
}
