#include "model/UsageHealth.h"

#include <QTest>

Q_DECLARE_METATYPE(QList<UsageHealth>)

namespace {
QList<UsageHealth> parse(const QString& spaced) {
    QList<UsageHealth> healths;
    for (const QString& raw : spaced.split(u' ', Qt::SkipEmptyParts)) {
        healths.append(*UsageHealth::fromRawValue(raw));
    }
    return healths;
}
} // namespace

class TestUsageHealth final : public QObject {
    Q_OBJECT

private slots:
    void aggregate_data() {
        QTest::addColumn<QString>("members");
        QTest::addColumn<QString>("expected");
        QTest::newRow("empty list") << ""
                                    << "unavailable";
        QTest::newRow("only unavailable") << "unavailable unavailable"
                                          << "unavailable";
        QTest::newRow("unavailable and healthy") << "unavailable healthy"
                                                 << "healthy";
        QTest::newRow("healthy and unavailable") << "healthy unavailable"
                                                 << "healthy";
        QTest::newRow("watch over healthy") << "healthy watch healthy"
                                            << "watch";
        QTest::newRow("urgent over watch") << "watch urgent healthy"
                                           << "urgent";
        QTest::newRow("urgent first") << "urgent watch"
                                      << "urgent";
        QTest::newRow("unavailable never lowers") << "urgent unavailable"
                                                  << "urgent";
        QTest::newRow("single watch") << "watch"
                                      << "watch";
    }
    void aggregate() {
        QFETCH(QString, members);
        QFETCH(QString, expected);
        QCOMPARE(UsageHealth::aggregate(parse(members)).rawValue(), expected);
    }
};

QTEST_GUILESS_MAIN(TestUsageHealth)
#include "tst_usagehealth.moc"
