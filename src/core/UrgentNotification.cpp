#include "core/UrgentNotification.h"

#include "store/ProviderAccount.h"

UrgentNotificationRequest UrgentNotification::request(const ProviderAccount& account) {
    return UrgentNotificationRequest{
        .identifier = QStringLiteral("usage-urgent-") + account.secretReference(),
        .title = QStringLiteral("AI subscription needs attention"),
        .body = account.displayName() + QStringLiteral(" is at or above a tracked usage limit."),
        .playsDefaultSound = true};
}
