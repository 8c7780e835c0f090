#include "onboarding/OnboardingDraft.h"

#include "core/AccountLabel.h"

QString OnboardingDraft::normalizedLabel() const {
    return AccountLabel::normalized(label, provider);
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

AccountDraft OnboardingDraft::accountDraft() const {
    return AccountDraft{.provider = provider,
                        .accountKind = accountKind,
                        .label = label,
                        .connectionMode = connectionMode,
                        .apiKey = apiKey,
                        .connectionMetadata = connectionMetadata,
                        .manualUnit = manualUnit,
                        .shortTerm = ManualHorizonDraft{.used = manualShortUsed,
                                                        .limit = manualShortLimit,
                                                        .resetMode = manualShortResetMode,
                                                        .resetAt = shortResetAt()},
                        .weekly = ManualHorizonDraft{.used = manualWeeklyUsed,
                                                     .limit = manualWeeklyLimit,
                                                     .resetMode = manualWeeklyResetMode,
                                                     .resetAt = weeklyResetAt()}};
}
