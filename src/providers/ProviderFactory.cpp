#include "ProviderFactory.h"

#include "KeychainStore.h"
#include "ManualUsageProvider.h"
#include "MockUsageProvider.h"
#include "OpenAIUsageProvider.h"
#include "ProviderAccount.h"
#include "UnsupportedUsageProvider.h"

std::unique_ptr<UsageProvider> ProviderFactory::make(const ProviderAccount& account) {
    const AIProvider provider = account.provider();
    switch (account.connectionMode().value()) {
    case ConnectionMode::mock:
        return std::make_unique<MockUsageProvider>(provider);
    case ConnectionMode::manual:
        return std::make_unique<ManualUsageProvider>(provider);
    case ConnectionMode::apiKey:
        if (provider == AIProvider::openAI) {
            // A key that can't be read counts as no key.
            const std::optional<QString> key = KeychainStore::read(account.secretReference());
            if (key && !key->isEmpty()) {
                return std::make_unique<OpenAIUsageProvider>(*key);
            }
        }
        return std::make_unique<UnsupportedUsageProvider>(provider);
    case ConnectionMode::browser:
        return std::make_unique<UnsupportedUsageProvider>(provider);
    }
    Q_UNREACHABLE();
    return std::make_unique<UnsupportedUsageProvider>(provider);
}
