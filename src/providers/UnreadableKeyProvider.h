#pragma once

#include "providers/UsageProvider.h"

#include <QString>

// An API-key account whose key the keychain would not give (locked, not answering): every
// call fails with the keychain's reason, not as if the account had no documented API.
// The refresh then reads as offline, and the next one tries the keychain again.
class UnreadableKeyProvider final : public UsageProvider {
public:
    UnreadableKeyProvider(AIProvider provider, QString reason)
        : m_provider(provider)
        , m_reason(std::move(reason)) {}

    // What the account's status says.
    static QString message(const QString& reason);

    AIProvider provider() const override { return m_provider; }
    QCoro::Task<ProviderCapabilities> validate(const ProviderAccount& account) override;
    QCoro::Task<UsageSnapshot> fetchUsage(const ProviderAccount& account, DateInterval range) override;

private:
    AIProvider m_provider;
    QString m_reason;
};
