// From a record change to the finished redraw of the overview: 50 accounts with 90
// recorded snapshots each, the real main window on screen (offscreen), one account's
// status message or snapshot changing per iteration. Timed by hand from the change to
// the painted window; the pause that keeps redraws apart is not counted.
#include "BenchFixtures.h"
#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/Preferences.h"
#include "core/SidebarSelection.h"
#include "model/Clock.h"
#include "store/AccountStore.h"
#include "ui/AppResources.h"
#include "ui/AppStyle.h"
#include "ui/Theme.h"
#include "views/widgets/OverviewScreen.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QThread>

#include <benchmark/benchmark.h>

namespace {
struct Workspace {
    QTemporaryDir dir;
    std::unique_ptr<AccountStore> store;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<ContentView> content;
    std::unique_ptr<MainWindow> window;

    Workspace() {
        QString error;
        store = AccountStore::open(dir.filePath(QStringLiteral("overview.store")), &error);
        for (int i = 0; i < 50; ++i) {
            store->insert(new ProviderAccount(benchdata::accountRow(i)));
        }
        preferences = std::make_unique<Preferences>(dir.filePath(QStringLiteral("preferences.ini")));
        preferences->setOnboardingCompleted(true);
        content = std::make_unique<ContentView>(store.get(), preferences.get());
        window = std::make_unique<MainWindow>(content.get());
        window->resize(1240, 820);
        window->show();
        settle();
    }

    // Runs the event loop until nothing is left to do right now.
    static void settle() {
        for (int i = 0; i < 5; ++i) {
            QApplication::processEvents();
        }
    }

    // One change and its redraw; returns the seconds from the change to the painted window.
    double change(const std::function<void(ProviderAccount&)>& edit, int round) {
        QThread::msleep(60); // past the window's shortest time between two redraws
        bool drawn = false;
        const QMetaObject::Connection done =
            QObject::connect(window.get(), &MainWindow::changesDrawn, [&drawn] { drawn = true; });
        ProviderAccount& account = *store->accounts().at(round % store->accounts().size());
        QElapsedTimer timer;
        timer.start();
        edit(account);
        while (!drawn && timer.elapsed() < 2000) {
            QApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        }
        QApplication::processEvents(); // the cards that came into view
        window->repaint();
        const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
        QObject::disconnect(done);
        return seconds;
    }
};

// Made on first use and gone before the application object is.
std::unique_ptr<Workspace>& sharedWorkspace() {
    static std::unique_ptr<Workspace> shared;
    return shared;
}

Workspace& workspace() {
    if (!sharedWorkspace()) {
        sharedWorkspace() = std::make_unique<Workspace>();
    }
    return *sharedWorkspace();
}

// Every change must change something, across repetitions too.
int nextRound() {
    static int round = 0;
    return round++;
}

// Times one change per iteration, each to another account.
void measure(benchmark::State& state, const std::function<void(ProviderAccount&, int)>& edit) {
    Workspace& w = workspace();
    for (auto _ : state) {
        const int round = nextRound();
        state.SetIterationTime(
            w.change([&edit, round](ProviderAccount& account) { edit(account, round); }, round));
    }
}

void newSnapshot(ProviderAccount& account, int round) {
    account.setSnapshot(benchdata::snapshot(200 + round));
    account.setLastRefreshAt(Clock::now());
}

void statusMessageChanges(benchmark::State& state) {
    measure(state, [](ProviderAccount& account, int round) {
        account.setSyncMessage(QStringLiteral("Message %1").arg(round));
    });
}
BENCHMARK(statusMessageChanges)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(40);

void snapshotChanges(benchmark::State& state) {
    measure(state, newSnapshot);
}
BENCHMARK(snapshotChanges)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(40);

// The same in the matrix view.
void snapshotChangesInTheMatrix(benchmark::State& state) {
    Workspace& w = workspace();
    w.window->overview()->setViewMode(MonitoringViewMode::matrix);
    Workspace::settle();
    measure(state, newSnapshot);
    w.window->overview()->setViewMode(MonitoringViewMode::cards);
}
BENCHMARK(snapshotChangesInTheMatrix)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(40);

// A heartbeat on one account's page (its allowances, 90-day history, provenance), a minute
// later each time: from the beat to the painted window.
void heartbeatOnTheDetailScreen(benchmark::State& state) {
    Workspace& w = workspace();
    const ProviderAccount* account = w.store->accounts().first();
    w.content->setSelection(SidebarSelection::account(account->id()));
    Workspace::settle();
    const Timestamp start = Clock::now();
    for (auto _ : state) {
        const Timestamp now = start.addingSeconds(60.0 * nextRound());
        Clock::setFixedNow(now);
        QElapsedTimer timer;
        timer.start();
        Q_EMIT w.content->heartbeatTicked(now);
        QApplication::processEvents();
        w.window->repaint();
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
    Clock::setFixedNow(std::nullopt);
    w.content->setSelection(SidebarSelection::overview());
    Workspace::settle();
}
BENCHMARK(heartbeatOnTheDetailScreen)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(40);

// The desktop turns dark (then light, and so on): from the new palette to the window drawn
// in it, with the overview's fifty cards; `range(0)` 1 also draws the whole page, every
// card below the fold included.
void appearanceChange(benchmark::State& state) {
    Workspace& w = workspace();
    Workspace::settle();
    QWidget* page = w.window->overview()->widget();
    bool dark = false;
    for (auto _ : state) {
        dark = !dark;
        QElapsedTimer timer;
        timer.start();
        AppStyle::apply(dark ? Theme::Appearance::dark : Theme::Appearance::light);
        QApplication::processEvents();
        w.window->repaint();
        if (state.range(0) == 1) {
            (void)page->grab();
        }
        state.SetIterationTime(static_cast<double>(timer.nsecsElapsed()) / 1e9);
    }
    AppStyle::apply(Theme::Appearance::light);
    Workspace::settle();
}
BENCHMARK(appearanceChange)->Arg(0)->Arg(1)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);
} // namespace

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    AppResources::load();
    AppStyle::apply(Theme::Appearance::light);
    QFont text(AppResources::fontFamily());
    text.setPixelSize(Theme::kBody);
    QApplication::setFont(text);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    sharedWorkspace().reset();
    return 0;
}
