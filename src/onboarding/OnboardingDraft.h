#pragma once

#include "core/AccountDraft.h"
#include "model/AIProvider.h"
#include "model/AccountKind.h"
#include "model/ConnectionMode.h"
#include "model/OnboardingResetMode.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/Timestamp.h"
#include "model/UsageUnit.h"

#include <QString>

#include <optional>

// What the guided flow hands over when it finishes: one account to create. The API key
// lives only here, in memory.
struct OnboardingDraft {
    AIProvider provider = AIProvider::openAI;
    QString label;
    ConnectionMode connectionMode = ConnectionMode::mock;
    AccountKind accountKind = AccountKind::api;
    QString apiKey;
    UsageUnit manualUnit = UsageUnit::messages;
    std::optional<double> manualShortUsed;
    std::optional<double> manualShortLimit;
    std::optional<double> manualWeeklyUsed;
    std::optional<double> manualWeeklyLimit;
    OnboardingResetMode manualShortResetMode = OnboardingResetMode::later;
    std::optional<Timestamp> manualShortReset;
    OnboardingResetMode manualWeeklyResetMode = OnboardingResetMode::later;
    std::optional<Timestamp> manualWeeklyReset;
    std::optional<ProviderConnectionMetadata> connectionMetadata;

    // The label without outer blanks, or "{short name} · Personal" when nothing is left.
    QString normalizedLabel() const;
    // A limit was given for either window; a used value alone does not count.
    bool hasManualAllowance() const;
    // The reset dates, only where the mode says a time is known.
    std::optional<Timestamp> shortResetAt() const;
    std::optional<Timestamp> weeklyResetAt() const;
    // What the account lifecycle takes to create the account.
    AccountDraft accountDraft() const;

    friend bool operator==(const OnboardingDraft&, const OnboardingDraft&) = default;
};
