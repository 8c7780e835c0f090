#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class MonitoringSortValue : quint8 { attention, nextReset, name };

// How the overview orders its subscriptions.
class MonitoringSort final : public RawEnum<MonitoringSort, MonitoringSortValue> {
public:
    using RawEnum::RawEnum;
    using enum MonitoringSortValue;

    static constexpr std::array<QStringView, 3> kRawValues{u"attention", u"nextReset", u"name"};

    QString title() const;
};
