#include "model/Clock.h"

#include <chrono>

namespace {
std::optional<Timestamp>& fixedNow() {
    static std::optional<Timestamp> moment;
    return moment;
}
} // namespace

Timestamp Clock::now() {
    if (const auto& fixed = fixedNow()) {
        return *fixed;
    }
    using namespace std::chrono;
    const auto sinceEpoch = duration_cast<duration<double>>(system_clock::now().time_since_epoch());
    return Timestamp::fromUnixSeconds(sinceEpoch.count());
}

void Clock::setFixedNow(std::optional<Timestamp> moment) {
    fixedNow() = moment;
}
