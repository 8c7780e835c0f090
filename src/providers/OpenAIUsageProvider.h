#pragma once

#include "OpenAIClient.h"
#include "UsageProvider.h"

#include <QStringList>
#include <QUrlQuery>

// The live connector for OpenAI organization accounts: two requests per refresh, the
// usage endpoint and then the costs endpoint, turned into one snapshot.
class OpenAIUsageProvider final : public UsageProvider {
public:
    explicit OpenAIUsageProvider(QString apiKey, QUrl base = OpenAIClient::kAPIBase,
                                 std::chrono::milliseconds timeout = OpenAIClient::kTimeout);

    AIProvider provider() const override { return AIProvider::openAI; }
    // Proves the key against the usage endpoint (the last hour, one bucket).
    QCoro::Task<ProviderCapabilities> validate(const ProviderAccount& account) override;
    QCoro::Task<UsageSnapshot> fetchUsage(const ProviderAccount& account, DateInterval range) override;

    // The account's model scope as a list: comma-separated, trimmed, blanks left out.
    static QStringList selectedModels(const ProviderAccount& account);
    // "key:" and "user:" entries of the agent scope as API-key and user filters.
    static void appendAgentFilters(const ProviderAccount& account, QUrlQuery& query);
    // The usage request of a refresh, or of a probe (one hourly bucket).
    QUrl usageURL(const ProviderAccount& account, DateInterval range, bool probe = false) const;

    // What the costs request gave: a response, or nothing when it failed in any way.
    using CostOutcome = std::optional<OpenAIRecords::CostResponse>;
    // The snapshot from a decoded usage response, its headers, the moment after
    // decoding, and the costs.
    static UsageSnapshot assemble(const OpenAIRecords::UsageResponse& usage, const HeaderValues& headers,
                                  Timestamp now, const CostOutcome& costs);

private:
    OpenAIClient m_client;
    QString m_apiKey;
};
