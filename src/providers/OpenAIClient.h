#pragma once

#include "providers/RequestCancellation.h"

#include "providers/DateInterval.h"
#include "providers/HeaderValues.h"
#include "providers/OpenAIRecords.h"

#include <QByteArray>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QString>
#include <QUrl>
#include <QUrlQuery>

#include <QCoro/QCoroTask>

#include <chrono>
#include <memory>
#include <optional>

// The wire layer of the OpenAI connector: authorized GET requests against the
// organization endpoints, how their responses are judged, and their bodies decoded.
// It keeps no state between calls; requests of one operation run one after another.
class OpenAIClient final {
public:
    // Where OpenAI's API lives. Tests pass a local server to the constructor instead.
    static const QUrl kAPIBase;
    // How long a request may go without a byte arriving.
    static constexpr std::chrono::milliseconds kTimeout{12'000};
    // How long a request may take at all, however steadily bytes arrive.
    static constexpr std::chrono::milliseconds kDeadline{60'000};
    // A body larger than this is no real response (a month of usage grouped by model,
    // user and key is well under 2 MiB); it is cut off and fails like a broken connection.
    static constexpr qint64 kMaxBodyBytes = 16LL * 1024 * 1024;
    // How much of a body the network layer holds before it waits for us to take it.
    static constexpr qint64 kReadBufferBytes = 256LL * 1024;

    // What the network layer reports when a request gets no complete response.
    struct TransportError {
        QNetworkReply::NetworkError code;
        QString message;
    };
    // A 2xx body that is not the record the endpoint promises.
    struct DecodingError {
        QString reason;
    };

    struct Response {
        int status = 0;
        QByteArray body;
        HeaderValues headers;
    };

    explicit OpenAIClient(QString apiKey, QUrl base = kAPIBase, std::chrono::milliseconds timeout = kTimeout,
                          std::chrono::milliseconds deadline = kDeadline);
    OpenAIClient(const OpenAIClient& other);
    OpenAIClient& operator=(const OpenAIClient&) = delete;
    // The key and the header made from it are overwritten, not merely freed.
    ~OpenAIClient();

    // Adds a query item whose value reaches the server exactly as given.
    static void addQueryItem(QUrlQuery& query, const QString& key, const QString& value);

    QNetworkRequest request(const QUrl& url) const;
    // The response of a finished reply and its body; throws TransportError for a
    // transfer that did not complete.
    static Response responseOf(QNetworkReply& reply, QByteArray body);
    // Sends the GET and waits for the whole response. Throws TransportError.
    QCoro::Task<Response> get(QUrl url) const;
    // Aborts the request in flight, if any, and fails every later one at once: the
    // operation that made this client is no longer wanted.
    void cancel();

    // Throws the UsageProviderError a response stands for: the status's own error, or
    // `server` with `otherStatusText` for any other status outside 200 to 299.
    static void judge(const Response& response, const QString& otherStatusText);
    // The text of a service's call for an unexpected status: "{service} returned HTTP {status}."
    static QString serviceText(const QString& service, int status);

    // The base URL with this path.
    QUrl endpoint(const QString& path) const;
    QUrl projectsURL() const;
    QUrl projectURL(const QString& projectID) const;
    QUrl projectRateLimitsURL(const QString& projectID) const;
    // Costs by day for the range, filtered to one project when one is given.
    QUrl costsURL(DateInterval range, const QString& projectFilter) const;

    QCoro::Task<QList<OpenAIRecords::Project>> fetchProjects() const;
    QCoro::Task<OpenAIRecords::Project> fetchProject(QString projectID) const;
    QCoro::Task<QList<OpenAIRecords::ProjectRateLimit>> fetchProjectRateLimits(QString projectID) const;
    QCoro::Task<OpenAIRecords::CostResponse> fetchCosts(QString projectFilter, DateInterval range) const;

private:
    QString m_apiKey;
    // "Bearer " and the key, made once and shared by every request of this client.
    QByteArray m_authorization;
    QUrl m_base;
    std::chrono::milliseconds m_timeout;
    std::chrono::milliseconds m_deadline;
    std::shared_ptr<RequestCancellation> m_cancellation;
};
