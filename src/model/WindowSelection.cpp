#include "model/WindowSelection.h"

QList<UsageWindow> WindowSelection::withHorizon(const QList<UsageWindow>& windows, UsageHorizon horizon) {
    QList<UsageWindow> selected;
    for (const UsageWindow& window : windows) {
        if (window.horizon == horizon) {
            selected.append(window);
        }
    }
    return selected;
}

UsageHealth WindowSelection::shortAndWeeklyHealth(const QList<UsageWindow>& windows) {
    return healthOf(withHorizon(windows, UsageHorizon::shortTerm) +
                    withHorizon(windows, UsageHorizon::weekly));
}

UsageHealth WindowSelection::healthOf(const QList<UsageWindow>& windows) {
    QList<UsageHealth> healths;
    healths.reserve(windows.size());
    for (const UsageWindow& window : windows) {
        healths.append(window.health());
    }
    return UsageHealth::aggregate(healths);
}
