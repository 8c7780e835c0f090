#include "providers/OpenAIRecords.h"

#include <QTest>

namespace {
// Shapes as OpenAI's organization endpoints send them, with the fields we don't read.
const QByteArray kUsagePage = R"({"object":"page","has_more":true,"next_page":"page_AAAAAGdGxdE=","data":[
 {"object":"bucket","start_time":1763510400,"end_time":1763596800,"results":[
  {"object":"organization.usage.completions.result","input_tokens":5200,"output_tokens":900,"num_model_requests":14,
   "input_cached_tokens":1200,"input_audio_tokens":0,"output_audio_tokens":0,
   "project_id":null,"user_id":"user-7Qm2","api_key_id":null,"model":"gpt-4o-mini-2024-07-18","batch":null,
   "service_tier":null}]},
 {"object":"bucket","start_time":1763596800,"end_time":1763683200,"results":[]}]})";

const QByteArray kCostPage = R"({"object":"page","has_more":false,"next_page":null,"data":[
 {"object":"bucket","start_time":1763510400,"end_time":1763596800,"results":[
  {"object":"organization.costs.result","amount":{"value":0.0612,"currency":"USD"},"line_item":null,
   "project_id":null,"api_key_id":null,"quantity":null,"quantity_unit":null},
  {"object":"organization.costs.result","amount":null}]}]})";
} // namespace

class TestOpenAIRecords final : public QObject {
    Q_OBJECT

private slots:
    void usagePage() {
        const auto usage = OpenAIRecords::decodeUsage(kUsagePage);
        QVERIFY2(usage, qPrintable(usage.error()));
        QCOMPARE(usage->data.size(), 2);
        const OpenAIRecords::UsageBucket& first = usage->data.first();
        QCOMPARE(first.startTime, 1763510400);
        QCOMPARE(first.results.size(), 1);
        const OpenAIRecords::UsageResult& row = first.results.first();
        QCOMPARE(row.inputTokens, std::optional<double>(5200));
        QCOMPARE(row.outputTokens, std::optional<double>(900));
        QCOMPARE(row.modelRequests, std::optional<double>(14));
        QCOMPARE(row.model, std::optional<QString>(QStringLiteral("gpt-4o-mini-2024-07-18")));
        QCOMPARE(row.userID, std::optional<QString>(QStringLiteral("user-7Qm2")));
        QVERIFY(!row.apiKeyID); // null reads as absent
        QVERIFY(usage->data.last().results.isEmpty());
    }

    void usageRowsMayLackCounts() {
        const auto usage =
            OpenAIRecords::decodeUsage(R"({"data":[{"start_time":1,"results":[{"model":"o3"}]}]})");
        QVERIFY(usage);
        QVERIFY(!usage->data.first().results.first().modelRequests);
        const auto big = OpenAIRecords::decodeUsage(
            R"({"data":[{"start_time":1,"results":[{"input_tokens":1.5e15,"num_model_requests":2.5}]}]})");
        QVERIFY(big);
        QCOMPARE(*big->data.first().results.first().inputTokens, 1.5e15);
    }

    void usageFailures_data() {
        QTest::addColumn<QByteArray>("body");
        QTest::newRow("bucket without results") << QByteArray(R"({"data":[{"start_time":1}]})");
        QTest::newRow("no data") << QByteArray(R"({"object":"page"})");
        QTest::newRow("null data") << QByteArray(R"({"data":null})");
        QTest::newRow("start time as text") << QByteArray(R"({"data":[{"start_time":"1","results":[]}]})");
        QTest::newRow("start time with a fraction")
            << QByteArray(R"({"data":[{"start_time":1.5,"results":[]}]})");
        QTest::newRow("count as text")
            << QByteArray(R"({"data":[{"start_time":1,"results":[{"input_tokens":"5"}]}]})");
        QTest::newRow("model as a number")
            << QByteArray(R"({"data":[{"start_time":1,"results":[{"model":4}]}]})");
        QTest::newRow("empty body") << QByteArray();
        QTest::newRow("start time beyond the range of dates")
            << QByteArray(R"({"data":[{"start_time":9223372036854775807,"results":[]}]})");
        QTest::newRow("not JSON") << QByteArray("<html>Bad gateway</html>");
        QTest::newRow("error envelope") << QByteArray(
            R"({"error":{"message":"Incorrect API key provided","type":"invalid_request_error",)"
            R"("param":null,"code":"invalid_api_key"}})");
    }
    void usageFailures() {
        QFETCH(QByteArray, body);
        const auto usage = OpenAIRecords::decodeUsage(body);
        QVERIFY(!usage);
        QVERIFY(!usage.error().isEmpty());
    }

