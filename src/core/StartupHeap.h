#pragma once

// The allocator's set-up for the first seconds of the process. Building the window makes
// tens of thousands of small allocations, and on virtual machines every first touch of a
// fresh 4 KiB page is an expensive fault: on Linux with glibc the heap is grown once and
// offered to the kernel for transparent huge pages (where the system allows them on
// request), so that those allocations land on a few 2 MiB pages instead. Elsewhere both
// calls do nothing.
class StartupHeap final {
public:
    StartupHeap() = delete;

    // Call first thing in main, before the application object exists.
    static void reserve();
    // Once the window is up: the allocator's documented thresholds again, so memory freed
    // later is given back to the system as usual.
    static void release();
    // Whether reserve() found a heap to prepare (for the tests).
    static bool reserved();
};
