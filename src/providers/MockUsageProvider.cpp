#include "providers/MockUsageProvider.h"

#include "providers/MockDataFactory.h"
#include "providers/ProviderCancelled.h"
#include "store/ProviderAccount.h"

#include <QCoro/QCoroSignal>

QCoro::Task<ProviderCapabilities> MockUsageProvider::validate(const ProviderAccount&) {
    const bool openAI = m_provider == AIProvider::openAI;
    co_return ProviderCapabilities{.historicalUsage = true,
                                   .cost = openAI,
                                   .shortWindow = true,
                                   .longWindow = true,
                                   .remainingRequests = openAI,
                                   .remainingTokens = openAI,
                                   .resetTimestamps = true};
}

QCoro::Task<UsageSnapshot> MockUsageProvider::fetchUsage(const ProviderAccount& account, DateInterval) {
    const QUuid id = account.id();
    const AIProvider provider = account.provider();

    CancellableWait wait(kWait);
    m_wait = &wait;
    wait.start();
    co_await qCoro(&wait, &CancellableWait::finished);
    m_wait = nullptr;
    if (wait.isCancelled()) {
        throw ProviderCancelled();
    }
    co_return MockDataFactory::snapshot(id, provider, Clock::now());
}

void MockUsageProvider::cancel() {
    if (m_wait) {
        m_wait->cancel();
    }
}
