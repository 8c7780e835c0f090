#include "providers/UnreadableKeyProvider.h"

#include "providers/UsageProviderError.h"

QString UnreadableKeyProvider::message(const QString& reason) {
    return QStringLiteral(
               "The API key couldn’t be read, so nothing was fetched. Reason: %1. Unlock it and refresh "
               "again.")
        .arg(reason);
}

QCoro::Task<ProviderCapabilities> UnreadableKeyProvider::validate(const ProviderAccount&) {
    throw UsageProviderError::server(message(m_reason));
    co_return ProviderCapabilities::unsupported;
}

QCoro::Task<UsageSnapshot> UnreadableKeyProvider::fetchUsage(const ProviderAccount&, DateInterval) {
    throw UsageProviderError::server(message(m_reason));
    co_return UsageSnapshot{
        .source = UsageSource::manual, .capturedAt = {}, .windows = {}, .history = {}, .warnings = {}};
}
