#include "providers/OpenAIClient.h"
#include "providers/UsageProviderError.h"

#include "FakeOpenAIServer.h"
#include "RawHttpServer.h"
#include "SilentServer.h"
#include "TestSupport.h"

#include <QElapsedTimer>
#include <QTest>

namespace {
const QByteArray kProjects =
    R"({"object":"list","data":[{"id":"proj_abc","object":"organization.project","name":"Research",)"
    R"("created_at":1711471533,"archived_at":null,"status":"active"}],"first_id":"proj_abc","last_id":"proj_abc",)"
    R"("has_more":false})";

template <typename T>
std::optional<UsageProviderError> providerError(QCoro::Task<T>&& task) {
    try {
        awaitTask(std::move(task));
    } catch (const UsageProviderError& error) {
        return error;
    }
    return std::nullopt;
}
} // namespace

class TestOpenAIClient final : public QObject {
    Q_OBJECT

private slots:
    void projectListRequest() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("projects"), {200, kProjects, {}});
        const OpenAIClient client(QStringLiteral("sk-admin-test"), server.base());
        const QList<OpenAIRecords::Project> projects = awaitTask(client.fetchProjects());
        QCOMPARE(projects.size(), 1);
        QCOMPARE(projects.first().name, QStringLiteral("Research"));
        QCOMPARE(server.requests().size(), 1);
        const FakeOpenAIServer::Request& request = server.requests().first();
        QCOMPARE(request.path, QStringLiteral("/v1/organization/projects"));
        QCOMPARE(request.query, QStringLiteral("limit=100&include_archived=false"));
        QCOMPARE(request.headers.value(QStringLiteral("authorization")), QByteArray("Bearer sk-admin-test"));
        QCOMPARE(request.headers.value(QStringLiteral("accept")), QByteArray("application/json"));
    }

    void projectIdentifiersArePercentEncoded() {
        FakeOpenAIServer server;
        server.setReply(
            QStringLiteral("project"),
            {200, R"({"id":"proj x","object":"organization.project","name":"X","status":"active"})", {}});
        server.setReply(QStringLiteral("rate_limits"), {200, R"({"object":"list","data":[]})", {}});
        const OpenAIClient client(QStringLiteral("k"), server.base());
        QCOMPARE(awaitTask(client.fetchProject(QStringLiteral("proj x"))).id, QStringLiteral("proj x"));
        QCOMPARE(server.requests().last().path, QStringLiteral("/v1/organization/projects/proj%20x"));
        QVERIFY(awaitTask(client.fetchProjectRateLimits(QStringLiteral("proj_1"))).isEmpty());
        QCOMPARE(server.requests().last().path,
                 QStringLiteral("/v1/organization/projects/proj_1/rate_limits"));
        QCOMPARE(server.requests().last().query, QStringLiteral("limit=100"));
    }

    void costsQueryInOrder() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("costs"),
                        {200, R"({"object":"page","data":[],"has_more":false})", {}});
        const OpenAIClient client(QStringLiteral("k"), server.base());
        const DateInterval range{Timestamp::fromUnixSeconds(1763510400.9),
                                 Timestamp::fromUnixSeconds(1766102400.2)};
        awaitTask(client.fetchCosts(QStringLiteral("  proj_abc \n"), range));
        QCOMPARE(server.requests().last().path, QStringLiteral("/v1/organization/costs"));
        QCOMPARE(server.requests().last().query,
                 QStringLiteral("start_time=1763510400&end_time=1766102400&bucket_width=1d&limit=31&"
                                "project_ids[]=proj_abc")); // brackets as OpenAI documents them
        awaitTask(client.fetchCosts(QString(), range));
        QVERIFY(!server.requests().last().query.contains(QStringLiteral("project_ids")));
    }

    void statusesAndWhatTheyBecome_data() {
        QTest::addColumn<QString>("endpoint");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("description");
        const QString unauthorized = QStringLiteral("The provider rejected this credential.");
        const QString later = QStringLiteral("The provider asked the app to try again later.");
        const QList<QPair<QString, QString>> services{{"projects", "OpenAI projects"},
                                                      {"project", "OpenAI project"},
                                                      {"rate_limits", "OpenAI project rate limits"}};
        for (const auto& [endpoint, service] : services) {
            QTest::addRow("%s 401", qPrintable(endpoint)) << endpoint << 401 << unauthorized;
            QTest::addRow("%s 403", qPrintable(endpoint)) << endpoint << 403 << unauthorized;
            QTest::addRow("%s 429", qPrintable(endpoint)) << endpoint << 429 << later;
            QTest::addRow("%s 404", qPrintable(endpoint))
                << endpoint << 404 << QStringLiteral("%1 returned HTTP 404.").arg(service);
            QTest::addRow("%s 503", qPrintable(endpoint))
                << endpoint << 503 << "Provider server error (503).";
        }
        QTest::newRow("costs 401") << "costs" << 401 << unauthorized;
        QTest::newRow("costs 429") << "costs" << 429 << later;
        QTest::newRow("costs 404") << "costs" << 404 << "OpenAI returned HTTP 404 for costs.";
        QTest::newRow("costs 503") << "costs" << 503 << "Provider server error (503).";
    }
    void statusesAndWhatTheyBecome() {
        QFETCH(QString, endpoint);
        QFETCH(int, status);
        QFETCH(QString, description);
        FakeOpenAIServer server;
        server.setReply(endpoint, {status,
                                   FakeOpenAIServer::errorBody("Nope", "invalid_request_error", "x"),
                                   {{"Retry-After", "1"}}});
        const OpenAIClient client(QStringLiteral("k"), server.base());
        std::optional<UsageProviderError> error;
        if (endpoint == u"projects") {
            error = providerError(client.fetchProjects());
        } else if (endpoint == u"project") {
            error = providerError(client.fetchProject(QStringLiteral("proj_1")));
        } else if (endpoint == u"rate_limits") {
            error = providerError(client.fetchProjectRateLimits(QStringLiteral("proj_1")));
        } else {
            error = providerError(client.fetchCosts(QString(), DateInterval{Timestamp(0), Timestamp(1)}));
        }
        QVERIFY(error);
        QCOMPARE(error->errorDescription(), description);
        QCOMPARE(server.requests().size(), 1); // no retry
    }

    void emptyOrBrokenBodiesFailInTheDecoder() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("projects"), {204, QByteArray(), {}});
        const OpenAIClient client(QStringLiteral("k"), server.base());
        bool decoding = false;
        try {
            awaitTask(client.fetchProjects());
        } catch (const OpenAIClient::DecodingError&) {
            decoding = true;
        }
        QVERIFY(decoding);
        server.setReply(QStringLiteral("projects"), {200, QByteArray("<html>gateway</html>"), {}});
        decoding = false;
        try {
            awaitTask(client.fetchProjects());
        } catch (const OpenAIClient::DecodingError&) {
            decoding = true;
        }
        QVERIFY(decoding);
    }

    void silentServerEndsAtTheTimeout_data() {
        QTest::addColumn<int>("timeout"); // milliseconds; 0 for the connector's own
        QTest::addColumn<int>("atLeast");
        QTest::addColumn<int>("below");
        QTest::newRow("shortened through the constructor") << 300 << 250 << 5000;
        QTest::newRow("the real twelve seconds") << 0 << 12000 << 14000;
    }
    void silentServerEndsAtTheTimeout() {
        QFETCH(int, timeout);
        QFETCH(int, atLeast);
        QFETCH(int, below);
        SilentServer silent; // accepts the connection and never answers
        const OpenAIClient client = timeout == 0 ? OpenAIClient(QStringLiteral("k"), silent.base())
                                                 : OpenAIClient(QStringLiteral("k"), silent.base(),
                                                                std::chrono::milliseconds(timeout));
        QElapsedTimer clock;
        clock.start();
        bool transport = false;
        try {
            awaitTask(client.fetchProjects());
        } catch (const OpenAIClient::TransportError&) {
            transport = true;
        }
        QVERIFY(transport);
        QVERIFY2(clock.elapsed() >= atLeast && clock.elapsed() < below,
                 qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(silent.connectionCount(), 1);
    }

    void hugeBodyIsCutOff() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("projects"),
                        {200, QByteArray(OpenAIClient::kMaxBodyBytes + 1024 * 1024, ' '), {}});
        QCOMPARE(OpenAIClient::kMaxBodyBytes, 16LL * 1024 * 1024);
        const OpenAIClient client(QStringLiteral("k"), server.base());
        bool transport = false;
        try {
            awaitTask(client.fetchProjects());
        } catch (const OpenAIClient::TransportError& error) {
            transport = error.message.contains(QStringLiteral("larger"));
        }
        QVERIFY(transport);
    }

    void headersArriveWithTheResponse() {
        FakeOpenAIServer server;
        server.setReply(
            QStringLiteral("projects"),
            {200, kProjects, {{"X-RateLimit-Reset-Requests", "1s"}, {"x-ratelimit-limit-tokens", "150000"}}});
        const OpenAIClient client(QStringLiteral("k"), server.base());
        const OpenAIClient::Response response = awaitTask(client.get(client.projectsURL()));
        QCOMPARE(response.status, 200);
        QCOMPARE(response.headers.number(QStringLiteral("x-ratelimit-limit-tokens")), OptionalDouble(150000));
        QCOMPARE(response.headers.resetDate(QStringLiteral("x-ratelimit-reset-requests"), Timestamp(10)),
                 std::optional<Timestamp>(Timestamp(11)));
    }

    void theKeyNeverLeavesTheOrigin() {
        FakeOpenAIServer elsewhere;
        elsewhere.setReply(QStringLiteral("projects"), {200, kProjects, {}});
        FakeOpenAIServer server; // another port: another origin
        const QByteArray target =
            elsewhere.base().toString().toLatin1() + QByteArrayLiteral("/v1/organization/projects");
        server.setReply(QStringLiteral("projects"), {302, QByteArray(), {{"Location", target}}});
        const OpenAIClient client(QStringLiteral("sk-admin-secret"), server.base());
        const std::optional<UsageProviderError> error = providerError(client.fetchProjects());
        QVERIFY(error);
        QCOMPARE(error->errorDescription(), QStringLiteral("OpenAI projects returned HTTP 302."));
        QCOMPARE(server.requests().size(), 1);
        QVERIFY(elsewhere.requests().isEmpty()); // neither the key nor the request went there
    }

    void aTricklingServerEndsAtTheDeadline() {
        RawHttpServer trickle(RawHttpServer::Behaviour::trickle, 40);
        // Bytes come every 40 ms, well within the idle time-out; the deadline ends it.
        const OpenAIClient client(QStringLiteral("k"), trickle.base(), std::chrono::milliseconds(400),
                                  std::chrono::milliseconds(900));
        QElapsedTimer clock;
        clock.start();
        QString message;
        try {
            awaitTask(client.fetchProjects());
        } catch (const OpenAIClient::TransportError& error) {
            message = error.message;
        }
        QCOMPARE(message, QStringLiteral("The request took longer than 0.9 s."));
        QVERIFY2(clock.elapsed() >= 850 && clock.elapsed() < 3000,
                 qPrintable(QString::number(clock.elapsed())));
        QVERIFY(trickle.bytesSent() > 5); // it really was alive all along
        QCOMPARE(OpenAIClient::kDeadline.count(), 60000);
    }

    void aConnectionDroppedMidBodyIsATransportFailure() {
        RawHttpServer dropping(RawHttpServer::Behaviour::dropMidBody);
        const OpenAIClient client(QStringLiteral("k"), dropping.base());
        bool transport = false;
        try {
            awaitTask(client.fetchProjects());
        } catch (const OpenAIClient::TransportError& error) {
            transport = error.code == QNetworkReply::RemoteHostClosedError;
        } catch (const OpenAIClient::DecodingError&) {
            QFAIL("a broken connection was judged as a body that can't be read");
        }
        QVERIFY(transport);
    }

    void queryValuesArriveAsTyped() {
        FakeOpenAIServer server;
        server.setReply(QStringLiteral("costs"),
                        {200, R"({"object":"page","data":[],"has_more":false})", {}});
        const OpenAIClient client(QStringLiteral("k"), server.base());
        const QString typed = QStringLiteral("a%20b+c&d=e#f é");
        awaitTask(client.fetchCosts(typed, DateInterval{Timestamp(0), Timestamp(86400)}));
        const QString query = server.requests().last().query;
        const qsizetype at = query.indexOf(QStringLiteral("project_ids"));
        QVERIFY(at >= 0);
        const QString raw = query.mid(query.indexOf(u'=', at) + 1);
        QCOMPARE(QUrl::fromPercentEncoding(raw.toLatin1()), typed);
    }

    void projectPathsKeepTheirSlashes() {
        const OpenAIClient client(QStringLiteral("k"));
        QCOMPARE(client.projectURL(QStringLiteral("team/proj 1")).path(QUrl::FullyEncoded),
                 QStringLiteral("/v1/organization/projects/team/proj%201"));
    }

    void theRealHost() {
        QCOMPARE(OpenAIClient::kAPIBase.toString(), QStringLiteral("https://api.openai.com"));
        const OpenAIClient client(QStringLiteral("k"));
        QCOMPARE(client.projectsURL().toString(),
                 QStringLiteral(
                     "https://api.openai.com/v1/organization/projects?limit=100&include_archived=false"));
        QCOMPARE(OpenAIClient::kTimeout.count(), 12000);
    }
};

QTEST_GUILESS_MAIN(TestOpenAIClient)
#include "tst_openaiclient.moc"
