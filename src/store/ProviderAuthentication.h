#pragma once

#include "model/AIProvider.h"

#include <QString>
#include <QUrl>

#include <optional>

// Where the operator manages each provider's account, and what the program promises
// about security wherever a connection is offered.
class ProviderAuthentication final {
public:
    ProviderAuthentication() = delete;

    // The provider's own page: the OpenAI platform console's API-key settings, or the
    // web app of Claude, Grok or Gemini. Opened only as a reference link.
    static std::optional<QUrl> browserURL(AIProvider provider);

    static const QString securityNote;
};
