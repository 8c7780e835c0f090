#pragma once

#include "model/Timestamp.h"
#include "model/UsageHealth.h"
#include "model/UsageHorizon.h"
#include "model/UsageUnit.h"

#include <QString>

#include <optional>

// One metered allowance, in its own native unit. Identified by `id`; equality and
// hashing take in every field.
struct UsageWindow {
    QString id;
    QString title;
    UsageUnit unit;
    UsageHorizon horizon = UsageHorizon::unspecified;
    std::optional<QString> modelName;
    std::optional<QString> agentLabel;
    std::optional<double> used;
    std::optional<double> limit;
    std::optional<double> reportedRemaining;
    std::optional<Timestamp> resetAt;
    std::optional<QString> note;

    std::optional<double> remaining() const;
    std::optional<double> progress() const;
    // From `used` and `limit` alone; a reported remainder gives no health.
    UsageHealth health() const;

    friend bool operator==(const UsageWindow&, const UsageWindow&) = default;
};

size_t qHash(const UsageWindow& window, size_t seed = 0);
