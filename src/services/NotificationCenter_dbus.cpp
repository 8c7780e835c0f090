// The freedesktop notification service (org.freedesktop.Notifications) on the session bus.
#include "services/NotificationCenter.h"

#include "services/ApplicationSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QHash>
#include <QSet>
#include <QStringList>
#include <QVariantMap>

#include <functional>

namespace {
const QString kService = QStringLiteral("org.freedesktop.Notifications");
const QString kPath = QStringLiteral("/org/freedesktop/Notifications");
const QString kInterface = QStringLiteral("org.freedesktop.Notifications");
constexpr int kCallTimeoutMilliseconds = 5000;
// Where the server's ids outlive the process, so that the first notification after a
// restart still replaces the last one before it.
const QString kServerIDsKey = QStringLiteral("notificationServerIDs");

// Per identifier: whether a Notify is on its way, and the newest request that waits for
// that call to come back with the id to replace.
struct Delivery {
    QSet<QString> inFlight;
    QHash<QString, UrgentNotificationRequest> waiting;
};

Delivery& delivery() {
    static Delivery state;
    return state;
}

uint storedServerID(const QString& identifier) {
    return ApplicationSettings::open().value(kServerIDsKey).toMap().value(identifier).toUInt();
}

void storeServerID(const QString& identifier, uint id) {
    QSettings store = ApplicationSettings::open();
    QVariantMap ids = store.value(kServerIDsKey).toMap();
    ids.insert(identifier, id);
    store.setValue(kServerIDsKey, ids);
}

void whenFinished(const QDBusPendingCall& call, std::function<void(QDBusPendingCallWatcher*)> handler) {
    auto* watcher = new QDBusPendingCallWatcher(call);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [handler = std::move(handler)](QDBusPendingCallWatcher* finished) {
                         handler(finished);
                         finished->deleteLater();
                     });
}

void send(const UrgentNotificationRequest& request);

// Notify, with the body escaped where the server reads markup.
void notify(const UrgentNotificationRequest& request, bool bodyMarkup) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    QVariantMap hints;
    if (request.playsDefaultSound) {
        hints.insert(QStringLiteral("sound-name"), QStringLiteral("message-new-instant"));
    }
    QDBusMessage message =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("Notify"));
    message << QStringLiteral("Tallyfen") << storedServerID(request.identifier) << QString() << request.title
            << (bodyMarkup ? request.body.toHtmlEscaped() : request.body) << QStringList() << hints << -1;
    const QString identifier = request.identifier;
    whenFinished(bus.asyncCall(message, kCallTimeoutMilliseconds),
                 [identifier](QDBusPendingCallWatcher* call) {
                     const QDBusPendingReply<uint> reply = *call;
                     if (!reply.isError()) {
                         storeServerID(identifier, reply.value());
                     }
                     Delivery& state = delivery();
                     state.inFlight.remove(identifier);
                     if (state.waiting.contains(identifier)) {
                         send(state.waiting.take(identifier));
                     }
                 });
}

void send(const UrgentNotificationRequest& request) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        return;
    }
    Delivery& state = delivery();
    if (state.inFlight.contains(request.identifier)) {
        // Replacing needs the id the first call brings back: this one waits for it.
        state.waiting.insert(request.identifier, request);
        return;
    }
    state.inFlight.insert(request.identifier);
    // Asked anew each time: notifications are rare, and the server may have changed.
    const QDBusMessage capabilities =
        QDBusMessage::createMethodCall(kService, kPath, kInterface, QStringLiteral("GetCapabilities"));
    whenFinished(bus.asyncCall(capabilities, kCallTimeoutMilliseconds),
                 [request](QDBusPendingCallWatcher* call) {
                     const QDBusPendingReply<QStringList> reply = *call;
                     if (reply.isError()) {
                         // No server is listening (every one answers this call): the notification is
                         // dropped, not kept for whoever comes later.
                         delivery().inFlight.remove(request.identifier);
                         delivery().waiting.remove(request.identifier);
                         return;
                     }
                     notify(request, reply.value().contains(QStringLiteral("body-markup")));
                 });
}
} // namespace

void NotificationCenter::requestAuthorization() {
    // The freedesktop service has no permission step: the desktop decides what it shows.
}

void NotificationCenter::add(const UrgentNotificationRequest& request) {
    send(request);
}
