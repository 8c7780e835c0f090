#include "model/QuotaMath.h"

#include "TestSupport.h"

#include <QTest>

#include <limits>

namespace {
const OptionalDouble absent;
}

class TestQuotaMath final : public QObject {
    Q_OBJECT

private slots:
    void remaining_data() {
        QTest::addColumn<OptionalDouble>("used");
        QTest::addColumn<OptionalDouble>("limit");
        QTest::addColumn<OptionalDouble>("reported");
        QTest::addColumn<OptionalDouble>("expected");
        QTest::newRow("reported wins over arithmetic")
            << OptionalDouble(10) << OptionalDouble(100) << OptionalDouble(5) << OptionalDouble(5);
        QTest::newRow("reported alone") << absent << absent << OptionalDouble(7) << OptionalDouble(7);
        QTest::newRow("reported zero is a value")
            << OptionalDouble(10) << OptionalDouble(100) << OptionalDouble(0) << OptionalDouble(0);
        QTest::newRow("limit minus used")
            << OptionalDouble(30) << OptionalDouble(100) << absent << OptionalDouble(70);
        QTest::newRow("over the limit is negative")
            << OptionalDouble(120) << OptionalDouble(100) << absent << OptionalDouble(-20);
        QTest::newRow("exactly at the limit")
            << OptionalDouble(100) << OptionalDouble(100) << absent << OptionalDouble(0);
        QTest::newRow("limit zero still subtracts")
            << OptionalDouble(4) << OptionalDouble(0) << absent << OptionalDouble(-4);
        QTest::newRow("no used") << absent << OptionalDouble(100) << absent << absent;
        QTest::newRow("no limit") << OptionalDouble(10) << absent << absent << absent;
        QTest::newRow("nothing") << absent << absent << absent << absent;
    }
    void remaining() {
        QFETCH(OptionalDouble, used);
        QFETCH(OptionalDouble, limit);
        QFETCH(OptionalDouble, reported);
        QFETCH(OptionalDouble, expected);
        QCOMPARE(QuotaMath::remaining(used, limit, reported), expected);
    }

    void progress_data() {
        QTest::addColumn<OptionalDouble>("used");
        QTest::addColumn<OptionalDouble>("limit");
        QTest::addColumn<OptionalDouble>("expected");
        QTest::newRow("quarter") << OptionalDouble(25) << OptionalDouble(100) << OptionalDouble(0.25);
        QTest::newRow("zero used") << OptionalDouble(0) << OptionalDouble(100) << OptionalDouble(0);
        QTest::newRow("over is clamped to one")
            << OptionalDouble(150) << OptionalDouble(100) << OptionalDouble(1);
        QTest::newRow("equal is one") << OptionalDouble(100) << OptionalDouble(100) << OptionalDouble(1);
        QTest::newRow("negative used is clamped to zero")
            << OptionalDouble(-5) << OptionalDouble(100) << OptionalDouble(0);
        QTest::newRow("limit zero has none") << OptionalDouble(5) << OptionalDouble(0) << absent;
        QTest::newRow("negative limit has none") << OptionalDouble(5) << OptionalDouble(-10) << absent;
        QTest::newRow("no used") << absent << OptionalDouble(100) << absent;
        QTest::newRow("no limit") << OptionalDouble(5) << absent << absent;
    }
    void progress() {
        QFETCH(OptionalDouble, used);
        QFETCH(OptionalDouble, limit);
        QFETCH(OptionalDouble, expected);
        QCOMPARE(QuotaMath::progress(used, limit), expected);
    }

    void isOverLimit_data() {
        QTest::addColumn<OptionalDouble>("used");
        QTest::addColumn<OptionalDouble>("limit");
        QTest::addColumn<bool>("expected");
        QTest::newRow("above") << OptionalDouble(101) << OptionalDouble(100) << true;
        QTest::newRow("exactly at is not over") << OptionalDouble(100) << OptionalDouble(100) << false;
        QTest::newRow("below") << OptionalDouble(99) << OptionalDouble(100) << false;
        QTest::newRow("any use over a zero limit") << OptionalDouble(1) << OptionalDouble(0) << true;
        QTest::newRow("no used") << absent << OptionalDouble(100) << false;
        QTest::newRow("no limit") << OptionalDouble(100) << absent << false;
    }
    void isOverLimit() {
        QFETCH(OptionalDouble, used);
        QFETCH(OptionalDouble, limit);
        QFETCH(bool, expected);
        QCOMPARE(QuotaMath::isOverLimit(used, limit), expected);
    }

    void tinyLimitStillGivesProgress() {
        const double tiny = std::numeric_limits<double>::denorm_min();
        QCOMPARE(QuotaMath::progress(0.0, tiny), OptionalDouble(0));
    }
};

QTEST_GUILESS_MAIN(TestQuotaMath)
#include "tst_quotamath.moc"
