// macOS: a regular application that takes the foreground ignoring other applications.
#include "views/widgets/AppActivation.h"

#include <QWidget>

#import <AppKit/AppKit.h>

void AppActivation::activate(QWidget* mainWindow) {
    [NSApp setActivationPolicy:NSApplicationActivationPolicyRegular];
    [NSApp activateIgnoringOtherApps:YES];
    mainWindow->raise();
    mainWindow->activateWindow();
}
