#include "model/QuotaMath.h"
#include "model/UsageWindow.h"

#include "TestSupport.h"

#include <QSet>
#include <QTest>

namespace {
const OptionalDouble absent;

UsageWindow window(OptionalDouble used, OptionalDouble limit, OptionalDouble reported = std::nullopt) {
    return UsageWindow{.id = QStringLiteral("requests-rate-window"),
                       .title = QStringLiteral("Requests"),
                       .unit = UsageUnit::requests,
                       .used = used,
                       .limit = limit,
                       .reportedRemaining = reported};
}
} // namespace

class TestUsageWindow final : public QObject {
    Q_OBJECT

private slots:
    void defaults() {
        const UsageWindow w{
            .id = QStringLiteral("a"), .title = QStringLiteral("A"), .unit = UsageUnit::tokens};
        QCOMPARE(w.horizon, UsageHorizon(UsageHorizon::unspecified));
        QVERIFY(!w.modelName && !w.agentLabel && !w.used && !w.limit && !w.reportedRemaining && !w.resetAt &&
                !w.note);
    }

    void health_data() {
        QTest::addColumn<OptionalDouble>("used");
        QTest::addColumn<OptionalDouble>("limit");
        QTest::addColumn<OptionalDouble>("reported");
        QTest::addColumn<QString>("health");
        QTest::newRow("no used") << absent << OptionalDouble(100) << absent << "unavailable";
        QTest::newRow("no limit") << OptionalDouble(10) << absent << absent << "unavailable";
        QTest::newRow("limit zero with use")
            << OptionalDouble(5) << OptionalDouble(0) << absent << "unavailable";
        QTest::newRow("limit below zero")
            << OptionalDouble(5) << OptionalDouble(-1) << absent << "unavailable";
        QTest::newRow("reported remainder alone gives no health")
            << absent << OptionalDouble(100) << OptionalDouble(40) << "unavailable";
        QTest::newRow("over the limit") << OptionalDouble(101) << OptionalDouble(100) << absent << "urgent";
        QTest::newRow("equal to the limit")
            << OptionalDouble(100) << OptionalDouble(100) << absent << "urgent";
        QTest::newRow("90 of 100 is urgent")
            << OptionalDouble(90) << OptionalDouble(100) << absent << "urgent";
        QTest::newRow("just under 0.9") << OptionalDouble(89.999) << OptionalDouble(100) << absent << "watch";
        QTest::newRow("63 of 90 is exactly 0.7")
            << OptionalDouble(63) << OptionalDouble(90) << absent << "watch";
        QTest::newRow("70 of 100") << OptionalDouble(70) << OptionalDouble(100) << absent << "watch";
        QTest::newRow("just under 0.7")
            << OptionalDouble(69.999) << OptionalDouble(100) << absent << "healthy";
        QTest::newRow("nothing used") << OptionalDouble(0) << OptionalDouble(100) << absent << "healthy";
        QTest::newRow("reported remainder does not change it")
            << OptionalDouble(10) << OptionalDouble(100) << OptionalDouble(1) << "healthy";
    }
    void health() {
        QFETCH(OptionalDouble, used);
        QFETCH(OptionalDouble, limit);
        QFETCH(OptionalDouble, reported);
        QFETCH(QString, health);
        QCOMPARE(window(used, limit, reported).health().rawValue(), health);
    }

    void limitZeroHasNoProgressButNegativeRemaining() {
        const UsageWindow w = window(5, 0);
        QCOMPARE(w.progress(), absent);
        QCOMPARE(w.health(), UsageHealth(UsageHealth::unavailable));
        QCOMPARE(w.remaining(), OptionalDouble(-5));
    }

    void negativeLimitBehavesAsZero() {
        const UsageWindow below = window(5, -3);
        QCOMPARE(below.progress(), absent);
        QCOMPARE(below.health(), UsageHealth(UsageHealth::unavailable));
        QCOMPARE(below.remaining(), OptionalDouble(-8));
    }

    void overAndAtTheLimit() {
        const UsageWindow over = window(120, 100);
        QCOMPARE(over.health(), UsageHealth(UsageHealth::urgent));
        QCOMPARE(over.progress(), OptionalDouble(1));
        QCOMPARE(over.remaining(), OptionalDouble(-20));
        QVERIFY(QuotaMath::isOverLimit(over.used, over.limit));

        const UsageWindow at = window(100, 100);
        QCOMPARE(at.health(), UsageHealth(UsageHealth::urgent));
        QCOMPARE(at.progress(), OptionalDouble(1));
        QCOMPARE(at.remaining(), OptionalDouble(0));
        QVERIFY(!QuotaMath::isOverLimit(at.used, at.limit));
    }

    void reportedRemainingWins() {
        QCOMPARE(window(10, 100, 5).remaining(), OptionalDouble(5));
        QCOMPARE(window(10, 100, 5).progress(), OptionalDouble(0.1));
    }

    void equalityAndHashTakeEveryField() {
        const UsageWindow base = window(10, 100);
        UsageWindow other = base;
        QCOMPARE(other, base);
        QCOMPARE(qHash(other), qHash(base));
        other.note = QString();
        QVERIFY(other != base); // an empty note is not an absent one
        other = base;
        other.used = 0.0;
        QVERIFY(other != base);
        other = base;
        other.resetAt = Timestamp(0);
        QVERIFY(other != base);
        other = base;
        other.horizon = UsageHorizon::weekly;
        QVERIFY(other != base);

        QSet<UsageWindow> set{base, base, window(11, 100)};
        QCOMPARE(set.size(), 2);
    }

    void absentAmountHashesApartFromZero() { QVERIFY(qHash(window(absent, 100)) != qHash(window(0, 100))); }
};

QTEST_GUILESS_MAIN(TestUsageWindow)
#include "tst_usagewindow.moc"
