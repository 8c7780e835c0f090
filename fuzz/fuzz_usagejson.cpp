// libFuzzer harness for the stored JSON blobs: whatever the bytes, decoding never
// crashes, and what decodes encodes again and reads back equal.
#include "model/UsageJson.h"

#include <cstdint>
#include <cstdlib>

namespace {
template <typename T>
void roundTrip(QByteArrayView bytes) {
    const JsonResult<T> decoded = UsageJson::decode<T>(bytes);
    if (!decoded) {
        return;
    }
    const JsonResult<QByteArray> encoded = UsageJson::encode(decoded.value());
    if (!encoded) {
        return; // a value that decodes need not encode (a number the writer refuses)
    }
    const JsonResult<T> again = UsageJson::decode<T>(encoded.value());
    if (!again || !(again.value() == decoded.value())) {
        std::abort();
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArrayView bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    roundTrip<UsageSnapshot>(bytes);
    roundTrip<QList<UsageSnapshot>>(bytes);
    roundTrip<ProviderConnectionMetadata>(bytes);
    roundTrip<QList<AgentBudget>>(bytes);
    return 0;
}
