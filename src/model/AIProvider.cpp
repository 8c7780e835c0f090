#include "model/AIProvider.h"

QString AIProvider::displayName() const {
    switch (value()) {
    case openAI:
        return QStringLiteral("OpenAI");
    case anthropic:
        return QStringLiteral("Anthropic / Claude");
    case xAI:
        return QStringLiteral("xAI / Grok");
    case gemini:
        return QStringLiteral("Google Gemini");
    }
    Q_UNREACHABLE();
    return QString();
}

QString AIProvider::shortName() const {
    switch (value()) {
    case openAI:
        return QStringLiteral("OpenAI");
    case anthropic:
        return QStringLiteral("Claude");
    case xAI:
        return QStringLiteral("Grok");
    case gemini:
        return QStringLiteral("Gemini");
    }
    Q_UNREACHABLE();
    return QString();
}

QString AIProvider::systemImage() const {
    switch (value()) {
    case openAI:
        return QStringLiteral("circle.hexagongrid.fill");
    case anthropic:
        return QStringLiteral("sparkles");
    case xAI:
        return QStringLiteral("bolt.horizontal.circle.fill");
    case gemini:
        return QStringLiteral("diamond.fill");
    }
    Q_UNREACHABLE();
    return QString();
}
