// libFuzzer harness for OpenAI's response bodies: every decoder takes any bytes
// without crashing, and a decoded usage page always assembles into a snapshot that
// can be stored.
#include "model/UsageJson.h"
#include "providers/OpenAIRecords.h"
#include "providers/OpenAIUsageProvider.h"

#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArrayView body(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto usage = OpenAIRecords::decodeUsage(body);
    const auto costs = OpenAIRecords::decodeCosts(body);
    (void)OpenAIRecords::decodeProjects(body);
    (void)OpenAIRecords::decodeProject(body);
    (void)OpenAIRecords::decodeRateLimits(body);
    if (usage) {
        const OpenAIUsageProvider::CostOutcome outcome =
            costs ? OpenAIUsageProvider::CostOutcome(costs.value()) : std::nullopt;
        const UsageSnapshot snapshot =
            OpenAIUsageProvider::assemble(usage.value(), HeaderValues(), Timestamp(800'000'000), outcome);
        if (!UsageJson::encode(snapshot)) {
            std::abort(); // a number no snapshot can hold got through
        }
    }
    return 0;
}
