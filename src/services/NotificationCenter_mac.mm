// Apple platforms: UserNotifications.
#include "services/NotificationCenter.h"

#import <UserNotifications/UserNotifications.h>

void NotificationCenter::requestAuthorization() {
    UNUserNotificationCenter* center = [UNUserNotificationCenter currentNotificationCenter];
    [center requestAuthorizationWithOptions:(UNAuthorizationOptionAlert | UNAuthorizationOptionSound)
                          completionHandler:^(BOOL, NSError*){
                          }];
}

void NotificationCenter::add(const UrgentNotificationRequest& request) {
    @autoreleasepool {
        UNMutableNotificationContent* content = [[UNMutableNotificationContent alloc] init];
        content.title = request.title.toNSString();
        content.body = request.body.toNSString();
        if (request.playsDefaultSound) {
            content.sound = [UNNotificationSound defaultSound];
        }
        UNNotificationRequest* notification =
            [UNNotificationRequest requestWithIdentifier:request.identifier.toNSString()
                                                 content:content
                                                 trigger:nil];
        [[UNUserNotificationCenter currentNotificationCenter] addNotificationRequest:notification
                                                               withCompletionHandler:nil];
    }
}