    void costs() {
        const auto costs = OpenAIRecords::decodeCosts(kCostPage);
        QVERIFY2(costs, qPrintable(costs.error()));
        const QList<OpenAIRecords::CostResult>& rows = costs->data.first().results;
        QCOMPARE(rows.size(), 2);
        QCOMPARE(rows[0].amount->value, std::optional<double>(0.0612));
        QCOMPARE(rows[0].amount->currency, std::optional<QString>(QStringLiteral("USD"))); // as sent
        QVERIFY(!rows[1].amount);
    }

    void costValueAsTextFailsTheWholeResponse() {
        QVERIFY(!OpenAIRecords::decodeCosts(
            R"({"data":[{"start_time":1,"results":[{"amount":{"value":"0.06","currency":"usd"}}]}]})"));
        QVERIFY(!OpenAIRecords::decodeCosts(R"({"data":[{"start_time":1,"results":[{"amount":"0.06"}]}]})"));
    }

    void projects() {
        const auto projects = OpenAIRecords::decodeProjects(
            R"({"object":"list","data":[{"id":"proj_abc","object":"organization.project","name":"Research",)"
            R"("created_at":1711471533,"archived_at":null,"status":"active","external_key_id":null,"residency":"us"}],)"
            R"("first_id":"proj_abc","last_id":"proj_abc","has_more":false})");
        QVERIFY2(projects, qPrintable(projects.error()));
        QCOMPARE(projects->size(), 1);
        QCOMPARE(projects->first().id, QStringLiteral("proj_abc"));
        QCOMPARE(projects->first().name, QStringLiteral("Research"));
        QCOMPARE(projects->first().status, QStringLiteral("active"));

        const auto one = OpenAIRecords::decodeProject(
            R"({"id":"proj_x","object":"organization.project","name":"X","status":"archived"})");
        QVERIFY(one);
        QCOMPARE(one->status, QStringLiteral("archived"));
        // The documentation allows a null name; this decoder requires one.
        QVERIFY(!OpenAIRecords::decodeProject(R"({"id":"proj_x","name":null,"status":"active"})"));
    }

    void rateLimits() {
        const auto limits = OpenAIRecords::decodeRateLimits(
            R"({"object":"list","data":[{"object":"project.rate_limit","id":"rl-gpt-4o","model":"gpt-4o",)"
            R"("max_requests_per_1_minute":500,"max_tokens_per_1_minute":30000},)"
            R"({"object":"project.rate_limit","id":"rl-dall-e-3","model":"dall-e-3","max_requests_per_1_minute":5,)"
            R"("max_tokens_per_1_minute":0,"max_images_per_1_minute":5,"max_requests_per_1_day":100}],)"
            R"("first_id":"rl-gpt-4o","last_id":"rl-dall-e-3","has_more":false})");
        QVERIFY2(limits, qPrintable(limits.error()));
        QCOMPARE(limits->size(), 2);
        QCOMPARE(limits->at(0).maxRequestsPerMinute, std::optional<double>(500));
        QVERIFY(!limits->at(0).maxRequestsPerDay);
        QCOMPARE(limits->at(1).maxRequestsPerDay, std::optional<double>(100));
        QVERIFY(!OpenAIRecords::decodeRateLimits(R"({"data":[{"id":"rl-x"}]})")); // model is required
    }
};

QTEST_GUILESS_MAIN(TestOpenAIRecords)
#include "tst_openairecords.moc"
