#pragma once

#include "model/SyncStatus.h"
#include "model/Timestamp.h"
#include "model/UsageHealth.h"
#include "model/UsageUnit.h"
#include "model/UsageWindow.h"
#include "views/Tone.h"

#include <QLocale>
#include <QString>
#include <QTimeZone>

#include <optional>

// The one way to write an amount, a remainder, a date or a countdown, and to colour a
// status or a health. Locale, time zone and the present moment are parameters (the
// user's and now by default) so that every text can be pinned in tests. Numbers and
// dates come from ICU, like the platform's own formatters.
class DisplayFormatters final {
public:
    DisplayFormatters() = delete;

    // "150,000 tokens", "42.5 requests", "84.30 USD"; "Not available" when absent.
    static QString metric(std::optional<double> value, UsageUnit unit, const QLocale& locale = QLocale());
    // "20 requests over", "0 requests remaining"; "Not available from provider" when absent.
    static QString remaining(const UsageWindow& window, const QLocale& locale = QLocale());
    // The ceiling line of a window with a limit: "of 60 requests".
    static QString ofLimit(const UsageWindow& window, const QLocale& locale = QLocale());
    // A number with the locale's digits and grouping and exactly `fractionDigits` decimals,
    // never in exponent form: "100,000", "0.25".
    static QString decimal(double value, int fractionDigits, const QLocale& locale = QLocale());
    // A day of the month and the month's short name in the locale's order: "Apr 9", "9 Apr".
    static QString monthDay(Timestamp date, const QTimeZone& timeZone = QTimeZone::systemTimeZone(),
                            const QLocale& locale = QLocale());
    // Medium date and short time: "Apr 2, 2026, 9:30 AM"; "Not available" when absent.
    static QString dateTime(std::optional<Timestamp> date,
                            const QTimeZone& timeZone = QTimeZone::systemTimeZone(),
                            const QLocale& locale = QLocale());
    // "2 hr. ago", "in 3 days"; "Never" when absent.
    static QString relative(std::optional<Timestamp> date, Timestamp now, const QLocale& locale = QLocale(),
                            const QTimeZone& timeZone = QTimeZone::systemTimeZone());
    static QString relative(std::optional<Timestamp> date);
    // "in 1d 1h", "in 59m", "Reset due"; "Reset not provided" when absent.
    static QString resetCountdown(std::optional<Timestamp> date, Timestamp now);
    static QString resetCountdown(std::optional<Timestamp> date);

    // The colour of a status and of a health, as a tone the palette maps.
    static Tone statusColor(SyncStatus status) { return Tones::forStatus(status); }
    static Tone healthColor(UsageHealth health) { return Tones::forHealth(health); }

private:
    // ICU's relative text, or the empty text when ICU fails.
    static QString relativeText(Timestamp date, Timestamp now, const QLocale& locale,
                                const QTimeZone& timeZone);
};
