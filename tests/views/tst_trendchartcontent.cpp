#include "views/CatmullRom.h"
#include "views/TrendChartContent.h"

#include <QTest>

namespace {
const QTimeZone kUTC(QByteArrayLiteral("UTC"));

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
        const TrendChartContent trend = TrendChartContent::trend(history, kUTC);
        QCOMPARE(trend.points.size(), 4);
        QCOMPARE(trend.points[0], QPointF(day(5).secondsSinceReference(), 30));
        QCOMPARE(trend.points[1], QPointF(day(2).secondsSinceReference(), 10));
        QCOMPARE(trend.points[3], QPointF(day(9).secondsSinceReference(), 4));
        QCOMPARE(trend.xAxisLabel, QStringLiteral("Date"));
        QCOMPARE(trend.yAxisLabel, QStringLiteral("Usage"));
        // The range is the data's: no zero floor.
        QCOMPARE(trend.minY, 4.0);
        QCOMPARE(trend.maxY, 30.0);
        QCOMPARE(trend.minX, day(2).secondsSinceReference());
        QCOMPARE(trend.maxX, day(9).secondsSinceReference());
        // Marks every second calendar day, at midnight, within the range: 3, 5, 7, 9 April.
        QCOMPARE(trend.xMarks,
                 (QList<Timestamp>{day(3, 0).addingSeconds(-1800), day(5, 0).addingSeconds(-1800),
                                   day(7, 0).addingSeconds(-1800), day(9, 0).addingSeconds(-1800)}));
    }

    void onePointIsOnePoint() {
        const TrendChartContent trend = TrendChartContent::trend({point(day(2), 7)}, kUTC);
        QCOMPARE(trend.points.size(), 1);
        QCOMPARE(trend.minY, trend.maxY);
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
