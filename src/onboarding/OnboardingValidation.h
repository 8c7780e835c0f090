#pragma once

#include "model/Clock.h"
#include "model/OnboardingResetMode.h"

#include <QString>
#include <QStringList>

#include <optional>

// The rules on what may go through the guided flow, as pure functions of text and time.
class OnboardingValidation final {
public:
    OnboardingValidation() = delete;

    // A number as typed: a point is the decimal mark, whatever the user's locale; an
    // exponent is allowed, a digit group separator is not. Blank, unreadable or
    // non-finite text is absent.
    static std::optional<double> number(const QString& text);
    // The same name, ignoring outer blanks and letter case; a blank name duplicates nothing.
    static bool duplicateLabel(const QString& label, const QStringList& existingLabels);
    static bool canSubmitAPI(const QString& key, bool verified);
    // The first problem with the manual numbers and resets, or absent when they pass.
    static std::optional<QString>
    manualMessage(const QString& shortUsed, const QString& shortLimit, const QString& weeklyUsed,
                  const QString& weeklyLimit, OnboardingResetMode shortResetMode,
                  std::optional<Timestamp> shortResetDate, OnboardingResetMode weeklyResetMode,
                  std::optional<Timestamp> weeklyResetDate, bool overageConfirmed, bool overdueResetConfirmed,
                  Timestamp now = Clock::now());
};
