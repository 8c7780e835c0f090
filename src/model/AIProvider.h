#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class AIProviderValue : quint8 { openAI, anthropic, xAI, gemini };

// A provider of AI services whose allowances an account tracks.
class AIProvider final : public RawEnum<AIProvider, AIProviderValue> {
public:
    using RawEnum::RawEnum;
    using enum AIProviderValue;

    static constexpr std::array<QStringView, 4> kRawValues{u"openai", u"anthropic", u"xai", u"gemini"};

    QString id() const { return rawValue(); }
    QString displayName() const;
    QString shortName() const;
    QString systemImage() const;
};
