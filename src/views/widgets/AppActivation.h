#pragma once

class QWidget;

// Brings the application and its main window to the foreground at launch, also when it
// was started from a terminal.
class AppActivation final {
public:
    AppActivation() = delete;

    static void activate(QWidget* mainWindow);
};
