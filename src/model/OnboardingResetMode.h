#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class OnboardingResetModeValue : quint8 { later, notProvided, setTime };

// How a manual window's reset time is given.
class OnboardingResetMode final : public RawEnum<OnboardingResetMode, OnboardingResetModeValue> {
public:
    using RawEnum::RawEnum;
    using enum OnboardingResetModeValue;

    static constexpr std::array<QStringView, 3> kRawValues{u"later", u"notProvided", u"setTime"};

    QString id() const { return rawValue(); }
    QString title() const;
};
