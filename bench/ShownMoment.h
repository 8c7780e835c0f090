#pragma once

#include <cstdio>
#include <ctime>

// The probes' report of the moment their window was first shown, on the system-wide
// monotonic clock, so that the benchmark can tell start-up from the process's exit.
inline void reportShownMoment() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    std::printf("shown %lld\n", static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec);
    std::fflush(stdout);
}
