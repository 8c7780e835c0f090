#include "FakeNotificationServer.h"

#include <QDBusError>

namespace {
const QString kConnectionName = QStringLiteral("fake-notification-server");
}

FakeNotificationServer::FakeNotificationServer()
    : m_connection(QDBusConnection::connectToBus(QDBusConnection::SessionBus, kConnectionName)) {
    m_registered = m_connection.registerService(QStringLiteral("org.freedesktop.Notifications")) &&
                   m_connection.registerObject(QStringLiteral("/org/freedesktop/Notifications"), this,
                                               QDBusConnection::ExportAllSlots);
}

FakeNotificationServer::~FakeNotificationServer() {
    m_connection.unregisterObject(QStringLiteral("/org/freedesktop/Notifications"));
    m_connection.unregisterService(QStringLiteral("org.freedesktop.Notifications"));
    QDBusConnection::disconnectFromBus(kConnectionName);
}

uint FakeNotificationServer::Notify(const QString& appName, uint replacesId, const QString&,
                                    const QString& summary, const QString& body, const QStringList&,
                                    const QVariantMap& hints, int) {
    const uint id = replacesId != 0 ? replacesId : ++m_nextId;
    m_calls.append(Call{appName, replacesId, summary, body, hints, m_refusing ? 0U : id});
    Q_EMIT notified();
    if (m_refusing) {
        sendErrorReply(QDBusError::AccessDenied, QStringLiteral("Notifications are turned off for Tallyfen"));
        return 0;
    }
    return id;
}

QStringList FakeNotificationServer::GetCapabilities() {
    return m_capabilities;
}
