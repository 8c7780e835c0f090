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
