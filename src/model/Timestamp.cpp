#include "model/Timestamp.h"

#include <QTimeZone>

#include <cmath>

Timestamp Timestamp::fromDateTime(const QDateTime& dateTime) {
    return fromUnixSeconds(static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000.0);
}

QDateTime Timestamp::toDateTime() const {
    // Clamped first: a moment beyond the range would not fit the milliseconds' integer.
    const double milliseconds = std::round(clamped().unixSeconds() * 1000.0);
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(milliseconds), QTimeZone::systemTimeZone());
}

size_t qHash(Timestamp timestamp, size_t seed) noexcept {
    return qHash(timestamp.secondsSinceReference(), seed);
}
