// Wall time and peak memory of refreshing 200 sample accounts by selection, in
// process, on a real store; and the idle CPU of the running application.
#include "core/ContentView.h"
#include "core/Preferences.h"
#include "store/AccountStore.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

#include <cstdio>

#include <sys/resource.h>
#include <unistd.h>

namespace {
double peakMiB() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

// Ticks of user and system time of a process, from /proc.
qint64 cpuTicks(qint64 pid) {
    QFile stat(QStringLiteral("/proc/%1/stat").arg(pid));
    if (!stat.open(QIODevice::ReadOnly)) {
        return -1;
    }
    const QByteArray line = stat.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    return fields.value(11).toLongLong() + fields.value(12).toLongLong(); // utime, stime
}

void storm() {
    QTemporaryDir dir;
    QString error;
    auto store = AccountStore::open(dir.filePath(QStringLiteral("storm.store")), &error);
    const std::array providers{AIProvider(AIProvider::openAI), AIProvider(AIProvider::anthropic),
                               AIProvider(AIProvider::xAI), AIProvider(AIProvider::gemini)};
    for (int i = 0; i < 200; ++i) {
        store->insert(
            new ProviderAccount(ProviderAccount::Init{.provider = providers[static_cast<std::size_t>(i % 4)],
                                                      .label = QStringLiteral("Sample %1").arg(i),
                                                      .accountKind = AccountKind::consumer,
                                                      .createdAt = Timestamp(i)}));
    }
    (void)store->save();
    Preferences preferences(dir.filePath(QStringLiteral("preferences.ini")));
    ContentView content(store.get(), &preferences);
    const double before = peakMiB();

    for (int round = 1; round <= 5; ++round) {
        QElapsedTimer clock;
        clock.start();
        content.refreshSelection();
        while (!content.refreshingIDs().isEmpty()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        const qint64 allDone = clock.elapsed();
        while (store->hasChanges()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        std::printf(
            "storm round %d: 200 refreshes done in %lld ms (80 ms of it the sample wait), saved at %lld ms\n",
            round, static_cast<long long>(allDone), static_cast<long long>(clock.elapsed()));
    }
    std::printf("peak memory: %.1f MiB (%.1f MiB before the storms)\n", peakMiB(), before);
}

void idle(const QString& tallyfen) {
    QTemporaryDir home;
    QProcess app;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("HOME"), home.path());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), home.filePath(QStringLiteral("data")));
    app.setProcessEnvironment(environment);
    app.start(tallyfen, {});
    if (!app.waitForStarted()) {
        std::printf("could not start %s\n", qPrintable(tallyfen));
        return;
    }
    QThread::sleep(3); // start-up done
    const qint64 start = cpuTicks(app.processId());
    QThread::sleep(60);
    const qint64 end = cpuTicks(app.processId());
    app.kill();
    app.waitForFinished();
    const double seconds = static_cast<double>(end - start) / static_cast<double>(sysconf(_SC_CLK_TCK));
    std::printf("idle CPU over 60 s: %.2f s of CPU (%.3f %%)\n", seconds, seconds / 60.0 * 100.0);
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    storm();
    if (QCoreApplication::arguments().contains(QStringLiteral("--idle"))) {
        idle(QCoreApplication::applicationDirPath() + QStringLiteral("/../bin/tallyfen"));
    }
    return 0;
}
