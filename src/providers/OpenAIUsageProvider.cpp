#include "providers/OpenAIUsageProvider.h"

#include "model/SecretText.h"

#include "model/Clock.h"
#include "model/NaturalOrder.h"
#include "providers/UsageProviderError.h"
#include "store/ProviderAccount.h"

#include <QMap>
#include <QSet>

#include <algorithm>
#include <cmath>

namespace {
const QChar kGroupSeparator(0x001F);

QStringList trimmedPieces(const QString& text) {
    QStringList pieces;
    for (const QString& piece : text.split(u',', Qt::SkipEmptyParts)) {
        const QString trimmed = piece.trimmed();
        if (!trimmed.isEmpty()) {
            pieces.append(trimmed);
        }
    }
    return pieces;
}

// A sum or difference of server numbers, as long as it stayed a number: extreme values
// can overflow to infinity, which no snapshot can hold.
std::optional<double> finiteOrAbsent(double value) {
    return std::isfinite(value) ? std::optional<double>(value) : std::nullopt;
}

QString unixSeconds(Timestamp moment) {
    return QString::number(static_cast<qint64>(std::trunc(moment.unixSeconds())));
}

UsageWindow rateWindow(const HeaderValues& headers, Timestamp now, const QString& kind, UsageUnit unit,
                       const QString& title, const QString& note) {
    const std::optional<double> limit = headers.number(QStringLiteral("x-ratelimit-limit-") + kind);
    const std::optional<double> remaining = headers.number(QStringLiteral("x-ratelimit-remaining-") + kind);
    return UsageWindow{.id = kind + QStringLiteral("-rate-window"),
                       .title = title,
                       .unit = unit,
                       .horizon = UsageHorizon::shortTerm,
                       .used = limit && remaining ? finiteOrAbsent(*limit - *remaining) : std::nullopt,
                       .limit = limit,
                       .reportedRemaining = remaining,
                       .resetAt = headers.resetDate(QStringLiteral("x-ratelimit-reset-") + kind, now),
                       .note = note};
}

// The two rate windows of a usage response, from its headers.
QList<UsageWindow> rateWindows(const HeaderValues& headers, Timestamp now) {
    return {
        rateWindow(headers, now, QStringLiteral("requests"), UsageUnit::requests,
                   QStringLiteral("Requests / current rate window"),
                   QStringLiteral("From the official OpenAI usage response and rate-limit headers")),
        rateWindow(headers, now, QStringLiteral("tokens"), UsageUnit::tokens,
                   QStringLiteral("Tokens / current rate window"),
                   QStringLiteral("Input + output token rate limit; unavailable when headers are absent"))};
}

// Without duplicates, in plain order of Unicode scalar values, joined with ", ".
QString sortedJoined(QStringList texts) {
    texts.removeDuplicates();
    std::sort(texts.begin(), texts.end(),
              [](const QString& a, const QString& b) { return a.toUcs4() < b.toUcs4(); });
    return texts.join(QStringLiteral(", "));
}

UsageWindow historicalWindow(const QString& id, const QString& title, UsageUnit unit,
                             std::optional<QString> model, std::optional<QString> agent, double used,
                             const QString& note) {
    return UsageWindow{.id = id,
                       .title = title,
                       .unit = unit,
                       .horizon = UsageHorizon::historical,
                       .modelName = std::move(model),
                       .agentLabel = std::move(agent),
                       .used = finiteOrAbsent(used),
                       .note = note};
}

struct Totals {
    double requests = 0;
    double tokens = 0;
};

void add(Totals& totals, const OpenAIRecords::UsageResult& row) {
    totals.requests += row.modelRequests.value_or(0.0);
    totals.tokens += row.inputTokens.value_or(0.0) + row.outputTokens.value_or(0.0);
}

QList<UsageModelSummary> modelSummaries(const QList<OpenAIRecords::UsageResult>& rows) {
    QMap<QString, Totals> groups; // by group key
    QStringList order;
    for (const OpenAIRecords::UsageResult& row : rows) {
        if (!row.model || row.model->isEmpty()) {
            continue;
        }
        const QString agent = row.userID ? *row.userID : row.apiKeyID.value_or(QString());
        const QString key = *row.model + kGroupSeparator + agent;
        if (!groups.contains(key)) {
            order.append(key);
        }
        add(groups[key], row);
    }
    QList<UsageModelSummary> summaries;
    for (const QString& key : order) {
        const qsizetype split = key.indexOf(kGroupSeparator);
        const QString model = split > 0 ? key.left(split) : QStringLiteral("Unknown model");
        const QString agentText = split >= 0 ? key.mid(split + 1) : QString();
        const std::optional<QString> agent =
            agentText.isEmpty() ? std::nullopt : std::optional<QString>(agentText);
        const QString note = QStringLiteral("Historical model usage; not a rate-limit ceiling");
        const Totals& totals = groups[key];
        summaries.append(UsageModelSummary{
            .modelName = agent ? model + QStringLiteral(" · ") + *agent : model,
            .windows = {historicalWindow(QStringLiteral("model-") + key + QStringLiteral("-requests"),
                                         QStringLiteral("Requests / selected range"), UsageUnit::requests,
                                         model, agent, totals.requests, note),
                        historicalWindow(QStringLiteral("model-") + key + QStringLiteral("-tokens"),
                                         QStringLiteral("Tokens / selected range"), UsageUnit::tokens, model,
                                         agent, totals.tokens, note)}});
    }
    // As a person sorts names: digits inside them compare by value.
    std::stable_sort(summaries.begin(), summaries.end(), [](const auto& a, const auto& b) {
        return NaturalOrder::lessThan(a.modelName, b.modelName);
    });
    return summaries;
}
} // namespace

