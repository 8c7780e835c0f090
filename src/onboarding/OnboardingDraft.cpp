#include "onboarding/OnboardingDraft.h"

QString OnboardingDraft::normalizedLabel() const {
    const QString trimmed = label.trimmed();
    return trimmed.isEmpty() ? provider.shortName() + QStringLiteral(" · Personal") : trimmed;
}

bool OnboardingDraft::hasManualAllowance() const {
    return manualShortLimit.has_value() || manualWeeklyLimit.has_value();
}

std::optional<Timestamp> OnboardingDraft::shortResetAt() const {
    return manualShortResetMode == OnboardingResetMode::setTime ? manualShortReset : std::nullopt;
}

std::optional<Timestamp> OnboardingDraft::weeklyResetAt() const {
    return manualWeeklyResetMode == OnboardingResetMode::setTime ? manualWeeklyReset : std::nullopt;
}
