// Cold start to the first drawn window, offscreen, on a store of 50 accounts with 90
// recorded snapshots each; beside a bare Qt window of the same size for scale. Start-up
// runs from the fork to the moment the probe reports its window's first frame painted;
// the moment it was shown (mapped, not yet drawn) and the whole process, until it has
// quit and exited, are given beside it.
#include "BenchFixtures.h"
#include "store/AccountStore.h"

#include <QProcess>
#include <QProcessEnvironment>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {
struct Run {
    double shownMilliseconds;
    double paintedMilliseconds;
    double milliseconds;
    long peakKiB;
};

long long monotonicNanoseconds() {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec;
}

Run runOnce(const std::string& program, const std::vector<std::string>& environment) {
    std::vector<char*> envp;
    for (const std::string& entry : environment) {
        envp.push_back(const_cast<char*>(entry.c_str()));
    }
    envp.push_back(nullptr);
    int output[2];
    if (pipe(output) != 0) {
        std::perror("pipe");
        std::exit(1);
    }
    const long long start = monotonicNanoseconds();
    const pid_t child = fork();
    if (child == 0) {
        dup2(output[1], STDOUT_FILENO);
        close(output[0]);
        close(output[1]);
        char* argv[] = {const_cast<char*>(program.c_str()), nullptr};
        execve(program.c_str(), argv, envp.data());
        _exit(127);
    }
    close(output[1]);
    std::string text;
    char buffer[256];
    for (ssize_t count; (count = read(output[0], buffer, sizeof buffer)) > 0;) {
        text.append(buffer, static_cast<std::size_t>(count));
    }
    close(output[0]);
    int status = 0;
    rusage usage{};
    wait4(child, &status, 0, &usage);
    const long long end = monotonicNanoseconds();
    const auto moment = [&text](const std::string& what) -> long long {
        const std::size_t mark = text.find(what + ' ');
        return mark == std::string::npos ? -1 : std::stoll(text.substr(mark + what.size() + 1));
    };
    const long long shown = moment("shown");
    const long long painted = moment("painted");
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || shown < 0 || painted < 0) {
        std::fprintf(stderr, "%s failed with status %d\n", program.c_str(), status);
        std::exit(1);
    }
    return {static_cast<double>(shown - start) / 1e6, static_cast<double>(painted - start) / 1e6,
            static_cast<double>(end - start) / 1e6, usage.ru_maxrss};
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void report(const char* name, const std::vector<Run>& runs) {
    std::vector<double> shown;
    std::vector<double> painted;
    std::vector<double> whole;
    long peak = 0;
    for (const Run& run : runs) {
        shown.push_back(run.shownMilliseconds);
        painted.push_back(run.paintedMilliseconds);
        whole.push_back(run.milliseconds);
        peak = std::max(peak, run.peakKiB);
    }
    std::printf("%-16s first frame: median %6.1f ms (min %6.1f, max %6.1f)   shown: %6.1f ms   "
                "whole process: %6.1f ms   peak RSS %5.1f MiB\n",
                name, median(painted), *std::min_element(painted.begin(), painted.end()),
                *std::max_element(painted.begin(), painted.end()), median(shown), median(whole),
                static_cast<double>(peak) / 1024.0);
}
// Writes a store of `count` accounts with 90 recorded snapshots each; with `hugeLabel`,
// the first account's label is 5 MB long.
bool writeStore(const QString& path, int count, bool hugeLabel) {
    QString error;
    auto store = AccountStore::open(path, &error);
    if (!store) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return false;
    }
    for (int i = 0; i < count; ++i) {
        ProviderAccountRow row = benchdata::accountRow(i);
        if (hugeLabel && i == 0) {
            row.label = QString(5 * 1024 * 1024, u'W');
        }
        store->insert(new ProviderAccount(std::move(row)));
    }
    if (!store->save(&error)) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return false;
    }
    return true;
}

