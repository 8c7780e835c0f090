#include "model/UsageJson.h"

#include "model/JsonReader.h"
#include "model/JsonWriter.h"

#include <QScopeGuard>
#include <type_traits>

namespace {

template <typename T>
struct IsList : std::false_type {};
template <typename T>
struct IsList<QList<T>> : std::true_type {};

// ---- writing ----

void writeOptional(JsonWriter& out, std::string_view key, const std::optional<QString>& text) {
    if (text) {
        out.key(key);
        out.value(*text);
    }
}

void writeOptional(JsonWriter& out, std::string_view key, const std::optional<double>& number) {
    if (number) {
        out.key(key);
        out.value(*number);
    }
}

void writeOptional(JsonWriter& out, std::string_view key, const std::optional<Timestamp>& moment) {
    if (moment) {
        out.key(key);
        out.value(moment->secondsSinceReference());
    }
}

template <typename T>
void writeList(JsonWriter& out, const QList<T>& values);

void write(JsonWriter& out, const UsageWindow& w) {
    out.beginObject();
    out.key("id");
    out.value(w.id);
    out.key("title");
    out.value(w.title);
    out.key("unit");
    out.value(w.unit.rawValueView());
    out.key("horizon");
    out.value(w.horizon.rawValueView());
    writeOptional(out, "modelName", w.modelName);
    writeOptional(out, "agentLabel", w.agentLabel);
    writeOptional(out, "used", w.used);
    writeOptional(out, "limit", w.limit);
    writeOptional(out, "reportedRemaining", w.reportedRemaining);
    writeOptional(out, "resetAt", w.resetAt);
    writeOptional(out, "note", w.note);
    out.endObject();
}

void write(JsonWriter& out, const UsagePoint& p) {
    out.beginObject();
    out.key("date");
    out.value(p.date.secondsSinceReference());
    out.key("value");
    out.value(p.value);
    out.key("unit");
    out.value(p.unit.rawValueView());
    writeOptional(out, "modelName", p.modelName);
    writeOptional(out, "agentLabel", p.agentLabel);
    out.endObject();
}

void write(JsonWriter& out, const UsageModelSummary& s) {
    out.beginObject();
    out.key("modelName");
    out.value(s.modelName);
    out.key("windows");
    writeList(out, s.windows);
    out.endObject();
}

void write(JsonWriter& out, const AgentBudget& b) {
    out.beginObject();
    out.key("id");
    out.value(b.id);
    out.key("name");
    out.value(b.name);
    out.key("unit");
    out.value(b.unit.rawValueView());
    writeOptional(out, "shortUsed", b.shortUsed);
    writeOptional(out, "shortLimit", b.shortLimit);
    writeOptional(out, "weeklyUsed", b.weeklyUsed);
    writeOptional(out, "weeklyLimit", b.weeklyLimit);
    out.endObject();
}

void write(JsonWriter& out, const UsageSnapshot& s) {
    out.beginObject();
    out.key("source");
    out.value(s.source.rawValueView());
    out.key("capturedAt");
    out.value(s.capturedAt.secondsSinceReference());
    out.key("windows");
    writeList(out, s.windows);
    out.key("history");
    writeList(out, s.history);
    out.key("billingHistory");
    writeList(out, s.billingHistory);
    out.key("warnings");
    out.value(s.warnings);
    out.key("modelSummaries");
    writeList(out, s.modelSummaries);
    out.endObject();
}

void write(JsonWriter& out, const ProviderConnectionMetadata& m) {
    out.beginObject();
    writeOptional(out, "displayName", m.displayName);
    writeOptional(out, "identityDetail", m.identityDetail);
    writeOptional(out, "connectionIdentifier", m.connectionIdentifier);
    writeOptional(out, "modelScope", m.modelScope);
    out.key("windows");
    writeList(out, m.windows);
    out.key("sourceDescription");
    out.value(m.sourceDescription);
    out.key("notes");
    out.value(m.notes);
    out.key("capturedAt");
    out.value(m.capturedAt.secondsSinceReference());
    out.endObject();
}

template <typename T>
void writeList(JsonWriter& out, const QList<T>& values) {
    out.beginArray();
    for (const T& value : values) {
        write(out, value);
    }
    out.endArray();
}

// ---- reading ----

template <typename T>
QList<T> readList(simdjson::dom::element element, std::string_view context);

template <typename T>
QList<T> readListMember(const JsonReader& in, std::string_view key) {
    return readList<T>(in.requiredMember(key), key);
}

template <typename T>
QList<T> readListMemberOrEmpty(const JsonReader& in, std::string_view key) {
    if (const auto element = in.member(key)) {
        return readList<T>(*element, key);
    }
    return {};
}

UsageWindow readWindow(simdjson::dom::element element) {
    const JsonReader in(element, "UsageWindow");
    UsageWindow w{.id = in.requiredString("id"),
                  .title = in.requiredString("title"),
                  .unit = in.requiredEnum<UsageUnit>("unit")};
    // A stored horizon that is no known value is an error; only a missing one is inferred.
    const auto storedHorizon = in.optionalEnum<UsageHorizon>("horizon");
    w.horizon = storedHorizon ? *storedHorizon : UsageHorizon::infer(w.id, w.title);
    w.modelName = in.optionalString("modelName");
    w.agentLabel = in.optionalString("agentLabel");
    w.used = in.optionalNumber("used");
    w.limit = in.optionalNumber("limit");
    w.reportedRemaining = in.optionalNumber("reportedRemaining");
    w.resetAt = in.optionalTimestamp("resetAt");
    w.note = in.optionalString("note");
    return w;
}

UsagePoint readPoint(simdjson::dom::element element) {
    const JsonReader in(element, "UsagePoint");
    return UsagePoint{.date = in.requiredTimestamp("date"),
                      .value = in.requiredNumber("value"),
                      .unit = in.requiredEnum<UsageUnit>("unit"),
                      .modelName = in.optionalString("modelName"),
                      .agentLabel = in.optionalString("agentLabel")};
}

UsageModelSummary readSummary(simdjson::dom::element element) {
    const JsonReader in(element, "UsageModelSummary");
    return UsageModelSummary{.modelName = in.requiredString("modelName"),
                             .windows = readListMember<UsageWindow>(in, "windows")};
}

AgentBudget readBudget(simdjson::dom::element element) {
    const JsonReader in(element, "AgentBudget");
    return AgentBudget{.id = in.requiredString("id"),
                       .name = in.requiredString("name"),
                       .unit = in.requiredEnum<UsageUnit>("unit"),
                       .shortUsed = in.optionalNumber("shortUsed"),
                       .shortLimit = in.optionalNumber("shortLimit"),
                       .weeklyUsed = in.optionalNumber("weeklyUsed"),
                       .weeklyLimit = in.optionalNumber("weeklyLimit")};
}

UsageSnapshot readSnapshot(simdjson::dom::element element) {
    const JsonReader in(element, "UsageSnapshot");
    return UsageSnapshot{.source = in.requiredEnum<UsageSource>("source"),
                         .capturedAt = in.requiredTimestamp("capturedAt"),
                         .windows = readListMember<UsageWindow>(in, "windows"),
                         .history = readListMember<UsagePoint>(in, "history"),
                         .billingHistory = readListMemberOrEmpty<UsagePoint>(in, "billingHistory"),
                         .warnings = in.requiredStringList("warnings"),
                         .modelSummaries = readListMemberOrEmpty<UsageModelSummary>(in, "modelSummaries")};
}

ProviderConnectionMetadata readMetadata(simdjson::dom::element element) {
    const JsonReader in(element, "ProviderConnectionMetadata");
    return ProviderConnectionMetadata{.displayName = in.optionalString("displayName"),
                                      .identityDetail = in.optionalString("identityDetail"),
                                      .connectionIdentifier = in.optionalString("connectionIdentifier"),
                                      .modelScope = in.optionalString("modelScope"),
                                      .windows = readListMember<UsageWindow>(in, "windows"),
                                      .sourceDescription = in.requiredString("sourceDescription"),
                                      .notes = in.requiredStringList("notes"),
                                      .capturedAt = in.requiredTimestamp("capturedAt")};
}

template <typename T>
T read(simdjson::dom::element element) {
    if constexpr (std::is_same_v<T, UsageWindow>) {
        return readWindow(element);
    } else if constexpr (std::is_same_v<T, UsagePoint>) {
        return readPoint(element);
    } else if constexpr (std::is_same_v<T, UsageModelSummary>) {
        return readSummary(element);
    } else if constexpr (std::is_same_v<T, AgentBudget>) {
        return readBudget(element);
    } else if constexpr (std::is_same_v<T, UsageSnapshot>) {
        return readSnapshot(element);
    } else if constexpr (std::is_same_v<T, ProviderConnectionMetadata>) {
        return readMetadata(element);
    } else if constexpr (IsList<T>::value) {
        return readList<typename T::value_type>(element, "list");
    }
}

template <typename T>
QList<T> readList(simdjson::dom::element element, std::string_view context) {
    const simdjson::dom::array elements = JsonReader::array(element, context);
    QList<T> values;
    values.reserve(static_cast<qsizetype>(elements.size()));
    qsizetype index = 0;
    for (const simdjson::dom::element member : elements) {
        try {
            values.append(read<T>(member));
        } catch (JsonReader::Failure& failure) {
            failure.reason = QString::fromUtf8(context.data(), static_cast<qsizetype>(context.size())) +
                             u'[' + QString::number(index) + u"]: " + failure.reason;
            throw;
        }
        ++index;
    }
    return values;
}

// The elements of a JSON list as slices of its text. Only for text simdjson has already
// read as one valid array: the scan then needs to follow strings and nesting only.
QList<QByteArrayView> topLevelElements(QByteArrayView json) {
    QList<QByteArrayView> elements;
    int depth = 0;
    bool inString = false;
    bool escaped = false;
    qsizetype start = -1;
    const auto close = [&](qsizetype end) {
        QByteArrayView element = json.sliced(start, end - start).trimmed();
        if (!element.isEmpty()) {
            elements.append(element);
        }
    };
    for (qsizetype i = 0; i < json.size(); ++i) {
        const char c = json.at(i);
        if (inString) {
            if (escaped) {
                escaped = false;
            } else if (c == '\\') {
                escaped = true;
            } else if (c == '"') {
                inString = false;
            }
            continue;
        }
        if (c == '"') {
            inString = true;
        } else if (c == '[' || c == '{') {
            if (++depth == 1) {
                start = i + 1;
            }
        } else if (c == ']' || c == '}') {
            if (--depth == 0) {
                close(i);
                break;
            }
        } else if (c == ',' && depth == 1) {
            close(i);
            start = i + 1;
        }
    }
    return elements;
}

} // namespace

