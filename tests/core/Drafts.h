#pragma once

#include "onboarding/OnboardingDraft.h"

// Onboarding drafts as the guided flow leaves them, for the lifecycle tests.
inline OnboardingDraft draftFor(AIProvider provider, AccountKind kind, ConnectionMode mode,
                                const QString& label = QString()) {
    OnboardingDraft draft;
    draft.provider = provider;
    draft.accountKind = kind;
    draft.connectionMode = mode;
    draft.label = label;
    return draft;
}

// A manual Claude subscription with no numbers yet.
inline OnboardingDraft manualDraft() {
    return draftFor(AIProvider::anthropic, AccountKind::consumer, ConnectionMode::manual,
                    QStringLiteral("Claude Max"));
}
