// The real application, quitting as soon as its main window was first shown.
#include "ShownMoment.h"
#include "views/widgets/AppMain.h"

#include <QCoreApplication>

int main(int argc, char* argv[]) {
    return AppMain::run(argc, argv, [] {
        reportShownMoment();
        QCoreApplication::quit();
    });
}
