#pragma once

// Whether the desktop asks applications to keep still: animations off in its
// accessibility or appearance settings. Read once, then remembered.
class MotionPreference final {
public:
    MotionPreference() = delete;

    static bool reduceMotion();
};
