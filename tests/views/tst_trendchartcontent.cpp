#include "views/CatmullRom.h"
#include "views/TrendChartContent.h"

#include <QTest>

namespace {
const QTimeZone kUTC(QByteArrayLiteral("UTC"));
const QLocale kEnglish(QLocale::English, QLocale::UnitedStates);
const QLocale kBritish(QLocale::English, QLocale::UnitedKingdom);
const QLocale kGerman(QLocale::German, QLocale::Germany);

Timestamp day(int d, int hour = 9) {
    return Timestamp::fromDateTime(QDateTime(QDate(2026, 4, d), QTime(hour, 30), kUTC));
}

UsagePoint point(Timestamp date, double value) {
    return UsagePoint{.date = date, .value = value, .unit = UsageUnit::requests};
}
} // namespace

class TestTrendChartContent final : public QObject {
    Q_OBJECT

private slots:
    void emptyHistoriesSayNoHistory() {
        const TrendChartContent trend = TrendChartContent::trend({}, kUTC);
        QVERIFY(trend.isEmpty());
        QCOMPARE(trend.emptyText, QStringLiteral("No history available"));
        QVERIFY(trend.xMarks.isEmpty());
        const TrendChartContent spark = TrendChartContent::sparkline({});
        QCOMPARE(spark.emptyText, QStringLiteral("No history"));
        QCOMPARE(spark.accessibleName, QStringLiteral("Recent usage trend"));
    }

    void pointsStandAsGivenInListOrder() {
        // Out of order, with a repeated date and a jump: nothing sorted, filled or added.
        const QList<UsagePoint> history{point(day(5), 30), point(day(2), 10), point(day(2), 12),
                                        point(day(9), 4)};
        const TrendChartContent trend = TrendChartContent::trend(history, kUTC, kEnglish);
        QCOMPARE(trend.points.size(), 4);
        QCOMPARE(trend.points[0], QPointF(day(5).secondsSinceReference(), 30));
        QCOMPARE(trend.points[1], QPointF(day(2).secondsSinceReference(), 10));
        QCOMPARE(trend.points[3], QPointF(day(9).secondsSinceReference(), 4));
        QCOMPARE(trend.xAxisLabel, QStringLiteral("Date"));
        QCOMPARE(trend.yAxisLabel, QStringLiteral("Usage"));
        // The data's range; the axis the chart draws stands on 0.
        QCOMPARE(trend.minY, 4.0);
        QCOMPARE(trend.maxY, 30.0);
        QCOMPARE(trend.minX, day(2).secondsSinceReference());
        QCOMPARE(trend.maxX, day(9).secondsSinceReference());
        // Marks every second calendar day, at midnight, within the range: 3, 5, 7, 9 April.
        const QList<Timestamp> midnights{day(3, 0).addingSeconds(-1800), day(5, 0).addingSeconds(-1800),
                                         day(7, 0).addingSeconds(-1800), day(9, 0).addingSeconds(-1800)};
        QCOMPARE(trend.xMarks.size(), midnights.size());
        for (qsizetype i = 0; i < midnights.size(); ++i) {
            QCOMPARE(trend.xMarks[i].at, midnights[i]);
        }
        QCOMPARE(trend.xMarks[0].text, QStringLiteral("Apr 3"));
        QCOMPARE(trend.axisMinY, 0.0);
        QCOMPARE(trend.axisMaxY, 30.0);
        QCOMPARE(trend.accessibleDescription,
                 QStringLiteral("From Apr 2 to Apr 9, between 4 and 30; the last value is 4, on Apr 9."));
    }

    void axisMarksAreWrittenInTheLocaleWithoutExponents() {
        // Round token counts: grouped, whole, never "1e+05".
        const TrendChartContent tokens =
            TrendChartContent::trend({point(day(2), 60000), point(day(3), 100000)}, kUTC, kEnglish);
        QCOMPARE(tokens.axisMinY, 0.0);
        QCOMPARE(tokens.axisMaxY, 100000.0);
        QCOMPARE(tokens.yMarks, (QList<TrendChartContent::YMark>{{0, QStringLiteral("0")},
                                                                 {50000, QStringLiteral("50,000")},
                                                                 {100000, QStringLiteral("100,000")}}));
        // More than four digits are kept, in the reader's grouping and decimal sign.
        const TrendChartContent german =
            TrendChartContent::trend({point(day(2), 1234567), point(day(3), 2345678)}, kUTC, kGerman);
        QCOMPARE(german.yMarks.last().text, QStringLiteral("3.000.000"));
        QCOMPARE(german.yMarks[1].text, QStringLiteral("1.500.000"));
        // Small values get the decimals their step needs, and no more.
        const TrendChartContent cents =
            TrendChartContent::trend({point(day(2), 0.2), point(day(3), 0.45)}, kUTC, kEnglish);
        QCOMPARE(cents.yMarks[1].text, QStringLiteral("0.25"));
        QCOMPARE(cents.yMarks[2].text, QStringLiteral("0.50"));
    }

