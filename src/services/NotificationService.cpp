#include "services/NotificationService.h"

#include "services/NotificationCenter.h"
#include "store/ProviderAccount.h"

void NotificationService::requestAuthorization() {
    NotificationCenter::requestAuthorization();
}

UrgentNotificationRequest NotificationService::makeUrgentRequest(const ProviderAccount& account) {
    return UrgentNotificationRequest{
        .identifier = QStringLiteral("usage-urgent-") + account.secretReference(),
        .title = QStringLiteral("AI subscription needs attention"),
        .body = account.displayName() + QStringLiteral(" is at or above a tracked usage limit."),
        .playsDefaultSound = true};
}

void NotificationService::postUrgent(const ProviderAccount& account) {
    NotificationCenter::add(makeUrgentRequest(account));
}
