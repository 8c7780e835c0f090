#pragma once

#include "model/UsageHealth.h"
#include "model/UsageUnit.h"

#include <QString>

#include <optional>

// A budget the operator entered for one agent: a short-term and a weekly pair.
struct AgentBudget {
    QString id;
    QString name;
    UsageUnit unit;
    std::optional<double> shortUsed;
    std::optional<double> shortLimit;
    std::optional<double> weeklyUsed;
    std::optional<double> weeklyLimit;

    // Both pairs judged as windows named after the budget's `name`, short first.
    UsageHealth health() const;

    friend bool operator==(const AgentBudget&, const AgentBudget&) = default;
};

size_t qHash(const AgentBudget& budget, size_t seed = 0);
