#pragma once

#include "model/UsageJson.h"
#include "store/ProviderAccount.h"

// Accounts as they look after three months of refreshes: a snapshot with 5 windows and
// 30 daily points, and 90 such snapshots recorded.
namespace benchdata {

inline UsageSnapshot snapshot(int round) {
    UsageSnapshot s{.source = UsageSource::officialAPI,
                    .capturedAt = Timestamp(785000000.0 + round * 86400.0),
                    .windows = {},
                    .history = {},
                    .warnings = {}};
    const QStringList models{QStringLiteral("gpt-4o-mini"), QStringLiteral("gpt-4.1"),
                             QStringLiteral("o3-mini")};
    for (int i = 0; i < 5; ++i) {
        s.windows.append(UsageWindow{.id = QStringLiteral("requests-rate-window-%1").arg(i),
                                     .title = QStringLiteral("Requests per minute"),
                                     .unit = UsageUnit::requests,
                                     .horizon = i < 3 ? UsageHorizon::shortTerm : UsageHorizon::billing,
                                     .modelName = models.at(i % models.size()),
                                     .used = 100.0 + i * 50 + round % 40,
                                     .limit = 500.0,
                                     .resetAt = Timestamp(785000060.0 + round * 86400.0 + i)});
    }
    for (int day = 0; day < 30; ++day) {
        const double date = 785000000.0 + (round - 29 + day) * 86400.0;
        s.history.append(
            UsagePoint{.date = Timestamp(date), .value = 1000.0 * day + round, .unit = UsageUnit::tokens});
        s.billingHistory.append(
            UsagePoint{.date = Timestamp(date), .value = 1.5 * day, .unit = UsageUnit::dollars});
    }
    return s;
}

inline ProviderAccountRow accountRow(int index) {
    ProviderAccount account(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                  .label = QStringLiteral("Account %1").arg(index),
                                                  .accountKind = AccountKind::api,
                                                  .connectionMode = ConnectionMode::apiKey,
                                                  .createdAt = Timestamp(780000000.0 + index),
                                                  .syncStatus = SyncStatus::current});
    QList<UsageSnapshot> history;
    for (int round = 0; round < 90; ++round) {
        history.append(snapshot(round + index));
    }
    account.setSnapshotHistoryData(UsageJson::encode(history).value());
    account.setSnapshot(history.last());
    account.setLastRefreshAt(history.last().capturedAt);
    account.setAgentBudgets({AgentBudget{.id = QStringLiteral("b"),
                                         .name = QStringLiteral("Scout"),
                                         .unit = UsageUnit::tokens,
                                         .shortUsed = 10,
                                         .shortLimit = 100}});
    return account.row();
}

} // namespace benchdata
