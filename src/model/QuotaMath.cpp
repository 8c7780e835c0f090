#include "model/QuotaMath.h"

#include <algorithm>

std::optional<double> QuotaMath::remaining(std::optional<double> used, std::optional<double> limit,
                                           std::optional<double> reportedRemaining) {
    if (reportedRemaining) {
        return reportedRemaining;
    }
    if (used && limit) {
        return *limit - *used;
    }
    return std::nullopt;
}

std::optional<double> QuotaMath::progress(std::optional<double> used, std::optional<double> limit) {
    if (!used || !limit) {
        return std::nullopt;
    }
    if (!(*limit > 0.0)) {
        return std::nullopt;
    }
    return std::min(std::max(*used / *limit, 0.0), 1.0);
}

bool QuotaMath::isOverLimit(std::optional<double> used, std::optional<double> limit) {
    if (!used || !limit) {
        return false;
    }
    return *limit < *used;
}
