#pragma once

#include "providers/UsageProvider.h"

// Limits the operator typed in: a refresh renews the stored snapshot's time.
class ManualUsageProvider final : public UsageProvider {
public:
    explicit ManualUsageProvider(AIProvider provider)
        : m_provider(provider) {}

    AIProvider provider() const override { return m_provider; }
    QCoro::Task<ProviderCapabilities> validate(const ProviderAccount& account) override;
    QCoro::Task<UsageSnapshot> fetchUsage(const ProviderAccount& account, DateInterval range) override;

private:
    AIProvider m_provider;
};
