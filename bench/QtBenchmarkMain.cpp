// main() of the Google Benchmark programs that need a Qt event loop object: coroutines,
// timers and network replies want a QCoreApplication to exist.
#include <QCoreApplication>

#include <benchmark/benchmark.h>

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}
