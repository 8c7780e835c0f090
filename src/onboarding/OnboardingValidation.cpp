#include "onboarding/OnboardingValidation.h"

#include "core/AccountLabel.h"

#include <array>
#include <cmath>

std::optional<double> OnboardingValidation::number(const QString& text) {
    const QString trimmed = text.trimmed();
    if (trimmed.isEmpty()) {
        return std::nullopt;
    }
    // QString::toDouble reads the C locale's grammar, never the user's.
    bool ok = false;
    const double value = trimmed.toDouble(&ok);
    if (!ok || !std::isfinite(value)) {
        return std::nullopt;
    }
    return value;
}

bool OnboardingValidation::duplicateLabel(const QString& label, const QStringList& existingLabels) {
    if (label.trimmed().isEmpty()) {
        return false;
    }
    for (const QString& existing : existingLabels) {
        if (AccountLabel::same(existing, label)) {
            return true;
        }
    }
    return false;
}

bool OnboardingValidation::canSubmitAPI(const QString& key, bool verified) {
    return !key.trimmed().isEmpty() && verified;
}

std::optional<QString> OnboardingValidation::manualMessage(
    const QString& shortUsed, const QString& shortLimit, const QString& weeklyUsed,
    const QString& weeklyLimit, OnboardingResetMode shortResetMode, std::optional<Timestamp> shortResetDate,
    OnboardingResetMode weeklyResetMode, std::optional<Timestamp> weeklyResetDate, bool overageConfirmed,
    bool overdueResetConfirmed, Timestamp now) {
    struct Pair {
        QString name;
        const QString& used;
        const QString& limit;
    };
    const std::array<Pair, 2> pairs{Pair{QStringLiteral("current window"), shortUsed, shortLimit},
                                    Pair{QStringLiteral("weekly window"), weeklyUsed, weeklyLimit}};
    // Empty means empty as text: a field of blanks counts as filled.
    if (shortUsed.isEmpty() && shortLimit.isEmpty() && weeklyUsed.isEmpty() && weeklyLimit.isEmpty()) {
        return QStringLiteral("Add at least one limit, or choose the safe sample instead.");
    }
    for (const Pair& pair : pairs) {
        if (pair.used.isEmpty() && pair.limit.isEmpty()) {
            continue;
        }
        if (pair.used.isEmpty() || pair.limit.isEmpty()) {
            return QStringLiteral("Add both Used and Limit for the ") + pair.name +
                   QStringLiteral(", or leave both blank.");
        }
        const std::optional<double> used = number(pair.used);
        const std::optional<double> limit = number(pair.limit);
        if (!used || *used < 0 || !limit || !(*limit > 0)) {
            return QStringLiteral("Use numbers of 0 or more, with a limit greater than 0.");
        }
        if (*limit < *used && !overageConfirmed) {
            return QStringLiteral("Used is above the limit. Confirm this is an overage to continue.");
        }
    }
    const auto passed = [now](OnboardingResetMode mode, std::optional<Timestamp> date) {
        return mode == OnboardingResetMode::setTime && date && *date <= now;
    };
    if ((passed(shortResetMode, shortResetDate) || passed(weeklyResetMode, weeklyResetDate)) &&
        !overdueResetConfirmed) {
        return QStringLiteral(
            "A reset time has passed. Confirm that this window is already overdue, or choose a future time.");
    }
    return std::nullopt;
}
