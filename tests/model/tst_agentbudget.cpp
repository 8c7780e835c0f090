#include "model/AgentBudget.h"

#include "TestSupport.h"

#include <QTest>

namespace {
const OptionalDouble absent;
}

class TestAgentBudget final : public QObject {
    Q_OBJECT

private slots:
    void health_data() {
        QTest::addColumn<OptionalDouble>("shortUsed");
        QTest::addColumn<OptionalDouble>("shortLimit");
        QTest::addColumn<OptionalDouble>("weeklyUsed");
        QTest::addColumn<OptionalDouble>("weeklyLimit");
        QTest::addColumn<QString>("expected");
        QTest::newRow("all four absent") << absent << absent << absent << absent << "unavailable";
        QTest::newRow("only a weekly pair, watch")
            << absent << absent << OptionalDouble(80) << OptionalDouble(100) << "watch";
        QTest::newRow("only a weekly pair, healthy")
            << absent << absent << OptionalDouble(10) << OptionalDouble(100) << "healthy";
        QTest::newRow("only a short pair, urgent")
            << OptionalDouble(95) << OptionalDouble(100) << absent << absent << "urgent";
        QTest::newRow("worst of both") << OptionalDouble(10) << OptionalDouble(100) << OptionalDouble(100)
                                       << OptionalDouble(100) << "urgent";
        QTest::newRow("limits without use")
            << absent << OptionalDouble(100) << absent << OptionalDouble(100) << "unavailable";
        QTest::newRow("zero limits") << OptionalDouble(1) << OptionalDouble(0) << OptionalDouble(1)
                                     << OptionalDouble(0) << "unavailable";
    }
    void health() {
        const AgentBudget budget{.id = QStringLiteral("budget-1"),
                                 .name = QStringLiteral("Research agent"),
                                 .unit = UsageUnit::tokens,
                                 .shortUsed = fetched<OptionalDouble>("shortUsed"),
                                 .shortLimit = fetched<OptionalDouble>("shortLimit"),
                                 .weeklyUsed = fetched<OptionalDouble>("weeklyUsed"),
                                 .weeklyLimit = fetched<OptionalDouble>("weeklyLimit")};
        QCOMPARE(budget.health().rawValue(), fetched<QString>("expected"));
    }

    void healthDoesNotDependOnIdOrNameWords() {
        // The windows built for the budget carry explicit horizons, so a name full of
        // horizon words changes nothing.
        const AgentBudget budget{.id = QStringLiteral("hour"),
                                 .name = QStringLiteral("billing history"),
                                 .unit = UsageUnit::messages,
                                 .weeklyUsed = 50,
                                 .weeklyLimit = 100};
        QCOMPARE(budget.health(), UsageHealth(UsageHealth::healthy));
    }

    void equality() {
        const AgentBudget a{
            .id = QStringLiteral("a"), .name = QStringLiteral("A"), .unit = UsageUnit::credits};
        AgentBudget b = a;
        QCOMPARE(a, b);
        QCOMPARE(qHash(a), qHash(b));
        b.shortLimit = 0.0;
        QVERIFY(a != b);
    }
};

QTEST_GUILESS_MAIN(TestAgentBudget)
#include "tst_agentbudget.moc"
