#include "views/DisplayFormatters.h"

#include "model/Clock.h"

#include <unicode/ucal.h>
#include <unicode/udat.h>
#include <unicode/udatpg.h>
#include <unicode/unum.h>
#include <unicode/ureldatefmt.h>

#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace {
QByteArray icuLocale(const QLocale& locale) {
    return locale.name().toLatin1();
}

QString fromICU(const UChar* text, int32_t length) {
    return QString(reinterpret_cast<const QChar*>(text), length);
}

// Runs an ICU formatting call into a buffer, a larger one when the text needs it, and gives
// its text, or the empty text when ICU fails: every caller then has a plainer text of its own.
template <typename Format>
QString formatted(Format format) {
    std::vector<UChar> buffer(256);
    UErrorCode status = U_ZERO_ERROR;
    int32_t length = format(buffer.data(), static_cast<int32_t>(buffer.size()), &status);
    if (status == U_BUFFER_OVERFLOW_ERROR && length > 0) {
        buffer.resize(static_cast<std::size_t>(length) + 1);
        status = U_ZERO_ERROR;
        length = format(buffer.data(), static_cast<int32_t>(buffer.size()), &status);
    }
    if (U_FAILURE(status) || length > static_cast<int32_t>(buffer.size())) {
        return QString();
    }
    return fromICU(buffer.data(), length);
}

// The text of `formatter` through `format`, or `plainer()` when there is no formatter or
// ICU fails: every text has one.
template <typename Formatter, typename Format, typename Plainer>
QString formattedOr(Formatter* formatter, Format format, Plainer plainer) {
    const QString text = formatter ? formatted([&](UChar* buffer, int32_t capacity, UErrorCode* error) {
        return format(formatter, buffer, capacity, error);
    })
                                   : QString();
    return text.isEmpty() ? plainer() : text;
}

struct NumberFormatCloser {
    void operator()(UNumberFormat* format) const { unum_close(format); }
};
struct DateFormatCloser {
    void operator()(UDateFormat* format) const { udat_close(format); }
};
struct RelativeFormatCloser {
    void operator()(URelativeDateTimeFormatter* format) const { ureldatefmt_close(format); }
};
struct CalendarCloser {
    void operator()(UCalendar* calendar) const { ucal_close(calendar); }
};

// Opening an ICU formatter loads and parses locale data (milliseconds for a date
// format); each one is opened once per thread for the locale, zone and digits it serves.
// `open(status)` makes it; null when ICU refused.
template <typename Formatter, typename Closer, typename Open>
Formatter* cached(const std::string& key, Open open) {
    thread_local std::unordered_map<std::string, std::unique_ptr<Formatter, Closer>> formatters;
    auto found = formatters.find(key);
    if (found == formatters.end()) {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<Formatter, Closer> made(open(&status));
        if (U_FAILURE(status) || !made) {
            return nullptr;
        }
        found = formatters.emplace(key, std::move(made)).first;
    }
    return found->second.get();
}

UNumberFormat* numberFormat(int fractionDigits, const QLocale& locale) {
    const QByteArray name = icuLocale(locale);
    return cached<UNumberFormat, NumberFormatCloser>(
        name.toStdString() + '/' + std::to_string(fractionDigits), [&](UErrorCode* status) {
            UNumberFormat* format = unum_open(UNUM_DECIMAL, nullptr, 0, name.constData(), nullptr, status);
            if (U_SUCCESS(*status)) {
                unum_setAttribute(format, UNUM_MIN_FRACTION_DIGITS, fractionDigits);
                unum_setAttribute(format, UNUM_MAX_FRACTION_DIGITS, fractionDigits);
                unum_setAttribute(format, UNUM_ROUNDING_MODE, UNUM_ROUND_HALFEVEN);
                unum_setAttribute(format, UNUM_GROUPING_USED, 1);
            }
            return format;
        });
}

QString number(double value, int fractionDigits, const QLocale& locale) {
    return formattedOr(
        numberFormat(fractionDigits, locale),
        [&](UNumberFormat* format, UChar* buffer, int32_t capacity, UErrorCode* error) {
            return unum_formatDouble(format, value, buffer, capacity, nullptr, error);
        },
        [&] { return locale.toString(value, 'f', fractionDigits); });
}

