#include "model/UsageJson.h"

#include <QJsonDocument>

#include <benchmark/benchmark.h>

// A snapshot as a busy refresh makes it: 5 windows and 30 history points.
namespace {
UsageSnapshot typicalSnapshot(int seed) {
    UsageSnapshot snapshot{.source = UsageSource::officialAPI,
                           .capturedAt = Timestamp(785000000.0 + seed * 3600.0),
                           .windows = {},
                           .history = {},
                           .warnings = {QStringLiteral("Costs could not be loaded; showing usage only.")}};
    const QStringList models{QStringLiteral("gpt-4o-mini-2024-07-18"), QStringLiteral("gpt-4.1"),
                             QStringLiteral("o3-mini")};
    for (int i = 0; i < 5; ++i) {
        snapshot.windows.append(UsageWindow{.id = QStringLiteral("requests-rate-window-%1").arg(i),
                                            .title = QStringLiteral("Requests per minute"),
                                            .unit = UsageUnit::requests,
                                            .horizon = UsageHorizon::shortTerm,
                                            .modelName = models.at(i % models.size()),
                                            .used = 12.0 + i + seed,
                                            .limit = 500.0,
                                            .reportedRemaining = 488.0 - i,
                                            .resetAt = Timestamp(785000060.25 + i),
                                            .note = QStringLiteral("From the rate-limit headers")});
    }
    for (int day = 0; day < 30; ++day) {
        snapshot.history.append(UsagePoint{.date = Timestamp(785000000.0 - (30 - day) * 86400.0),
                                           .value = 1234.5 * day + seed,
                                           .unit = UsageUnit::tokens,
                                           .modelName = models.at(day % models.size())});
    }
    return snapshot;
}

QList<UsageSnapshot> typicalHistory() {
    QList<UsageSnapshot> list;
    for (int i = 0; i < 90; ++i) {
        list.append(typicalSnapshot(i));
    }
    return list;
}

void encodeSnapshot(benchmark::State& state) {
    const UsageSnapshot snapshot = typicalSnapshot(1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(UsageJson::encode(snapshot));
    }
}
BENCHMARK(encodeSnapshot)->Unit(benchmark::kMicrosecond);

void decodeSnapshot(benchmark::State& state) {
    const QByteArray json = UsageJson::encode(typicalSnapshot(1)).value();
    state.counters["bytes"] = static_cast<double>(json.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(UsageJson::decode<UsageSnapshot>(json));
    }
}
BENCHMARK(decodeSnapshot)->Unit(benchmark::kMicrosecond);

void encode90Snapshots(benchmark::State& state) {
    const QList<UsageSnapshot> list = typicalHistory();
    for (auto _ : state) {
        benchmark::DoNotOptimize(UsageJson::encode(list));
    }
}
BENCHMARK(encode90Snapshots)->Unit(benchmark::kMicrosecond);

void decode90Snapshots(benchmark::State& state) {
    const QByteArray json = UsageJson::encode(typicalHistory()).value();
    state.counters["bytes"] = static_cast<double>(json.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(UsageJson::decode<QList<UsageSnapshot>>(json));
    }
}
BENCHMARK(decode90Snapshots)->Unit(benchmark::kMicrosecond);

// For comparison only: Qt's own parser reading the same 90 snapshots into a
// QJsonDocument, before a single record is built from it.
void qtParseOnly90Snapshots(benchmark::State& state) {
    const QByteArray json = UsageJson::encode(typicalHistory()).value();
    for (auto _ : state) {
        benchmark::DoNotOptimize(QJsonDocument::fromJson(json));
    }
}
BENCHMARK(qtParseOnly90Snapshots)->Unit(benchmark::kMicrosecond);
} // namespace

BENCHMARK_MAIN();
