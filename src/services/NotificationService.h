#pragma once

#include "services/UrgentNotificationRequest.h"

class ProviderAccount;

// The one notification the program posts: an account has reached a tracked limit.
// Deciding when, and remembering what was sent, belongs to the refresh engine.
class NotificationService final {
public:
    NotificationService() = delete;

    static void requestAuthorization();
    // Builds the request without touching any notification centre.
    static UrgentNotificationRequest makeUrgentRequest(const ProviderAccount& account);
    static void postUrgent(const ProviderAccount& account);
};