// Writes the store in a child process: a child forked later starts with this process's
// peak memory as its own, and the probes' peak memory is part of what is measured.
bool writeStoreApart(const QString& path, int count, bool hugeLabel) {
    const pid_t child = fork();
    if (child == 0) {
        _exit(writeStore(path, count, hugeLabel) ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

struct Scenario {
    const char* title;
    int accounts;
    bool hugeLabel;
    // The desktop it starts on: no session bus at all (empty), or a private bus with the
    // stand-in settings portal started with these arguments.
    QStringList portal;
    bool bus = false;
};

// A private session bus and a stand-in portal on it, for the length of a scenario.
struct Desktop {
    QProcess daemon;
    QProcess portal;
    std::string address;

    bool start(const QStringList& arguments) {
        daemon.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--session"), QStringLiteral("--nofork"),
                                                     QStringLiteral("--print-address=1")});
        if (!daemon.waitForStarted() || !daemon.waitForReadyRead(5000)) {
            return false;
        }
        address = daemon.readLine().trimmed().toStdString();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), QString::fromStdString(address));
        portal.setProcessEnvironment(environment);
        portal.start(QStringLiteral(PORTAL_STANDIN), arguments);
        return portal.waitForStarted() && portal.waitForReadyRead(5000) &&
               portal.readLine().trimmed() == "ready";
    }
    ~Desktop() {
        for (QProcess* process : {&portal, &daemon}) {
            process->kill();
            process->waitForFinished();
        }
    }
};
} // namespace

int main(int argc, char* argv[]) {
    // "bench_startup --store PATH [ACCOUNTS [huge]]" only writes a store (50 accounts by
    // default; "huge": with the 5 MB label), for profiling one start by hand.
    const bool storeOnly = argc > 2 && std::string(argv[1]) == "--store";
    const int rounds = argc > 1 && !storeOnly ? std::atoi(argv[1]) : 15;
    if (storeOnly) {
        const int accounts = argc > 3 ? std::atoi(argv[3]) : 50;
        const bool huge = argc > 4 && std::string(argv[4]) == "huge";
        return writeStore(QString::fromLocal8Bit(argv[2]), accounts, huge) ? 0 : 1;
    }
    const std::string folder = QFileInfo(QString::fromLocal8Bit(argv[0])).absolutePath().toStdString();
    const QStringList dark{QStringLiteral("--set"), QStringLiteral("org.freedesktop.appearance"),
                           QStringLiteral("color-scheme"), QStringLiteral("u"), QStringLiteral("1")};
    const Scenario scenarios[] = {
        {"50 accounts x 90 snapshots", 50, false, {}},
        {"the same on a desktop whose settings portal answers: dark", 50, false, dark, true},
        {"the same on a desktop whose settings portal never answers", 50, false,
         dark + QStringList{QStringLiteral("--silent")}, true},
        {"the same with a 5 MB account label", 50, true, {}},
        {"500 accounts x 90 snapshots", 500, false, {}}};
    for (const Scenario& scenario : scenarios) {
        if (scenario.bus && std::string(PORTAL_STANDIN).empty()) {
            continue;
        }
        QTemporaryDir dir;
        const QString storePath = dir.filePath(QStringLiteral("bench.store"));
        if (!writeStoreApart(storePath, scenario.accounts, scenario.hugeLabel)) {
            return 1;
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
        Desktop desktop;
        if (scenario.bus) {
            if (!desktop.start(scenario.portal)) {
                std::fprintf(stderr, "could not start a session bus with a settings portal\n");
                return 1;
            }
            environment.push_back("DBUS_SESSION_BUS_ADDRESS=" + desktop.address);
        }
        std::vector<Run> bare;
        std::vector<Run> tallyfen;
        runOnce(folder + "/bare_window_probe", environment); // warm the file cache for both
        runOnce(folder + "/startup_probe", environment);
        for (int i = 0; i < rounds; ++i) {
            bare.push_back(runOnce(folder + "/bare_window_probe", environment));
            tallyfen.push_back(runOnce(folder + "/startup_probe", environment));
        }
        std::printf("Cold start to the first drawn window, %d runs each, %s (medians)\n", rounds,
                    scenario.title);
        report("bare Qt window", bare);
        report("Tallyfen", tallyfen);
        std::vector<double> painted;
        std::vector<double> shown;
        for (std::size_t i = 0; i < bare.size(); ++i) {
            painted.push_back(tallyfen[i].paintedMilliseconds / bare[i].paintedMilliseconds);
            shown.push_back(tallyfen[i].shownMilliseconds / bare[i].shownMilliseconds);
        }
        std::printf("Tallyfen / bare, run by run (interleaved): first frame %.2fx, shown %.2fx\n\n",
                    median(painted), median(shown));
    }
    return 0;
}
