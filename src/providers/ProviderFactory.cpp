#include "providers/ProviderFactory.h"

#include "model/SecretText.h"

#include "providers/ManualUsageProvider.h"
#include "providers/MockUsageProvider.h"
#include "providers/OpenAIUsageProvider.h"
#include "providers/UnreadableKeyProvider.h"
#include "providers/UnsupportedUsageProvider.h"
#include "services/KeychainStore.h"
#include "store/ProviderAccount.h"

namespace {
QUrl& openAIBase() {
    static QUrl base = OpenAIClient::kAPIBase;
    return base;
}

std::chrono::milliseconds& openAITimeout() {
    static std::chrono::milliseconds timeout = OpenAIClient::kTimeout;
    return timeout;
}
} // namespace

const std::chrono::milliseconds ProviderFactory::kDefaultTimeout = OpenAIClient::kTimeout;

void ProviderFactory::setOpenAIBase(const QUrl& base, std::chrono::milliseconds timeout) {
    openAIBase() = base.isValid() ? base : OpenAIClient::kAPIBase;
    openAITimeout() = timeout;
}

std::unique_ptr<OpenAIUsageProvider> ProviderFactory::makeOpenAI(const QString& apiKey) {
    return std::make_unique<OpenAIUsageProvider>(apiKey, openAIBase(), openAITimeout());
}

std::unique_ptr<UsageProvider> ProviderFactory::make(const ProviderAccount& account) {
    const AIProvider provider = account.provider();
    switch (account.connectionMode().value()) {
    case ConnectionMode::mock:
        return std::make_unique<MockUsageProvider>(provider);
    case ConnectionMode::manual:
        return std::make_unique<ManualUsageProvider>(provider);
    case ConnectionMode::apiKey:
        if (provider == AIProvider::openAI) {
            // A key that isn't there counts as no key; a keychain that would not answer
            // says so.
            qint32 status = 0;
            std::optional<QString> key = KeychainStore::read(account.secretReference(), &status);
            if (key && !key->isEmpty()) {
                auto made = makeOpenAI(*key);
                SecretText::wipe(*key);
                return made;
            }
            if (KeychainStore::isUnreachable(status)) {
                return std::make_unique<UnreadableKeyProvider>(provider, KeychainStore::reason(status));
            }
        }
        return std::make_unique<UnsupportedUsageProvider>(provider);
    case ConnectionMode::browser:
        return std::make_unique<UnsupportedUsageProvider>(provider);
    }
    Q_UNREACHABLE();
    return std::make_unique<UnsupportedUsageProvider>(provider);
}
