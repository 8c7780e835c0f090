#include "core/StartupHeap.h"

#include <cstdlib> // before the test below: it defines __GLIBC__

#if defined(__linux__) && defined(__GLIBC__)
#include <cstdint>

#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {
bool g_reserved = false;
} // namespace

#if defined(__linux__) && defined(__GLIBC__)
namespace {
// The largest mmap threshold glibc accepts on 64-bit systems.
constexpr std::size_t kReserve = std::size_t{32} << 20;
constexpr std::uintptr_t kHugePage = std::uintptr_t{2} << 20;
// glibc's documented defaults for the two thresholds changed in reserve().
constexpr int kDefaultThreshold = 128 * 1024;
} // namespace

void StartupHeap::reserve() {
    if (g_reserved) {
        return;
    }
    // Big blocks (the window's backing store, decoded images) come from the heap too, and
    // the reserve is not trimmed away when the probe below is freed.
    if (mallopt(M_MMAP_THRESHOLD, static_cast<int>(kReserve)) == 0 ||
        mallopt(M_TRIM_THRESHOLD, static_cast<int>(2 * kReserve)) == 0) {
        release();
        return;
    }
    // Called through volatile pointers: the compiler may otherwise drop a block that is
    // only allocated and freed again.
    void* (*volatile allocate)(std::size_t) = std::malloc;
    void (*volatile deallocate)(void*) = std::free;
    void* const probe = allocate(kReserve - kHugePage);
    if (!probe) {
        release();
        return;
    }
    const auto begin = reinterpret_cast<std::uintptr_t>(probe);
    deallocate(probe);
    const auto end = reinterpret_cast<std::uintptr_t>(sbrk(0));
    // Only when the probe really came from the break-grown heap just below its end.
    const std::uintptr_t first = (begin + kHugePage - 1) & ~(kHugePage - 1);
    const std::uintptr_t last = end & ~(kHugePage - 1);
    if (end < begin || end - begin > 2 * kReserve || last <= first) {
        release();
        return;
    }
    g_reserved = madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE) == 0;
}

void StartupHeap::release() {
    mallopt(M_MMAP_THRESHOLD, kDefaultThreshold);
    mallopt(M_TRIM_THRESHOLD, kDefaultThreshold);
}
#else
void StartupHeap::reserve() {}

void StartupHeap::release() {}
#endif

bool StartupHeap::reserved() {
    return g_reserved;
}
