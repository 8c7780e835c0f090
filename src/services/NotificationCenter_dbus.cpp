// The freedesktop notification service (org.freedesktop.Notifications) on the session bus.
#include "services/NotificationCenter.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QHash>
#include <QVariantMap>

namespace {
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
constexpr int kCallTimeoutMilliseconds = 5000;

// The server's id for each of our identifiers, so that a later notification with the
// same identifier replaces the earlier one on screen.
QHash<QString, uint>& serverIDs() {
    static QHash<QString, uint> ids;
    return ids;
}
} // namespace

void NotificationCenter::requestAuthorization() {
    // The freedesktop service has no permission step: the desktop decides what it shows.
}

void NotificationCenter::add(const UrgentNotificationRequest& request) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    QVariantMap hints;
    if (request.playsDefaultSound) {
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("message-new-instant"));
    }
    QDBusMessage notify =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    notify << QStringLiteral("Tallyfen") << serverIDs().value(request.identifier, 0U) << QString()
           << request.title << request.body << QStringList() << hints << -1;
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(notify, kCallTimeoutMilliseconds));
    const QString identifier = request.identifier;
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [identifier](QDBusPendingCallWatcher* call) {
                         const QDBusPendingReply<uint> reply = *call;
                         if (!reply.isError()) {
                             serverIDs().insert(identifier, reply.value());
                         }
                         call->deleteLater();
                     });
}
