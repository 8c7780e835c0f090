// The yardstick for start-up: a bare Qt window of Tallyfen's size, shown, then quit.
#include "ShownMoment.h"

#include <QApplication>
#include <QMainWindow>
#include <QTimer>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QMainWindow window;
    window.setMinimumSize(980, 650);
    window.resize(1240, 820);
    window.show();
    QTimer::singleShot(0, &app, [] {
        reportShownMoment();
        QCoreApplication::quit();
    });
    return QApplication::exec();
}
