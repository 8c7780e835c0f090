#include "views/SettingsContent.h"

#include "core/Preferences.h"
#include "model/PlatformWording.h"

#include <cstdlib>

SettingsContent SettingsContent::make() {
    SettingsContent content;
    content.windowTitle = QStringLiteral("Settings");

    content.demoSection = QStringLiteral("Demo and privacy");
    content.sampleData = {Preferences::kUseSampleDataByDefault,
                          QStringLiteral("Use sample data for new accounts")};
    content.demoNote = PlatformWording::apply(QStringLiteral(
        "Sample data never contacts a provider. Credentials are stored in Keychain; SwiftData keeps "
        "only non-secret account metadata and snapshots."));

    content.refreshSection = QStringLiteral("Operator refresh");
    content.autoRefresh = {Preferences::kAutoRefreshEnabled,
                           QStringLiteral("Smart refresh accounts automatically")};
    content.intervalTitle = QStringLiteral("Refresh interval");
    content.intervals = {{QStringLiteral("Every 15 minutes"), 15},
                         {QStringLiteral("Every 30 minutes"), 30},
                         {QStringLiteral("Every hour"), 60}};
    content.refreshNote = QStringLiteral(
        "Smart refresh keeps the last good snapshot during outages, respects provider errors, and surfaces "
        "re-authentication when a credential is rejected. Only official API connections make network "
        "requests; "
        "mock and manual accounts refresh locally.");
    content.notifications = {Preferences::kThresholdNotificationsEnabled,
                             QStringLiteral("Notify when a limit needs action")};
    content.notificationsNote = PlatformWording::apply(QStringLiteral(
        "Notifications are opt-in and fire once when a refreshed account crosses into Action needed. "
        "They require macOS notification permission and work while the tracker is running."));

    content.supportSection = QStringLiteral("Provider support");
    content.support = {
        {QStringLiteral("OpenAI Platform"), QStringLiteral("Official API key · usage, limits, and costs")},
        {QStringLiteral("Claude consumer subscriptions"), QStringLiteral("Manual / reference page only")},
        {QStringLiteral("xAI / Grok"), QStringLiteral("Manual / reference page only")},
        {QStringLiteral("Google Gemini"), QStringLiteral("Manual / reference page only")},
    };
    content.supportNotes = {
        QStringLiteral(
            "The app does not scrape provider websites, reuse browser cookies, or copy session tokens. "
            "Unsupported fields are shown as unavailable, never as zero."),
        QStringLiteral(
            "OpenAI usage and costs require an organization Admin API key; use a dedicated key, limit its "
            "scope where possible, and rotate it if it was ever exposed."),
    };

    content.aboutSection = QStringLiteral("About");
    content.about = {{QStringLiteral("Product"), QStringLiteral("Tallyfen")},
                     {QStringLiteral("Company"), QStringLiteral("Harrowmere")}};
    content.linkTitle = QStringLiteral("harrowmere.com");
    content.link = QUrl(QStringLiteral("https://harrowmere.com"));
    content.aboutNote = QStringLiteral(
        "A Harrowmere product for calm, local-first monitoring across independent AI subscriptions.");
    return content;
}

qsizetype SettingsContent::intervalIndex(int minutes) {
    const QList<Interval> choices = make().intervals;
    qsizetype best = 0;
    for (qsizetype i = 1; i < choices.size(); ++i) {
        if (std::abs(choices[i].minutes - minutes) < std::abs(choices[best].minutes - minutes)) {
            best = i;
        }
    }
    return best;
}
