#include "FakeOpenAIServer.h"

#include <QHostAddress>
#include <QHttpServerRequest>
#include <QHttpServerResponse>

FakeOpenAIServer::FakeOpenAIServer() {
    m_server.route(QStringLiteral("/v1/organization/projects"), [this](const QHttpServerRequest& request) {
        return answer(QStringLiteral("projects"), request);
    });
    m_server.route(QStringLiteral("/v1/organization/projects/<arg>"),
                   [this](const QString&, const QHttpServerRequest& request) {
                       return answer(QStringLiteral("project"), request);
                   });
    m_server.route(QStringLiteral("/v1/organization/projects/<arg>/rate_limits"),
                   [this](const QString&, const QHttpServerRequest& request) {
                       return answer(QStringLiteral("rate_limits"), request);
                   });
    m_server.route(QStringLiteral("/v1/organization/costs"), [this](const QHttpServerRequest& request) {
        return answer(QStringLiteral("costs"), request);
    });
    m_server.route(
        QStringLiteral("/v1/organization/usage/completions"),
        [this](const QHttpServerRequest& request) { return answer(QStringLiteral("usage"), request); });
    m_port = m_server.listen(QHostAddress::LocalHost);
}

QUrl FakeOpenAIServer::base() const {
    return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(m_port));
}

QHttpServerResponse FakeOpenAIServer::answer(const QString& endpoint, const QHttpServerRequest& request) {
    Request seen{request.url().path(QUrl::FullyEncoded), request.url().query(QUrl::FullyEncoded), {}};
    for (const auto& [name, value] : request.headers()) {
        seen.headers.insert(QString::fromLatin1(name).toLower(), value);
    }
    m_requests.append(seen);
    const Reply reply =
        m_replies.value(endpoint, Reply{404, errorBody("Not found", "invalid_request_error", nullptr), {}});
    QHttpServerResponse response(QByteArrayLiteral("application/json"), reply.body,
                                 static_cast<QHttpServerResponse::StatusCode>(reply.status));
    for (const auto& [name, value] : reply.headers) {
        response.addHeader(QByteArray(name), QByteArray(value));
    }
    return response;
}

QByteArray FakeOpenAIServer::errorBody(const char* message, const char* type, const char* code) {
    return QByteArrayLiteral(R"({"error":{"message":")") + message + QByteArrayLiteral(R"(","type":")") +
           type + QByteArrayLiteral(R"(","param":null,"code":)") +
           (code ? QByteArrayLiteral("\"") + code + QByteArrayLiteral("\"") : QByteArrayLiteral("null")) +
           QByteArrayLiteral("}}");
}

QByteArray FakeOpenAIServer::invalidKeyBody() {
    return errorBody("Incorrect API key provided", "invalid_request_error", "invalid_api_key");
}

void FakeOpenAIServer::acceptKey() {
    setReply(
        QStringLiteral("usage"),
        {200,
         R"({"object":"page","data":[{"object":"bucket","start_time":1763510400,"end_time":1763514000,)"
         R"("results":[{"object":"organization.usage.completions.result","input_tokens":5,"output_tokens":1,)"
         R"("num_model_requests":1,"model":"gpt-4o"}]}],"has_more":false})",
         {{"x-ratelimit-limit-requests", "60"}, {"x-ratelimit-remaining-requests", "59"}}});
    setReply(QStringLiteral("costs"), {200, R"({"object":"page","data":[]})", {}});
    setReply(QStringLiteral("projects"), {200, R"({"object":"list","data":[],"has_more":false})", {}});
}
