#pragma once

#include <QDBusConnection>
#include <QDeadlineTimer>
#include <QList>
#include <QObject>
#include <QString>

class QDBusPendingCallWatcher;
class QDBusVariant;
class QVariant;

// What the desktop asks of every application's look: light or dark, more contrast, less
// motion. On Linux it is read from the XDG settings portal, at start and then as it
// changes; no portal (or a portal that says nothing) asks for nothing. The portal is
// never started for this, and the first answers are waited for only briefly.
class DesktopSettings final : public QObject {
    Q_OBJECT

public:
    enum class ColorScheme { noPreference, dark, light };

    struct State {
        ColorScheme colorScheme = ColorScheme::noPreference;
        bool highContrast = false;
        bool reduceMotion = false;
        bool operator==(const State&) const = default;
    };

    // The longest the first answers are waited for: a portal that never answers costs a
    // start no more than this.
    static constexpr int kFirstAnswerMilliseconds = 200;

    // Starts reading at once, on `bus` (the session bus unless a test gives its own).
    explicit DesktopSettings(QObject* parent = nullptr);
    DesktopSettings(const QDBusConnection& bus, QObject* parent);
    ~DesktopSettings() override;

    const State& state() const noexcept { return m_state; }
    // True once every first question has an answer, an error or has timed out.
    bool settled() const noexcept { return m_pending.isEmpty(); }
    // Waits until settled, but never past the first answers' time limit.
    void waitForFirstAnswers();

    // The settings read, each as the desktop last said it. Several keys (the freedesktop
    // one, GNOME's, KDE's) can ask for less motion; any of them is enough.
    struct Readings {
        uint colorScheme = 0;
        uint contrast = 0;
        uint reducedMotion = 0;
        bool animations = true;
        double animationFactor = 1.0;
    };
    // Takes one of the portal's values (wrapped in variants once or twice, as it sends
    // them) into `readings`; false for a key this doesn't read or a value of the wrong type.
    static bool take(Readings& readings, const QString& group, const QString& key, const QVariant& value);
    static State stateOf(const Readings& readings);

signals:
    void changed();

private slots:
    void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

private:
    enum class Method { readOne, read };
    void ask(const QString& group, const QString& key, Method method, int timeout);
    void answered(QDBusPendingCallWatcher* call, const QString& group, const QString& key, Method method,
                  bool waited);
    void take(const QString& group, const QString& key, const QVariant& value);

    QDBusConnection m_bus;
    Readings m_readings;
    State m_state;
    QList<QDBusPendingCallWatcher*> m_pending;
    QDeadlineTimer m_firstAnswers;
};
