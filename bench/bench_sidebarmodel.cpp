// What the sidebar's item model costs with 200 accounts: a search keystroke, one field
// change of one account, and a heartbeat tick.
#include "core/ContentView.h"
#include "views/SidebarModel.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

namespace {
struct Workspace {
    QTemporaryDir dir;
    std::unique_ptr<AccountStore> store;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<ContentView> content;
    std::unique_ptr<SidebarModel> model;

    explicit Workspace(int count) {
        QString error;
        store = AccountStore::open(dir.filePath(QStringLiteral("bench.store")), &error);
        preferences = std::make_unique<Preferences>(dir.filePath(QStringLiteral("preferences.ini")));
        const std::array providers{AIProvider(AIProvider::openAI), AIProvider(AIProvider::anthropic),
                                   AIProvider(AIProvider::xAI), AIProvider(AIProvider::gemini)};
        for (int i = 0; i < count; ++i) {
            auto* account = new ProviderAccount(
                ProviderAccount::Init{.provider = providers[static_cast<std::size_t>(i % 4)],
                                      .label = QStringLiteral("Account %1").arg(i),
                                      .accountKind = AccountKind::api,
                                      .planName = QStringLiteral("Team plan"),
                                      .createdAt = Timestamp(i),
                                      .syncStatus = SyncStatus::current});
            account->setLastRefreshAt(Timestamp(1e9));
            store->insert(account);
        }
        content = std::make_unique<ContentView>(store.get(), preferences.get());
        model = std::make_unique<SidebarModel>(content.get());
    }
};

void searchKeystroke(benchmark::State& state) {
    Workspace workspace(200);
    bool narrow = false;
    for (auto _ : state) {
        narrow = !narrow;
        // Typing narrows to 11 rows, clearing brings 200 back: the two extremes.
        workspace.model->setSearchText(narrow ? QStringLiteral("Account 1") : QString());
        benchmark::DoNotOptimize(workspace.model->rowCount());
    }
}
BENCHMARK(searchKeystroke)->Unit(benchmark::kMicrosecond);

void oneFieldChange(benchmark::State& state) {
    Workspace workspace(200);
    ProviderAccount* account = workspace.store->accounts().at(150);
    int round = 0;
    for (auto _ : state) {
        account->setSyncMessage(QStringLiteral("Refresh %1").arg(++round));
    }
}
BENCHMARK(oneFieldChange)->Unit(benchmark::kMicrosecond);

void heartbeatTick(benchmark::State& state) {
    Workspace workspace(200);
    for (auto _ : state) {
        workspace.content->engine().tick(Timestamp(1e9 + 60));
    }
}
BENCHMARK(heartbeatTick)->Unit(benchmark::kMicrosecond);
} // namespace
