#pragma once

#include "model/AIProvider.h"
#include "model/AccountKind.h"
#include "model/ConnectionMode.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/Timestamp.h"
#include "model/UsageUnit.h"

#include <QString>

#include <optional>

// The values the account editor works on: its own copy, written to the record only
// when saved. Numbers stay the text the operator typed until then.
struct AccountEditorFields {
    AIProvider provider = AIProvider::openAI;
    QString label;
    AccountKind accountKind = AccountKind::consumer;
    QString planName;
    std::optional<ProviderConnectionMetadata> detectedMetadata;
    QString identityDetail;
    QString modelScope;
    QString agentScope;
    QString agentRosterText;
    QString agentBudgetText;
    QString agentCount = QStringLiteral("0");
    Timestamp renewalDate;
    bool hasRenewalDate = false;
    ConnectionMode connectionMode = ConnectionMode::mock;
    bool sampleDataEnabled = true;
    // The key as typed; never read back from the keychain.
    QString secretInput;
    UsageUnit manualUnit = UsageUnit::requests;
    QString manualShortLimit;
    QString manualShortUsed;
    Timestamp manualShortReset;
    bool manualShortHasReset = false;
    QString manualWeeklyLimit;
    QString manualWeeklyUsed;
    Timestamp manualWeeklyReset;
    bool manualWeeklyHasReset = false;
    std::optional<QString> errorMessage;
    std::optional<QString> testMessage;
    bool isTestingConnection = false;
    bool browserAuthOpened = false;
};
