#pragma once

#include "model/Timestamp.h"
#include "model/UsageHealth.h"
#include "model/UsageModelSummary.h"
#include "model/UsagePoint.h"
#include "model/UsageSource.h"
#include "model/UsageWindow.h"

#include <QList>
#include <QStringList>

#include <optional>

// Everything one refresh produced. A plain value; screens derive what they show from it.
struct UsageSnapshot {
    UsageSource source;
    Timestamp capturedAt;
    QList<UsageWindow> windows;
    QList<UsagePoint> history;
    QList<UsagePoint> billingHistory = {};
    QStringList warnings;
    QList<UsageModelSummary> modelSummaries = {};

    QList<UsageWindow> shortTermWindows() const;
    QList<UsageWindow> weeklyWindows() const;
    QList<UsageWindow> billingWindows() const;
    // Every window that is neither short-term nor weekly: billing ones too.
    QList<UsageWindow> additionalWindows() const;
    // The earliest reset among all windows, past ones included.
    std::optional<Timestamp> nextReset() const;
    // A snapshot is partial exactly when it carries warnings.
    bool isPartial() const;
    bool hasAgentAttribution() const;
    UsageHealth health() const;
    UsageHealth billingHealth() const;
    // `health`, or the billing health when short and weekly windows give none.
    UsageHealth monitorHealth() const;

    friend bool operator==(const UsageSnapshot&, const UsageSnapshot&) = default;
};

size_t qHash(const UsageSnapshot& snapshot, size_t seed = 0);
