#include "views/DisplayFormatters.h"

#include "TestSupport.h"

#include <QTest>

#include <cmath>

namespace {
const QLocale kEnglish(QStringLiteral("en_US"));
const QTimeZone kUTC(QByteArrayLiteral("UTC"));
// 2 April 2026, 09:30 UTC.
const Timestamp kNow = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30), kUTC));

UsageWindow window(OptionalDouble used, OptionalDouble limit, OptionalDouble reported,
                   UsageUnit unit = UsageUnit::requests) {
    return UsageWindow{.id = QStringLiteral("w"),
                       .title = QStringLiteral("Window"),
                       .unit = unit,
                       .used = used,
                       .limit = limit,
                       .reportedRemaining = reported};
}
} // namespace

class TestDisplayFormatters final : public QObject {
    Q_OBJECT

private slots:
    void metric_data() {
        QTest::addColumn<OptionalDouble>("value");
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QString>("text");
        QTest::newRow("absent tokens") << OptionalDouble() << "tokens"
                                       << "Not available";
        QTest::newRow("absent dollars") << OptionalDouble() << "dollars"
                                        << "Not available";
        QTest::newRow("grouping") << OptionalDouble(150000) << "tokens"
                                  << "150,000 tokens";
        QTest::newRow("one fraction digit") << OptionalDouble(42.5) << "requests"
                                            << "42.5 requests";
        QTest::newRow("rounded to one digit") << OptionalDouble(42.54) << "requests"
                                              << "42.5 requests";
        QTest::newRow("dollars keep two digits") << OptionalDouble(84.3) << "dollars"
                                                 << "84.30 USD";
        QTest::newRow("zero dollars") << OptionalDouble(0) << "dollars"
                                      << "0.00 USD";
        QTest::newRow("zero tokens") << OptionalDouble(0) << "tokens"
                                     << "0 tokens";
        QTest::newRow("2.96 keeps its digit") << OptionalDouble(2.96) << "requests"
                                              << "3.0 requests";
        QTest::newRow("ties to even") << OptionalDouble(0.25) << "messages"
                                      << "0.2 messages";
        QTest::newRow("negative keeps its sign") << OptionalDouble(-5) << "credits"
                                                 << "-5 credits";
        QTest::newRow("large dollars") << OptionalDouble(1234567.891) << "dollars"
                                       << "1,234,567.89 USD";
        QTest::newRow("items") << OptionalDouble(3) << "items"
                               << "3 items";
    }
    void metric() {
        QFETCH(OptionalDouble, value);
        QFETCH(QString, unit);
        QFETCH(QString, text);
        QCOMPARE(DisplayFormatters::metric(value, *UsageUnit::fromRawValue(unit), kEnglish), text);
    }

    void metricFollowsTheLocale() {
        const QLocale german(QStringLiteral("de_DE"));
        QCOMPARE(DisplayFormatters::metric(150000.5, UsageUnit::tokens, german),
                 QStringLiteral("150.000,5 tokens"));
        QCOMPARE(DisplayFormatters::metric(84.3, UsageUnit::dollars, german), QStringLiteral("84,30 USD"));
    }

    void remaining_data() {
        QTest::addColumn<OptionalDouble>("used");
        QTest::addColumn<OptionalDouble>("limit");
        QTest::addColumn<OptionalDouble>("reported");
        QTest::addColumn<QString>("text");
        QTest::newRow("no data") << OptionalDouble() << OptionalDouble() << OptionalDouble()
                                 << "Not available from provider";
        QTest::newRow("only used") << OptionalDouble(5) << OptionalDouble() << OptionalDouble()
                                   << "Not available from provider";
        QTest::newRow("over the limit")
            << OptionalDouble(120) << OptionalDouble(100) << OptionalDouble() << "20 requests over";
        QTest::newRow("reported zero wins over used")
            << OptionalDouble(120) << OptionalDouble(100) << OptionalDouble(0) << "0 requests remaining";
        QTest::newRow("exactly at the limit")
            << OptionalDouble(100) << OptionalDouble(100) << OptionalDouble() << "0 requests remaining";
        QTest::newRow("left") << OptionalDouble(42) << OptionalDouble(60) << OptionalDouble()
                              << "18 requests remaining";
        QTest::newRow("fraction left")
            << OptionalDouble(42.1) << OptionalDouble(60) << OptionalDouble() << "17.9 requests remaining";
    }
    void remaining() {
        QFETCH(OptionalDouble, used);
        QFETCH(OptionalDouble, limit);
        QFETCH(OptionalDouble, reported);
        QFETCH(QString, text);
        QCOMPARE(DisplayFormatters::remaining(window(used, limit, reported), kEnglish), text);
    }

