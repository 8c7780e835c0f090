#include "model/JsonWriter.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <string_view>

void JsonWriter::separate() {
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (!m_hasMember.empty()) {
        if (m_hasMember.back()) {
            m_out.push_back(',');
        }
        m_hasMember.back() = true;
    }
}

void JsonWriter::beginObject() {
    separate();
    m_out.push_back('{');
    m_hasMember.push_back(false);
}

void JsonWriter::endObject() {
    m_out.push_back('}');
    m_hasMember.pop_back();
}

void JsonWriter::beginArray() {
    separate();
    m_out.push_back('[');
    m_hasMember.push_back(false);
}

void JsonWriter::endArray() {
    m_out.push_back(']');
    m_hasMember.pop_back();
}

void JsonWriter::key(std::string_view name) {
    separate();
    m_out.push_back('"');
    m_out.append(name);
    m_out.append("\":");
    m_afterKey = true;
}

void JsonWriter::value(QStringView text) {
    separate();
    appendEscaped(text);
}

void JsonWriter::value(double number) {
    separate();
    if (!std::isfinite(number)) {
        if (m_error.isEmpty()) {
            m_error = QStringLiteral("a number is not finite and has no JSON form");
        }
        m_out.push_back('0');
        return;
    }
    std::array<char, 32> buffer{};
    auto [end, ec] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    const std::string_view written(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
    if (written.find_first_of(".eE") == std::string_view::npos) {
        // Written as a plain integer. Readers take those as integers: keep the sign of
        // -0, and give values beyond 64-bit integers an exponent so that they stay floats.
        if (number == 0.0 && std::signbit(number)) {
            m_out.append("-0.0");
            return;
        }
        if (std::fabs(number) >= 9.2e18) {
            end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                std::chars_format::scientific)
                      .ptr;
        }
    }
    m_out.append(buffer.data(), static_cast<std::size_t>(end - buffer.data()));
}

void JsonWriter::value(bool flag) {
    separate();
    m_out.append(flag ? "true" : "false");
}

void JsonWriter::value(const QStringList& texts) {
    beginArray();
    for (const QString& text : texts) {
        value(text);
    }
    endArray();
}

void JsonWriter::null() {
    separate();
    m_out.append("null");
}

QByteArray JsonWriter::take() {
    QByteArray out(m_out.data(), static_cast<qsizetype>(m_out.size()));
    m_out.clear();
    m_hasMember.clear();
    m_afterKey = false;
    return out;
}

void JsonWriter::appendEscaped(QStringView text) {
    // Most texts are printable ASCII with nothing to escape: copy those straight across,
    // and fall back to the general path at the first character that is not.
    const std::size_t start = m_out.size();
    m_out.resize(start + static_cast<std::size_t>(text.size()) + 2);
    char* out = m_out.data() + start;
    *out++ = '"';
    for (const QChar c : text) {
        const char16_t unit = c.unicode();
        if (unit < 0x20 || unit >= 0x80 || unit == u'"' || unit == u'\\') {
            m_out.resize(start);
            appendEscapedUtf8(text.toUtf8());
            return;
        }
        *out++ = static_cast<char>(unit);
    }
    *out = '"';
}

void JsonWriter::appendEscapedUtf8(const QByteArray& utf8) {
    static constexpr char kHex[] = "0123456789abcdef";
    m_out.push_back('"');
    for (const char c : utf8) {
        const auto byte = static_cast<unsigned char>(c);
        switch (c) {
        case '"':
            m_out.append("\\\"");
            break;
        case '\\':
            m_out.append("\\\\");
            break;
        case '\n':
            m_out.append("\\n");
            break;
        case '\r':
            m_out.append("\\r");
            break;
        case '\t':
            m_out.append("\\t");
            break;
        case '\b':
            m_out.append("\\b");
            break;
        case '\f':
            m_out.append("\\f");
            break;
        default:
            if (byte < 0x20) {
                m_out.append("\\u00");
                m_out.push_back(kHex[byte >> 4]);
                m_out.push_back(kHex[byte & 0x0f]);
            } else {
                m_out.push_back(c);
            }
        }
    }
    m_out.push_back('"');
}
