#pragma once

#include "providers/UsageProvider.h"

#include <memory>

class ProviderAccount;

// Picks the provider for an account, anew for each use, so that a changed connection
// mode or credential counts at once. Never fails.
class ProviderFactory final {
public:
    ProviderFactory() = delete;

    static std::unique_ptr<UsageProvider> make(const ProviderAccount& account);
};
