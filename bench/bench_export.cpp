// Taking the history out: 50 accounts with 90 recorded snapshots each, from accounts as
// the store loads them (histories not yet decoded) to the finished file.
#include "BenchFixtures.h"
#include "core/HistoryExport.h"

#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {
void exportFifty(benchmark::State& state, HistoryExport::Format format) {
    QTemporaryDir dir;
    const QString path = dir.filePath(format == HistoryExport::Format::csv ? QStringLiteral("h.csv")
                                                                           : QStringLiteral("h.json"));
    std::vector<ProviderAccountRow> rows;
    for (int i = 0; i < 50; ++i) {
        rows.push_back(benchdata::accountRow(i));
    }
    qint64 bytes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::unique_ptr<ProviderAccount>> owned;
        QList<ProviderAccount*> accounts;
        for (const ProviderAccountRow& row : rows) {
            owned.push_back(std::make_unique<ProviderAccount>(row));
            accounts.append(owned.back().get());
        }
        state.ResumeTiming();
        const QByteArray out = format == HistoryExport::Format::csv ? HistoryExport::csv(accounts)
                                                                    : HistoryExport::json(accounts);
        QString error;
        if (!HistoryExport::write(path, out, &error)) {
            state.SkipWithError(qPrintable(error));
        }
        bytes = out.size();
    }
    state.counters["MiB"] = static_cast<double>(bytes) / (1024.0 * 1024.0);
}

void exportFiftyAsCSV(benchmark::State& state) {
    exportFifty(state, HistoryExport::Format::csv);
}
BENCHMARK(exportFiftyAsCSV)->Unit(benchmark::kMillisecond);

void exportFiftyAsJSON(benchmark::State& state) {
    exportFifty(state, HistoryExport::Format::json);
}
BENCHMARK(exportFiftyAsJSON)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
