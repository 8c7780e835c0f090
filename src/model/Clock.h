#pragma once

#include "model/Timestamp.h"

#include <optional>

// The one source of "now" for the whole program, so that tests can hold time still.
class Clock final {
public:
    Clock() = delete;

    static Timestamp now();

    // Pins now() to a fixed moment; std::nullopt goes back to the system clock.
    static void setFixedNow(std::optional<Timestamp> moment);
};
