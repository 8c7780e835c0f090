#include "model/JsonReader.h"

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {
QString fromView(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

QString describe(simdjson::error_code error) {
    return QString::fromUtf8(simdjson::error_message(error));
}
} // namespace

JsonReader::JsonReader(simdjson::dom::element element, std::string_view record)
    : m_record(record) {
    if (element.get_object().get(m_object) != simdjson::SUCCESS) {
        fail(fromView(record) + u" is not a JSON object");
    }
}

namespace {
// One parser keeps its buffers between documents, whatever record they hold.
simdjson::dom::parser& sharedParser() {
    static thread_local simdjson::dom::parser parser;
    return parser;
}
} // namespace

simdjson::dom::element JsonReader::parse(QByteArrayView json) {
    if (json.isEmpty()) {
        // An empty body (a 204, say) is no document; simdjson is never handed a null buffer.
        fail(QStringLiteral("not valid JSON: the document is empty"));
    }
    simdjson::dom::parser& parser = sharedParser();
    simdjson::dom::element root;
    const auto error =
        parser.parse(json.data(), static_cast<std::size_t>(json.size()), /*realloc_if_needed=*/true)
            .get(root);
    if (error != simdjson::SUCCESS) {
        fail(u"not valid JSON: " + describe(error));
    }
    return root;
}

std::optional<simdjson::dom::element> JsonReader::member(std::string_view key) const {
    simdjson::dom::element element;
    if (m_object.at_key(key).get(element) != simdjson::SUCCESS || element.is_null()) {
        return std::nullopt;
    }
    return element;
}

simdjson::dom::element JsonReader::requiredMember(std::string_view key) const {
    if (const auto element = member(key)) {
        return *element;
    }
    failKey(key, QStringLiteral("is missing"));
}

QString JsonReader::requiredString(std::string_view key) const {
    return string(requiredMember(key), key);
}

std::optional<QString> JsonReader::optionalString(std::string_view key) const {
    if (const auto element = member(key)) {
        return string(*element, key);
    }
    return std::nullopt;
}

double JsonReader::requiredNumber(std::string_view key) const {
    return number(requiredMember(key), key);
}

std::optional<double> JsonReader::optionalNumber(std::string_view key) const {
    if (const auto element = member(key)) {
        return number(*element, key);
    }
    return std::nullopt;
}

Timestamp JsonReader::requiredTimestamp(std::string_view key) const {
    return Timestamp(requiredNumber(key));
}

std::optional<Timestamp> JsonReader::optionalTimestamp(std::string_view key) const {
    if (const auto seconds = optionalNumber(key)) {
        return Timestamp(*seconds);
    }
    return std::nullopt;
}

void JsonReader::releaseLargeBuffers() {
    simdjson::dom::parser& parser = sharedParser();
    if (parser.capacity() > kKeptCapacity) {
        parser = simdjson::dom::parser(); // the old buffers go with the old parser
#ifdef __GLIBC__
        // glibc keeps freed blocks this large for reuse; hand them back to the system.
        malloc_trim(0);
#endif
    }
}

bool JsonReader::requiredBool(std::string_view key) const {
    bool value = false;
    if (requiredMember(key).get_bool().get(value) != simdjson::SUCCESS) {
        failKey(key, QStringLiteral("is not a boolean"));
    }
    return value;
}

qint64 JsonReader::requiredInteger(std::string_view key) const {
    int64_t value = 0;
    if (requiredMember(key).get_int64().get(value) != simdjson::SUCCESS) {
        failKey(key, QStringLiteral("is not a 64-bit integer"));
    }
    return static_cast<qint64>(value);
}

QStringList JsonReader::requiredStringList(std::string_view key) const {
    QStringList texts;
    const simdjson::dom::array elements = array(requiredMember(key), key);
    texts.reserve(static_cast<qsizetype>(elements.size()));
    for (const simdjson::dom::element element : elements) {
        texts.append(string(element, key));
    }
    return texts;
}

QString JsonReader::string(simdjson::dom::element element, std::string_view context) {
    return fromView(utf8(element, context));
}

std::string_view JsonReader::utf8(simdjson::dom::element element, std::string_view context) {
    std::string_view text;
    if (element.get_string().get(text) != simdjson::SUCCESS) {
        fail(u'"' + fromView(context) + u"\" is not a string");
    }
    return text;
}

double JsonReader::number(simdjson::dom::element element, std::string_view context) {
    double value = 0.0;
    if (element.get_double().get(value) != simdjson::SUCCESS) {
        fail(u'"' + fromView(context) + u"\" is not a number");
    }
    return value;
}

simdjson::dom::array JsonReader::array(simdjson::dom::element element, std::string_view context) {
    simdjson::dom::array elements;
    if (element.get_array().get(elements) != simdjson::SUCCESS) {
        fail(u'"' + fromView(context) + u"\" is not an array");
    }
    return elements;
}

void JsonReader::fail(QString reason) {
    throw Failure{std::move(reason)};
}

void JsonReader::failKey(std::string_view key, const QString& reason) const {
    fail(fromView(m_record) + u" \"" + fromView(key) + u"\" " + reason);
}
