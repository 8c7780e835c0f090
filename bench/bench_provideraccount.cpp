#include "BenchFixtures.h"
#include "store/AccountStore.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

namespace {
const ProviderAccountRow& oneRow() {
    static const ProviderAccountRow row = benchdata::accountRow(0);
    return row;
}

const QList<ProviderAccountRow>& fiftyRows() {
    static const QList<ProviderAccountRow> rows = [] {
        QList<ProviderAccountRow> list;
        for (int i = 0; i < 50; ++i) {
            list.append(benchdata::accountRow(i));
        }
        return list;
    }();
    return rows;
}

// First read of an account just loaded: every blob is decoded.
void trendAndPulseColdOneAccount(benchmark::State& state) {
    for (auto _ : state) {
        const ProviderAccount account(oneRow());
        benchmark::DoNotOptimize(account.trendHistory());
        benchmark::DoNotOptimize(account.billingTrendHistory());
        benchmark::DoNotOptimize(account.pulse());
    }
}
BENCHMARK(trendAndPulseColdOneAccount)->Unit(benchmark::kMicrosecond);

// What each redraw costs once the account's blobs were read.
void trendAndPulseOneAccount(benchmark::State& state) {
    const ProviderAccount account(oneRow());
    for (auto _ : state) {
        benchmark::DoNotOptimize(account.trendHistory());
        benchmark::DoNotOptimize(account.billingTrendHistory());
        benchmark::DoNotOptimize(account.pulse());
    }
}
BENCHMARK(trendAndPulseOneAccount)->Unit(benchmark::kMicrosecond);

void trendAndPulseColdFiftyAccounts(benchmark::State& state) {
    for (auto _ : state) {
        for (const ProviderAccountRow& row : fiftyRows()) {
            const ProviderAccount account(row);
            benchmark::DoNotOptimize(account.trendHistory());
            benchmark::DoNotOptimize(account.billingTrendHistory());
            benchmark::DoNotOptimize(account.pulse());
        }
    }
}
BENCHMARK(trendAndPulseColdFiftyAccounts)->Unit(benchmark::kMillisecond);

void trendAndPulseFiftyAccounts(benchmark::State& state) {
    std::vector<std::unique_ptr<ProviderAccount>> accounts;
    for (const ProviderAccountRow& row : fiftyRows()) {
        accounts.push_back(std::make_unique<ProviderAccount>(row));
    }
    for (auto _ : state) {
        for (const auto& account : accounts) {
            benchmark::DoNotOptimize(account->trendHistory());
            benchmark::DoNotOptimize(account->billingTrendHistory());
            benchmark::DoNotOptimize(account->pulse());
        }
    }
}
BENCHMARK(trendAndPulseFiftyAccounts)->Unit(benchmark::kMillisecond);

// A refresh's save: one account changed among 50 stored ones.
void saveOneOfFifty(benchmark::State& state) {
    QTemporaryDir dir;
    QString error;
    auto store = AccountStore::open(dir.filePath(QStringLiteral("bench.store")), &error);
    for (const ProviderAccountRow& row : fiftyRows()) {
        store->insert(new ProviderAccount(row));
    }
    if (!store->save(&error)) {
        state.SkipWithError(qPrintable(error));
        return;
    }
    ProviderAccount* account = store->accounts().at(25);
    const UsageSnapshot next = benchdata::snapshot(200);
    qint64 round = 0;
    for (auto _ : state) {
        account->setSyncMessage(QString::number(++round));
        account->record(next);
        if (!store->save(&error)) {
            state.SkipWithError(qPrintable(error));
            return;
        }
    }
    state.counters["historyBytes"] = static_cast<double>(account->snapshotHistoryData()->size());
}
BENCHMARK(saveOneOfFifty)->Unit(benchmark::kMillisecond);

// Opening a store of 50 accounts, as at launch (histories stay unread).
void openFifty(benchmark::State& state) {
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("bench.store"));
    QString error;
    {
        auto store = AccountStore::open(path, &error);
        for (const ProviderAccountRow& row : fiftyRows()) {
            store->insert(new ProviderAccount(row));
        }
        if (!store->save(&error)) {
            state.SkipWithError(qPrintable(error));
            return;
        }
    }
    for (auto _ : state) {
        auto store = AccountStore::open(path, &error);
        benchmark::DoNotOptimize(store->accounts().size());
    }
}
BENCHMARK(openFifty)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