    void ninetyAgainstAHundredStandsOnZero() {
        const TrendChartContent trend =
            TrendChartContent::trend({point(day(2), 90), point(day(3), 100)}, kUTC, kEnglish);
        QCOMPARE(trend.axisMinY, 0.0);
        QVERIFY(trend.axisMaxY >= 100.0);
        const TrendChartContent spark = TrendChartContent::sparkline({point(day(2), 90), point(day(3), 100)});
        QCOMPARE(spark.axisMinY, 0.0);
        // Below zero the axis takes the data's range.
        const TrendChartContent negative =
            TrendChartContent::trend({point(day(2), -5), point(day(3), 10)}, kUTC, kEnglish);
        QCOMPARE(negative.axisMinY, -5.0);
        QCOMPARE(negative.axisMaxY, 10.0);
        QCOMPARE(negative.yMarks.size(), 3);
    }

    void datesFollowTheLocalesOrder() {
        const QList<UsagePoint> history{point(day(2), 1), point(day(9), 2)};
        QCOMPARE(TrendChartContent::trend(history, kUTC, kEnglish).xMarks.first().text,
                 QStringLiteral("Apr 3"));
        QCOMPARE(TrendChartContent::trend(history, kUTC, kBritish).xMarks.first().text,
                 QStringLiteral("3 Apr"));
        QCOMPARE(TrendChartContent::trend(history, kUTC, kGerman).xMarks.first().text,
                 QStringLiteral("3. Apr."));
    }

    void theSparklineSaysWhatItShows() {
        const TrendChartContent spark =
            TrendChartContent::sparkline({point(day(2), 1500), point(day(4), 250.5)}, kUTC, kEnglish);
        QCOMPARE(spark.accessibleName, QStringLiteral("Recent usage trend"));
        QCOMPARE(spark.accessibleDescription,
                 QStringLiteral(
                     "From Apr 2 to Apr 4, between 250.5 and 1,500; the last value is 250.5, on Apr 4."));
        QVERIFY(spark.yMarks.isEmpty()); // no axes to mark
    }

    void onePointIsOnePoint() {
        const TrendChartContent trend = TrendChartContent::trend({point(day(2), 7)}, kUTC, kEnglish);
        QCOMPARE(trend.points.size(), 1);
        QCOMPARE(trend.minY, trend.maxY);
        QCOMPARE(trend.axisMinY, 0.0);
        QVERIFY(trend.axisMaxY > 7.0);
        QCOMPARE(trend.accessibleDescription, QStringLiteral("One value: 7, on Apr 2."));
        QCOMPARE(CatmullRom::curve(trend.points), trend.points); // no line to speak of
        QVERIFY(CatmullRom::bezierSegments(trend.points).isEmpty());
    }

    void theCurvePassesThroughEveryPoint() {
        const QList<QPointF> points{{0, 0}, {1, 3}, {2, 1}, {4, 4}, {5, 2}};
        const QList<QPointF> curve = CatmullRom::curve(points, 8);
        QCOMPARE(curve.size(), (points.size() - 1) * 8 + 1);
        for (qsizetype i = 0; i < points.size(); ++i) {
            QCOMPARE(curve[i * 8], points[i]);
        }
        // Between two points the curve stays near them: no wild overshoot.
        for (const QPointF& p : curve) {
            QVERIFY(p.y() > -1.0 && p.y() < 5.0);
        }
    }

    void twoPointsMakeAStraightLine() {
        const QList<QPointF> line{{0, 0}, {3, 6}};
        for (const QPointF& p : CatmullRom::curve(line, 6)) {
            QVERIFY(qAbs(p.y() - 2 * p.x()) < 1e-9);
        }
    }
};

QTEST_GUILESS_MAIN(TestTrendChartContent)
#include "tst_trendchartcontent.moc"
