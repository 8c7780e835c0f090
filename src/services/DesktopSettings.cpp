#include "services/DesktopSettings.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QVariant>

namespace {
const QString kService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kInterface = QStringLiteral("org.freedesktop.portal.Settings");

const QString kAppearance = QStringLiteral("org.freedesktop.appearance");
const QString kGnome = QStringLiteral("org.gnome.desktop.interface");
const QString kKde = QStringLiteral("org.kde.kdeglobals.KDE");

struct Setting {
    const QString& group;
    QString key;
};

const Setting kSettings[] = {
    {kAppearance, QStringLiteral("color-scheme")},     {kAppearance, QStringLiteral("contrast")},
    {kAppearance, QStringLiteral("reduced-motion")},   {kGnome, QStringLiteral("enable-animations")},
    {kKde, QStringLiteral("AnimationDurationFactor")},
};

// The portal wraps a value in a variant; Read (the older method) wraps it once more.
QVariant unwrapped(QVariant value) {
    while (value.userType() == qMetaTypeId<QDBusVariant>()) {
        value = value.value<QDBusVariant>().variant();
    }
    return value;
}

bool unsignedValue(const QVariant& value, uint* out) {
    const int type = value.userType();
    if (type != QMetaType::UInt && type != QMetaType::Int && type != QMetaType::UShort &&
        type != QMetaType::UChar) {
        return false;
    }
    bool ok = false;
    const uint number = value.toUInt(&ok);
    if (ok) {
        *out = number;
    }
    return ok;
}
} // namespace

DesktopSettings::DesktopSettings(QObject* parent)
    : DesktopSettings(QDBusConnection::sessionBus(), parent) {}

DesktopSettings::DesktopSettings(const QDBusConnection& bus, QObject* parent)
    : QObject(parent)
    , m_bus(bus)
    , m_firstAnswers(kFirstAnswerMilliseconds) {
#ifndef Q_OS_MACOS
    if (!m_bus.isConnected()) {
        return;
    }
    m_bus.connect(kService, kPath, kInterface, QStringLiteral("SettingChanged"), this,
                  SLOT(settingChanged(QString, QString, QDBusVariant)));
    for (const Setting& setting : kSettings) {
        ask(setting.group, setting.key, Method::readOne, kFirstAnswerMilliseconds);
    }
#endif
}

DesktopSettings::~DesktopSettings() = default;

void DesktopSettings::waitForFirstAnswers() {
    while (!m_pending.isEmpty() && !m_firstAnswers.hasExpired()) {
        // Each question carries the same time limit, so this waits no longer than it; an
        // answer (or error) is handled here, at once, and may ask again (Read for ReadOne).
        QDBusPendingCallWatcher* call = m_pending.constFirst();
        call->waitForFinished();
        // Its answer is normally handled by now; never spin on one that isn't.
        m_pending.removeOne(call);
    }
}

void DesktopSettings::ask(const QString& group, const QString& key, Method method, int timeout) {
    QDBusMessage question = QDBusMessage::createMethodCall(
        kService, kPath, kInterface,
        method == Method::readOne ? QStringLiteral("ReadOne") : QStringLiteral("Read"));
    question << group << key;
    // A desktop without a running portal has no answer to give; starting one for this
    // would cost the start more than it tells.
    question.setAutoStartService(false);
    auto* call = new QDBusPendingCallWatcher(m_bus.asyncCall(question, timeout), this);
    // Only a question with the first answers' time limit is waited for.
    const bool waited = timeout > 0;
    if (waited) {
        m_pending.append(call);
    }
    connect(call, &QDBusPendingCallWatcher::finished, this,
            [this, group, key, method, waited](QDBusPendingCallWatcher* finished) {
                answered(finished, group, key, method, waited);
            });
}

void DesktopSettings::answered(QDBusPendingCallWatcher* call, const QString& group, const QString& key,
                               Method method, bool waited) {
    m_pending.removeOne(call);
    call->deleteLater();
    const QDBusMessage reply = call->reply();
    if (reply.type() == QDBusMessage::ReplyMessage) {
        if (!reply.arguments().isEmpty()) {
            take(group, key, reply.arguments().constFirst());
        }
        return;
    }
    const QDBusError::ErrorType error = call->error().type();
    if (error == QDBusError::UnknownMethod && method == Method::readOne) {
        // A portal older than ReadOne: the same question through Read.
        const qint64 remaining = m_firstAnswers.remainingTime();
        ask(group, key, Method::read, waited && remaining > 0 ? static_cast<int>(remaining) : -1);
    } else if ((error == QDBusError::NoReply || error == QDBusError::Timeout) && waited) {
        // Slow, not absent: its answer is still welcome, only no longer waited for.
        ask(group, key, method, -1);
    }
    // Anything else (no portal, a key it doesn't know): the desktop asks for nothing.
}

void DesktopSettings::settingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    take(group, key, value.variant());
}

void DesktopSettings::take(const QString& group, const QString& key, const QVariant& value) {
    if (!take(m_readings, group, key, value)) {
        return;
    }
    const State next = stateOf(m_readings);
    if (next == m_state) {
        return;
    }
    m_state = next;
    Q_EMIT changed();
}

bool DesktopSettings::take(Readings& readings, const QString& group, const QString& key,
                           const QVariant& value) {
    const QVariant plain = unwrapped(value);
    if (group == kAppearance) {
        if (key == QLatin1StringView("color-scheme")) {
            return unsignedValue(plain, &readings.colorScheme);
        }
        if (key == QLatin1StringView("contrast")) {
            return unsignedValue(plain, &readings.contrast);
        }
        if (key == QLatin1StringView("reduced-motion")) {
            return unsignedValue(plain, &readings.reducedMotion);
        }
    } else if (group == kGnome && key == QLatin1StringView("enable-animations")) {
        if (plain.userType() == QMetaType::Bool) {
            readings.animations = plain.toBool();
            return true;
        }
    } else if (group == kKde && key == QLatin1StringView("AnimationDurationFactor")) {
        bool ok = false;
        const double factor = plain.toDouble(&ok);
        if (ok && (plain.userType() == QMetaType::Double || plain.userType() == QMetaType::Int)) {
            readings.animationFactor = factor;
            return true;
        }
    }
    return false;
}

DesktopSettings::State DesktopSettings::stateOf(const Readings& readings) {
    State state;
    // Values beyond those the portal defines mean no preference.
    state.colorScheme = readings.colorScheme == 1   ? ColorScheme::dark
                        : readings.colorScheme == 2 ? ColorScheme::light
                                                    : ColorScheme::noPreference;
    state.highContrast = readings.contrast == 1;
    state.reduceMotion =
        readings.reducedMotion == 1 || !readings.animations || readings.animationFactor <= 0.0;
    return state;
}
