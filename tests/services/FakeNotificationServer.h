#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QList>
#include <QObject>
#include <QStringList>
#include <QVariantMap>

// A notification server on the session bus, on a connection of its own, that records
// every Notify call and answers with ids as a desktop would.
class FakeNotificationServer final : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    struct Call {
        QString appName;
        uint replacesId = 0;
        QString summary;
        QString body;
        QVariantMap hints;
        uint assignedId = 0;
    };

    FakeNotificationServer();
    ~FakeNotificationServer() override;

    bool isRegistered() const noexcept { return m_registered; }
    const QList<Call>& calls() const noexcept { return m_calls; }
    void clear() { m_calls.clear(); }
    // What GetCapabilities answers; "body" and "sound" unless a test says otherwise.
    void setCapabilities(QStringList capabilities) { m_capabilities = std::move(capabilities); }
    // Answers every Notify with an error, as a desktop does where the user turned the
    // application's notifications off. The calls are still recorded.
    void setRefusing(bool refusing) { m_refusing = refusing; }

signals:
    // A Notify call arrived and was recorded.
    void notified();

public slots:
    uint Notify(const QString& appName, uint replacesId, const QString& appIcon, const QString& summary,
                const QString& body, const QStringList& actions, const QVariantMap& hints, int expireTimeout);
    QStringList GetCapabilities();

private:
    QDBusConnection m_connection;
    bool m_registered = false;
    QList<Call> m_calls;
    uint m_nextId = 0;
    bool m_refusing = false;
    QStringList m_capabilities{QStringLiteral("body"), QStringLiteral("sound")};
};
