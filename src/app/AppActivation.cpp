#include "app/AppActivation.h"

#include <QWidget>

void AppActivation::applicationDidFinishLaunching() {
    // Desktops other than macOS have no activation policy: every windowed process is a
    // regular application, and its window comes forward when it is raised.
}

void AppActivation::raise(QWidget* mainWindow) {
    mainWindow->raise();
    mainWindow->activateWindow();
}
