#include "model/UsageSnapshot.h"

#include "model/ValueHashing.h"
#include "model/WindowSelection.h"

#include <algorithm>

QList<UsageWindow> UsageSnapshot::shortTermWindows() const {
    return WindowSelection::withHorizon(windows, UsageHorizon::shortTerm);
}

QList<UsageWindow> UsageSnapshot::weeklyWindows() const {
    return WindowSelection::withHorizon(windows, UsageHorizon::weekly);
}

QList<UsageWindow> UsageSnapshot::billingWindows() const {
    return WindowSelection::withHorizon(windows, UsageHorizon::billing);
}

QList<UsageWindow> UsageSnapshot::additionalWindows() const {
    QList<UsageWindow> selected;
    for (const UsageWindow& window : windows) {
        if (window.horizon != UsageHorizon::shortTerm && window.horizon != UsageHorizon::weekly) {
            selected.append(window);
        }
    }
    return selected;
}

std::optional<Timestamp> UsageSnapshot::nextReset() const {
    std::optional<Timestamp> earliest;
    for (const UsageWindow& window : windows) {
        if (window.resetAt && (!earliest || *window.resetAt < *earliest)) {
            earliest = window.resetAt;
        }
    }
    return earliest;
}

bool UsageSnapshot::isPartial() const {
    return !warnings.isEmpty();
}

bool UsageSnapshot::hasAgentAttribution() const {
    return std::any_of(modelSummaries.cbegin(), modelSummaries.cend(),
                       [](const UsageModelSummary& summary) { return !summary.agentLabels().isEmpty(); });
}

UsageHealth UsageSnapshot::health() const {
    return WindowSelection::shortAndWeeklyHealth(windows);
}

UsageHealth UsageSnapshot::billingHealth() const {
    return WindowSelection::healthOf(billingWindows());
}

UsageHealth UsageSnapshot::monitorHealth() const {
    const UsageHealth scaled = health();
    return scaled == UsageHealth::unavailable ? billingHealth() : scaled;
}

size_t qHash(const UsageSnapshot& s, size_t seed) {
    return hashFields(seed, s.source, s.capturedAt, s.windows, s.history, s.billingHistory, s.warnings,
                      s.modelSummaries);
}
