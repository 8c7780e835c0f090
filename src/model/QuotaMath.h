#pragma once

#include <optional>

// Remaining and progress arithmetic of an allowance. Pure functions, no state.
class QuotaMath final {
public:
    QuotaMath() = delete;

    // What the source reports wins; otherwise limit - used, unclamped; otherwise absent.
    static std::optional<double> remaining(std::optional<double> used, std::optional<double> limit,
                                           std::optional<double> reportedRemaining);

    // used / limit clamped to 0...1; absent without both amounts or with a limit not above 0.
    static std::optional<double> progress(std::optional<double> used, std::optional<double> limit);

    // Strictly over: reaching the limit exactly is not over it.
    static bool isOverLimit(std::optional<double> used, std::optional<double> limit);
};
