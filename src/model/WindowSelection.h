#pragma once

#include "model/UsageHealth.h"
#include "model/UsageHorizon.h"
#include "model/UsageWindow.h"

#include <QList>

// Picking windows by horizon and summing up their health, shared by snapshots and
// model summaries.
class WindowSelection final {
public:
    WindowSelection() = delete;

    // The members with exactly this horizon, in list order.
    static QList<UsageWindow> withHorizon(const QList<UsageWindow>& windows, UsageHorizon horizon);
    // The aggregate health of the short-term windows followed by the weekly ones.
    static UsageHealth shortAndWeeklyHealth(const QList<UsageWindow>& windows);
    static UsageHealth healthOf(const QList<UsageWindow>& windows);
};
