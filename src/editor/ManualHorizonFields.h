#pragma once

#include <QString>

// The inputs of one manual horizon: its limit and used value side by side, whether the
// reset time is known, and then its picker or the note that it is not.
struct ManualHorizonFields {
    QString title;
    QString limitTitle = QStringLiteral("Limit");
    QString usedTitle = QStringLiteral("Used");
    QString resetToggleTitle = QStringLiteral("I know the reset time");
    bool hasReset = false;
    // Shown instead of the picker while the reset time is not known.
    QString resetPickerTitle = QStringLiteral("Reset time");
    QString noResetText = QStringLiteral("Reset not provided — you can add it later.");

    friend bool operator==(const ManualHorizonFields&, const ManualHorizonFields&) = default;
};
