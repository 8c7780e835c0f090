#include "app/AppMain.h"

int main(int argc, char* argv[]) {
    return AppMain::run(argc, argv);
}
