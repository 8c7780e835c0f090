#include "model/Clock.h"
#include "providers/OpenAIUsageProvider.h"
#include "providers/UsageProviderError.h"
#include "store/ProviderAccount.h"

#include "FakeOpenAIServer.h"
#include "TestSupport.h"

#include <QTest>
#include <QUrlQuery>

namespace {
const QByteArray kProbeBody =
    R"({"object":"page","data":[{"object":"bucket","start_time":1763510400,"end_time":1763514000,"results":[)"
    R"({"object":"organization.usage.completions.result","input_tokens":5,"output_tokens":1,"num_model_requests":1,)"
    R"("model":"gpt-4o"},{"input_tokens":1,"model":"gpt-4.1"},{"input_tokens":1,"model":"gpt-4o"}]}],"has_more":false})";
const QList<QPair<QByteArray, QByteArray>> kBothLimits{{"x-ratelimit-limit-requests", "60"},
                                                       {"x-ratelimit-remaining-requests", "59"},
                                                       {"x-ratelimit-limit-tokens", "150000"},
                                                       {"x-ratelimit-remaining-tokens", "149000"}};
const QByteArray kOneProject =
    R"({"object":"organization.project","id":"proj_abc","name":"Research","status":"active"})";
const QByteArray kRateLimits =
    R"({"object":"list","data":[{"object":"project.rate_limit","id":"rl-o3","model":"o3","max_requests_per_1_minute":500,)"
    R"("max_tokens_per_1_minute":30000,"max_requests_per_1_day":10000},)"
    R"({"object":"project.rate_limit","id":"rl-empty","model":"babbage-002"}],"has_more":false})";

ProviderAccount::Init account(const QString& project = QString()) {
    return ProviderAccount::Init{.provider = AIProvider::openAI,
                                 .label = QStringLiteral("Org"),
                                 .accountKind = AccountKind::api,
                                 .identityDetail = project,
                                 .connectionMode = ConnectionMode::apiKey};
}

QStringList paths(const FakeOpenAIServer& server) {
    QStringList seen;
    for (const FakeOpenAIServer::Request& request : server.requests()) {
        seen.append(request.path);
    }
    return seen;
}
} // namespace

