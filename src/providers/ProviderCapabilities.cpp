#include "providers/ProviderCapabilities.h"

#include "model/JsonReader.h"
#include "model/JsonWriter.h"

#include <QHashFunctions>
#include <QScopeGuard>

#include <array>
#include <utility>

namespace {
using Field = bool ProviderCapabilities::*;
constexpr std::array<std::pair<std::string_view, Field>, 7> kFields{{
    {"historicalUsage", &ProviderCapabilities::historicalUsage},
    {"cost", &ProviderCapabilities::cost},
    {"shortWindow", &ProviderCapabilities::shortWindow},
    {"longWindow", &ProviderCapabilities::longWindow},
    {"remainingRequests", &ProviderCapabilities::remainingRequests},
    {"remainingTokens", &ProviderCapabilities::remainingTokens},
    {"resetTimestamps", &ProviderCapabilities::resetTimestamps},
}};
} // namespace

const ProviderCapabilities ProviderCapabilities::unsupported{false, false, false, false, false, false, false};

QByteArray ProviderCapabilities::toJson() const {
    JsonWriter out;
    out.beginObject();
    for (const auto& [key, field] : kFields) {
        out.key(key);
        out.value(this->*field);
    }
    out.endObject();
    return out.take();
}

JsonResult<ProviderCapabilities> ProviderCapabilities::fromJson(QByteArrayView json) {
    const auto release = qScopeGuard([] { JsonReader::releaseLargeBuffers(); });
    try {
        const JsonReader in(JsonReader::parse(json), "ProviderCapabilities");
        ProviderCapabilities capabilities = unsupported;
        for (const auto& [key, field] : kFields) {
            capabilities.*field = in.requiredBool(key);
        }
        return JsonResult<ProviderCapabilities>::success(capabilities);
    } catch (const JsonReader::Failure& failure) {
        return JsonResult<ProviderCapabilities>::failure(failure.reason);
    }
}

size_t qHash(const ProviderCapabilities& c, size_t seed) {
    return qHashMulti(seed, c.historicalUsage, c.cost, c.shortWindow, c.longWindow, c.remainingRequests,
                      c.remainingTokens, c.resetTimestamps);
}