OpenAIUsageProvider::OpenAIUsageProvider(QString apiKey, QUrl base, std::chrono::milliseconds timeout)
    : m_client(apiKey, std::move(base), timeout)
    , m_apiKey(std::move(apiKey)) {}

OpenAIUsageProvider::~OpenAIUsageProvider() {
    SecretText::wipe(m_apiKey);
}

QStringList OpenAIUsageProvider::selectedModels(const ProviderAccount& account) {
    return trimmedPieces(account.modelScopeText());
}

void OpenAIUsageProvider::appendAgentFilters(const ProviderAccount& account, QUrlQuery& query) {
    for (const QString& piece : account.agentScopeText().split(u',')) {
        const QString entry = piece.trimmed();
        const QString lower = entry.toLower();
        if (lower.startsWith(u"key:")) {
            OpenAIClient::addQueryItem(query, QStringLiteral("api_key_ids[]"), entry.mid(4));
        } else if (lower.startsWith(u"user:")) {
            OpenAIClient::addQueryItem(query, QStringLiteral("user_ids[]"), entry.mid(5));
        }
    }
}

QUrl OpenAIUsageProvider::usageURL(const ProviderAccount& account, DateInterval range, bool probe) const {
    QUrl url = m_client.endpoint(QStringLiteral("/v1/organization/usage/completions"));
    QUrlQuery query;
    query.addQueryItem(QStringLiteral("start_time"), unixSeconds(range.start));
    query.addQueryItem(QStringLiteral("end_time"), unixSeconds(range.end));
    query.addQueryItem(QStringLiteral("bucket_width"), probe ? QStringLiteral("1h") : QStringLiteral("1d"));
    query.addQueryItem(QStringLiteral("limit"), probe ? QStringLiteral("1") : QStringLiteral("30"));
    if (!probe) {
        for (const char* group : {"model", "api_key_id", "user_id"}) {
            query.addQueryItem(QStringLiteral("group_by[]"), QString::fromLatin1(group));
        }
    }
    const QString project = account.identityText().trimmed();
    if (!project.isEmpty()) {
        OpenAIClient::addQueryItem(query, QStringLiteral("project_ids[]"), project);
    }
    for (const QString& model : selectedModels(account)) {
        OpenAIClient::addQueryItem(query, QStringLiteral("models[]"), model);
    }
    appendAgentFilters(account, query);
    url.setQuery(query);
    return url;
}

QCoro::Task<ProviderCapabilities> OpenAIUsageProvider::validate(const ProviderAccount& account) {
    const ProviderConnection connection = co_await connect(account);
    co_return connection.capabilities;
}

