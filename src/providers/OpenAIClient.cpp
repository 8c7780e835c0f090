#include "providers/OpenAIClient.h"

#include "model/SecretText.h"
#include "providers/UsageProviderError.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>
#include <QPointer>
#include <QTimer>
#include <QUrlQuery>

#include <QCoro/QCoroNetworkReply>

#include <cmath>
#include <memory>

const QUrl OpenAIClient::kAPIBase(QStringLiteral("https://api.openai.com"));

namespace {
QNetworkAccessManager& sharedManager() {
    // Requests run on the main thread; one manager serves them all, as one session
    // would. The application object owns it, so it never outlives the application.
    static QPointer<QNetworkAccessManager> manager;
    if (!manager) {
        manager = new QNetworkAccessManager(QCoreApplication::instance());
    }
    return *manager;
}

// Clients alive now, across every refresh and connection test.
int& liveClients() {
    static int count = 0;
    return count;
}

// A project id as a path segment: percent-encoded as a URL path allows.
QString pathSegment(const QString& id) {
    // The characters a URL path allows stay as they are, "/" among them.
    const QByteArray encoded = QUrl::toPercentEncoding(id, QByteArrayLiteral("!$&'()*+,;=:@/"));
    return encoded.isEmpty() ? id : QString::fromLatin1(encoded);
}

// A duration in seconds as a person reads it: "12", "0.25".
QString seconds(std::chrono::milliseconds duration) {
    return QString::number(static_cast<double>(duration.count()) / 1000.0, 'g', 6);
}

QString seconds(Timestamp moment) {
    return QString::number(static_cast<qint64>(std::trunc(moment.unixSeconds())));
}

// Arms a precise one-shot timer that aborts the reply and sets `fired`.
void abortOnTimeout(QTimer& timer, std::chrono::milliseconds interval, QNetworkReply* reply, bool& fired) {
    timer.setSingleShot(true);
    timer.setTimerType(Qt::PreciseTimer);
    timer.setInterval(interval);
    QObject::connect(&timer, &QTimer::timeout, reply, [reply, &fired] {
        fired = true;
        // Aborting finishes the reply and resumes the coroutine that owns the timer: do
        // it once the timer's signal is over.
        QTimer::singleShot(0, reply, [reply] { reply->abort(); });
    });
}

// A body taken as it arrives, a bounded buffer at a time, and counted: Qt's network
// thread would otherwise keep reading a fast server's endless body into memory before a
// count could stop it. Past the cap the reply is aborted and what came is dropped.
class CappedBody final {
public:
    CappedBody(QNetworkReply* reply, QTimer& idle)
        : m_reply(reply) {
        reply->setReadBufferSize(OpenAIClient::kReadBufferBytes);
        m_arrived = QObject::connect(reply, &QNetworkReply::readyRead, reply, [this, &idle] {
            idle.start();
            read();
        });
        m_progressed = QObject::connect(reply, &QNetworkReply::downloadProgress, reply,
                                        [&idle](qint64, qint64) { idle.start(); });
        // A body announced larger than the cap is refused before a byte of it is read.
        m_announced = QObject::connect(reply, &QNetworkReply::metaDataChanged, reply, [this] {
            const QVariant length =
                m_reply ? m_reply->header(QNetworkRequest::ContentLengthHeader) : QVariant();
            if (length.isValid() && length.toLongLong() > OpenAIClient::kMaxBodyBytes) {
                refuse();
            }
        });
    }
    CappedBody(const CappedBody&) = delete;
    CappedBody& operator=(const CappedBody&) = delete;
    ~CappedBody() { finish(); }

    // Takes what is left once the reply has finished, and stops listening.
    void finish() {
        if (m_reply) {
            read();
            // Only our own connections: the reply's others drive the transfer itself.
            QObject::disconnect(m_arrived);
            QObject::disconnect(m_progressed);
            QObject::disconnect(m_announced);
            m_reply = nullptr;
        }
    }
    bool tooLarge() const noexcept { return m_tooLarge; }
    QByteArray take() { return std::exchange(m_body, {}); }

private:
    void read() {
        if (m_tooLarge || !m_reply) {
            return;
        }
        const qint64 available = m_reply->bytesAvailable();
        if (m_body.size() + available > OpenAIClient::kMaxBodyBytes) {
            refuse();
            return;
        }
        if (m_body.capacity() < OpenAIClient::kMaxBodyBytes) {
            // Address space only: pages count once written, and the body never moves.
            m_body.reserve(OpenAIClient::kMaxBodyBytes);
        }
        const qsizetype start = m_body.size();
        m_body.resize(start + available);
        const qint64 got = m_reply->read(m_body.data() + start, available);
        m_body.truncate(start + std::max<qint64>(got, 0));
    }
    void refuse() {
        if (m_tooLarge) {
            return;
        }
        m_tooLarge = true;
        m_body = QByteArray();
        m_reply->abort();
    }

