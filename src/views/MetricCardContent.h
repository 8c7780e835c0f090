#pragma once

#include "model/Timestamp.h"
#include "model/UsageWindow.h"
#include "views/Tone.h"

#include <QLocale>
#include <QString>
#include <QTimeZone>

#include <optional>

// What the metric card of one window shows, top to bottom. A value nobody reported is
// written out as missing, never drawn as 0.
struct MetricCardContent {
    QString title;
    QString unitSymbol;
    // The used amount, or "Not available from provider" (then in secondary colour).
    QString value;
    bool valueReported = false;
    // "of 60 requests", or "Limit not reported" in small secondary type.
    QString ceiling;
    bool limitReported = false;
    // Beside the ceiling, only with a limit: "18 requests remaining", red when over.
    QString remainder;
    Tone remainderTone = Tone::muted;
    // The bar, only when the window has a progress; red when over, else the accent.
    std::optional<double> progress;
    Tone progressTone = Tone::accent;
    QString resetSymbol;
    // Always there: "in 42m", "Reset due" or "Reset not provided".
    QString countdown;
    // The reset's date and time, only when the window has one.
    QString resetDate;
    // The window's note, at most two lines; empty when it has none.
    QString note;

    static MetricCardContent make(const UsageWindow& window, Timestamp now, const QLocale& locale = QLocale(),
                                  const QTimeZone& timeZone = QTimeZone::systemTimeZone());

    friend bool operator==(const MetricCardContent&, const MetricCardContent&) = default;
};
