#pragma once

#include "model/Timestamp.h"
#include "model/UsageWindow.h"
#include "views/Badge.h"
#include "views/Tone.h"

#include <QList>
#include <QLocale>
#include <QString>
#include <QTimeZone>

#include <optional>

// One horizon of a subscription card ("Short term", "Weekly"): a row per window, or the
// unavailable panel when the horizon has none.
struct HorizonPanelContent {
    struct Row {
        // A pulse dot of the health: its tone, and the health title as its name.
        Badge dot;
        QString title;
        QString used; // metric of used
        bool limitReported = false;
        QString noLimit;         // "Limit not reported by provider" without a limit
        double progress = 0;     // 0 when the window has no progress
        Tone tone = Tone::muted; // the health's tone, for the bar and the remainder
        QString remainder;
        QString ceiling; // "of 60 requests"
        QString resetSymbol;
        QString countdown;
        QString resetDate; // empty without a reset
        QString modelName; // empty without one
        QString modelSymbol;

        friend bool operator==(const Row&, const Row&) = default;
    };

    QString title;
    QString symbol;
    QList<Row> rows;
    // With no rows: "Not available from provider" and its message.
    QString unavailableTitle;
    QString unavailableMessage;
    QString unavailableSymbol;

    static HorizonPanelContent make(const QString& title, const QString& symbol,
                                    const QList<UsageWindow>& windows, Timestamp now,
                                    const QLocale& locale = QLocale(),
                                    const QTimeZone& timeZone = QTimeZone::systemTimeZone());
    static Row row(const UsageWindow& window, Timestamp now, const QLocale& locale,
                   const QTimeZone& timeZone);

    friend bool operator==(const HorizonPanelContent&, const HorizonPanelContent&) = default;
};
