#pragma once

// Reading side of the stored JSON format, on top of simdjson's DOM. Only source files
// include this header, so that the rest of the program never sees simdjson.

#include "model/Timestamp.h"

#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <simdjson.h>

#include <optional>
#include <string_view>

// Reads the members of one JSON object. A key that is absent and a key whose value is
// null read alike. Every failure throws JsonReader::Failure, which the public decoders
// catch and turn into a JsonResult, so a bad element fails the whole document.
class JsonReader final {
public:
    struct Failure {
        QString reason;
    };

    JsonReader(simdjson::dom::element element, std::string_view record);

    // Parses a whole document with the main thread's one parser; the element lives until
    // the next parse, so callers read it to the end before anything else decodes.
    static simdjson::dom::element parse(QByteArrayView json);
    // The parser keeps its buffers for the next document of ordinary size; after a large
    // one it gives them back. Decoders call this when they are done with the element.
    static void releaseLargeBuffers();
    static constexpr std::size_t kKeptCapacity = 4U * 1024U * 1024U;

    std::optional<simdjson::dom::element> member(std::string_view key) const;
    simdjson::dom::element requiredMember(std::string_view key) const;

    QString requiredString(std::string_view key) const;
    std::optional<QString> optionalString(std::string_view key) const;
    double requiredNumber(std::string_view key) const;
    std::optional<double> optionalNumber(std::string_view key) const;
    // Stored dates read back to the very bit, however far out; the calendar clamps them
    // when it converts (Timestamp::clamped), so nothing stored is lost or misread.
    Timestamp requiredTimestamp(std::string_view key) const;
    std::optional<Timestamp> optionalTimestamp(std::string_view key) const;
    QStringList requiredStringList(std::string_view key) const;
    bool requiredBool(std::string_view key) const;
    // A JSON integer that fits 64 bits; a fraction or a string is a failure.
    qint64 requiredInteger(std::string_view key) const;

    template <typename E>
    E requiredEnum(std::string_view key) const {
        return toEnum<E>(key, utf8(requiredMember(key), key));
    }
    template <typename E>
    std::optional<E> optionalEnum(std::string_view key) const {
        if (const auto element = member(key)) {
            return toEnum<E>(key, utf8(*element, key));
        }
        return std::nullopt;
    }

    // Element readers for array members and for values outside an object.
    static QString string(simdjson::dom::element element, std::string_view context);
    static std::string_view utf8(simdjson::dom::element element, std::string_view context);
    static double number(simdjson::dom::element element, std::string_view context);
    static simdjson::dom::array array(simdjson::dom::element element, std::string_view context);

    [[noreturn]] static void fail(QString reason);

private:
    template <typename E>
    E toEnum(std::string_view key, std::string_view raw) const {
        if (const auto value = E::fromRawValueUtf8(raw)) {
            return *value;
        }
        failKey(key, u'"' + QString::fromUtf8(raw.data(), static_cast<qsizetype>(raw.size())) +
                         u"\" is not a known value");
    }
    [[noreturn]] void failKey(std::string_view key, const QString& reason) const;

    simdjson::dom::object m_object;
    std::string_view m_record;
};
