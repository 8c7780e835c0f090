#pragma once

#include "services/UrgentNotificationRequest.h"

// The platform's notification centre: the freedesktop notification service over D-Bus
// on Linux, UserNotifications on Apple platforms. Both calls return at once; the
// centre works in the background, and any failure is silent.
class NotificationCenter final {
public:
    NotificationCenter() = delete;

    // Asks for permission to show alerts and play sounds (no badge).
    static void requestAuthorization();
    static void add(const UrgentNotificationRequest& request);
};
