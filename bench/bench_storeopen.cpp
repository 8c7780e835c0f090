// Opening the store of 50 accounts with 90 recorded snapshots each, side by side with the
// structure check that opening now includes (PRAGMA quick_check) on the same file.
#include "BenchFixtures.h"
#include "store/AccountStore.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

namespace {
struct StoreFile {
    QTemporaryDir dir;
    QString path = dir.filePath(QStringLiteral("bench.store"));
    StoreFile() {
        QString error;
        auto store = AccountStore::open(path, &error);
        for (int i = 0; i < 50; ++i) {
            store->insert(new ProviderAccount(benchdata::accountRow(i)));
        }
        (void)store->save(&error);
    }
};

StoreFile& storeFile() {
    static StoreFile file;
    return file;
}

void BM_OpenStore(benchmark::State& state) {
    const QString& path = storeFile().path;
    for (auto _ : state) {
        QString error;
        auto store = AccountStore::open(path, &error);
        benchmark::DoNotOptimize(store->accounts().size());
    }
}
BENCHMARK(BM_OpenStore)->Unit(benchmark::kMillisecond);

void BM_QuickCheckAlone(benchmark::State& state) {
    const QString& path = storeFile().path;
    QSqlDatabase db = QSqlDatabase::contains(QStringLiteral("check"))
                          ? QSqlDatabase::database(QStringLiteral("check"))
                          : QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("check"));
    db.setDatabaseName(path);
    db.open();
    QSqlQuery(db).exec(QStringLiteral("PRAGMA mmap_size=268435456"));
    for (auto _ : state) {
        QSqlQuery check(db);
        check.exec(QStringLiteral("PRAGMA quick_check(3)"));
        check.next();
        benchmark::DoNotOptimize(check.value(0).toString());
    }
}
BENCHMARK(BM_QuickCheckAlone)->Unit(benchmark::kMillisecond);
} // namespace

BENCHMARK_MAIN();