    QNetworkReply* m_reply;
    QMetaObject::Connection m_arrived;
    QMetaObject::Connection m_progressed;
    QMetaObject::Connection m_announced;
    QByteArray m_body;
    bool m_tooLarge = false;
};

template <typename T>
T decoded(JsonResult<T>&& result) {
    if (!result) {
        throw OpenAIClient::DecodingError{result.error()};
    }
    return std::move(result).value();
}
} // namespace

OpenAIClient::OpenAIClient(const OpenAIClient& other)
    : m_apiKey(other.m_apiKey)
    , m_authorization(other.m_authorization)
    , m_base(other.m_base)
    , m_timeout(other.m_timeout)
    , m_deadline(other.m_deadline)
    , m_cancellation(other.m_cancellation) {
    ++liveClients();
    SecretText::holdFreedMemoryWipe();
}

OpenAIClient::OpenAIClient(QString apiKey, QUrl base, std::chrono::milliseconds timeout,
                           std::chrono::milliseconds deadline)
    : m_apiKey(std::move(apiKey))
    , m_base(std::move(base))
    , m_timeout(timeout)
    , m_deadline(deadline)
    , m_cancellation(std::make_shared<RequestCancellation>()) {
    ++liveClients();
    SecretText::holdFreedMemoryWipe();
    QByteArray key = m_apiKey.toUtf8();
    m_authorization = QByteArrayLiteral("Bearer ") + key;
    SecretText::wipe(key);
}

OpenAIClient::~OpenAIClient() {
    SecretText::wipe(m_apiKey);
    // Requests made with it may still hold the header until their replies go. The
    // connections the requests went over keep their last request in a buffer: they go
    // too (the next refresh opens its own), freed while freed memory is still wiped.
    SecretText::wipeWhenLast(std::exchange(m_authorization, {}));
    // Only once no client is left: clearing the cache would cut a running request's
    // connection.
    if (--liveClients() == 0) {
        sharedManager().clearConnectionCache();
    }
    SecretText::releaseFreedMemoryWipe();
}

void OpenAIClient::cancel() {
    m_cancellation->cancel();
}

void OpenAIClient::addQueryItem(QUrlQuery& query, const QString& key, const QString& value) {
    // QUrlQuery takes "%41" in a value as already encoded and a server reads "+" as a
    // blank: both are encoded themselves, so the value arrives exactly as typed.
    QString literal = value;
    literal.replace(u'%', QStringLiteral("%25"));
    literal.replace(u'+', QStringLiteral("%2B"));
    query.addQueryItem(key, literal);
}

QNetworkRequest OpenAIClient::request(const QUrl& url) const {
    QNetworkRequest request(url);
    request.setRawHeader(QByteArrayLiteral("Authorization"), m_authorization);
    request.setRawHeader(QByteArrayLiteral("Accept"), QByteArrayLiteral("application/json"));
    // The key goes to OpenAI's origin and nowhere else: a redirect to another host, port
    // or scheme is not followed, and its status comes back as the response.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::SameOriginRedirectPolicy);
    return request;
}

QCoro::Task<OpenAIClient::Response> OpenAIClient::get(QUrl url) const {
    const std::shared_ptr<RequestCancellation> cancellation = m_cancellation;
    if (cancellation->isCancelled()) {
        throw TransportError{QNetworkReply::OperationCanceledError,
                             QStringLiteral("The request was cancelled.")};
    }
    // Deleted later, never inside its own signals, which resume this coroutine.
    const auto deleteLater = [](QNetworkReply* finished) { finished->deleteLater(); };
    std::unique_ptr<QNetworkReply, decltype(deleteLater)> reply(sharedManager().get(request(url)),
                                                                deleteLater);
    QNetworkReply* pending = reply.get();
    QObject::connect(cancellation.get(), &RequestCancellation::cancelled, pending, &QNetworkReply::abort);
    // The time-out counts from the last sign of life, on a precise timer: Qt's own
    // transfer time-out runs on a coarse one that may fire up to 5 % early. However lively
    // the server, a request also ends at its deadline: a trickle of bytes would otherwise
    // keep the account in flight for ever.
    bool timedOut = false;
    bool pastDeadline = false;
    QTimer idle;
    QTimer deadline;
    abortOnTimeout(idle, m_timeout, pending, timedOut);
    abortOnTimeout(deadline, m_deadline, pending, pastDeadline);
    CappedBody body(pending, idle);
    idle.start();
    deadline.start();
    co_await reply.get();
    idle.stop();
    deadline.stop();
    body.finish();
    if (pastDeadline) {
        throw TransportError{QNetworkReply::TimeoutError,
                             QStringLiteral("The request took longer than %1 s.").arg(seconds(m_deadline))};
    }
    if (timedOut) {
        throw TransportError{QNetworkReply::TimeoutError,
                             QStringLiteral("The request timed out after %1 s.").arg(seconds(m_timeout))};
    }
    if (body.tooLarge()) {
        throw TransportError{
            QNetworkReply::UnknownContentError,
            QStringLiteral("The response was larger than %1 MiB.").arg(kMaxBodyBytes / (1024 * 1024))};
    }
    co_return responseOf(*reply, body.take());
}

