// Resident memory around one very large response: before, at the peak of decoding a
// 30 MB usage body, and settled afterwards, when the parser has given its buffers back.
#include "ProcessMemory.h"
#include "providers/OpenAIRecords.h"

#include <QByteArray>
#include <QFile>

#include <cstdio>

namespace {

double residentMiB() {
    return statusMiB("VmRSS");
}

double peakMiB() {
    return statusMiB("VmHWM");
}

QByteArray usageBody(qsizetype targetBytes) {
    QByteArray body =
        R"({"object":"page","data":[{"object":"bucket","start_time":1763510400,"end_time":1763596800,"results":[)";
    const QByteArray row =
        R"({"object":"organization.usage.completions.result","input_tokens":1234,"output_tokens":567,)"
        R"("num_model_requests":8,"project_id":"proj_abc","user_id":"user-123","api_key_id":"key_456",)"
        R"("model":"gpt-4o-mini-2024-07-18","batch":false},)";
    body.reserve(targetBytes + row.size());
    while (body.size() < targetBytes) {
        body += row;
    }
    body.chop(1);
    body += R"(]}],"has_more":false,"next_page":null})";
    return body;
}
} // namespace

int main() {
    // An ordinary refresh first, so the baseline includes a warmed parser.
    const QByteArray small = usageBody(600 * 1024);
    (void)OpenAIRecords::decodeUsage(small);
    const double before = residentMiB();

    double withBody = 0;
    qsizetype rows = -1;
    {
        const QByteArray large = usageBody(30 * 1024 * 1024);
        withBody = residentMiB();
        const auto decoded = OpenAIRecords::decodeUsage(large);
        rows = decoded ? decoded.value().data.first().results.size() : -1;
    } // the body and the decoded records are gone; only the parser could still hold memory
    const double peak = peakMiB();
    const double settled = residentMiB();
    (void)OpenAIRecords::decodeUsage(small); // the next ordinary refresh
    const double afterNext = residentMiB();

    std::printf("30 MB usage body, %lld rows decoded\n", static_cast<long long>(rows));
    std::printf("resident before %.1f MiB, with the body %.1f MiB, peak %.1f MiB\n", before, withBody, peak);
    std::printf("settled after decoding %.1f MiB, after the next ordinary decode %.1f MiB\n", settled,
                afterNext);
    return rows > 0 ? 0 : 1;
}
