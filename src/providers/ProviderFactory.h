#pragma once

#include "providers/UsageProvider.h"

#include <QUrl>

#include <chrono>
#include <memory>

class OpenAIUsageProvider;
class ProviderAccount;

// Picks the provider for an account, anew for each use, so that a changed connection
// mode or credential counts at once. Never fails.
class ProviderFactory final {
public:
    ProviderFactory() = delete;

    static std::unique_ptr<UsageProvider> make(const ProviderAccount& account);
    // The live OpenAI connector for a key that is not (yet) stored: the editor's test.
    static std::unique_ptr<OpenAIUsageProvider> makeOpenAI(const QString& apiKey);

    // Where the live connector sends its requests, and how long a request may go without
    // a byte: OpenAI's own API and the client's time-out unless a test points it at a
    // local server. The one seam of the factory; no code path of the application calls it.
    static void setOpenAIBase(const QUrl& base, std::chrono::milliseconds timeout = kDefaultTimeout);

private:
    static const std::chrono::milliseconds kDefaultTimeout;
};
