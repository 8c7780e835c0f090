#pragma once

#include "providers/UsageProvider.h"

// An account that no documented provider API serves: every call fails, in one sentence.
class UnsupportedUsageProvider final : public UsageProvider {
public:
    static const QString kMessage;

    explicit UnsupportedUsageProvider(AIProvider provider)
        : m_provider(provider) {}

    AIProvider provider() const override { return m_provider; }
    QCoro::Task<ProviderCapabilities> validate(const ProviderAccount& account) override;
    QCoro::Task<UsageSnapshot> fetchUsage(const ProviderAccount& account, DateInterval range) override;

private:
    AIProvider m_provider;
};
