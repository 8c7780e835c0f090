#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class UsageHorizonValue : quint8 { shortTerm, weekly, billing, historical, unspecified };

// The time scale of an allowance.
class UsageHorizon final : public RawEnum<UsageHorizon, UsageHorizonValue> {
public:
    using RawEnum::RawEnum;
    using enum UsageHorizonValue;

    static constexpr std::array<QStringView, 5> kRawValues{u"shortTerm", u"weekly", u"billing", u"historical",
                                                           u"unspecified"};

    QString title() const;
    QString systemImage() const;

    // The horizon of a window whose stored form names none: the first group of
    // words found in "{id} {title}", lower-cased, decides.
    static UsageHorizon infer(const QString& id, const QString& title);
};
