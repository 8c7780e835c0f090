#pragma once

#include <QString>

// One notification, as handed to the platform's notification centre: delivered at
// once, and replacing any earlier one with the same identifier.
struct UrgentNotificationRequest {
    QString identifier;
    QString title;
    QString body;
    bool playsDefaultSound = true;

    friend bool operator==(const UrgentNotificationRequest&, const UrgentNotificationRequest&) = default;
};