    void remainingInDollars() {
        QCOMPARE(DisplayFormatters::remaining(window(12.5, 10, std::nullopt, UsageUnit::dollars), kEnglish),
                 QStringLiteral("2.50 USD over"));
    }

    void ceilingLine() {
        QCOMPARE(DisplayFormatters::ofLimit(window(1, 150000, std::nullopt, UsageUnit::tokens), kEnglish),
                 QStringLiteral("of 150,000 tokens"));
        QCOMPARE(DisplayFormatters::ofLimit(window(1, 10, std::nullopt, UsageUnit::dollars), kEnglish),
                 QStringLiteral("of 10.00 USD"));
    }

    void dateTime() {
        QCOMPARE(DisplayFormatters::dateTime(std::nullopt, kUTC, kEnglish), QStringLiteral("Not available"));
        const QString text = DisplayFormatters::dateTime(kNow, kUTC, kEnglish);
        // Medium date and short time; ICU's English uses a narrow no-break space before AM/PM.
        QString plain = text;
        plain.replace(QChar(0x202F), u' ');
        QCOMPARE(plain, QStringLiteral("Apr 2, 2026, 9:30 AM"));
        const QString berlin = DisplayFormatters::dateTime(
            kNow, QTimeZone(QByteArrayLiteral("Europe/Berlin")), QLocale(QStringLiteral("de_DE")));
        QCOMPARE(berlin, QStringLiteral("02.04.2026, 11:30"));
    }

    void relative_data() {
        QTest::addColumn<OptionalDouble>("offset"); // seconds from now; absent: no date
        QTest::addColumn<QString>("text");
        QTest::newRow("never") << OptionalDouble() << "Never";
        QTest::newRow("now") << OptionalDouble(0) << "in 0 sec.";
        QTest::newRow("seconds ago") << OptionalDouble(-20) << "20 sec. ago";
        QTest::newRow("minutes ago") << OptionalDouble(-5 * 60) << "5 min. ago";
        QTest::newRow("hours ago") << OptionalDouble(-2 * 3600 - 300) << "2 hr. ago";
        QTest::newRow("in hours") << OptionalDouble(3 * 3600) << "in 3 hr.";
        QTest::newRow("yesterday by the day") << OptionalDouble(-86400) << "1 day ago";
        QTest::newRow("in three days") << OptionalDouble(3 * 86400) << "in 3 days";
        QTest::newRow("weeks") << OptionalDouble(-14 * 86400) << "2 wk. ago";
        QTest::newRow("months") << OptionalDouble(-62 * 86400) << "2 mo. ago";
        QTest::newRow("a year on") << OptionalDouble(366 * 86400) << "in 1 yr.";
    }
    void relative() {
        QFETCH(OptionalDouble, offset);
        QFETCH(QString, text);
        const std::optional<Timestamp> date =
            offset ? std::optional<Timestamp>(kNow.addingSeconds(*offset)) : std::nullopt;
        QCOMPARE(DisplayFormatters::relative(date, kNow, kEnglish, kUTC), text);
    }

