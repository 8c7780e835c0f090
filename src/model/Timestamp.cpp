#include "model/Timestamp.h"

#include <QTimeZone>

#include <cmath>

Timestamp Timestamp::fromDateTime(const QDateTime& dateTime) {
    return fromUnixSeconds(static_cast<double>(dateTime.toMSecsSinceEpoch()) / 1000.0);
}

QDateTime Timestamp::toDateTime() const {
    const double milliseconds = std::round(unixSeconds() * 1000.0);
    return QDateTime::fromMSecsSinceEpoch(static_cast<qint64>(milliseconds), QTimeZone::systemTimeZone());
}

size_t qHash(Timestamp timestamp, size_t seed) noexcept {
    return qHash(timestamp.secondsSinceReference(), seed);
}
