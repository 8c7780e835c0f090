#pragma once

#include "model/AIProvider.h"

#include <QHashFunctions>
#include <QUuid>

#include <optional>

// What the detail area shows: every account, one provider's accounts, or one account.
class SidebarSelection final {
public:
    enum class Kind { overview, provider, account };

    static SidebarSelection overview() { return SidebarSelection(Kind::overview, std::nullopt, QUuid()); }
    static SidebarSelection provider(AIProvider provider) {
        return SidebarSelection(Kind::provider, provider, QUuid());
    }
    static SidebarSelection account(const QUuid& id) {
        return SidebarSelection(Kind::account, std::nullopt, id);
    }

    Kind kind() const noexcept { return m_kind; }
    bool isOverview() const noexcept { return m_kind == Kind::overview; }
    // The payload of `provider(p)`; absent for the other cases.
    std::optional<AIProvider> providerValue() const noexcept { return m_provider; }
    // The payload of `account(id)`; absent for the other cases.
    std::optional<QUuid> accountID() const;

    friend bool operator==(const SidebarSelection&, const SidebarSelection&) = default;

private:
    SidebarSelection(Kind kind, std::optional<AIProvider> provider, QUuid account)
        : m_kind(kind)
        , m_provider(provider)
        , m_account(account) {}

    Kind m_kind;
    std::optional<AIProvider> m_provider;
    QUuid m_account;
};

size_t qHash(const SidebarSelection& selection, size_t seed = 0);
