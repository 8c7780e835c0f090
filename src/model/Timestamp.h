#pragma once

#include <QDateTime>
#include <QHashFunctions>

#include <compare>
#include <functional>

// A moment in time as 64-bit float seconds since 00:00:00 UTC on 1 January 2001,
// the one date form that stored data uses. Keeping the float itself, rather than a
// millisecond QDateTime, lets a stored blob read back to the very same bytes.
class Timestamp final {
public:
    // Seconds between the Unix epoch and the reference date.
    static constexpr double kUnixOffset = 978307200.0;

    constexpr Timestamp() noexcept = default;
    constexpr explicit Timestamp(double secondsSinceReference) noexcept
        : m_seconds(secondsSinceReference) {}

    static constexpr Timestamp fromUnixSeconds(double unixSeconds) noexcept {
        return Timestamp(unixSeconds - kUnixOffset);
    }
    static Timestamp fromDateTime(const QDateTime& dateTime);

    constexpr double secondsSinceReference() const noexcept { return m_seconds; }
    constexpr double unixSeconds() const noexcept { return m_seconds + kUnixOffset; }
    // Millisecond precision; what the calendar and the screens work with.
    QDateTime toDateTime() const;

    constexpr Timestamp addingSeconds(double seconds) const noexcept {
        return Timestamp(m_seconds + seconds);
    }
    constexpr double secondsSince(Timestamp earlier) const noexcept { return m_seconds - earlier.m_seconds; }

    friend constexpr bool operator==(Timestamp, Timestamp) noexcept = default;
    friend constexpr auto operator<=>(Timestamp a, Timestamp b) noexcept {
        return a.m_seconds <=> b.m_seconds;
    }

private:
    double m_seconds = 0.0;
};

size_t qHash(Timestamp timestamp, size_t seed = 0) noexcept;

template <>
struct std::hash<Timestamp> {
    std::size_t operator()(Timestamp t) const noexcept { return qHash(t); }
};
