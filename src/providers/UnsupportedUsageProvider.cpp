#include "providers/UnsupportedUsageProvider.h"

#include "providers/UsageProviderError.h"

const QString UnsupportedUsageProvider::kMessage =
    QStringLiteral("Live usage is not available from a documented provider API for this account type.");

QCoro::Task<ProviderCapabilities> UnsupportedUsageProvider::validate(const ProviderAccount&) {
    throw UsageProviderError::unsupported(kMessage);
    co_return ProviderCapabilities::unsupported;
}

QCoro::Task<UsageSnapshot> UnsupportedUsageProvider::fetchUsage(const ProviderAccount&, DateInterval) {
    throw UsageProviderError::unsupported(kMessage);
    co_return UsageSnapshot{
        .source = UsageSource::manual, .capturedAt = {}, .windows = {}, .history = {}, .warnings = {}};
}
