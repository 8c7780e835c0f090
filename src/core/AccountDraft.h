#pragma once

#include "model/AIProvider.h"
#include "model/AccountKind.h"
#include "model/AgentBudget.h"
#include "model/ConnectionMode.h"
#include "model/OnboardingResetMode.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/Timestamp.h"
#include "model/UsageUnit.h"

#include <QList>
#include <QString>

#include <optional>

// One manual allowance as a flow hands it over: numbers already read, absent where none
// was given, and how its reset is known.
struct ManualHorizonDraft {
    std::optional<double> used;
    std::optional<double> limit;
    OnboardingResetMode resetMode = OnboardingResetMode::later;
    // Only where the reset time is known.
    std::optional<Timestamp> resetAt;

    friend bool operator==(const ManualHorizonDraft&, const ManualHorizonDraft&) = default;
};

// What the guided flow or the account editor hands the account lifecycle: one account to
// create or the new state of one to change. The API key lives here only in memory.
struct AccountDraft {
    AIProvider provider = AIProvider::openAI;
    AccountKind accountKind = AccountKind::api;
    // As typed; the lifecycle cleans it (AccountLabel::normalized).
    QString label;
    ConnectionMode connectionMode = ConnectionMode::mock;
    QString apiKey;
    std::optional<ProviderConnectionMetadata> connectionMetadata;
    UsageUnit manualUnit = UsageUnit::messages;
    ManualHorizonDraft shortTerm;
    ManualHorizonDraft weekly;

    // The editor's further fields; the guided flow leaves them as they are.
    // The operator's sample toggle as it stands, before a live mode turns it off.
    bool sampleDataEnabled = true;
    QString planName;
    QString identityDetail;
    QString modelScope;
    QString agentScope;
    QString agentRosterText;
    QList<AgentBudget> agentBudgets;
    qint64 agentCount = 0;
    std::optional<Timestamp> renewalDate;

    friend bool operator==(const AccountDraft&, const AccountDraft&) = default;
};
