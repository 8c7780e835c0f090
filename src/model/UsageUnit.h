#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class UsageUnitValue : quint8 { messages, requests, tokens, credits, dollars, items };

// The native unit an allowance is counted in; never converted.
class UsageUnit final : public RawEnum<UsageUnit, UsageUnitValue> {
public:
    using RawEnum::RawEnum;
    using enum UsageUnitValue;

    static constexpr std::array<QStringView, 6> kRawValues{u"messages", u"requests", u"tokens",
                                                           u"credits",  u"dollars",  u"items"};

    QString title() const;
    // The title with a capital first letter, for the start of a heading; "USD" stays "USD".
    QString capitalizedTitle() const;
};
