#pragma once

class QWidget;

// Brings the application and its main window to the foreground at launch, also when it
// was started from a terminal.
class AppActivation final {
public:
    AppActivation() = delete;

    // The launch callback: a regular application, in front of the others. Runs before
    // the main window first appears.
    static void applicationDidFinishLaunching();
    // Puts the shown main window on top with the keyboard focus.
    static void raise(QWidget* mainWindow);
};
