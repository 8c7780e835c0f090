#pragma once

#include "model/Timestamp.h"

// A span of time from `start` to `end`.
struct DateInterval {
    Timestamp start;
    Timestamp end;

    double duration() const noexcept { return end.secondsSince(start); }

    friend bool operator==(const DateInterval&, const DateInterval&) = default;
};