template <typename T>
std::optional<QList<UsageJson::Entry<T>>> UsageJson::decodeEntries(QByteArrayView json) {
    {
        const auto release = qScopeGuard([] { JsonReader::releaseLargeBuffers(); });
        try {
            if (!JsonReader::parse(json).is_array()) {
                return std::nullopt;
            }
        } catch (const JsonReader::Failure&) {
            return std::nullopt;
        }
    }
    QList<Entry<T>> entries;
    for (const QByteArrayView element : topLevelElements(json)) {
        entries.append(Entry<T>{.json = element.toByteArray(), .value = decode<T>(element).toOptional()});
    }
    return entries;
}

QByteArray UsageJson::joinEntries(const QList<QByteArray>& elements) {
    qsizetype size = 2;
    for (const QByteArray& element : elements) {
        size += element.size() + 1;
    }
    QByteArray json;
    json.reserve(size);
    json.append('[');
    for (qsizetype i = 0; i < elements.size(); ++i) {
        if (i > 0) {
            json.append(',');
        }
        json.append(elements.at(i));
    }
    json.append(']');
    return json;
}

template <typename T>
JsonResult<QByteArray> UsageJson::encode(const T& value) {
    JsonWriter out;
    if constexpr (IsList<T>::value) {
        writeList(out, value);
    } else {
        write(out, value);
    }
    if (out.failed()) {
        return JsonResult<QByteArray>::failure(out.error());
    }
    return JsonResult<QByteArray>::success(out.take());
}

