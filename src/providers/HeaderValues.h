#pragma once

#include "model/Timestamp.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QPair>
#include <QString>

#include <optional>

// The headers of one HTTP response, looked up by name in any case, with readers for
// the numbers and durations that rate-limit headers carry.
class HeaderValues final {
public:
    HeaderValues() = default;
    // From the response's raw header pairs; names are kept in lower case.
    explicit HeaderValues(const QList<QPair<QByteArray, QByteArray>>& rawHeaders);

    const QHash<QString, QString>& values() const noexcept { return m_values; }

    std::optional<QString> string(const QString& name) const;
    // The whole value as a finite floating-point number; anything else is absent.
    std::optional<double> number(const QString& name) const;
    // `now` plus the header's duration; absent when the header is missing or holds none,
    // or when the moment falls outside the working range of dates.
    std::optional<Timestamp> resetDate(const QString& name, Timestamp now) const;

    // Seconds in a duration such as "1h2m3.5s", "6m0s" or "20ms"; text between the
    // parts is skipped, and text with no part at all, or parts that sum to infinity, is absent.
    static std::optional<double> duration(const QString& text);

private:
    QHash<QString, QString> m_values;
};
