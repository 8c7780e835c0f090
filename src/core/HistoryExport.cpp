#include "core/HistoryExport.h"

#include "model/UsageJson.h"
#include "store/ProviderAccount.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <array>
#include <charconv>

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

QByteArray moment(std::optional<Timestamp> value) {
    if (!value) {
        return {};
    }
    return value->clamped().toDateTime().toUTC().toString(Qt::ISODateWithMs).toUtf8();
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
    QJsonArray list;
    for (const ProviderAccount* account : accounts) {
        QJsonArray snapshots;
        for (const UsageSnapshot& snapshot : account->snapshotHistory()) {
            if (const JsonResult<QByteArray> encoded = UsageJson::encode(snapshot)) {
                snapshots.append(QJsonDocument::fromJson(encoded.value()).object());
            }
        }
        list.append(QJsonObject{{QStringLiteral("id"), account->secretReference()},
                                {QStringLiteral("name"), account->displayName()},
                                {QStringLiteral("snapshots"), snapshots}});
    }
    return QJsonDocument(QJsonObject{{QStringLiteral("accounts"), list}}).toJson(QJsonDocument::Indented);
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
