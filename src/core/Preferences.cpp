#include "core/Preferences.h"

const QString Preferences::kAutoRefreshEnabled = QStringLiteral("autoRefreshEnabled");
const QString Preferences::kAutoRefreshMinutes = QStringLiteral("autoRefreshMinutes");
const QString Preferences::kThresholdNotificationsEnabled = QStringLiteral("thresholdNotificationsEnabled");
const QString Preferences::kOnboardingCompleted = QStringLiteral("onboardingCompleted");
const QString Preferences::kUseSampleDataByDefault = QStringLiteral("useSampleDataByDefault");
const QString Preferences::kDidSeedSampleAccounts = QStringLiteral("didSeedSampleAccounts");

Preferences::Preferences(QObject* parent)
    : QObject(parent) {}

Preferences::Preferences(const QString& path, QObject* parent)
    : QObject(parent)
    , m_settings(path, QSettings::IniFormat) {}

bool Preferences::boolValue(const QString& key, bool fallback) const {
    const QVariant value = m_settings.value(key);
    return value.isValid() ? value.toBool() : fallback;
}

void Preferences::write(const QString& key, const QVariant& value) {
    // Writing the settings file syncs it to disk: skip that when nothing would change.
    // Listeners hear only of a real change, as they would of a stored value's observer.
    const QVariant stored = m_settings.value(key);
    if (stored.isValid() && stored.toString() == value.toString()) {
        return;
    }
    m_settings.setValue(key, value);
    m_settings.sync();
    Q_EMIT changed(key);
}

bool Preferences::autoRefreshEnabled() const {
    return boolValue(kAutoRefreshEnabled, kAutoRefreshEnabledDefault);
}

void Preferences::setAutoRefreshEnabled(bool enabled) {
    write(kAutoRefreshEnabled, enabled);
}

int Preferences::autoRefreshMinutes() const {
    bool ok = false;
    const int minutes = m_settings.value(kAutoRefreshMinutes).toInt(&ok);
    return ok ? minutes : kAutoRefreshMinutesDefault;
}

void Preferences::setAutoRefreshMinutes(int minutes) {
    write(kAutoRefreshMinutes, minutes);
}

bool Preferences::thresholdNotificationsEnabled() const {
    return boolValue(kThresholdNotificationsEnabled, kThresholdNotificationsEnabledDefault);
}

void Preferences::setThresholdNotificationsEnabled(bool enabled) {
    write(kThresholdNotificationsEnabled, enabled);
}

bool Preferences::onboardingCompleted() const {
    return boolValue(kOnboardingCompleted, kOnboardingCompletedDefault);
}

void Preferences::setOnboardingCompleted(bool completed) {
    write(kOnboardingCompleted, completed);
}

bool Preferences::useSampleDataByDefault() const {
    return boolValue(kUseSampleDataByDefault, kUseSampleDataByDefaultDefault);
}

void Preferences::setUseSampleDataByDefault(bool enabled) {
    write(kUseSampleDataByDefault, enabled);
}

void Preferences::setDidSeedSampleAccounts(bool seeded) {
    write(kDidSeedSampleAccounts, seeded);
}
