#pragma once

#include "model/UsageHealth.h"
#include "model/UsageWindow.h"

#include <QList>
#include <QString>
#include <QStringList>

// The windows of one model, identified by `modelName`.
struct UsageModelSummary {
    QString modelName;
    QList<UsageWindow> windows;

    const QString& id() const { return modelName; }

    QList<UsageWindow> shortTermWindows() const;
    QList<UsageWindow> weeklyWindows() const;
    QList<UsageWindow> billingWindows() const;
    QList<UsageWindow> historicalWindows() const;
    // Present agent labels of the windows, without duplicates, in plain string order.
    QStringList agentLabels() const;
    // Short-term and weekly windows only; billing and history do not count.
    UsageHealth health() const;

    friend bool operator==(const UsageModelSummary&, const UsageModelSummary&) = default;
};

size_t qHash(const UsageModelSummary& summary, size_t seed = 0);
