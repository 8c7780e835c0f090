#include "providers/ManualUsageProvider.h"

#include "providers/UsageProviderError.h"
#include "store/ProviderAccount.h"

QCoro::Task<ProviderCapabilities> ManualUsageProvider::validate(const ProviderAccount&) {
    co_return ProviderCapabilities{.historicalUsage = false,
                                   .cost = false,
                                   .shortWindow = true,
                                   .longWindow = true,
                                   .remainingRequests = false,
                                   .remainingTokens = false,
                                   .resetTimestamps = true};
}

QCoro::Task<UsageSnapshot> ManualUsageProvider::fetchUsage(const ProviderAccount& account, DateInterval) {
    const std::optional<UsageSnapshot> stored = account.snapshot();
    if (!stored) {
        throw UsageProviderError::unsupported(
            QStringLiteral("Add a manual limit and reset time to start tracking this account."));
    }
    co_return UsageSnapshot{.source = UsageSource::manual,
                            .capturedAt = Clock::now(),
                            .windows = stored->windows,
                            .history = stored->history,
                            .billingHistory = stored->billingHistory,
                            .warnings = stored->warnings,
                            .modelSummaries = stored->modelSummaries};
}