QCoro::Task<ProviderConnection> OpenAIUsageProvider::connect(const ProviderAccount& account) {
    if (m_apiKey.isEmpty()) {
        throw UsageProviderError::missingCredential();
    }
    // Everything read from the account is read before the first wait.
    const QString projectID = account.identityText().trimmed();
    const QStringList models = selectedModels(account);
    const QString projectFilter = account.identityText();
    const ConnectionProbe probe = co_await fetchConnectionProbe(account);

    bool cost = false;
    try {
        const Timestamp now = Clock::now();
        co_await m_client.fetchCosts(projectFilter, DateInterval{now.addingSeconds(-3600), now});
        cost = true;
    } catch (...) {
        // Only a test: a key that may not read costs still connects.
    }
    ProviderConnectionMetadata metadata = co_await detectedMetadata(projectID, models, probe);
    co_return ProviderConnection{.capabilities = ProviderCapabilities{.historicalUsage = true,
                                                                      .cost = cost,
                                                                      .shortWindow = true,
                                                                      .longWindow = false,
                                                                      .remainingRequests = true,
                                                                      .remainingTokens = true,
                                                                      .resetTimestamps = true},
                                 .metadata = std::move(metadata)};
}

QCoro::Task<OpenAIUsageProvider::ConnectionProbe>
OpenAIUsageProvider::fetchConnectionProbe(const ProviderAccount& account) const {
    const Timestamp now = Clock::now();
    const QUrl url = usageURL(account, DateInterval{now.addingSeconds(-3600), now}, true);
    const OpenAIClient::Response response = co_await m_client.get(url);
    OpenAIClient::judge(response, QStringLiteral("OpenAI returned HTTP %1.").arg(response.status));
    const auto decoded = OpenAIRecords::decodeUsage(response.body);
    if (!decoded) {
        throw OpenAIClient::DecodingError{decoded.error()};
    }
    const Timestamp capturedAt = Clock::now();
    QStringList models;
    for (const OpenAIRecords::UsageBucket& bucket : decoded->data) {
        for (const OpenAIRecords::UsageResult& row : bucket.results) {
            if (row.model) { // sortedJoined drops the duplicates
                models.append(*row.model);
            }
        }
    }
    QList<UsageWindow> limited;
    for (const UsageWindow& window : rateWindows(response.headers, capturedAt)) {
        if (window.limit) {
            limited.append(window);
        }
    }
    co_return ConnectionProbe{
        .modelScope = sortedJoined(models), .headerWindows = limited, .capturedAt = capturedAt};
}

QCoro::Task<ProviderConnectionMetadata> OpenAIUsageProvider::detectedMetadata(QString projectID,
                                                                              QStringList selectedModels,
                                                                              ConnectionProbe probe) const {
    QString displayName = QStringLiteral("OpenAI API organization");
    std::optional<QString> identityDetail;
    QString modelScope =
        probe.modelScope.isEmpty() ? selectedModels.join(QStringLiteral(", ")) : probe.modelScope;
    QList<UsageWindow> windows = probe.headerWindows;
    QStringList notes{QStringLiteral("Detected from official OpenAI organization usage data."),
                      QStringLiteral("OpenAI exposes project names and rate-limit ceilings, not a consumer "
                                     "subscription tier.")};

    if (projectID.isEmpty()) {
        try {
            const QList<OpenAIRecords::Project> projects = co_await m_client.fetchProjects();
            QList<OpenAIRecords::Project> active;
            for (const OpenAIRecords::Project& project : projects) {
                if (project.status == u"active") {
                    active.append(project);
                }
            }
            if (active.size() == 1) {
                projectID = active.first().id;
                notes.append(QStringLiteral(
                    "One active project was detected automatically and used to scope its limits."));
            } else if (active.size() > 1) {
                notes.append(QStringLiteral("Multiple active projects were found; response headers are shown "
                                            "until a project is selected in Edit Subscription."));
            }
        } catch (...) {
            notes.append(
                QStringLiteral("The project list was unavailable; response headers are used when present."));
        }
    }
    if (projectID.isEmpty()) {
        notes.append(QStringLiteral(
            "Add a project ID to detect its friendly name and per-model rate-limit ceilings."));
    } else {
        try {
            const OpenAIRecords::Project project = co_await m_client.fetchProject(projectID);
            displayName = QStringLiteral("OpenAI API · ") + project.name;
            identityDetail = project.name;
        } catch (...) {
            notes.append(QStringLiteral(
                "The project name could not be read; the project ID remains the connection identity."));
        }
        try {
            const QList<OpenAIRecords::ProjectRateLimit> records =
                co_await m_client.fetchProjectRateLimits(projectID);
            QList<UsageWindow> detected;
            QStringList limitedModels;
            for (const OpenAIRecords::ProjectRateLimit& record : records) {
                detected.append(rateLimitWindows(record));
                if (!record.model.isEmpty() && !limitedModels.contains(record.model)) {
                    limitedModels.append(record.model);
                }
            }
            if (!detected.isEmpty()) {
                windows = detected;
            }
            if (!limitedModels.isEmpty()) {
                modelScope = sortedJoined(limitedModels);
            }
        } catch (...) {
            notes.append(QStringLiteral(
                "Project rate-limit ceilings were unavailable; response headers are used when present."));
        }
    }
    if (windows.isEmpty()) {
        notes.append(QStringLiteral("No rate-limit ceiling was returned by the provider."));
    }
    co_return ProviderConnectionMetadata{
        .displayName = displayName,
        .identityDetail = identityDetail,
        .connectionIdentifier = projectID.isEmpty() ? std::nullopt : std::optional<QString>(projectID),
        .modelScope = modelScope.isEmpty() ? std::nullopt : std::optional<QString>(modelScope),
        .windows = windows,
        .sourceDescription = QStringLiteral("Official OpenAI organization usage and project rate-limit APIs"),
        .notes = notes,
        .capturedAt = probe.capturedAt};
}

