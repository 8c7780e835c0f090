#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class UsageSourceValue : quint8 { mock, manual, officialAPI };

// Where a snapshot's numbers came from.
class UsageSource final : public RawEnum<UsageSource, UsageSourceValue> {
public:
    using RawEnum::RawEnum;
    using enum UsageSourceValue;

    static constexpr std::array<QStringView, 3> kRawValues{u"mock", u"manual", u"officialAPI"};

    QString title() const;
};
