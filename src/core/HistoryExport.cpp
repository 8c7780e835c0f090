#include "core/HistoryExport.h"

#include "model/UsageJson.h"
#include "store/ProviderAccount.h"

#include <QDateTime>
#include <QFileInfo>
#include <QSaveFile>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>

namespace {
// A field as RFC 4180 wants it: quoted, with quotes doubled, when it holds a comma, a
// quote or a line break.
QByteArray field(const QString& text) {
    QByteArray bytes = text.toUtf8();
    if (bytes.contains(',') || bytes.contains('"') || bytes.contains('\n') || bytes.contains('\r')) {
        bytes.replace("\"", "\"\"");
        return '"' + bytes + '"';
    }
    return bytes;
}

QByteArray number(std::optional<double> value) {
    if (!value) {
        return {};
    }
    std::array<char, 32> buffer{};
    const std::to_chars_result result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), *value);
    return QByteArray(buffer.data(), result.ptr - buffer.data());
}

// A moment as ISO 8601 in UTC with milliseconds, "2026-05-09T06:13:20.000Z", written
// directly: going through QDateTime for every cell was most of an export's time.
QByteArray moment(std::optional<Timestamp> value) {
    if (!value) {
        return {};
    }
    using namespace std::chrono;
    const auto milliseconds_ = static_cast<long long>(std::llround(value->clamped().unixSeconds() * 1000.0));
    const sys_time<std::chrono::milliseconds> instant{std::chrono::milliseconds(milliseconds_)};
    const sys_days day = floor<days>(instant);
    const year_month_day date(day);
    const hh_mm_ss<std::chrono::milliseconds> time(instant - day);
    std::array<char, 40> buffer{};
    const int length = std::snprintf(
        buffer.data(), buffer.size(), "%04d-%02u-%02uT%02lld:%02lld:%02lld.%03lldZ",
        static_cast<int>(date.year()), static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<long long>(time.hours().count()), static_cast<long long>(time.minutes().count()),
        static_cast<long long>(time.seconds().count()), static_cast<long long>(time.subseconds().count()));
    return QByteArray(buffer.data(), length);
}

// A string as a JSON string literal.
QByteArray jsonString(const QString& text) {
    QByteArray out = "\"";
    for (const char c : text.toUtf8()) {
        switch (c) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        default:
            if (static_cast<unsigned char>(c) < 0x20) {
                std::array<char, 8> escaped{};
                std::snprintf(escaped.data(), escaped.size(), "\\u%04x", static_cast<unsigned char>(c));
                out += escaped.data();
            } else {
                out += c;
            }
        }
    }
    return out + '"';
}
} // namespace

QByteArray HistoryExport::csv(const QList<ProviderAccount*>& accounts) {
    QByteArray out =
        "account id,account name,captured at,window id,title,unit,used,limit,remaining,reset at\r\n";
    for (const ProviderAccount* account : accounts) {
        const QByteArray id = account->secretReference().toUtf8();
        const QByteArray name = field(account->displayName());
        for (const UsageSnapshot& snapshot : account->snapshotHistory()) {
            const QByteArray captured = moment(snapshot.capturedAt);
            for (const UsageWindow& window : snapshot.windows) {
                out += id + ',' + name + ',' + captured + ',' + field(window.id) + ',' + field(window.title) +
                       ',' + field(window.unit.rawValue()) + ',' + number(window.used) + ',' +
                       number(window.limit) + ',' + number(window.remaining()) + ',' +
                       moment(window.resetAt) + "\r\n";
            }
        }
    }
    return out;
}

QByteArray HistoryExport::json(const QList<ProviderAccount*>& accounts) {
    // The store keeps each account's history as a JSON array of snapshots: it goes out as
    // it is, once it is known to read back; an unreadable one goes out empty.
    QByteArray out = "{\"accounts\":[";
    bool firstAccount = true;
    for (const ProviderAccount* account : accounts) {
        const std::optional<QByteArray>& stored = account->snapshotHistoryData();
        const bool readable = stored && !account->snapshotHistory().isEmpty();
        if (!firstAccount) {
            out += ',';
        }
        firstAccount = false;
        out += "{\"id\":" + jsonString(account->secretReference()) +
               ",\"name\":" + jsonString(account->displayName()) +
               ",\"snapshots\":" + (readable ? *stored : QByteArray("[]")) + '}';
    }
    return out + "]}\n";
}

HistoryExport::Format HistoryExport::formatFor(const QString& fileName) {
    return QFileInfo(fileName).suffix().compare(QStringLiteral("json"), Qt::CaseInsensitive) == 0
               ? Format::json
               : Format::csv;
}

bool HistoryExport::write(const QString& path, const QByteArray& bytes, QString* error) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = file.errorString();
        return false;
    }
    if (file.write(bytes) != bytes.size()) {
        *error = file.errorString();
        file.cancelWriting();
        return false;
    }
    if (!file.commit()) {
        *error = file.errorString();
        return false;
    }
    return true;
}
