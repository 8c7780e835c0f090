#include "MainWindow.h"

#include <QApplication>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tallyfen"));
    QApplication::setOrganizationName(QStringLiteral("Tallyfen"));

    MainWindow window;
    window.show();
    window.raise();
    window.activateWindow();
    return QApplication::exec();
}
