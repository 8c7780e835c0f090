#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class SyncStatusValue : quint8 {
    current,
    stale,
    partial,
    offline,
    unauthorized,
    unsupported,
    rateLimited,
    needsAttention
};

// The freshness of an account's data after its last refresh.
class SyncStatus final : public RawEnum<SyncStatus, SyncStatusValue> {
public:
    using RawEnum::RawEnum;
    using enum SyncStatusValue;

    static constexpr std::array<QStringView, 8> kRawValues{u"current",     u"stale",         u"partial",
                                                           u"offline",     u"unauthorized",  u"unsupported",
                                                           u"rateLimited", u"needsAttention"};

    QString title() const;
};
