#pragma once

#include "providers/UsageProvider.h"

#include <QUrl>

#include <memory>

class ProviderAccount;

// Picks the provider for an account, anew for each use, so that a changed connection
// mode or credential counts at once. Never fails.
class ProviderFactory final {
public:
    ProviderFactory() = delete;

    static std::unique_ptr<UsageProvider> make(const ProviderAccount& account);

    // Where the live connector sends its requests: OpenAI's own API unless a test points
    // it at a local server. The one seam of the factory; no code path of the application
    // calls it.
    static void setOpenAIBase(const QUrl& base);
};
