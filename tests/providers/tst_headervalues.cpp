#include "providers/HeaderValues.h"

#include "TestSupport.h"

#include <QTest>

class TestHeaderValues final : public QObject {
    Q_OBJECT

private slots:
    void duration_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<OptionalDouble>("seconds");
        QTest::newRow("hours minutes seconds") << "1h2m3.5s" << OptionalDouble(3723.5);
        QTest::newRow("milliseconds") << "250ms" << OptionalDouble(0.25);
        QTest::newRow("six minutes") << "6m0s" << OptionalDouble(360);
        QTest::newRow("one second") << "1s" << OptionalDouble(1);
        QTest::newRow("minute and a half") << "1m30s" << OptionalDouble(90);
        QTest::newRow("fractional hours") << "1.5h" << OptionalDouble(5400);
        QTest::newRow("ms before m") << "20ms" << OptionalDouble(0.02);
        QTest::newRow("days") << "2d" << OptionalDouble(172800);
        QTest::newRow("minus sign skipped") << "-5s" << OptionalDouble(5);
        QTest::newRow("word in front skipped") << "in 5s" << OptionalDouble(5);
        QTest::newRow("zero is present") << "0s" << OptionalDouble(0);
        QTest::newRow("bare number") << "12" << OptionalDouble();
        QTest::newRow("empty") << "" << OptionalDouble();
        QTest::newRow("words only") << "soon" << OptionalDouble();
    }
    void duration() {
        QFETCH(QString, text);
        QFETCH(OptionalDouble, seconds);
        const auto result = HeaderValues::duration(text);
        QCOMPARE(result.has_value(), seconds.has_value());
        if (result) {
            QVERIFY2(qAbs(*result - *seconds) < 1e-12, qPrintable(QString::number(*result)));
        }
    }

    void namesMatchInAnyCase() {
        const HeaderValues headers(
            {{"X-RateLimit-Reset-Requests", "1s"}, {"x-ratelimit-limit-tokens", "150000"}});
        const Timestamp now(1000);
        QCOMPARE(headers.resetDate(QStringLiteral("x-ratelimit-reset-requests"), now),
                 std::optional<Timestamp>(Timestamp(1001)));
        QCOMPARE(headers.string(QStringLiteral("X-RATELIMIT-LIMIT-TOKENS")),
                 std::optional<QString>(QStringLiteral("150000")));
        QVERIFY(headers.values().contains(QStringLiteral("x-ratelimit-reset-requests")));
    }

    void numbers() {
        const HeaderValues headers({{"a", "59"}, {"b", "59 "}, {"c", "1e3"}, {"d", "sixty"}, {"e", ""}});
        QCOMPARE(headers.number(QStringLiteral("a")), OptionalDouble(59));
        QCOMPARE(headers.number(QStringLiteral("b")), OptionalDouble()); // trailing blank
        QCOMPARE(headers.number(QStringLiteral("c")), OptionalDouble(1000));
        QCOMPARE(headers.number(QStringLiteral("d")), OptionalDouble());
        QCOMPARE(headers.number(QStringLiteral("e")), OptionalDouble());
        QCOMPARE(headers.number(QStringLiteral("missing")), OptionalDouble());
    }

    void numbersThatAreNoCount_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::newRow("nan") << QByteArray("nan");
        QTest::newRow("NaN") << QByteArray("NaN");
        QTest::newRow("inf") << QByteArray("inf");
        QTest::newRow("-inf") << QByteArray("-inf");
        QTest::newRow("overflowing exponent") << QByteArray("1e999");
    }
    void numbersThatAreNoCount() {
        QFETCH(QByteArray, text);
        const HeaderValues headers({{"x-ratelimit-limit-requests", text}});
        QCOMPARE(headers.number(QStringLiteral("x-ratelimit-limit-requests")), OptionalDouble());
    }

    void durationsBeyondAnyDate() {
        QVERIFY(!HeaderValues::duration(QString(400, u'9') + u's')); // too large to read
        QVERIFY(!HeaderValues::duration(QString(305, u'9') +
                                        QStringLiteral("h"))); // reads, but × 3600 is infinite
        const HeaderValues headers(
            {{"nines", QByteArray(300, '9') + "d"}, {"far", "99999999999999d"}, {"near", "3000d"}});
        const Timestamp now(800'000'000);
        QVERIFY(!headers.resetDate(QStringLiteral("nines"), now));
        QVERIFY(!headers.resetDate(QStringLiteral("far"), now)); // finite, but beyond the dates we keep
        QCOMPARE(headers.resetDate(QStringLiteral("near"), now),
                 std::optional(now.addingSeconds(3000 * 86400.0)));
    }

    void resetDates() {
        const HeaderValues headers({{"x-ratelimit-reset-tokens", "6m0s"}, {"zero", "0s"}, {"plain", "12"}});
        const Timestamp now(5000);
        QCOMPARE(headers.resetDate(QStringLiteral("x-ratelimit-reset-tokens"), now),
                 std::optional<Timestamp>(Timestamp(5360)));
        QCOMPARE(headers.resetDate(QStringLiteral("zero"), now), std::optional<Timestamp>(now));
        QVERIFY(!headers.resetDate(QStringLiteral("plain"), now));
        QVERIFY(!headers.resetDate(QStringLiteral("missing"), now));
    }
};

QTEST_GUILESS_MAIN(TestHeaderValues)
#include "tst_headervalues.moc"
