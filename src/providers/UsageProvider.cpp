#include "providers/UsageProvider.h"

UsageProvider::~UsageProvider() = default;

QCoro::Task<ProviderConnection> UsageProvider::connect(const ProviderAccount& account) {
    const ProviderCapabilities capabilities = co_await validate(account);
    co_return ProviderConnection{.capabilities = capabilities};
}

void UsageProvider::cancel() {}
