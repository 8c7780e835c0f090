#pragma once

#include "providers/UsageProvider.h"

#include "providers/CancellableWait.h"

#include <QPointer>

// Sample data, locally, after a short pretend wait.
class MockUsageProvider final : public UsageProvider {
public:
    static constexpr std::chrono::milliseconds kWait{80};

    explicit MockUsageProvider(AIProvider provider)
        : m_provider(provider) {}

    AIProvider provider() const override { return m_provider; }
    QCoro::Task<ProviderCapabilities> validate(const ProviderAccount& account) override;
    // Waits 80 ms on the monotonic clock, then gives a sample snapshot; the range is
    // not used.
    QCoro::Task<UsageSnapshot> fetchUsage(const ProviderAccount& account, DateInterval range) override;
    void cancel() override;

private:
    AIProvider m_provider;
    QPointer<CancellableWait> m_wait;
};
