#pragma once

#include "model/Timestamp.h"
#include "model/UsageUnit.h"

#include <QString>

#include <optional>

// One point of a history series. Lists and charts key points by `date`; equality and
// hashing take in every field.
struct UsagePoint {
    Timestamp date;
    double value = 0.0;
    UsageUnit unit;
    std::optional<QString> modelName;
    std::optional<QString> agentLabel;

    Timestamp id() const { return date; }

    friend bool operator==(const UsagePoint&, const UsagePoint&) = default;
};

size_t qHash(const UsagePoint& point, size_t seed = 0);
