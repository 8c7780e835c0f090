#pragma once

#include <QDBusInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusReply>

// Locks the Secret Service's default collection on the session bus, as a screen locker
// would. For test programs that run against a keyring of their own.
inline bool lockDefaultCollection() {
    QDBusInterface service(QStringLiteral("org.freedesktop.secrets"),
                           QStringLiteral("/org/freedesktop/secrets"),
                           QStringLiteral("org.freedesktop.Secret.Service"));
    const QDBusReply<QDBusObjectPath> alias =
        service.call(QStringLiteral("ReadAlias"), QStringLiteral("default"));
    if (!alias.isValid()) {
        return false;
    }
    const QDBusMessage locked =
        service.call(QStringLiteral("Lock"), QVariant::fromValue(QList<QDBusObjectPath>{alias.value()}));
    return locked.type() == QDBusMessage::ReplyMessage;
}

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QStringList>

#include <algorithm>

// The account names of every item Tallyfen keeps in the keyring, sorted, read over the
// Secret Service's own D-Bus interface (locked items too): what is really there, not
// what the program believes.
inline QStringList keychainAccounts(const QString& service = QStringLiteral("Tallyfen.credentials")) {
    QDBusInterface secrets(QStringLiteral("org.freedesktop.secrets"),
                           QStringLiteral("/org/freedesktop/secrets"),
                           QStringLiteral("org.freedesktop.Secret.Service"));
    using Attributes = QMap<QString, QString>;
    qDBusRegisterMetaType<Attributes>();
    const QDBusMessage found = secrets.call(
        QStringLiteral("SearchItems"), QVariant::fromValue(Attributes{{QStringLiteral("service"), service}}));
    QStringList accounts;
    if (found.type() != QDBusMessage::ReplyMessage || found.arguments().size() != 2) {
        return {QStringLiteral("<no answer from the Secret Service>")};
    }
    for (const QVariant& group : found.arguments()) {
        const auto paths = qdbus_cast<QList<QDBusObjectPath>>(group);
        for (const QDBusObjectPath& path : paths) {
            QDBusInterface item(QStringLiteral("org.freedesktop.secrets"), path.path(),
                                QStringLiteral("org.freedesktop.DBus.Properties"));
            const QDBusMessage got =
                item.call(QStringLiteral("Get"), QStringLiteral("org.freedesktop.Secret.Item"),
                          QStringLiteral("Attributes"));
            const QVariant value = got.arguments().value(0).value<QDBusVariant>().variant();
            const Attributes attributes = qdbus_cast<Attributes>(value.value<QDBusArgument>());
            accounts.append(attributes.value(QStringLiteral("account")));
        }
    }
    std::sort(accounts.begin(), accounts.end());
    return accounts;
}
