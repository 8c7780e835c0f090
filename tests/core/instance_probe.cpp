// Claims a store for one process and says what it got:
//
//   instance_probe STORE            print "first", "handed-over" or "unguarded" and end
//   instance_probe STORE --wait MS  if first, stay MS milliseconds and print "activated"
//                                   each time a later launch asks for the window
#include "core/SingleInstance.h"

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 2) {
        return 2;
    }
    SingleInstance::Outcome outcome = SingleInstance::Outcome::unguarded;
    const std::unique_ptr<SingleInstance> instance = SingleInstance::claim(arguments.at(1), &outcome);
    std::printf("%s\n", outcome == SingleInstance::Outcome::first        ? "first"
                        : outcome == SingleInstance::Outcome::handedOver ? "handed-over"
                                                                         : "unguarded");
    std::fflush(stdout);
    const qsizetype wait = arguments.indexOf(QStringLiteral("--wait"));
    if (!instance || wait < 0) {
        return 0;
    }
    instance->listen();
    QObject::connect(instance.get(), &SingleInstance::activationRequested, [] {
        std::printf("activated\n");
        std::fflush(stdout);
    });
    QTimer::singleShot(arguments.value(wait + 1).toInt(), &app, &QCoreApplication::quit);
    return QCoreApplication::exec();
}
