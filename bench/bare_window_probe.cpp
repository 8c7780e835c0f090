// The yardstick for start-up: a bare Qt window, shown, then quit.
#include <QApplication>
#include <QMainWindow>
#include <QTimer>

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    QMainWindow window;
    window.setMinimumSize(980, 650);
    window.show();
    QTimer::singleShot(0, &app, &QCoreApplication::quit);
    return QApplication::exec();
}
