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
    // The dates the program works with: about 3,000 years either side of the reference
    // date. Anything further, or not a number at all, is no date a provider or a person
    // means, and readers refuse it rather than let it reach the calendar.
    static constexpr double kLimitSeconds = 1e11;

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

    // True for a finite moment within the working range of dates.
    static constexpr bool isWithinRange(double secondsSinceReference) noexcept {
        // Written so that NaN fails too.
        return secondsSinceReference >= -kLimitSeconds && secondsSinceReference <= kLimitSeconds;
    }
    constexpr bool isWithinRange() const noexcept { return isWithinRange(m_seconds); }
    // The nearest moment within the working range (the reference date for NaN).
    constexpr Timestamp clamped() const noexcept {
        if (isWithinRange()) {
            return *this;
        }
        return Timestamp(m_seconds > 0 ? kLimitSeconds : m_seconds < 0 ? -kLimitSeconds : 0.0);
    }

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
