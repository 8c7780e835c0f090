#include "core/ContentView.h"
#include "core/Preferences.h"
#include "core/RefreshEngine.h"
#include "model/UsageJson.h"
#include "providers/OpenAIUsageProvider.h"
#include "providers/ProviderFactory.h"
#include "providers/UsageProviderError.h"
#include "services/KeychainStore.h"
#include "store/AccountStore.h"
#include "store/ProviderAccount.h"

#include "FakeOpenAIServer.h"
#include "SilentServer.h"
#include "TestSupport.h"

#include <QTemporaryDir>
#include <QTest>
#include <QUrlQuery>

namespace {
ProviderAccount::Init openAIAccount() {
    return ProviderAccount::Init{.provider = AIProvider::openAI,
                                 .label = QStringLiteral("Org"),
                                 .accountKind = AccountKind::api,
                                 .connectionMode = ConnectionMode::apiKey};
}

OpenAIRecords::UsageResult row(std::optional<QString> model, double requests, double input, double output,
                               std::optional<QString> user = std::nullopt,
                               std::optional<QString> key = std::nullopt) {
    return {.inputTokens = input,
            .outputTokens = output,
            .modelRequests = requests,
            .model = std::move(model),
            .apiKeyID = std::move(key),
            .userID = std::move(user)};
}

OpenAIRecords::CostResponse usdCosts(std::initializer_list<std::optional<double>> values,
                                     std::optional<QString> currency = QStringLiteral("usd")) {
    OpenAIRecords::CostBucket bucket{.startTime = 1763510400, .results = {}};
    for (const auto& value : values) {
        bucket.results.append({.amount = OpenAIRecords::CostAmount{.value = value, .currency = currency}});
    }
    return {.data = {bucket}};
}

const HeaderValues kFullHeaders({{"x-ratelimit-limit-requests", "60"},
                                 {"x-ratelimit-remaining-requests", "59"},
                                 {"x-ratelimit-reset-requests", "1s"},
                                 {"x-ratelimit-limit-tokens", "150000"},
                                 {"x-ratelimit-remaining-tokens", "149984"},
                                 {"x-ratelimit-reset-tokens", "6m0s"}});
const Timestamp kNow(800'000'000);

const QString kNoCeiling =
    QStringLiteral("OpenAI did not include one or more rate-limit ceilings in this response.");
const QString kNoCosts =
    QStringLiteral("OpenAI cost data was not available for this range; usage limits remain current.");
} // namespace

class TestOpenAIUsageProvider final : public QObject {
    Q_OBJECT

private slots:
    void selectedModelsAndAgentFilters() {
        ProviderAccount account(openAIAccount());
        account.setModelScope(QStringLiteral("gpt-4o, , o3-mini,,"));
        QCOMPARE(OpenAIUsageProvider::selectedModels(account), QStringList({"gpt-4o", "o3-mini"}));
        account.setAgentScope(QStringLiteral("KEY:key_ABC, user:user-7Qm2, bot, key:"));
        QUrlQuery query;
        OpenAIUsageProvider::appendAgentFilters(account, query);
        QCOMPARE(query.queryItems(),
                 (QList<QPair<QString, QString>>{
                     {"api_key_ids[]", "key_ABC"}, {"user_ids[]", "user-7Qm2"}, {"api_key_ids[]", ""}}));
    }

