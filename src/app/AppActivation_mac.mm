// macOS: a regular application that takes the foreground ignoring other applications.
#include "app/AppActivation.h"

#include <QWidget>

#import <AppKit/AppKit.h>

void AppActivation::applicationDidFinishLaunching() {
    [NSApp setActivationPolicy:NSApplicationActivationPolicyRegular];
    [NSApp activateIgnoringOtherApps:YES];
}

void AppActivation::raise(QWidget* mainWindow) {
    mainWindow->raise();
    mainWindow->activateWindow();
}
