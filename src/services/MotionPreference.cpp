#include "services/MotionPreference.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QVariant>

namespace {
// The desktop's setting through the XDG settings portal (GNOME and KDE answer it):
// "enable-animations" false means keep still. No portal, no answer: motion is fine.
bool askDesktop() {
#ifdef Q_OS_MACOS
    return false;
#else
    QDBusMessage read = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Settings"), QStringLiteral("Read"));
    read << QStringLiteral("org.gnome.desktop.interface") << QStringLiteral("enable-animations");
    // Never start a portal for this question, and never wait long for it.
    read.setAutoStartService(false);
    const QDBusMessage reply = QDBusConnection::sessionBus().call(read, QDBus::Block, 300);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return false;
    }
    QVariant value = reply.arguments().first();
    // The portal wraps the value in a variant, sometimes twice.
    while (value.canConvert<QDBusVariant>() && value.userType() == qMetaTypeId<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value.userType() == QMetaType::Bool && !value.toBool();
#endif
}
} // namespace

bool MotionPreference::reduceMotion() {
    static const bool reduce = askDesktop();
    return reduce;
}
