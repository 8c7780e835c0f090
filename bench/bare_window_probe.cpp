// The yardstick for start-up: a bare Qt window of Tallyfen's size, shown, drawn once, then
// quit.
#include "FirstFrame.h"

#include <QApplication>
#include <QMainWindow>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QMainWindow window;
    window.setMinimumSize(980, 650);
    window.resize(1240, 820);
    window.show();
    new FirstFrame(&window);
    return QApplication::exec();
}
