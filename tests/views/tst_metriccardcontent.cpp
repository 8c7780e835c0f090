#include "views/MetricCardContent.h"

#include "TestSupport.h"

#include <QTest>

namespace {
const QLocale kEnglish(QStringLiteral("en_US"));
const QTimeZone kUTC(QByteArrayLiteral("UTC"));
const Timestamp kNow = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30), kUTC));

UsageWindow window(OptionalDouble used, OptionalDouble limit) {
    return UsageWindow{.id = QStringLiteral("requests-minute"),
                       .title = QStringLiteral("Requests / minute"),
                       .unit = UsageUnit::requests,
                       .used = used,
                       .limit = limit};
}

MetricCardContent card(const UsageWindow& w) {
    return MetricCardContent::make(w, kNow, kEnglish, kUTC);
}
} // namespace

class TestMetricCardContent final : public QObject {
    Q_OBJECT

private slots:
    void nothingReportedReadsAsMissingNeverZero() {
        const MetricCardContent c = card(window(std::nullopt, std::nullopt));
        QCOMPARE(c.title, QStringLiteral("Requests / minute"));
        QCOMPARE(c.unitSymbol, QStringLiteral("arrow.up.right.circle.fill"));
        QCOMPARE(c.value, QStringLiteral("Not available from provider"));
        QVERIFY(!c.valueReported);
        QCOMPARE(c.ceiling, QStringLiteral("Limit not reported"));
        QVERIFY(!c.limitReported);
        QVERIFY(c.remainder.isEmpty());
        QVERIFY(!c.progress); // no bar
        for (const QString& text : {c.value, c.ceiling, c.remainder, c.countdown}) {
            QVERIFY2(!text.contains(u'0'), qPrintable(text)); // no number 0 anywhere
        }
        QCOMPARE(c.countdown, QStringLiteral("Reset not provided"));
        QVERIFY(c.resetDate.isEmpty());
        QCOMPARE(c.resetSymbol, QStringLiteral("arrow.clockwise"));
    }

    void usedWithoutALimit() {
        const MetricCardContent c = card(window(42, std::nullopt));
        QCOMPARE(c.value, QStringLiteral("42 requests"));
        QVERIFY(c.valueReported);
        QCOMPARE(c.ceiling, QStringLiteral("Limit not reported"));
        QVERIFY(!c.progress);
    }

    void zeroUsedIsARealValue() {
        const MetricCardContent c = card(window(0, 60));
        QCOMPARE(c.value, QStringLiteral("0 requests"));
        QCOMPARE(c.ceiling, QStringLiteral("of 60 requests"));
        QCOMPARE(c.remainder, QStringLiteral("60 requests remaining"));
        QCOMPARE(c.progress, OptionalDouble(0)); // an empty bar
        QCOMPARE(c.progressTone, Tone::accent);
        QCOMPARE(c.remainderTone, Tone::muted);
    }

    void overTheLimitTurnsRed() {
        const MetricCardContent c = card(window(120, 100));
        QCOMPARE(c.remainder, QStringLiteral("20 requests over"));
        QCOMPARE(c.remainderTone, Tone::critical);
        QCOMPARE(c.progress, OptionalDouble(1));
        QCOMPARE(c.progressTone, Tone::critical);
    }

    void resetLineAndNote() {
        UsageWindow w = window(42, 60);
        w.resetAt = kNow.addingSeconds(2520);
        w.note = QStringLiteral("Rate-limit header when available");
        const MetricCardContent c = card(w);
        QCOMPARE(c.countdown, QStringLiteral("in 42m"));
        QString date = c.resetDate;
        date.replace(QChar(0x202F), u' ');
        QCOMPARE(date, QStringLiteral("Apr 2, 2026, 10:12 AM"));
        QCOMPARE(c.note, QStringLiteral("Rate-limit header when available"));
        QCOMPARE(c.progress, OptionalDouble(0.7));
    }

    void dueResetsStillShowTheirDate() {
        UsageWindow w = window(1, 2);
        w.resetAt = kNow.addingSeconds(-60);
        const MetricCardContent c = card(w);
        QCOMPARE(c.countdown, QStringLiteral("Reset due"));
        QVERIFY(!c.resetDate.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestMetricCardContent)
#include "tst_metriccardcontent.moc"