    void usageQueryInOrder() {
        ProviderAccount account(openAIAccount());
        account.setIdentityDetail(QStringLiteral(" proj_abc "));
        account.setModelScope(QStringLiteral("gpt-4o"));
        account.setAgentScope(QStringLiteral("user:u1"));
        const OpenAIUsageProvider provider(QStringLiteral("k"));
        const DateInterval range{Timestamp::fromUnixSeconds(1000.7), Timestamp::fromUnixSeconds(2000.2)};
        const QUrl url = provider.usageURL(account, range);
        QCOMPARE(url.path(), QStringLiteral("/v1/organization/usage/completions"));
        QCOMPARE(QUrlQuery(url).queryItems(), (QList<QPair<QString, QString>>{{"start_time", "1000"},
                                                                              {"end_time", "2000"},
                                                                              {"bucket_width", "1d"},
                                                                              {"limit", "30"},
                                                                              {"group_by[]", "model"},
                                                                              {"group_by[]", "api_key_id"},
                                                                              {"group_by[]", "user_id"},
                                                                              {"project_ids[]", "proj_abc"},
                                                                              {"models[]", "gpt-4o"},
                                                                              {"user_ids[]", "u1"}}));
        const QUrl probe = provider.usageURL(account, range, true);
        QCOMPARE(QUrlQuery(probe).queryItems().mid(0, 5),
                 (QList<QPair<QString, QString>>{{"start_time", "1000"},
                                                 {"end_time", "2000"},
                                                 {"bucket_width", "1h"},
                                                 {"limit", "1"},
                                                 {"project_ids[]", "proj_abc"}}));
    }

    void fullSnapshot() {
        OpenAIRecords::UsageResponse usage{
            .data = {{.startTime = 1763510400,
                      .results = {row(QStringLiteral("gpt-4o"), 10, 1000, 200, QStringLiteral("user-b")),
                                  row(QStringLiteral("gpt-4o"), 5, 100, 20, QStringLiteral("user-a"))}},
                     {.startTime = 1763596800,
                      .results = {row(QStringLiteral("gpt-4o"), 2, 10, 5, QStringLiteral("user-b")),
                                  row(std::nullopt, 1, 1, 1)}}}};
        const UsageSnapshot s =
            OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, usdCosts({0.5, 1.25}));
        QCOMPARE(s.source, UsageSource(UsageSource::officialAPI));
        QCOMPARE(s.capturedAt, kNow);
        QCOMPARE(s.windows.size(), 5);
        QCOMPARE(s.windows[0].id, QStringLiteral("requests-rate-window"));
        QCOMPARE(s.windows[0].used, OptionalDouble(1));
        QCOMPARE(s.windows[0].limit, OptionalDouble(60));
        QCOMPARE(s.windows[0].reportedRemaining, OptionalDouble(59));
        QCOMPARE(s.windows[0].resetAt, std::optional<Timestamp>(kNow.addingSeconds(1)));
        QCOMPARE(s.windows[1].used, OptionalDouble(16));
        QCOMPARE(s.windows[1].resetAt, std::optional<Timestamp>(kNow.addingSeconds(360)));
        QCOMPARE(s.windows[2].id, QStringLiteral("requests-selected-range"));
        QCOMPARE(s.windows[2].used, OptionalDouble(18)); // the row without a model counts
        QCOMPARE(s.windows[2].modelName, std::optional<QString>(QStringLiteral("gpt-4o")));
        QCOMPARE(s.windows[3].used, OptionalDouble(1337));
        QCOMPARE(s.windows[4].id, QStringLiteral("spend-selected-range"));
        QCOMPARE(s.windows[4].used, OptionalDouble(1.75));
        QCOMPARE(s.windows[4].horizon, UsageHorizon(UsageHorizon::billing));
        QVERIFY(s.warnings.isEmpty());
        QCOMPARE(s.history.size(), 2);
        QCOMPARE(s.history[0].value, 15.0);
        QCOMPARE(s.history[1].value, 3.0);
        QCOMPARE(s.history[1].date, Timestamp::fromUnixSeconds(1763596800));
        QCOMPARE(s.billingHistory.size(), 1);
        QCOMPARE(s.billingHistory[0].value, 1.75);

