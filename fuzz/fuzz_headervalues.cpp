// libFuzzer harness for rate-limit headers: lines "name: value" of any bytes become a
// response's headers; numbers, durations and resets never crash, and the rate windows
// made from them can always be stored.
#include "model/UsageJson.h"
#include "providers/HeaderValues.h"
#include "providers/OpenAIUsageProvider.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArray input(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QList<QPair<QByteArray, QByteArray>> raw;
    for (const QByteArray& line : input.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon > 0) {
            raw.append({line.left(colon), line.mid(colon + 1).trimmed()});
        }
    }
    const HeaderValues headers(raw);
    for (const QString& name : headers.values().keys()) {
        if (const auto number = headers.number(name); number && !std::isfinite(*number)) {
            std::abort();
        }
        if (const auto reset = headers.resetDate(name, Timestamp(800'000'000));
            reset && !reset->isWithinRange()) {
            std::abort();
        }
        (void)HeaderValues::duration(headers.values().value(name));
    }
    const UsageSnapshot snapshot = OpenAIUsageProvider::assemble(OpenAIRecords::UsageResponse{}, headers,
                                                                 Timestamp(800'000'000), std::nullopt);
    if (!UsageJson::encode(snapshot)) {
        std::abort();
    }
    return 0;
}
