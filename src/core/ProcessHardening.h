#pragma once

// What the process does about its own memory, which holds keys while they are in use:
// no core dump of it and no other process of the same user reading it (the kernel's
// "dumpable" flag). Called once, first thing at start.
class ProcessHardening final {
public:
    ProcessHardening() = delete;

    static void apply();
    // Whether the process may be dumped or read by another process of its user.
    static bool isDumpable();
};
