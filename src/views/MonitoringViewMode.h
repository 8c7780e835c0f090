#pragma once

#include "model/RawEnum.h"

#include <QString>

#include <array>

enum class MonitoringViewModeValue : quint8 { cards, matrix };

// Whether the overview draws its subscriptions as cards or as one matrix.
class MonitoringViewMode final : public RawEnum<MonitoringViewMode, MonitoringViewModeValue> {
public:
    using RawEnum::RawEnum;
    using enum MonitoringViewModeValue;

    static constexpr std::array<QStringView, 2> kRawValues{u"cards", u"matrix"};

    // The raw value with its first letter in capitals: "Cards", "Matrix".
    QString title() const;
    QString icon() const;
};
