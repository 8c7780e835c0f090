#include "services/NotificationService.h"

#include "services/NotificationCenter.h"

void NotificationService::requestAuthorization() {
    NotificationCenter::requestAuthorization();
}

void NotificationService::postUrgent(const UrgentNotificationRequest& request) {
    NotificationCenter::add(request);
}