QList<UsageWindow> OpenAIUsageProvider::rateLimitWindows(const OpenAIRecords::ProjectRateLimit& record) {
    const QString note = QStringLiteral("Detected from the official OpenAI project rate-limit endpoint");
    const auto window = [&record](const QString& suffix, const QString& title, UsageUnit unit,
                                  UsageHorizon horizon, double limit, const QString& text) {
        return UsageWindow{.id = QStringLiteral("detected-") + record.id + suffix,
                           .title = record.model + QStringLiteral(" · ") + title,
                           .unit = unit,
                           .horizon = horizon,
                           .modelName = record.model,
                           .limit = limit,
                           .note = text};
    };
    QList<UsageWindow> windows;
    if (record.maxRequestsPerMinute) {
        windows.append(window(QStringLiteral("-requests-minute"), QStringLiteral("Requests / minute"),
                              UsageUnit::requests, UsageHorizon::shortTerm, *record.maxRequestsPerMinute,
                              note));
    }
    if (record.maxTokensPerMinute) {
        windows.append(window(QStringLiteral("-tokens-minute"), QStringLiteral("Tokens / minute"),
                              UsageUnit::tokens, UsageHorizon::shortTerm, *record.maxTokensPerMinute, note));
    }
    if (record.maxRequestsPerDay) {
        // Filed under billing on purpose: a daily ceiling is not a short-term window.
        windows.append(window(
            QStringLiteral("-requests-day"), QStringLiteral("Requests / day"), UsageUnit::requests,
            UsageHorizon::billing, *record.maxRequestsPerDay,
            QStringLiteral("Detected daily project ceiling; OpenAI does not report a weekly cap here")));
    }
    return windows;
}

QCoro::Task<UsageSnapshot> OpenAIUsageProvider::fetchUsage(const ProviderAccount& account,
                                                           DateInterval range) {
    // Everything read from the account is read before the first wait.
    const QUrl usage = usageURL(account, range);
    const QString project = account.identityText();

    const OpenAIClient::Response response = co_await m_client.get(usage);
    OpenAIClient::judge(response, QStringLiteral("OpenAI returned HTTP %1.").arg(response.status));
    auto decoded = OpenAIRecords::decodeUsage(response.body);
    if (!decoded) {
        throw OpenAIClient::DecodingError{decoded.error()};
    }
    const Timestamp now = Clock::now();

    CostOutcome costs;
    try {
        costs = co_await m_client.fetchCosts(project, range);
    } catch (...) {
        // Costs only add to the snapshot: any failure becomes a warning.
    }
    co_return assemble(decoded.value(), response.headers, now, costs);
}