        // Two users of one model: two summaries, sorted; one user over two buckets: one.
        QCOMPARE(s.modelSummaries.size(), 2);
        QCOMPARE(s.modelSummaries[0].modelName, QStringLiteral("gpt-4o · user-a"));
        QCOMPARE(s.modelSummaries[1].modelName, QStringLiteral("gpt-4o · user-b"));
        QCOMPARE(s.modelSummaries[1].windows[0].used, OptionalDouble(12));
        QCOMPARE(s.modelSummaries[1].windows[1].used, OptionalDouble(1215));
        QCOMPARE(s.modelSummaries[1].windows[0].id,
                 QStringLiteral("model-gpt-4o") + QChar(0x1f) + QStringLiteral("user-b-requests"));
        QCOMPARE(s.modelSummaries[1].windows[0].agentLabel, std::optional<QString>(QStringLiteral("user-b")));
        QVERIFY(s.hasAgentAttribution());
    }

    void numbersThatOverflowNeverReachTheSnapshot() {
        const HeaderValues extreme({{"x-ratelimit-limit-requests", "1e308"},
                                    {"x-ratelimit-remaining-requests", "-1e308"},
                                    {"x-ratelimit-limit-tokens", "nan"},
                                    {"x-ratelimit-remaining-tokens", "inf"},
                                    {"x-ratelimit-reset-tokens", QByteArray(300, '9') + "d"}});
        OpenAIRecords::UsageResponse usage{
            .data = {{.startTime = 1763510400,
                      .results = {row(QStringLiteral("gpt-4o"), 1.7e308, 1.7e308, 1.7e308),
                                  row(QStringLiteral("gpt-4o"), 1.7e308, 1, 1)}},
                     {.startTime = 1763596800, .results = {row(QStringLiteral("gpt-4o"), 2, 3, 4)}}}};
        const UsageSnapshot s =
            OpenAIUsageProvider::assemble(usage, extreme, kNow, usdCosts({1.7e308, 1.7e308}));
        QCOMPARE(s.windows[0].limit, OptionalDouble(1e308));
        QCOMPARE(s.windows[0].used, OptionalDouble()); // limit − remaining overflowed
        QCOMPARE(s.windows[1].limit, OptionalDouble());
        QCOMPARE(s.windows[1].reportedRemaining, OptionalDouble());
        QVERIFY(!s.windows[1].resetAt);
        QCOMPARE(s.windows[2].used, OptionalDouble()); // the request sum overflowed
        QCOMPARE(s.windows[3].used, OptionalDouble());
        QCOMPARE(s.windows[4].used, OptionalDouble()); // so did the spend
        QCOMPARE(s.history.size(), 1);                 // the day whose sum overflowed has no point
        QCOMPARE(s.history[0].value, 2.0);
        QVERIFY(s.billingHistory.isEmpty());
        QVERIFY(UsageJson::encode(s)); // everything in it can be stored
    }

    void windowAndSummaryTextsExactly() {
        OpenAIRecords::UsageResponse usage{
            .data = {{.startTime = 1763510400, .results = {row(QStringLiteral("gpt-4o"), 1, 1, 1)}}}};
        const UsageSnapshot s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, usdCosts({1.0}));
        const QStringList ids{"requests-rate-window", "tokens-rate-window", "requests-selected-range",
                              "tokens-selected-range", "spend-selected-range"};
        const QStringList titles{"Requests / current rate window", "Tokens / current rate window",
                                 "Requests / selected range", "Tokens / selected range",
                                 "API spend / selected range"};
        const QStringList notes{
            "From the official OpenAI usage response and rate-limit headers",
            "Input + output token rate limit; unavailable when headers are absent",
            "Historical usage from the official organization endpoint; not a rate-limit ceiling",
            "Historical input + output tokens; not a rate-limit ceiling",
            "Cost from the official organization costs endpoint; no budget ceiling reported"};
        QCOMPARE(s.windows.size(), 5);
        for (qsizetype i = 0; i < s.windows.size(); ++i) {
            QCOMPARE(s.windows[i].id, ids[i]);
            QCOMPARE(s.windows[i].title, titles[i]);
            QCOMPARE(s.windows[i].note, std::optional<QString>(notes[i]));
            QVERIFY(!s.windows[i].agentLabel);
        }
        QCOMPARE(s.modelSummaries.size(), 1);
        const UsageModelSummary& summary = s.modelSummaries.first();
        QCOMPARE(summary.windows[0].title, QStringLiteral("Requests / selected range"));
        QCOMPARE(summary.windows[1].title, QStringLiteral("Tokens / selected range"));
        for (const UsageWindow& window : summary.windows) {
            QCOMPARE(window.note, std::optional<QString>(
                                      QStringLiteral("Historical model usage; not a rate-limit ceiling")));
            QCOMPARE(window.horizon, UsageHorizon(UsageHorizon::historical));
            QVERIFY(!window.limit && !window.reportedRemaining && !window.resetAt);
        }
    }

    void allThreeWarningsInTheirOrder() {
        const UsageSnapshot s =
            OpenAIUsageProvider::assemble(OpenAIRecords::UsageResponse{}, HeaderValues(), kNow, std::nullopt);
        QCOMPARE(
            s.warnings,
            (QStringList{kNoCeiling,
                         QStringLiteral("The official endpoint returned no usage buckets for this range."),
                         kNoCosts}));
        QCOMPARE(s.windows[2].used, OptionalDouble(0)); // the windows stand, with 0 used
        QCOMPARE(s.windows[3].used, OptionalDouble(0));
    }

    void rowsWithoutARequestCountAddNothing() {
        OpenAIRecords::UsageResponse usage{
            .data = {{.startTime = 1,
                      .results = {{.inputTokens = 3, .outputTokens = 4, .model = QStringLiteral("a")},
                                  row(QStringLiteral("a"), 5, 1, 1)}}}};
        const UsageSnapshot s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, usdCosts({1.0}));
        QCOMPARE(s.windows[2].used, OptionalDouble(5));
        QCOMPARE(s.windows[3].used, OptionalDouble(9));
        QCOMPARE(s.history.first().value, 5.0);
        QCOMPARE(s.modelSummaries.first().windows[0].used, OptionalDouble(5));
    }

    void theCostsRequestAsksForTheSameIntervalAndTheTrimmedProject() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, R"({"object":"page","data":[]})", {}});
        server.setReply(QStringLiteral("costs"), {200, R"({"object":"page","data":[]})", {}});
        ProviderAccount::Init init = openAIAccount();
        init.identityDetail = QStringLiteral("  proj_abc \n");
        const ProviderAccount account(init);
        OpenAIUsageProvider provider(QStringLiteral("k"), server.base());
        const DateInterval range{Timestamp::fromUnixSeconds(1763510400.7),
                                 Timestamp::fromUnixSeconds(1766102400.2)};
        awaitTask(provider.fetchUsage(account, range));
        QCOMPARE(server.requests().size(), 2);
        const QUrlQuery usage(server.requests()[0].query);
        const QUrlQuery costs(server.requests()[1].query);
        QCOMPARE(costs.queryItemValue(QStringLiteral("start_time")), QStringLiteral("1763510400"));
        QCOMPARE(costs.queryItemValue(QStringLiteral("end_time")), QStringLiteral("1766102400"));
        QCOMPARE(costs.queryItemValue(QStringLiteral("start_time")),
                 usage.queryItemValue(QStringLiteral("start_time")));
        QCOMPARE(costs.queryItemValue(QStringLiteral("end_time")),
                 usage.queryItemValue(QStringLiteral("end_time")));
        QCOMPARE(costs.queryItemValue(QStringLiteral("limit")), QStringLiteral("31"));
        QCOMPARE(usage.queryItemValue(QStringLiteral("limit")), QStringLiteral("30"));
        QCOMPARE(costs.allQueryItemValues(QStringLiteral("project_ids[]")),
                 QStringList{QStringLiteral("proj_abc")});
    }

    void aBodyThatFailsToDecodeIsThrownAndNoCostsFollow() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"),
                        {200, R"({"data":[{"start_time":"soon","results":[]}]})", {}});
        server.setReply(QStringLiteral("costs"), {200, R"({"object":"page","data":[]})", {}});
        const ProviderAccount account(openAIAccount());
        OpenAIUsageProvider provider(QStringLiteral("k"), server.base());
        bool decoding = false;
        try {
            awaitTask(provider.fetchUsage(account, {Timestamp(0), Timestamp(86400)}));
        } catch (const OpenAIClient::DecodingError& error) {
            decoding = !error.reason.isEmpty(); // as it is, for the engine to judge
        }
        QVERIFY(decoding);
        QCOMPARE(server.requests().size(), 1);
    }

    void headerGaps() {
        const HeaderValues limitOnly(
            {{"x-ratelimit-limit-requests", "60"}, {"x-ratelimit-limit-tokens", "100"}});
        UsageSnapshot s = OpenAIUsageProvider::assemble({}, limitOnly, kNow, usdCosts({1.0}));
        QCOMPARE(s.windows[0].limit, OptionalDouble(60));
        QVERIFY(!s.windows[0].used);
        QVERIFY(!s.warnings.contains(kNoCeiling));

        const HeaderValues remainingOnly(
            QList<QPair<QByteArray, QByteArray>>{{"x-ratelimit-remaining-requests", "5"}});
        s = OpenAIUsageProvider::assemble({}, remainingOnly, kNow, usdCosts({1.0}));
        QCOMPARE(s.windows[0].reportedRemaining, OptionalDouble(5));
        QVERIFY(!s.windows[0].used);
        QVERIFY(s.warnings.contains(kNoCeiling));
        QVERIFY(s.warnings.contains(
            QStringLiteral("The official endpoint returned no usage buckets for this range.")));
        QCOMPARE(s.windows[2].used, OptionalDouble(0));
    }

    void agentsAndModels() {
        OpenAIRecords::UsageResponse usage{
            .data = {{.startTime = 1,
                      .results = {row(QStringLiteral("model-10"), 1, 0, 0),
                                  row(QStringLiteral("model-9"), 1, 0, 0, QString(), QStringLiteral("key_1")),
                                  row(QString(), 1, 0, 0)}}}};
        const UsageSnapshot s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, usdCosts({1.0}));
        // An empty user still wins over the key, so that row has no agent.
        QCOMPARE(s.modelSummaries.size(), 2);
        QCOMPARE(s.modelSummaries[0].modelName, QStringLiteral("model-9")); // digits by value
        QCOMPARE(s.modelSummaries[1].modelName, QStringLiteral("model-10"));
        // The empty model joins the list (first, as the empty text sorts first).
        QCOMPARE(s.windows[2].modelName, std::optional<QString>(QStringLiteral(", model-10, model-9")));

        const OpenAIRecords::UsageResponse modelless{
            .data = {{.startTime = 1, .results = {row(std::nullopt, 3, 1, 1)}}}};
        const UsageSnapshot none =
            OpenAIUsageProvider::assemble(modelless, kFullHeaders, kNow, usdCosts({1.0}));
        QVERIFY(!none.windows[2].modelName);
        QVERIFY(none.modelSummaries.isEmpty());
        QCOMPARE(none.history.first().value, 3.0);

        const OpenAIRecords::UsageResponse blank{
            .data = {{.startTime = 1, .results = {row(QString(), 3, 1, 1), row(QString(), 1, 1, 1)}}}};
        const UsageSnapshot blanks =
            OpenAIUsageProvider::assemble(blank, kFullHeaders, kNow, usdCosts({1.0}));
        QVERIFY(!blanks.windows[2].modelName); // absent, not the empty text
        QVERIFY(!blanks.windows[3].modelName);
    }

    void theFactoryMakesTheLiveConnectorFromTheStoredKey() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"),
                        {200,
                         R"({"object":"page","data":[{"object":"bucket","start_time":1763510400,)"
                         R"("end_time":1763596800,"results":[{"input_tokens":1,"output_tokens":2,)"
                         R"("num_model_requests":3,"model":"o3"}]}],"has_more":false})",
                         {}});
        server.setReply(QStringLiteral("costs"), {200, R"({"object":"page","data":[]})", {}});
        QTemporaryDir dir;
        QString error;
        auto store = AccountStore::open(dir.filePath(QStringLiteral("a.store")), &error);
        auto* account = new ProviderAccount(openAIAccount());
        store->insert(account);
        KeychainStore::save(QStringLiteral("sk-admin-from-the-keychain"), account->secretReference());
        Preferences preferences(dir.filePath(QStringLiteral("p.ini")));
        RefreshEngine engine(store.get(), &preferences); // the real factory: no provider maker given
        ProviderFactory::setOpenAIBase(server.base());
        engine.refresh(account);
        QTRY_VERIFY(engine.refreshingIDs().isEmpty());
        ProviderFactory::setOpenAIBase(QUrl());
        KeychainStore::deleteItem(account->secretReference());
        QCOMPARE(server.requests().size(), 2);
        QCOMPARE(server.requests()[0].headers.value(QStringLiteral("authorization")),
                 QByteArray("Bearer sk-admin-from-the-keychain"));
        QCOMPARE(account->snapshot()->source, UsageSource(UsageSource::officialAPI));
        QCOMPARE(account->snapshot()->windows[2].used, OptionalDouble(3));
    }

    void costOutcomes() {
        const OpenAIRecords::UsageResponse usage{.data = {{.startTime = 1, .results = {}}}};
        UsageSnapshot s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, std::nullopt);
        QCOMPARE(s.warnings, QStringList{kNoCosts});
        QCOMPARE(s.windows.size(), 4);
        QVERIFY(s.billingHistory.isEmpty());

        s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, usdCosts({std::nullopt}));
        QCOMPARE(s.warnings,
                 QStringList{QStringLiteral(
                     "OpenAI returned no cost amounts for this range; spend remains unavailable.")});
        QCOMPARE(s.windows.size(), 4);

        s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, usdCosts({2.0}, QStringLiteral("USD")));
        QCOMPARE(s.windows.size(), 5); // upper case counts as usd
        s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, usdCosts({2.0}, std::nullopt));
        QCOMPARE(s.windows.size(), 5); // no currency counts as dollars

        OpenAIRecords::CostResponse mixed = usdCosts({1.0});
        mixed.data.first().results.append(
            {.amount = OpenAIRecords::CostAmount{.value = 3.0, .currency = QStringLiteral("eur")}});
        s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, mixed);
        QCOMPARE(s.warnings,
                 QStringList{QStringLiteral(
                     "OpenAI returned a non-USD or mixed cost currency; spend was not combined.")});
        QCOMPARE(s.windows.size(), 4);
        QVERIFY(s.billingHistory.isEmpty());

        OpenAIRecords::CostResponse withEmptyDay = usdCosts({1.0});
        withEmptyDay.data.append({.startTime = 1763596800, .results = {{.amount = std::nullopt}}});
        s = OpenAIUsageProvider::assemble(usage, kFullHeaders, kNow, withEmptyDay);
        QCOMPARE(s.billingHistory.size(), 2);
        QCOMPARE(s.billingHistory[1].value, 0.0);
    }

    void liveFetchMakesTwoRequests() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"),
                        {200,
                         R"({"object":"page","has_more":false,"next_page":null,"data":[{"object":"bucket",)"
                         R"("start_time":1763510400,"end_time":1763596800,"results":[{"object":)"
                         R"("organization.usage.completions.result","input_tokens":5200,"output_tokens":900,)"
                         R"("num_model_requests":14,"model":"gpt-4o-mini","user_id":null,"api_key_id":null,)"
                         R"("project_id":null,"batch":null,"service_tier":null}]}]})",
                         {{"x-ratelimit-limit-requests", "60"},
                          {"x-ratelimit-remaining-requests", "59"},
                          {"x-ratelimit-reset-requests", "20ms"},
                          {"x-ratelimit-limit-tokens", "150000"},
                          {"x-ratelimit-remaining-tokens", "149984"},
                          {"x-ratelimit-reset-tokens", "6m0s"}}});
        server.setReply(QStringLiteral("costs"),
                        {401, FakeOpenAIServer::errorBody("No", "invalid_request_error", "x"), {}});
        const ProviderAccount account(openAIAccount());
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-live"), server.base());
        const UsageSnapshot s = awaitTask(provider.fetchUsage(account, {Timestamp(0), Timestamp(86400)}));
        QCOMPARE(server.requests().size(), 2);
        QCOMPARE(server.requests()[0].path, QStringLiteral("/v1/organization/usage/completions"));
        QCOMPARE(server.requests()[1].path, QStringLiteral("/v1/organization/costs"));
        QCOMPARE(s.windows[3].used, OptionalDouble(6100));
        QCOMPARE(s.warnings, QStringList{kNoCosts}); // a 401 on costs is only a warning
        QVERIFY(s.isPartial());
    }

    void refreshThroughTheEngine() {
        FakeOpenAIServer server;
        server.setReply(
            QStringLiteral("usage"),
            {200,
             R"({"object":"page","data":[{"object":"bucket","start_time":1763510400,"end_time":1763596800,)"
             R"("results":[{"input_tokens":10,"output_tokens":5,"num_model_requests":2,"model":"o3-mini",)"
             R"("user_id":null,"api_key_id":null}]}]})",
             {{"x-ratelimit-limit-requests", "60"},
              {"x-ratelimit-remaining-requests", "58"},
              {"x-ratelimit-limit-tokens", "1000"},
              {"x-ratelimit-remaining-tokens", "985"}}});
        server.setReply(
            QStringLiteral("costs"),
            {200,
             R"({"object":"page","data":[{"object":"bucket","start_time":1763510400,"results":[)"
             R"({"object":"organization.costs.result","amount":{"value":0.42,"currency":"usd"}}]}]})",
             {}});
        QTemporaryDir dir;
        QString error;
        auto store = AccountStore::open(dir.filePath(QStringLiteral("e2e.store")), &error);
        Preferences preferences(dir.filePath(QStringLiteral("p.ini")));
        auto* account = new ProviderAccount(openAIAccount());
        store->insert(account);
        KeychainStore::save(QStringLiteral("sk-admin-e2e"), account->secretReference());
        ContentView content(store.get(), &preferences);
        // The real factory's choice, pointed at the local server.
        content.engine().setProviderMaker(
            [&server](const ProviderAccount& target) -> std::unique_ptr<UsageProvider> {
                const auto key = KeychainStore::read(target.secretReference());
                return std::make_unique<OpenAIUsageProvider>(key.value_or(QString()), server.base());
            });
        content.refresh(account);
        QTRY_VERIFY(content.refreshingIDs().isEmpty());
        QTRY_VERIFY(!store->hasChanges());
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::current));
        QCOMPARE(account->syncMessage(), QStringLiteral("Refresh completed"));
        QCOMPARE(account->snapshot()->windows.size(), 5);
        QCOMPARE(account->detectedMetadata()->displayName,
                 std::optional<QString>(QStringLiteral("OpenAI API organization")));
        QCOMPARE(account->detectedMetadata()->windows.size(), 2); // the two limited rate windows
        QCOMPARE(account->modelScope(), std::optional<QString>(QStringLiteral("o3-mini")));
        QCOMPARE(server.requests().first().headers.value(QStringLiteral("authorization")),
                 QByteArray("Bearer sk-admin-e2e"));
        KeychainStore::deleteItem(account->secretReference());
    }

    void hangingServerLeavesNoAccountInFlight() {
        SilentServer silent; // accepts the connection and never answers
        QTemporaryDir dir;
        QString error;
        auto store = AccountStore::open(dir.filePath(QStringLiteral("hang.store")), &error);
        Preferences preferences(dir.filePath(QStringLiteral("p.ini")));
        auto* account = new ProviderAccount(openAIAccount());
        store->insert(account);
        ContentView content(store.get(), &preferences);
        const QUrl base = silent.base();
        content.engine().setProviderMaker([base](const ProviderAccount&) -> std::unique_ptr<UsageProvider> {
            return std::make_unique<OpenAIUsageProvider>(QStringLiteral("sk-admin-hang"), base,
                                                         std::chrono::milliseconds(300));
        });
        content.refresh(account);
        QTRY_VERIFY(content.refreshingIDs().isEmpty());
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::offline));
        QCOMPARE(
            account->syncMessage(),
            QStringLiteral(
                "Refresh failed; existing snapshot was kept. Reason: The request timed out after 0.3 s."));
    }

    void anUnknownHostIsNamedInTheStatus() {
        QTemporaryDir dir;
        QString error;
        auto store = AccountStore::open(dir.filePath(QStringLiteral("host.store")), &error);
        Preferences preferences(dir.filePath(QStringLiteral("p.ini")));
        auto* account = new ProviderAccount(openAIAccount());
        store->insert(account);
        ContentView content(store.get(), &preferences);
        content.engine().setProviderMaker([](const ProviderAccount&) -> std::unique_ptr<UsageProvider> {
            return std::make_unique<OpenAIUsageProvider>(
                QStringLiteral("sk-admin-host"),
                QUrl(QStringLiteral("http://tallyfen-no-such-host.invalid")));
        });
        content.refresh(account);
        QTRY_VERIFY_WITH_TIMEOUT(content.refreshingIDs().isEmpty(), 15000);
        QCOMPARE(account->syncStatus(), SyncStatus(SyncStatus::offline));
        QVERIFY2(account->syncMessage().startsWith(
                     QStringLiteral("Refresh failed; existing snapshot was kept. Reason: ")),
                 qPrintable(account->syncMessage()));
        QVERIFY2(account->syncMessage().contains(QStringLiteral("tallyfen-no-such-host.invalid")),
                 qPrintable(account->syncMessage()));
    }

    void usageStatuses_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("description");
        QTest::newRow("401") << 401 << "The provider rejected this credential.";
        QTest::newRow("403") << 403 << "The provider rejected this credential.";
        QTest::newRow("429") << 429 << "The provider asked the app to try again later.";
        QTest::newRow("404") << 404 << "OpenAI returned HTTP 404.";
        QTest::newRow("503") << 503 << "Provider server error (503).";
    }
    void usageStatuses() {
        QFETCH(int, status);
        QFETCH(QString, description);
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"),
                        {status, FakeOpenAIServer::errorBody("x", "server_error", nullptr), {}});
        const ProviderAccount account(openAIAccount());
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-x"), server.base());
        for (const bool probe : {false, true}) {
            std::optional<UsageProviderError> error;
            try {
                if (probe) {
                    awaitTask(provider.connect(account));
                } else {
                    awaitTask(provider.fetchUsage(account, {Timestamp(0), Timestamp(1)}));
                }
            } catch (const UsageProviderError& thrown) {
                error = thrown;
            }
            QVERIFY(error);
            QCOMPARE(error->errorDescription(), description);
        }
        QCOMPARE(server.requests().size(), 2); // one usage request each, nothing after it
    }

    void usageFailureEndsTheRefresh() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"),
                        {403, FakeOpenAIServer::errorBody("Denied", "invalid_request_error", nullptr), {}});
        const ProviderAccount account(openAIAccount());
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-x"), server.base());
        std::optional<UsageProviderError> error;
        try {
            awaitTask(provider.fetchUsage(account, {Timestamp(0), Timestamp(1)}));
        } catch (const UsageProviderError& thrown) {
            error = thrown;
        }
        QCOMPARE(error, std::optional<UsageProviderError>(UsageProviderError::unauthorized()));
        QCOMPARE(server.requests().size(), 1); // no costs request
    }
};

QTEST_GUILESS_MAIN(TestOpenAIUsageProvider)
#include "tst_openaiusageprovider.moc"