    void resetCountdown_data() {
        QTest::addColumn<OptionalDouble>("offset");
        QTest::addColumn<QString>("text");
        QTest::newRow("not provided") << OptionalDouble() << "Reset not provided";
        QTest::newRow("exactly now") << OptionalDouble(0) << "Reset due";
        QTest::newRow("in the past") << OptionalDouble(-30) << "Reset due";
        QTest::newRow("20 seconds") << OptionalDouble(20) << "in 1m";
        QTest::newRow("one second") << OptionalDouble(1) << "in 1m";
        QTest::newRow("59 seconds") << OptionalDouble(59) << "in 1m";
        QTest::newRow("60 seconds") << OptionalDouble(60) << "in 1m";
        QTest::newRow("119 seconds") << OptionalDouble(119) << "in 1m";
        QTest::newRow("2 minutes") << OptionalDouble(120) << "in 2m";
        QTest::newRow("59m 59s") << OptionalDouble(3599) << "in 59m";
        QTest::newRow("exactly 1 hour") << OptionalDouble(3600) << "in 1h 0m";
        QTest::newRow("1h 1m 59s") << OptionalDouble(3719) << "in 1h 1m";
        QTest::newRow("exactly 24 hours") << OptionalDouble(24 * 3600) << "in 24h 0m";
        QTest::newRow("24h 30m") << OptionalDouble(24 * 3600 + 1800) << "in 24h 30m";
        QTest::newRow("24h 59m 59s") << OptionalDouble(25 * 3600 - 1) << "in 24h 59m";
        QTest::newRow("exactly 25 hours") << OptionalDouble(25 * 3600) << "in 1d 1h";
        QTest::newRow("48 hours") << OptionalDouble(48 * 3600) << "in 2d 0h";
        QTest::newRow("8 days 3 hours") << OptionalDouble(8 * 86400 + 3 * 3600 + 59) << "in 8d 3h";
        QTest::newRow("fractional second") << OptionalDouble(0.4) << "in 1m";
        // A date from a hand-edited blob, beyond the calendar's range: counted to the last
        // date the program keeps, 1e11 seconds after 2001.
        QTest::newRow("far out, clamped")
            << OptionalDouble(1e30)
            << QStringLiteral("in %1d %2h")
                   .arg(qint64((1e11 - kNow.secondsSinceReference()) / 86400))
                   .arg(qint64(std::fmod((1e11 - kNow.secondsSinceReference()) / 3600, 24)));
    }
    void resetCountdown() {
        QFETCH(OptionalDouble, offset);
        QFETCH(QString, text);
        const std::optional<Timestamp> date =
            offset ? std::optional<Timestamp>(kNow.addingSeconds(*offset)) : std::nullopt;
        QCOMPARE(DisplayFormatters::resetCountdown(date, kNow), text);
    }

    void noLocaleLeavesATextBlank() {
        // "Updated " with nothing after it must not happen in any language: every locale
        // says a moment, a date, an amount and a day.
        const QList<QLocale> locales =
            QLocale::matchingLocales(QLocale::AnyLanguage, QLocale::AnyScript, QLocale::AnyTerritory);
        QVERIFY(locales.size() > 100);
        for (const QLocale& locale : locales) {
            const QString name = locale.name();
            QVERIFY2(!DisplayFormatters::relative(kNow.addingSeconds(-7200), kNow, locale, kUTC).isEmpty(),
                     qPrintable(name));
            QVERIFY2(!DisplayFormatters::dateTime(kNow, kUTC, locale).isEmpty(), qPrintable(name));
            QVERIFY2(!DisplayFormatters::metric(1234.5, UsageUnit::tokens, locale).startsWith(u' '),
                     qPrintable(name));
            QVERIFY2(!DisplayFormatters::monthDay(kNow, kUTC, locale).isEmpty(), qPrintable(name));
        }
    }

    void coloursAreTones() {
        QCOMPARE(DisplayFormatters::statusColor(SyncStatus::current), Tone::positive);
        QCOMPARE(DisplayFormatters::statusColor(SyncStatus::partial), Tone::caution);
        QCOMPARE(DisplayFormatters::statusColor(SyncStatus::rateLimited), Tone::critical);
        QCOMPARE(DisplayFormatters::statusColor(SyncStatus::unsupported), Tone::muted);
        QCOMPARE(DisplayFormatters::healthColor(UsageHealth::watch), Tone::caution);
        QCOMPARE(DisplayFormatters::healthColor(UsageHealth::unavailable), Tone::muted);
    }
};

QTEST_GUILESS_MAIN(TestDisplayFormatters)
#include "tst_displayformatters.moc"
