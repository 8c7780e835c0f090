#pragma once

#include "services/UrgentNotificationRequest.h"

class ProviderAccount;

// What the urgent notification says of an account, as a plain request for the
// notification service.
class UrgentNotification final {
public:
    UrgentNotification() = delete;

    static UrgentNotificationRequest request(const ProviderAccount& account);
};