OpenAIClient::Response OpenAIClient::responseOf(QNetworkReply& reply, QByteArray body) {
    const QVariant status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute);
    // Network and proxy errors are transport failures also after a status arrived: a
    // connection that drops in the middle of a body leaves no response to judge.
    // A redirect that was not followed is a response of its own, judged by its status.
    const QNetworkReply::NetworkError error = reply.error();
    const bool transportFailure = error != QNetworkReply::NoError &&
                                  (!status.isValid() || (error < QNetworkReply::ContentAccessDenied &&
                                                         error != QNetworkReply::InsecureRedirectError));
    if (transportFailure) {
        throw TransportError{reply.error(), reply.errorString()};
    }
    if (!status.isValid()) {
        throw UsageProviderError::malformedResponse(); // not an HTTP response
    }
    // Qt does not always report a connection that closed mid-body: fewer bytes than the
    // server announced are a broken transfer, not a body to judge. (A compressed body is
    // announced at its compressed size, so only a plain one is measured.)
    const QVariant announced = reply.header(QNetworkRequest::ContentLengthHeader);
    if (announced.isValid() && reply.rawHeader(QByteArrayLiteral("Content-Encoding")).isEmpty() &&
        body.size() < announced.toLongLong()) {
        throw TransportError{QNetworkReply::RemoteHostClosedError,
                             QStringLiteral("The connection closed before the whole response arrived.")};
    }
    return Response{status.toInt(), std::move(body), HeaderValues(reply.rawHeaderPairs())};
}

void OpenAIClient::judge(const Response& response, const QString& otherStatusText) {
    if (const auto error = UsageProviderError::fromHTTPStatus(response.status)) {
        throw *error;
    }
    if (response.status >= 200 && response.status <= 299) {
        return;
    }
    throw UsageProviderError::server(otherStatusText);
}

QString OpenAIClient::serviceText(const QString& service, int status) {
    return QStringLiteral("%1 returned HTTP %2.").arg(service).arg(status);
}

QUrl OpenAIClient::endpoint(const QString& path) const {
    QUrl url = m_base;
    url.setPath(m_base.path() + path, QUrl::StrictMode);
    return url;
}

QUrl OpenAIClient::projectsURL() const {
    QUrl url = endpoint(QStringLiteral("/v1/organization/projects"));
    url.setQuery(QStringLiteral("limit=100&include_archived=false"));
    return url;
}

QUrl OpenAIClient::projectURL(const QString& projectID) const {
    return endpoint(QStringLiteral("/v1/organization/projects/") + pathSegment(projectID));
}

QUrl OpenAIClient::projectRateLimitsURL(const QString& projectID) const {
    QUrl url = endpoint(QStringLiteral("/v1/organization/projects/") + pathSegment(projectID) +
                        QStringLiteral("/rate_limits"));
    url.setQuery(QStringLiteral("limit=100"));
    return url;
}

QUrl OpenAIClient::costsURL(DateInterval range, const QString& projectFilter) const {
    QUrl url = endpoint(QStringLiteral("/v1/organization/costs"));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("start_time"), seconds(range.start));
    query.addQueryItem(QStringLiteral("end_time"), seconds(range.end));
    query.addQueryItem(QStringLiteral("bucket_width"), QStringLiteral("1d"));
    query.addQueryItem(QStringLiteral("limit"), QStringLiteral("31"));
    const QString project = projectFilter.trimmed();
    if (!project.isEmpty()) {
        addQueryItem(query, QStringLiteral("project_ids[]"), project);
    }
    url.setQuery(query);
    return url;
}

QCoro::Task<QList<OpenAIRecords::Project>> OpenAIClient::fetchProjects() const {
    const Response response = co_await get(projectsURL());
    judge(response, serviceText(QStringLiteral("OpenAI projects"), response.status));
    co_return decoded(OpenAIRecords::decodeProjects(response.body));
}

QCoro::Task<OpenAIRecords::Project> OpenAIClient::fetchProject(QString projectID) const {
    const Response response = co_await get(projectURL(projectID));
    judge(response, serviceText(QStringLiteral("OpenAI project"), response.status));
    co_return decoded(OpenAIRecords::decodeProject(response.body));
}

QCoro::Task<QList<OpenAIRecords::ProjectRateLimit>>
OpenAIClient::fetchProjectRateLimits(QString projectID) const {
    const Response response = co_await get(projectRateLimitsURL(projectID));
    judge(response, serviceText(QStringLiteral("OpenAI project rate limits"), response.status));
    co_return decoded(OpenAIRecords::decodeRateLimits(response.body));
}

QCoro::Task<OpenAIRecords::CostResponse> OpenAIClient::fetchCosts(QString projectFilter,
                                                                  DateInterval range) const {
    const Response response = co_await get(costsURL(range, projectFilter));
    judge(response, QStringLiteral("OpenAI returned HTTP %1 for costs.").arg(response.status));
    co_return decoded(OpenAIRecords::decodeCosts(response.body));
}
