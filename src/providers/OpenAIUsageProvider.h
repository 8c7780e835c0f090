#pragma once

#include "providers/OpenAIClient.h"
#include "providers/UsageProvider.h"

#include <QStringList>
#include <QUrlQuery>

// The live connector for OpenAI organization accounts: two requests per refresh, the
// usage endpoint and then the costs endpoint, turned into one snapshot.
class OpenAIUsageProvider final : public UsageProvider {
public:
    explicit OpenAIUsageProvider(QString apiKey, QUrl base = OpenAIClient::kAPIBase,
                                 std::chrono::milliseconds timeout = OpenAIClient::kTimeout);
    ~OpenAIUsageProvider() override;

    // What the first request of a connection found.
    struct ConnectionProbe {
        QString modelScope;
        QList<UsageWindow> headerWindows; // the rate windows that have a limit
        Timestamp capturedAt;
    };

    AIProvider provider() const override { return AIProvider::openAI; }
    // connect() without the metadata.
    QCoro::Task<ProviderCapabilities> validate(const ProviderAccount& account) override;
    // Proves the key (only this first request can fail), tests the costs endpoint, and
    // detects the project, its name and its per-model ceilings.
    QCoro::Task<ProviderConnection> connect(const ProviderAccount& account) override;
    QCoro::Task<UsageSnapshot> fetchUsage(const ProviderAccount& account, DateInterval range) override;
    // Ends the connection or refresh in flight: its request is aborted and it fails.
    void cancel() { m_client.cancel(); }

    // The account's model scope as a list: comma-separated, trimmed, blanks left out.
    static QStringList selectedModels(const ProviderAccount& account);
    // "key:" and "user:" entries of the agent scope as API-key and user filters.
    static void appendAgentFilters(const ProviderAccount& account, QUrlQuery& query);
    // The usage request of a refresh, or of a probe (one hourly bucket).
    QUrl usageURL(const ProviderAccount& account, DateInterval range, bool probe = false) const;

    QCoro::Task<ConnectionProbe> fetchConnectionProbe(const ProviderAccount& account) const;
    // Never fails: what can't be read becomes a note.
    QCoro::Task<ProviderConnectionMetadata> detectedMetadata(QString projectID, QStringList selectedModels,
                                                             ConnectionProbe probe) const;
    static QList<UsageWindow> rateLimitWindows(const OpenAIRecords::ProjectRateLimit& record);

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
