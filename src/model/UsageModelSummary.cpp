#include "model/UsageModelSummary.h"

#include "model/ValueHashing.h"
#include "model/WindowSelection.h"

#include <algorithm>

QList<UsageWindow> UsageModelSummary::shortTermWindows() const {
    return WindowSelection::withHorizon(windows, UsageHorizon::shortTerm);
}

QList<UsageWindow> UsageModelSummary::weeklyWindows() const {
    return WindowSelection::withHorizon(windows, UsageHorizon::weekly);
}

QList<UsageWindow> UsageModelSummary::billingWindows() const {
    return WindowSelection::withHorizon(windows, UsageHorizon::billing);
}

QList<UsageWindow> UsageModelSummary::historicalWindows() const {
    return WindowSelection::withHorizon(windows, UsageHorizon::historical);
}

QStringList UsageModelSummary::agentLabels() const {
    QStringList labels;
    for (const UsageWindow& window : windows) {
        if (window.agentLabel && !labels.contains(*window.agentLabel)) {
            labels.append(*window.agentLabel);
        }
    }
    // Plain order of Unicode scalar values, not the locale's collation.
    std::sort(labels.begin(), labels.end(),
              [](const QString& a, const QString& b) { return a.toUcs4() < b.toUcs4(); });
    return labels;
}

UsageHealth UsageModelSummary::health() const {
    return WindowSelection::shortAndWeeklyHealth(windows);
}

size_t qHash(const UsageModelSummary& s, size_t seed) {
    return hashFields(seed, s.modelName, s.windows);
}
