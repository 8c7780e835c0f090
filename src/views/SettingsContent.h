#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QUrl>

// The settings window's texts, in the order it shows them: four sections of toggles,
// the interval choices, the provider support table and the About block.
struct SettingsContent {
    struct Toggle {
        QString key; // the preference it writes
        QString title;
    };
    struct Interval {
        QString title;
        int minutes;
    };

    QString windowTitle;
    static constexpr int kWidth = 540;
    static constexpr int kHeight = 590;

    QString demoSection;
    Toggle sampleData;
    QString demoNote;

    QString refreshSection;
    Toggle autoRefresh;
    QString intervalTitle;
    QList<Interval> intervals;
    QString refreshNote;
    Toggle notifications;
    QString notificationsNote;

    QString supportSection;
    QList<QPair<QString, QString>> support;
    QStringList supportNotes;

    QString aboutSection;
    QList<QPair<QString, QString>> about;
    QString linkTitle;
    QUrl link;
    QString aboutNote;

    // With the platform's wording for its keychain, database and notifications.
    static SettingsContent make();
    // Where an interval that is not one of the choices shows: the nearest choice.
    static qsizetype intervalIndex(int minutes);
};
