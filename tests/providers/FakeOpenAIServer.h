#pragma once

#include <QHash>
#include <QHttpServer>
#include <QList>
#include <QUrl>

// OpenAI's organization API as a local server: it answers each endpoint with what a
// test set, in OpenAI's documented wire format, and records every request it got.
class FakeOpenAIServer final {
public:
    struct Reply {
        int status = 200;
        QByteArray body;
        QList<QPair<QByteArray, QByteArray>> headers;
    };
    struct Request {
        QString path;  // as sent, percent-encoding kept
        QString query; // as sent
        QHash<QString, QByteArray> headers;
    };

    // Endpoints: "projects", "project", "rate_limits", "costs", "usage".
    FakeOpenAIServer();

    QUrl base() const;
    void setReply(const QString& endpoint, Reply reply) { m_replies.insert(endpoint, std::move(reply)); }
    const QList<Request>& requests() const noexcept { return m_requests; }

    static QByteArray errorBody(const char* message, const char* type, const char* code);
    // What OpenAI answers a key it does not know (with 401).
    static QByteArray invalidKeyBody();

    // A key the organization API accepts: an hour of usage with a request ceiling in its
    // headers, no costs and no projects.
    void acceptKey();
    // A key it refuses, at its first request.
    void refuseKey() { setReply(QStringLiteral("usage"), {401, invalidKeyBody(), {}}); }

private:
    QHttpServerResponse answer(const QString& endpoint, const QHttpServerRequest& request);

    QHttpServer m_server;
    quint16 m_port = 0;
    QHash<QString, Reply> m_replies;
    QList<Request> m_requests;
};