UsageSnapshot OpenAIUsageProvider::assemble(const OpenAIRecords::UsageResponse& usage,
                                            const HeaderValues& headers, Timestamp now,
                                            const CostOutcome& costs) {
    QList<OpenAIRecords::UsageResult> rows;
    for (const OpenAIRecords::UsageBucket& bucket : usage.data) {
        rows.append(bucket.results);
    }
    Totals totals;
    QStringList models;
    for (const OpenAIRecords::UsageResult& row : rows) {
        add(totals, row);
        if (row.model) { // sortedJoined drops the duplicates
            models.append(*row.model);
        }
    }
    // An empty list, also one of blank names only, names no model.
    const QString joinedModels = sortedJoined(models);
    const std::optional<QString> modelList =
        joinedModels.isEmpty() ? std::nullopt : std::optional<QString>(joinedModels);

    QList<UsageWindow> windows = rateWindows(headers, now);
    windows += QList<UsageWindow>{
        historicalWindow(
            QStringLiteral("requests-selected-range"), QStringLiteral("Requests / selected range"),
            UsageUnit::requests, modelList, std::nullopt, totals.requests,
            QStringLiteral("Historical usage from the official organization endpoint; not a rate-limit "
                           "ceiling")),
        historicalWindow(QStringLiteral("tokens-selected-range"), QStringLiteral("Tokens / selected range"),
                         UsageUnit::tokens, modelList, std::nullopt, totals.tokens,
                         QStringLiteral("Historical input + output tokens; not a rate-limit ceiling"))};

    QList<UsagePoint> history;
    for (const OpenAIRecords::UsageBucket& bucket : usage.data) {
        double requests = 0;
        for (const OpenAIRecords::UsageResult& row : bucket.results) {
            requests += row.modelRequests.value_or(0.0);
        }
        if (std::isfinite(requests)) { // a day whose sum overflowed has no point
            history.append(
                UsagePoint{.date = Timestamp::fromUnixSeconds(static_cast<double>(bucket.startTime)),
                           .value = requests,
                           .unit = UsageUnit::requests});
        }
    }

    QStringList warnings;
    if (!windows[0].limit || !windows[1].limit) {
        warnings.append(
            QStringLiteral("OpenAI did not include one or more rate-limit ceilings in this response."));
    }
    if (usage.data.isEmpty()) {
        warnings.append(QStringLiteral("The official endpoint returned no usage buckets for this range."));
    }

    QList<UsagePoint> billing;
    if (!costs) {
        warnings.append(QStringLiteral(
            "OpenAI cost data was not available for this range; usage limits remain current."));
    } else {
        QList<double> amounts;
        QSet<QString> currencies;
        for (const OpenAIRecords::CostBucket& bucket : costs->data) {
            for (const OpenAIRecords::CostResult& row : bucket.results) {
                if (row.amount && row.amount->value) {
                    amounts.append(*row.amount->value);
                }
                if (row.amount && row.amount->currency) {
                    currencies.insert(row.amount->currency->toLower());
                }
            }
        }
        if (amounts.isEmpty()) {
            warnings.append(
                QStringLiteral("OpenAI returned no cost amounts for this range; spend remains unavailable."));
        } else if (currencies.isEmpty() || currencies == QSet<QString>{QStringLiteral("usd")}) {
            double total = 0;
            for (const double amount : amounts) {
                total += amount;
            }
            for (const OpenAIRecords::CostBucket& bucket : costs->data) {
                double day = 0;
                for (const OpenAIRecords::CostResult& row : bucket.results) {
                    if (row.amount && row.amount->value) {
                        day += *row.amount->value;
                    }
                }
                if (std::isfinite(day)) {
                    billing.append(
                        UsagePoint{.date = Timestamp::fromUnixSeconds(static_cast<double>(bucket.startTime)),
                                   .value = day,
                                   .unit = UsageUnit::dollars});
                }
            }
            windows.append(UsageWindow{
                .id = QStringLiteral("spend-selected-range"),
                .title = QStringLiteral("API spend / selected range"),
                .unit = UsageUnit::dollars,
                .horizon = UsageHorizon::billing,
                .used = finiteOrAbsent(total),
                .note = QStringLiteral(
                    "Cost from the official organization costs endpoint; no budget ceiling reported")});
        } else {
            warnings.append(
                QStringLiteral("OpenAI returned a non-USD or mixed cost currency; spend was not combined."));
        }
    }

    return UsageSnapshot{.source = UsageSource::officialAPI,
                         .capturedAt = now,
                         .windows = windows,
                         .history = history,
                         .billingHistory = billing,
                         .warnings = warnings,
                         .modelSummaries = modelSummaries(rows)};
}
