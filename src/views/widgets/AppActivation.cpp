#include "views/widgets/AppActivation.h"

#include <QWidget>

void AppActivation::activate(QWidget* mainWindow) {
    mainWindow->raise();
    mainWindow->activateWindow();
}
