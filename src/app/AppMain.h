#pragma once

#include <functional>

// The whole life of the application process: open the store (or fail with the fatal
// message), build the controller and the main window, show it and run the event loop.
class AppMain final {
public:
    AppMain() = delete;

    // `afterFirstShow`, when given, runs once the main window was first shown
    // (start-up measurements quit there).
    static int run(int argc, char* argv[], const std::function<void()>& afterFirstShow = {});
};
