#include "providers/OpenAIRecords.h"

#include "model/JsonReader.h"

#include <QScopeGuard>

namespace {
template <typename T, typename Read>
QList<T> listOf(const JsonReader& in, std::string_view key, Read read) {
    QList<T> values;
    for (const simdjson::dom::element element : JsonReader::array(in.requiredMember(key), key)) {
        values.append(read(element));
    }
    return values;
}

OpenAIRecords::UsageResult usageResult(simdjson::dom::element element) {
    const JsonReader in(element, "usage result");
    return {.inputTokens = in.optionalNumber("input_tokens"),
            .outputTokens = in.optionalNumber("output_tokens"),
            .modelRequests = in.optionalNumber("num_model_requests"),
            .model = in.optionalString("model"),
            .apiKeyID = in.optionalString("api_key_id"),
            .userID = in.optionalString("user_id")};
}

// A bucket's start as whole Unix seconds, refused beyond the working range of dates.
qint64 startTime(const JsonReader& in) {
    const qint64 seconds = in.requiredInteger("start_time");
    if (!Timestamp::fromUnixSeconds(static_cast<double>(seconds)).isWithinRange()) {
        JsonReader::fail(QStringLiteral("bucket \"start_time\" is not a date within range"));
    }
    return seconds;
}

OpenAIRecords::UsageBucket usageBucket(simdjson::dom::element element) {
    const JsonReader in(element, "usage bucket");
    return {.startTime = startTime(in),
            .results = listOf<OpenAIRecords::UsageResult>(in, "results", usageResult)};
}

OpenAIRecords::CostResult costResult(simdjson::dom::element element) {
    const JsonReader in(element, "cost result");
    OpenAIRecords::CostResult result;
    if (const auto amount = in.member("amount")) {
        const JsonReader money(*amount, "cost amount");
        result.amount = OpenAIRecords::CostAmount{.value = money.optionalNumber("value"),
                                                  .currency = money.optionalString("currency")};
    }
    return result;
}

OpenAIRecords::CostBucket costBucket(simdjson::dom::element element) {
    const JsonReader in(element, "cost bucket");
    return {.startTime = startTime(in),
            .results = listOf<OpenAIRecords::CostResult>(in, "results", costResult)};
}

OpenAIRecords::Project project(simdjson::dom::element element) {
    const JsonReader in(element, "project");
    return {.id = in.requiredString("id"),
            .name = in.requiredString("name"),
            .status = in.requiredString("status")};
}

OpenAIRecords::ProjectRateLimit rateLimit(simdjson::dom::element element) {
    const JsonReader in(element, "project rate limit");
    return {.id = in.requiredString("id"),
            .model = in.requiredString("model"),
            .maxRequestsPerMinute = in.optionalNumber("max_requests_per_1_minute"),
            .maxTokensPerMinute = in.optionalNumber("max_tokens_per_1_minute"),
            .maxRequestsPerDay = in.optionalNumber("max_requests_per_1_day")};
}

template <typename T, typename Read>
JsonResult<T> decode(QByteArrayView body, Read read) {
    const auto release = qScopeGuard([] { JsonReader::releaseLargeBuffers(); });
    try {
        return JsonResult<T>::success(read(JsonReader::parse(body)));
    } catch (const JsonReader::Failure& failure) {
        return JsonResult<T>::failure(failure.reason);
    }
}
} // namespace

JsonResult<OpenAIRecords::UsageResponse> OpenAIRecords::decodeUsage(QByteArrayView body) {
    return decode<UsageResponse>(body, [](simdjson::dom::element root) {
        const JsonReader in(root, "usage response");
        return UsageResponse{.data = listOf<UsageBucket>(in, "data", usageBucket)};
    });
}

JsonResult<OpenAIRecords::CostResponse> OpenAIRecords::decodeCosts(QByteArrayView body) {
    return decode<CostResponse>(body, [](simdjson::dom::element root) {
        const JsonReader in(root, "costs response");
        return CostResponse{.data = listOf<CostBucket>(in, "data", costBucket)};
    });
}

JsonResult<QList<OpenAIRecords::Project>> OpenAIRecords::decodeProjects(QByteArrayView body) {
    return decode<QList<Project>>(body, [](simdjson::dom::element root) {
        return listOf<Project>(JsonReader(root, "projects response"), "data", project);
    });
}

JsonResult<OpenAIRecords::Project> OpenAIRecords::decodeProject(QByteArrayView body) {
    return decode<Project>(body, project);
}

JsonResult<QList<OpenAIRecords::ProjectRateLimit>> OpenAIRecords::decodeRateLimits(QByteArrayView body) {
    return decode<QList<ProjectRateLimit>>(body, [](simdjson::dom::element root) {
        return listOf<ProjectRateLimit>(JsonReader(root, "rate limits response"), "data", rateLimit);
    });
}
