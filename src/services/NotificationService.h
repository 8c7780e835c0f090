#pragma once

#include "services/UrgentNotificationRequest.h"

// The one notification the program posts: an account has reached a tracked limit.
// Deciding when, and remembering what was sent, belongs to the refresh engine.
class NotificationService final {
public:
    NotificationService() = delete;

    static void requestAuthorization();
    static void postUrgent(const UrgentNotificationRequest& request);
};
