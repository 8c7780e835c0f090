#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class ConnectionModeValue : quint8 { mock, manual, apiKey, browser };

// How an account gets its usage data.
class ConnectionMode final : public RawEnum<ConnectionMode, ConnectionModeValue> {
public:
    using RawEnum::RawEnum;
    using enum ConnectionModeValue;

    static constexpr std::array<QStringView, 4> kRawValues{u"mock", u"manual", u"apiKey", u"browser"};

    QString id() const { return rawValue(); }
    QString title() const;
    QString subtitle() const;
};
