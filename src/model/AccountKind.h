#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class AccountKindValue : quint8 { consumer, api };

// Whether an account is a consumer subscription or an API organization.
class AccountKind final : public RawEnum<AccountKind, AccountKindValue> {
public:
    using RawEnum::RawEnum;
    using enum AccountKindValue;

    static constexpr std::array<QStringView, 2> kRawValues{u"consumer", u"api"};

    QString id() const { return rawValue(); }
    QString title() const;
};
