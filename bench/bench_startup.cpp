// Cold start of the whole process to its first shown window, offscreen, on a store of
// 50 accounts with 90 recorded snapshots each; beside a bare Qt window for scale.
#include "BenchFixtures.h"
#include "store/AccountStore.h"

#include <QTemporaryDir>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
struct Run {
    double milliseconds;
    long peakKiB;
};

Run runOnce(const std::string& program, const std::vector<std::string>& environment) {
    std::vector<char*> envp;
    for (const std::string& entry : environment) {
        envp.push_back(const_cast<char*>(entry.c_str()));
    }
    envp.push_back(nullptr);
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        char* argv[] = {const_cast<char*>(program.c_str()), nullptr};
        execve(program.c_str(), argv, envp.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const auto end = std::chrono::steady_clock::now();
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        std::fprintf(stderr, "%s failed with status %d\n", program.c_str(), status);
        std::exit(1);
    }
    return {std::chrono::duration<double, std::milli>(end - start).count(), usage.ru_maxrss};
}

void report(const char* name, std::vector<Run> runs) {
    std::sort(runs.begin(), runs.end(),
              [](const Run& a, const Run& b) { return a.milliseconds < b.milliseconds; });
    long peak = 0;
    for (const Run& run : runs) {
        peak = std::max(peak, run.peakKiB);
    }
    std::printf("%-28s median %7.1f ms   min %7.1f ms   max %7.1f ms   peak RSS %6.1f MiB\n", name,
                runs[runs.size() / 2].milliseconds, runs.front().milliseconds, runs.back().milliseconds,
                static_cast<double>(peak) / 1024.0);
}
} // namespace

int main(int argc, char* argv[]) {
    // "bench_startup --store PATH" only writes the benchmark's store, for profiling one start by hand.
    const bool storeOnly = argc > 2 && std::string(argv[1]) == "--store";
    const int rounds = argc > 1 && !storeOnly ? std::atoi(argv[1]) : 15;
    QTemporaryDir dir;
    const QString storePath =
        storeOnly ? QString::fromLocal8Bit(argv[2]) : dir.filePath(QStringLiteral("bench.store"));
    {
        QString error;
        auto store = AccountStore::open(storePath, &error);
        for (int i = 0; i < 50; ++i) {
            store->insert(new ProviderAccount(benchdata::accountRow(i)));
        }
        if (!store->save(&error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
    }
    if (storeOnly) {
        return 0;
    }
    const std::string home = dir.path().toStdString();
    std::vector<std::string> environment{"QT_QPA_PLATFORM=offscreen",
                                         "HOME=" + home,
                                         "XDG_CONFIG_HOME=" + home + "/config",
                                         "XDG_DATA_HOME=" + home + "/data",
                                         "XDG_RUNTIME_DIR=" + home,
                                         "LANG=en_US.UTF-8",
                                         "TALLYFEN_STORE_PATH=" + storePath.toStdString()};
    if (const char* tz = std::getenv("TZ")) {
        environment.push_back(std::string("TZ=") + tz);
    }

    const std::string folder = QFileInfo(QString::fromLocal8Bit(argv[0])).absolutePath().toStdString();
    std::vector<Run> bare;
    std::vector<Run> tallyfen;
    runOnce(folder + "/bare_window_probe", environment); // warm the file cache for both
    runOnce(folder + "/startup_probe", environment);
    for (int i = 0; i < rounds; ++i) {
        bare.push_back(runOnce(folder + "/bare_window_probe", environment));
        tallyfen.push_back(runOnce(folder + "/startup_probe", environment));
    }
    std::printf("Cold start to the first shown window, %d runs each, 50 accounts x 90 snapshots\n", rounds);
    report("bare Qt window", bare);
    report("Tallyfen", tallyfen);
    return 0;
}