// Milliseconds since the Unix epoch, as ICU counts time; clamped like every calendar date.
UDate icuDate(Timestamp moment) {
    return moment.clamped().unixSeconds() * 1000.0;
}
} // namespace

QString DisplayFormatters::metric(std::optional<double> value, UsageUnit unit, const QLocale& locale) {
    if (!value) {
        return QStringLiteral("Not available");
    }
    int fractionDigits = 0;
    if (unit == UsageUnit::dollars) {
        fractionDigits = 2;
    } else if (std::trunc(*value) != *value) {
        fractionDigits = 1;
    }
    return number(*value, fractionDigits, locale) + u' ' + unit.title();
}

QString DisplayFormatters::remaining(const UsageWindow& window, const QLocale& locale) {
    const std::optional<double> left = window.remaining();
    if (!left) {
        return QStringLiteral("Not available from provider");
    }
    const QString text = metric(std::fabs(*left), window.unit, locale);
    return text + (*left < 0 ? QStringLiteral(" over") : QStringLiteral(" remaining"));
}

QString DisplayFormatters::ofLimit(const UsageWindow& window, const QLocale& locale) {
    return QStringLiteral("of ") + metric(window.limit, window.unit, locale);
}

QString DisplayFormatters::dateTime(std::optional<Timestamp> date, const QTimeZone& timeZone,
                                    const QLocale& locale) {
    if (!date) {
        return QStringLiteral("Not available");
    }
    const QByteArray name = icuLocale(locale);
    UDateFormat* format = cached<UDateFormat, DateFormatCloser>(
        name.toStdString() + '/' + timeZone.id().toStdString(), [&](UErrorCode* status) {
            const QString zone = QString::fromLatin1(timeZone.id());
            return udat_open(UDAT_SHORT, UDAT_MEDIUM, name.constData(),
                             reinterpret_cast<const UChar*>(zone.utf16()), static_cast<int32_t>(zone.size()),
                             nullptr, 0, status);
        });
    return formattedOr(
        format,
        [&](UDateFormat* opened, UChar* buffer, int32_t capacity, UErrorCode* error) {
            return udat_format(opened, icuDate(*date), buffer, capacity, nullptr, error);
        },
        [&] { return date->toDateTime().toTimeZone(timeZone).toString(Qt::ISODate); });
}

QString DisplayFormatters::decimal(double value, int fractionDigits, const QLocale& locale) {
    return number(value, fractionDigits, locale);
}

QString DisplayFormatters::monthDay(Timestamp date, const QTimeZone& timeZone, const QLocale& locale) {
    const QByteArray name = icuLocale(locale);
    UDateFormat* format = cached<UDateFormat, DateFormatCloser>(
        "MMMd/" + name.toStdString() + '/' + timeZone.id().toStdString(),
        [&](UErrorCode* status) -> UDateFormat* {
            // The locale's own pattern for a month's short name and a day.
            UDateTimePatternGenerator* generator = udatpg_open(name.constData(), status);
            if (U_FAILURE(*status)) {
                return nullptr;
            }
            std::array<UChar, 64> pattern{};
            const std::u16string skeleton = u"MMMd";
            const int32_t length =
                udatpg_getBestPattern(generator, skeleton.data(), static_cast<int32_t>(skeleton.size()),
                                      pattern.data(), static_cast<int32_t>(pattern.size()), status);
            udatpg_close(generator);
            if (U_FAILURE(*status)) {
                return nullptr;
            }
            const QString zone = QString::fromLatin1(timeZone.id());
            return udat_open(UDAT_PATTERN, UDAT_PATTERN, name.constData(),
                             reinterpret_cast<const UChar*>(zone.utf16()), static_cast<int32_t>(zone.size()),
                             pattern.data(), length, status);
        });
    return formattedOr(
        format,
        [&](UDateFormat* opened, UChar* buffer, int32_t capacity, UErrorCode* error) {
            return udat_format(opened, icuDate(date), buffer, capacity, nullptr, error);
        },
        [&] {
            return locale.toString(date.clamped().toDateTime().toTimeZone(timeZone).date(),
                                   QLocale::ShortFormat);
        });
}

QString DisplayFormatters::relative(std::optional<Timestamp> date) {
    return relative(date, Clock::now());
}

