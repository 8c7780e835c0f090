#pragma once

#include <QObject>
#include <QSettings>
#include <QString>

// The operator's preferences, one value a key, in the platform's per-user settings.
// Each getter reads the stored value afresh and gives the default when the key was
// never written. Writes go through the setters so that listeners hear of them.
class Preferences final : public QObject {
    Q_OBJECT

public:
    static const QString kAutoRefreshEnabled;
    static const QString kAutoRefreshMinutes;
    static const QString kThresholdNotificationsEnabled;
    static const QString kOnboardingCompleted;
    static const QString kUseSampleDataByDefault;
    static const QString kDidSeedSampleAccounts;

    static constexpr bool kAutoRefreshEnabledDefault = false;
    static constexpr int kAutoRefreshMinutesDefault = 30;
    static constexpr bool kThresholdNotificationsEnabledDefault = false;
    static constexpr bool kOnboardingCompletedDefault = false;
    static constexpr bool kUseSampleDataByDefaultDefault = true;

    // Uses the application's default settings file.
    explicit Preferences(QObject* parent = nullptr);
    // Uses the settings file at `path` (tests, and tools that must not touch the real one).
    explicit Preferences(const QString& path, QObject* parent = nullptr);

    bool autoRefreshEnabled() const;
    void setAutoRefreshEnabled(bool enabled);
    int autoRefreshMinutes() const;
    void setAutoRefreshMinutes(int minutes);
    bool thresholdNotificationsEnabled() const;
    void setThresholdNotificationsEnabled(bool enabled);
    bool onboardingCompleted() const;
    void setOnboardingCompleted(bool completed);
    bool useSampleDataByDefault() const;
    void setUseSampleDataByDefault(bool enabled);
    // Written when sample accounts are seeded; nothing reads it.
    void setDidSeedSampleAccounts(bool seeded);

    // Direct access for the keys other parts keep (the onboarding draft).
    QSettings& settings() noexcept { return m_settings; }

signals:
    void changed(const QString& key);

private:
    bool boolValue(const QString& key, bool fallback) const;
    void write(const QString& key, const QVariant& value);

    mutable QSettings m_settings;
};
