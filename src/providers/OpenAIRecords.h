#pragma once

#include "model/JsonResult.h"

#include <QByteArrayView>
#include <QList>
#include <QString>

#include <optional>

// The parts of OpenAI's organization responses that the connector reads. Decoding is
// strict: a required field that is missing or null, or any field of the wrong JSON
// type, fails the whole response. Unknown keys, "object" fields and pagination keys
// are ignored: only the first page of a list is read.
class OpenAIRecords final {
public:
    OpenAIRecords() = delete;

    struct UsageResult {
        std::optional<double> inputTokens;
        std::optional<double> outputTokens;
        std::optional<double> modelRequests;
        std::optional<QString> model;
        std::optional<QString> apiKeyID;
        std::optional<QString> userID;
    };
    struct UsageBucket {
        qint64 startTime = 0; // seconds since the Unix epoch
        QList<UsageResult> results;
    };
    struct UsageResponse {
        QList<UsageBucket> data;
    };

    struct CostAmount {
        std::optional<double> value;
        std::optional<QString> currency; // as sent; compared in lower case
    };
    struct CostResult {
        std::optional<CostAmount> amount;
    };
    struct CostBucket {
        qint64 startTime = 0;
        QList<CostResult> results;
    };
    struct CostResponse {
        QList<CostBucket> data;
    };

    struct Project {
        QString id;
        QString name;
        QString status;
    };
    struct ProjectRateLimit {
        QString id;
        QString model;
        std::optional<double> maxRequestsPerMinute;
        std::optional<double> maxTokensPerMinute;
        std::optional<double> maxRequestsPerDay;
    };

    static JsonResult<UsageResponse> decodeUsage(QByteArrayView body);
    static JsonResult<CostResponse> decodeCosts(QByteArrayView body);
    // The "data" of a project list.
    static JsonResult<QList<Project>> decodeProjects(QByteArrayView body);
    // The whole body of the single-project endpoint.
    static JsonResult<Project> decodeProject(QByteArrayView body);
    // The "data" of a project's rate-limit list.
    static JsonResult<QList<ProjectRateLimit>> decodeRateLimits(QByteArrayView body);
};