class TestOpenAIConnection final : public QObject {
    Q_OBJECT

private slots:
    void storedProjectMakesFourRequests() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, kProbeBody, kBothLimits});
        server.setReply(QStringLiteral("costs"), {200, R"({"object":"page","data":[]})", {}});
        server.setReply(QStringLiteral("project"),
                        {200, R"({"id":"proj_old","name":"Old","status":"archived"})", {}});
        server.setReply(QStringLiteral("rate_limits"), {200, kRateLimits, {}});
        const ProviderAccount target(account(QStringLiteral(" proj_old ")));
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-1"), server.base());
        const ProviderConnection connection = awaitTask(provider.connect(target));
        QCOMPARE(paths(server), QStringList({"/v1/organization/usage/completions", "/v1/organization/costs",
                                             "/v1/organization/projects/proj_old",
                                             "/v1/organization/projects/proj_old/rate_limits"}));
        QCOMPARE(connection.capabilities, (ProviderCapabilities{true, true, true, false, true, true, true}));
        const ProviderConnectionMetadata& metadata = *connection.metadata;
        QCOMPARE(metadata.displayName, std::optional<QString>(QStringLiteral("OpenAI API · Old")));
        QCOMPARE(metadata.identityDetail, std::optional<QString>(QStringLiteral("Old")));
        QCOMPARE(metadata.connectionIdentifier, std::optional<QString>(QStringLiteral("proj_old")));
        QCOMPARE(metadata.modelScope, std::optional<QString>(QStringLiteral("babbage-002, o3")));
        QCOMPARE(metadata.sourceDescription,
                 QStringLiteral("Official OpenAI organization usage and project rate-limit APIs"));
        QCOMPARE(metadata.notes,
                 QStringList({"Detected from official OpenAI organization usage data.",
                              "OpenAI exposes project names and rate-limit ceilings, not a consumer "
                              "subscription tier."}));
        // The detected ceilings replace the header windows: three for o3, none for the empty record.
        QCOMPARE(metadata.windows.size(), 3);
        QCOMPARE(metadata.windows[0].id, QStringLiteral("detected-rl-o3-requests-minute"));
        QCOMPARE(metadata.windows[0].title, QStringLiteral("o3 · Requests / minute"));
        QCOMPARE(metadata.windows[0].modelName, std::optional<QString>(QStringLiteral("o3")));
        QCOMPARE(metadata.windows[1].id, QStringLiteral("detected-rl-o3-tokens-minute"));
        QCOMPARE(metadata.windows[2].id, QStringLiteral("detected-rl-o3-requests-day"));
        QCOMPARE(metadata.windows[2].horizon, UsageHorizon(UsageHorizon::billing));
        QCOMPARE(metadata.windows[2].limit, OptionalDouble(10000));
        QCOMPARE(metadata.windows[2].note, std::optional<QString>(QStringLiteral(
                                               "Detected daily project ceiling; OpenAI does not report a "
                                               "weekly cap here")));
        // The probe asks for one hourly bucket.
        QVERIFY(server.requests().first().query.contains(QStringLiteral("bucket_width=1h&limit=1")));
    }

    void oneActiveProjectMakesFiveRequests() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, kProbeBody, kBothLimits});
        server.setReply(QStringLiteral("costs"), {403, QByteArray(), {}});
        server.setReply(
            QStringLiteral("projects"),
            {200,
             R"({"object":"list","data":[{"id":"proj_abc","name":"Research","status":"active"},)"
             R"({"id":"proj_x","name":"X","status":"archived"},{"id":"proj_y","name":"Y","status":"Active"}]})",
             {}});
        server.setReply(QStringLiteral("project"), {200, kOneProject, {}});
        server.setReply(QStringLiteral("rate_limits"), {200, R"({"object":"list","data":[]})", {}});
        const ProviderAccount target(account());
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-1"), server.base());
        const ProviderConnection connection = awaitTask(provider.connect(target));
        QCOMPARE(server.requests().size(), 5);
        QVERIFY(!connection.capabilities.cost); // no note for that
        const ProviderConnectionMetadata& metadata = *connection.metadata;
        QCOMPARE(metadata.connectionIdentifier, std::optional<QString>(QStringLiteral("proj_abc")));
        QVERIFY(metadata.notes.contains(
            QStringLiteral("One active project was detected automatically and used to scope its limits.")));
        QCOMPARE(metadata.notes.size(), 3);
        // An empty rate-limit list keeps the header windows and the probe's model scope.
        QCOMPARE(metadata.windows.size(), 2);
        QCOMPARE(metadata.windows[0].id, QStringLiteral("requests-rate-window"));
        QCOMPARE(metadata.modelScope, std::optional<QString>(QStringLiteral("gpt-4.1, gpt-4o")));
    }

    void severalOrNoActiveProjectsOrAFailedListMakeThreeRequests_data() {
        QTest::addColumn<int>("status");
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<QString>("note");
        QTest::newRow("several")
            << 200
            << QByteArray(R"({"data":[{"id":"a","name":"A","status":"active"},)"
                          R"({"id":"b","name":"B","status":"active"}]})")
            << "Multiple active projects were found; response headers are shown until a project "
               "is selected in Edit Subscription.";
        QTest::newRow("none active") << 200
                                     << QByteArray(R"({"data":[{"id":"a","name":"A","status":"Active"}]})")
                                     << QString();
        QTest::newRow("list failed")
            << 500 << QByteArray()
            << "The project list was unavailable; response headers are used when present.";
    }
    void severalOrNoActiveProjectsOrAFailedListMakeThreeRequests() {
        QFETCH(int, status);
        QFETCH(QByteArray, body);
        QFETCH(QString, note);
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, kProbeBody, {{"x-ratelimit-limit-requests", "60"}}});
        server.setReply(QStringLiteral("costs"), {200, R"({"data":[]})", {}});
        server.setReply(QStringLiteral("projects"), {status, body, {}});
        const ProviderAccount target(account());
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-1"), server.base());
        const ProviderConnection connection = awaitTask(provider.connect(target));
        QCOMPARE(server.requests().size(), 3);
        const ProviderConnectionMetadata& metadata = *connection.metadata;
        if (!note.isEmpty()) {
            QVERIFY(metadata.notes.contains(note));
        }
        QCOMPARE(metadata.notes.last(),
                 QStringLiteral(
                     "Add a project ID to detect its friendly name and per-model rate-limit ceilings."));
        QVERIFY(!metadata.connectionIdentifier);
        QCOMPARE(metadata.displayName, std::optional<QString>(QStringLiteral("OpenAI API organization")));
        QCOMPARE(metadata.windows.size(), 1); // one limit header, one header window
    }

    void probeWindowsAndNotesExactly() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, kProbeBody, kBothLimits});
        server.setReply(QStringLiteral("costs"), {200, R"({"data":[]})", {}});
        server.setReply(QStringLiteral("projects"), {500, QByteArray(), {}});
        const ProviderAccount target(account());
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-1"), server.base());
        const ProviderConnectionMetadata metadata = *awaitTask(provider.connect(target)).metadata;
        QCOMPARE(
            metadata.notes,
            (QStringList{
                "Detected from official OpenAI organization usage data.",
                "OpenAI exposes project names and rate-limit ceilings, not a consumer subscription tier.",
                "The project list was unavailable; response headers are used when present.",
                "Add a project ID to detect its friendly name and per-model rate-limit ceilings."}));
        QCOMPARE(metadata.windows.size(), 2);
        QCOMPARE(metadata.windows[0].id, QStringLiteral("requests-rate-window"));
        QCOMPARE(metadata.windows[0].title, QStringLiteral("Requests / current rate window"));
        QCOMPARE(metadata.windows[0].note,
                 std::optional<QString>(
                     QStringLiteral("From the official OpenAI usage response and rate-limit headers")));
        QCOMPARE(metadata.windows[1].id, QStringLiteral("tokens-rate-window"));
        QCOMPARE(metadata.windows[1].title, QStringLiteral("Tokens / current rate window"));
        QCOMPARE(metadata.windows[1].note,
                 std::optional<QString>(
                     QStringLiteral("Input + output token rate limit; unavailable when headers are absent")));
        QCOMPARE(metadata.modelScope, std::optional<QString>(QStringLiteral("gpt-4.1, gpt-4o")));

        // No ceiling in the headers either: the last note says so.
        FakeOpenAIServer bare;
        bare.setReply(QStringLiteral("usage"), {200, kProbeBody, {}});
        bare.setReply(QStringLiteral("projects"), {200, R"({"data":[]})", {}});
        OpenAIUsageProvider quiet(QStringLiteral("sk-admin-1"), bare.base());
        const ProviderConnectionMetadata none = *awaitTask(quiet.connect(target)).metadata;
        QVERIFY(none.windows.isEmpty());
        QCOMPARE(none.notes.last(), QStringLiteral("No rate-limit ceiling was returned by the provider."));
    }

    void projectCallsFailIntoNotes() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, R"({"data":[]})", {}});
        server.setReply(QStringLiteral("costs"), {200, R"({"data":[]})", {}});
        server.setReply(QStringLiteral("project"), {404, QByteArray(), {}});
        server.setReply(QStringLiteral("rate_limits"), {503, QByteArray(), {}});
        ProviderAccount target(account(QStringLiteral("proj_1")));
        target.setModelScope(QStringLiteral("gpt-4o, o3"));
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-1"), server.base());
        const ProviderConnectionMetadata metadata = *awaitTask(provider.connect(target)).metadata;
        QCOMPARE(metadata.displayName, std::optional<QString>(QStringLiteral("OpenAI API organization")));
        QVERIFY(metadata.notes.contains(QStringLiteral(
            "The project name could not be read; the project ID remains the connection identity.")));
        QVERIFY(metadata.notes.contains(QStringLiteral(
            "Project rate-limit ceilings were unavailable; response headers are used when present.")));
        QCOMPARE(metadata.notes.last(),
                 QStringLiteral("No rate-limit ceiling was returned by the provider."));
        QVERIFY(metadata.windows.isEmpty());
        QCOMPARE(metadata.modelScope,
                 std::optional<QString>(QStringLiteral("gpt-4o, o3"))); // the account's own
    }

    void probeFailuresAreThrownAndAnEmptyKeyAsksNothing() {
        FakeOpenAIServer server;
        server.setReply(
            QStringLiteral("usage"),
            {401, FakeOpenAIServer::errorBody("bad key", "invalid_request_error", "invalid_api_key"), {}});
        const ProviderAccount target(account());
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-bad"), server.base());
        std::optional<UsageProviderError> error;
        try {
            awaitTask(provider.validate(target));
        } catch (const UsageProviderError& thrown) {
            error = thrown;
        }
        QCOMPARE(error, std::optional<UsageProviderError>(UsageProviderError::unauthorized()));
        QCOMPARE(server.requests().size(), 1);

        OpenAIUsageProvider empty(QString(), server.base());
        error.reset();
        try {
            awaitTask(empty.connect(target));
        } catch (const UsageProviderError& thrown) {
            error = thrown;
        }
        QCOMPARE(error, std::optional<UsageProviderError>(UsageProviderError::missingCredential()));
        QCOMPARE(server.requests().size(), 1);
    }

    void theProbeAndTheCostTestAskForTheLastHourWithTheFilters() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, kProbeBody, kBothLimits});
        server.setReply(QStringLiteral("costs"), {200, R"({"object":"page","data":[]})", {}});
        server.setReply(QStringLiteral("project"), {200, kOneProject, {}});
        server.setReply(QStringLiteral("rate_limits"), {200, kRateLimits, {}});
        ProviderAccount::Init init = account(QStringLiteral("proj_abc"));
        init.modelScope = QStringLiteral("gpt-4o, , o3,");
        init.agentScope = QStringLiteral("KEY:key_A, user:user-b, team-x");
        const ProviderAccount target(init);
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-1"), server.base());
        Clock::setFixedNow(Timestamp::fromUnixSeconds(1763600000.9));
        awaitTask(provider.connect(target));
        Clock::setFixedNow(std::nullopt);
        const QUrlQuery probe(server.requests()[0].query);
        const QUrlQuery costs(server.requests()[1].query);
        QCOMPARE(server.requests()[1].path, QStringLiteral("/v1/organization/costs"));
        for (const QUrlQuery& query : {probe, costs}) {
            QCOMPARE(query.queryItemValue(QStringLiteral("start_time")), QStringLiteral("1763596400"));
            QCOMPARE(query.queryItemValue(QStringLiteral("end_time")), QStringLiteral("1763600000"));
            QCOMPARE(query.allQueryItemValues(QStringLiteral("project_ids[]")),
                     QStringList{QStringLiteral("proj_abc")});
        }
        QCOMPARE(probe.allQueryItemValues(QStringLiteral("models[]")),
                 (QStringList{QStringLiteral("gpt-4o"), QStringLiteral("o3")}));
        QCOMPARE(probe.allQueryItemValues(QStringLiteral("api_key_ids[]")),
                 QStringList{QStringLiteral("key_A")});
        QCOMPARE(probe.allQueryItemValues(QStringLiteral("user_ids[]")),
                 QStringList{QStringLiteral("user-b")});
    }

    void aProbeBodyThatFailsToDecodeIsThrownAsItIs() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("usage"), {200, QByteArrayLiteral("<html>gateway</html>"), {}});
        server.setReply(QStringLiteral("costs"), {200, R"({"object":"page","data":[]})", {}});
        const ProviderAccount target(account());
        OpenAIUsageProvider provider(QStringLiteral("sk-admin-1"), server.base());
        bool decoding = false;
        try {
            awaitTask(provider.connect(target));
        } catch (const OpenAIClient::DecodingError&) {
            decoding = true;
        }
        QVERIFY(decoding);
        QCOMPARE(server.requests().size(), 1); // no costs request, no project calls
    }

    void rateLimitWindowsOfOneRecord() {
        const OpenAIRecords::ProjectRateLimit none{.id = QStringLiteral("rl-x"),
                                                   .model = QStringLiteral("x")};
        QVERIFY(OpenAIUsageProvider::rateLimitWindows(none).isEmpty());
        OpenAIRecords::ProjectRateLimit tokens = none;
        tokens.maxTokensPerMinute = 100;
        const QList<UsageWindow> windows = OpenAIUsageProvider::rateLimitWindows(tokens);
        QCOMPARE(windows.size(), 1);
        QCOMPARE(windows[0].title, QStringLiteral("x · Tokens / minute"));
        QCOMPARE(windows[0].unit, UsageUnit(UsageUnit::tokens));
        QVERIFY(!windows[0].used && !windows[0].agentLabel && !windows[0].reportedRemaining &&
                !windows[0].resetAt);
    }
};

QTEST_GUILESS_MAIN(TestOpenAIConnection)
#include "tst_openaiconnection.moc"
