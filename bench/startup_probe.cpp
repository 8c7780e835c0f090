// The real application, quitting as soon as its main window has drawn its first frame.
#include "FirstFrame.h"
#include "app/AppMain.h"

#include <QApplication>

int main(int argc, char* argv[]) {
    return AppMain::run(argc, argv, [] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            if (window->objectName() == QStringLiteral("mainWindow")) {
                new FirstFrame(window);
            }
        }
    });
}
