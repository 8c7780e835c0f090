#include "model/UsageWindow.h"

#include "model/QuotaMath.h"
#include "model/ValueHashing.h"

namespace {
// The 64-bit floats nearest 0.9 and 0.7; both bounds are inclusive.
constexpr double kUrgentRatio = 0.9;
constexpr double kWatchRatio = 0.7;
} // namespace

std::optional<double> UsageWindow::remaining() const {
    return QuotaMath::remaining(used, limit, reportedRemaining);
}

std::optional<double> UsageWindow::progress() const {
    return QuotaMath::progress(used, limit);
}

UsageHealth UsageWindow::health() const {
    if (!used || !limit || !(*limit > 0.0)) {
        return UsageHealth::unavailable;
    }
    if (*limit < *used) {
        return UsageHealth::urgent;
    }
    const double ratio = *used / *limit;
    if (ratio >= kUrgentRatio) {
        return UsageHealth::urgent;
    }
    if (ratio >= kWatchRatio) {
        return UsageHealth::watch;
    }
    return UsageHealth::healthy;
}

size_t qHash(const UsageWindow& w, size_t seed) {
    return hashFields(seed, w.id, w.title, w.unit, w.horizon, w.modelName, w.agentLabel, w.used, w.limit,
                      w.reportedRemaining, w.resetAt, w.note);
}
