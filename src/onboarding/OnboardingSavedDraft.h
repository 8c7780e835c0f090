#pragma once

#include <QSettings>
#include <QString>

// The non-secret parts of an unfinished setup, kept in the preferences under thirteen
// keys so that the operator can stop half way and come back. Never the API key, the
// confirmations, the verified flag or the detected metadata.
struct OnboardingSavedDraft {
    static const QString kLabel;
    static const QString kProvider;
    static const QString kMode;
    static const QString kShortUsed;
    static const QString kShortLimit;
    static const QString kWeeklyUsed;
    static const QString kWeeklyLimit;
    static const QString kManualUnit;
    static const QString kShortResetMode;
    static const QString kWeeklyResetMode;
    static const QString kShortResetTime;
    static const QString kWeeklyResetTime;
    static const QString kPage;
    // All thirteen, in the order above.
    static QStringList keys();

    QString label;
    QString provider;  // raw value of AIProvider
    QString mode;      // raw value of ConnectionMode
    QString shortUsed; // the field's text as typed
    QString shortLimit;
    QString weeklyUsed;
    QString weeklyLimit;
    QString manualUnit;     // raw value of UsageUnit
    QString shortResetMode; // raw value of OnboardingResetMode
    QString weeklyResetMode;
    double shortResetTime = 0; // seconds since 1 January 1970
    double weeklyResetTime = 0;
    int page = 0; // raw value of the page

    // A saved draft exists when its label or its provider is not empty.
    bool exists() const { return !label.isEmpty() || !provider.isEmpty(); }

    static OnboardingSavedDraft load(const QSettings& settings);
    void save(QSettings& settings) const;
    // Writes the empty value under every key.
    static void clear(QSettings& settings);

    friend bool operator==(const OnboardingSavedDraft&, const OnboardingSavedDraft&) = default;
};