template <typename T>
JsonResult<T> UsageJson::decode(QByteArrayView json) {
    const auto release = qScopeGuard([] { JsonReader::releaseLargeBuffers(); });
    try {
        return JsonResult<T>::success(read<T>(JsonReader::parse(json)));
    } catch (const JsonReader::Failure& failure) {
        return JsonResult<T>::failure(failure.reason);
    }
}

#define TALLYFEN_USAGE_JSON_INSTANTIATE(T)                                                                   \
    template JsonResult<QByteArray> UsageJson::encode<T>(const T&);                                          \
    template JsonResult<T> UsageJson::decode<T>(QByteArrayView);                                             \
    template JsonResult<QByteArray> UsageJson::encode<QList<T>>(const QList<T>&);                            \
    template JsonResult<QList<T>> UsageJson::decode<QList<T>>(QByteArrayView);
TALLYFEN_USAGE_JSON_INSTANTIATE(UsageWindow)
TALLYFEN_USAGE_JSON_INSTANTIATE(UsagePoint)
TALLYFEN_USAGE_JSON_INSTANTIATE(UsageModelSummary)
TALLYFEN_USAGE_JSON_INSTANTIATE(AgentBudget)
TALLYFEN_USAGE_JSON_INSTANTIATE(UsageSnapshot)
TALLYFEN_USAGE_JSON_INSTANTIATE(ProviderConnectionMetadata)
#undef TALLYFEN_USAGE_JSON_INSTANTIATE
template std::optional<QList<UsageJson::Entry<UsageSnapshot>>>
    UsageJson::decodeEntries<UsageSnapshot>(QByteArrayView);
