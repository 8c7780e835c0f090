#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class UsageHealthValue : quint8 { healthy, watch, urgent, unavailable };

// How close an allowance is to its limit.
class UsageHealth final : public RawEnum<UsageHealth, UsageHealthValue> {
public:
    using RawEnum::RawEnum;
    using enum UsageHealthValue;

    static constexpr std::array<QStringView, 4> kRawValues{u"healthy", u"watch", u"urgent", u"unavailable"};

    QString title() const;

    // Higher is more pressing; `unavailable` is below every health that has a limit.
    int priority() const;

    // The most pressing member, ignoring `unavailable`; `unavailable` when nothing is left.
    static UsageHealth aggregate(const QList<UsageHealth>& healths);
};
