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
// A list read element by element: its elements, joined again, read back the same; every
// element that reads on its own is the element the whole list reads, where it does.
void entriesRoundTrip(QByteArrayView bytes) {
    const auto entries = UsageJson::decodeEntries<UsageSnapshot>(bytes);
    if (!entries) {
        return;
    }
    QList<QByteArray> texts;
    for (const auto& entry : *entries) {
        texts.append(entry.json);
    }
    const auto again = UsageJson::decodeEntries<UsageSnapshot>(UsageJson::joinEntries(texts));
    if (!again || again->size() != entries->size()) {
        std::abort();
    }
    for (qsizetype i = 0; i < entries->size(); ++i) {
        if (again->at(i).json != entries->at(i).json || again->at(i).value != entries->at(i).value) {
            std::abort();
        }
    }
    if (const auto whole = UsageJson::decode<QList<UsageSnapshot>>(bytes).toOptional()) {
        if (whole->size() != entries->size()) {
            std::abort();
        }
        for (qsizetype i = 0; i < whole->size(); ++i) {
            if (!entries->at(i).value || !(*entries->at(i).value == whole->at(i))) {
                std::abort();
            }
        }
    }
}
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QByteArrayView bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    roundTrip<UsageSnapshot>(bytes);
    roundTrip<QList<UsageSnapshot>>(bytes);
    entriesRoundTrip(bytes);
    roundTrip<ProviderConnectionMetadata>(bytes);
    roundTrip<QList<AgentBudget>>(bytes);
    return 0;
}