QString DisplayFormatters::relative(std::optional<Timestamp> date, Timestamp now, const QLocale& locale,
                                    const QTimeZone& timeZone) {
    if (!date) {
        return QStringLiteral("Never");
    }
    // Where ICU can't say it relatively, the date itself is said: never nothing.
    const QString text = relativeText(*date, now, locale, timeZone);
    return text.isEmpty() ? dateTime(date, timeZone, locale) : text;
}

QString DisplayFormatters::relativeText(Timestamp date, Timestamp now, const QLocale& locale,
                                        const QTimeZone& timeZone) {
    // The largest calendar unit in which the two moments differ, counted in the user's
    // calendar and time zone, as the platform's relative formatter does.
    const QByteArray name = icuLocale(locale);
    UCalendar* calendar = cached<UCalendar, CalendarCloser>(
        name.toStdString() + '/' + timeZone.id().toStdString(), [&](UErrorCode* status) {
            const QString zone = QString::fromLatin1(timeZone.id());
            return ucal_open(reinterpret_cast<const UChar*>(zone.utf16()), static_cast<int32_t>(zone.size()),
                             name.constData(), UCAL_GREGORIAN, status);
        });
    URelativeDateTimeFormatter* format =
        cached<URelativeDateTimeFormatter, RelativeFormatCloser>(name.toStdString(), [&](UErrorCode* status) {
            return ureldatefmt_open(name.constData(), nullptr, UDAT_STYLE_SHORT, UDISPCTX_CAPITALIZATION_NONE,
                                    status);
        });
    if (!calendar || !format) {
        return QString();
    }
    UErrorCode status = U_ZERO_ERROR;
    // The cached calendar is set afresh for every call; the differences below move it.
    ucal_setMillis(calendar, icuDate(now), &status);
    const UDate target = icuDate(date);
    struct Step {
        UCalendarDateFields field;
        URelativeDateTimeUnit unit;
    };
    constexpr std::array<Step, 7> steps{{{UCAL_YEAR, UDAT_REL_UNIT_YEAR},
                                         {UCAL_MONTH, UDAT_REL_UNIT_MONTH},
                                         {UCAL_WEEK_OF_MONTH, UDAT_REL_UNIT_WEEK},
                                         {UCAL_DATE, UDAT_REL_UNIT_DAY},
                                         {UCAL_HOUR, UDAT_REL_UNIT_HOUR},
                                         {UCAL_MINUTE, UDAT_REL_UNIT_MINUTE},
                                         {UCAL_SECOND, UDAT_REL_UNIT_SECOND}}};
    int32_t amount = 0;
    URelativeDateTimeUnit unit = UDAT_REL_UNIT_SECOND;
    for (const Step& step : steps) {
        // Each difference moves the calendar on by what it counted, so the next field
        // counts only the rest.
        const int32_t difference = ucal_getFieldDifference(calendar, target, step.field, &status);
        if (U_FAILURE(status)) {
            return QString();
        }
        if (difference != 0) {
            amount = difference;
            unit = step.unit;
            break;
        }
    }
    return formatted([&](UChar* buffer, int32_t capacity, UErrorCode* error) {
        return ureldatefmt_formatNumeric(format, amount, unit, buffer, capacity, error);
    });
}

QString DisplayFormatters::resetCountdown(std::optional<Timestamp> date) {
    return resetCountdown(date, Clock::now());
}

QString DisplayFormatters::resetCountdown(std::optional<Timestamp> date, Timestamp now) {
    if (!date) {
        return QStringLiteral("Reset not provided");
    }
    const double interval = date->clamped().secondsSince(now);
    if (!(interval > 0)) {
        return QStringLiteral("Reset due");
    }
    // Whole hours and minutes, cut toward zero; a clamped date keeps every count well
    // inside an integer.
    const double wholeHours = std::trunc(interval / 3600.0);
    const auto minutes = static_cast<qint64>(std::trunc(std::fmod(interval, 3600.0) / 60.0));
    if (wholeHours > 24) {
        const double days = std::trunc(wholeHours / 24.0);
        return QStringLiteral("in %1d %2h")
            .arg(QString::number(days, 'f', 0))
            .arg(QString::number(wholeHours - days * 24.0, 'f', 0));
    }
    const auto hours = static_cast<qint64>(wholeHours);
    if (hours > 0) {
        return QStringLiteral("in %1h %2m").arg(hours).arg(minutes);
    }
    return QStringLiteral("in %1m").arg(std::max<qint64>(minutes, 1));
}
