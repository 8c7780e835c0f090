// The OpenAI connector's hot spots: decoding and assembling a month of usage with
// 2,000 rows, and a whole refresh against a local server.
#include "providers/OpenAIUsageProvider.h"
#include "store/ProviderAccount.h"

#include "providers/FakeOpenAIServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <benchmark/benchmark.h>

namespace {
// 30 daily buckets, 2,000 rows in all, spread over 8 models, 10 users and 6 keys.
QByteArray monthOfUsage() {
    QByteArray body = R"({"object":"page","has_more":false,"next_page":null,"data":[)";
    int row = 0;
    for (int day = 0; day < 30; ++day) {
        if (day > 0) {
            body += ',';
        }
        const qint64 start = 1763510400LL + day * 86400LL;
        body += R"({"object":"bucket","start_time":)" + QByteArray::number(start) + R"(,"end_time":)" +
                QByteArray::number(start + 86400) + R"(,"results":[)";
        const int rows = day < 20 ? 67 : 66;
        for (int i = 0; i < rows; ++i, ++row) {
            if (i > 0) {
                body += ',';
            }
            body +=
                R"({"object":"organization.usage.completions.result","input_tokens":)" +
                QByteArray::number(1000 + row) + R"(,"output_tokens":)" + QByteArray::number(200 + row % 50) +
                R"(,"num_model_requests":)" + QByteArray::number(1 + row % 7) +
                R"(,"input_cached_tokens":0,"input_audio_tokens":0,"output_audio_tokens":0,"project_id":null,)"
                R"("user_id":)" +
                (row % 3 == 0 ? QByteArray("null") : "\"user-" + QByteArray::number(row % 10) + "\"") +
                R"(,"api_key_id":"key_)" + QByteArray::number(row % 6) + R"(","model":"gpt-model-)" +
                QByteArray::number(row % 8) + R"(","batch":null,"service_tier":null})";
        }
        body += "]}";
    }
    body += "]}";
    return body;
}

const HeaderValues kHeaders({{"x-ratelimit-limit-requests", "5000"},
                             {"x-ratelimit-remaining-requests", "4999"},
                             {"x-ratelimit-reset-requests", "12ms"},
                             {"x-ratelimit-limit-tokens", "2000000"},
                             {"x-ratelimit-remaining-tokens", "1999000"},
                             {"x-ratelimit-reset-tokens", "6m0s"}});

void decodeAndAssembleMonth(benchmark::State& state) {
    const QByteArray body = monthOfUsage();
    state.counters["bytes"] = static_cast<double>(body.size());
    for (auto _ : state) {
        const auto usage = OpenAIRecords::decodeUsage(body);
        benchmark::DoNotOptimize(
            OpenAIUsageProvider::assemble(usage.value(), kHeaders, Timestamp(800'000'000), std::nullopt));
    }
}
BENCHMARK(decodeAndAssembleMonth)->Unit(benchmark::kMillisecond);

void wholeRefreshAgainstLocalServer(benchmark::State& state) {
    FakeOpenAIServer server;
    server.setReply(QStringLiteral("usage"), {200, monthOfUsage(), {{"x-ratelimit-limit-requests", "5000"}}});
    server.setReply(
        QStringLiteral("costs"),
        {200,
         R"({"object":"page","data":[{"start_time":1763510400,"results":[{"amount":{"value":1.5,"currency":"usd"}}]}]})",
         {}});
    const ProviderAccount account(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                        .label = QStringLiteral("Bench"),
                                                        .accountKind = AccountKind::api,
                                                        .connectionMode = ConnectionMode::apiKey});
    for (auto _ : state) {
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-bench"), server.base());
        bool done = false;
        auto run = [&]() -> QCoro::Task<> {
            benchmark::DoNotOptimize(
                co_await provider.fetchUsage(account, {Timestamp(0), Timestamp(2'592'000)}));
            done = true;
        };
        run();
        while (!done) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
}
BENCHMARK(wholeRefreshAgainstLocalServer)->Unit(benchmark::kMillisecond);
} // namespace
