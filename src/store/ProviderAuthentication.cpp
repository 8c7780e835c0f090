#include "store/ProviderAuthentication.h"

namespace {
const QString kOpenAIConsole = QStringLiteral("https://platform.openai.com");
const QString kOpenAIKeysPath = QStringLiteral("/settings/organization/api-keys");
const QString kClaudeWeb = QStringLiteral("https://claude.ai/");
const QString kGrokWeb = QStringLiteral("https://grok.com/");
const QString kGeminiWeb = QStringLiteral("https://gemini.google.com/");
} // namespace

const QString ProviderAuthentication::securityNote =
    QStringLiteral("For security, the app never reads browser cookies, copies hidden tokens, or treats a "
                   "provider website visit "
                   "as a live connection. This build has a supported live connector only for OpenAI Platform "
                   "API keys; other "
                   "providers use manual tracking until a vendor-approved integration is available.");

std::optional<QUrl> ProviderAuthentication::browserURL(AIProvider provider) {
    switch (provider.value()) {
    case AIProvider::openAI:
        return QUrl(kOpenAIConsole + kOpenAIKeysPath);
    case AIProvider::anthropic:
        return QUrl(kClaudeWeb);
    case AIProvider::xAI:
        return QUrl(kGrokWeb);
    case AIProvider::gemini:
        return QUrl(kGeminiWeb);
    }
    Q_UNREACHABLE();
    return std::nullopt;
}
