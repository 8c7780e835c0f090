#pragma once

#include "model/UsageWindow.h"

#include <QString>

#include <optional>

// Small builders for windows in tests.
inline UsageWindow makeWindow(const QString& id, UsageHorizon horizon, std::optional<double> used,
                              std::optional<double> limit, std::optional<QString> agentLabel = std::nullopt) {
    return UsageWindow{.id = id,
                       .title = id,
                       .unit = UsageUnit::tokens,
                       .horizon = horizon,
                       .agentLabel = std::move(agentLabel),
                       .used = used,
                       .limit = limit};
}
