#include "views/widgets/SettingsWindow.h"

#include <QVBoxLayout>

SettingsWindow::SettingsWindow(QWidget* parent)
    : QWidget(parent, Qt::Window) {
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(QStringLiteral("Settings"));
    setMinimumSize(460, 320);
    new QVBoxLayout(this);
}
