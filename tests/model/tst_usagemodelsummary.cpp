#include "model/UsageModelSummary.h"

#include "ModelFixtures.h"

#include <QTest>

class TestUsageModelSummary final : public QObject {
    Q_OBJECT

private slots:
    void windowsByHorizonKeepListOrder() {
        const UsageModelSummary summary{
            .modelName = QStringLiteral("gpt-4o"),
            .windows = {makeWindow(QStringLiteral("s1"), UsageHorizon::shortTerm, 1, 10),
                        makeWindow(QStringLiteral("w1"), UsageHorizon::weekly, 1, 10),
                        makeWindow(QStringLiteral("b1"), UsageHorizon::billing, 1, 10),
                        makeWindow(QStringLiteral("h1"), UsageHorizon::historical, 1, 10),
                        makeWindow(QStringLiteral("u1"), UsageHorizon::unspecified, 1, 10),
                        makeWindow(QStringLiteral("s2"), UsageHorizon::shortTerm, 1, 10)}};
        QCOMPARE(summary.id(), QStringLiteral("gpt-4o"));
        QCOMPARE(summary.shortTermWindows().size(), 2);
        QCOMPARE(summary.shortTermWindows().at(0).id, QStringLiteral("s1"));
        QCOMPARE(summary.shortTermWindows().at(1).id, QStringLiteral("s2"));
        QCOMPARE(summary.weeklyWindows().size(), 1);
        QCOMPARE(summary.billingWindows().size(), 1);
        QCOMPARE(summary.historicalWindows().size(), 1);
        // The unspecified window is in none of the four lists.
        const int listed =
            static_cast<int>(summary.shortTermWindows().size() + summary.weeklyWindows().size() +
                             summary.billingWindows().size() + summary.historicalWindows().size());
        QCOMPARE(listed, 5);
    }

    void agentLabelsAreUniqueAndSorted() {
        const UsageModelSummary summary{
            .modelName = QStringLiteral("m"),
            .windows = {
                makeWindow(QStringLiteral("a"), UsageHorizon::shortTerm, 1, 10, QStringLiteral("zeta")),
                makeWindow(QStringLiteral("b"), UsageHorizon::shortTerm, 1, 10, QStringLiteral("Alpha")),
                makeWindow(QStringLiteral("c"), UsageHorizon::weekly, 1, 10),
                makeWindow(QStringLiteral("d"), UsageHorizon::weekly, 1, 10, QStringLiteral("zeta")),
                makeWindow(QStringLiteral("e"), UsageHorizon::billing, 1, 10, QStringLiteral("beta"))}};
        // Plain order: upper case sorts before lower case.
        QCOMPARE(summary.agentLabels(), QStringList({"Alpha", "beta", "zeta"}));
    }

    void agentLabelsOrderByScalarValue() {
        // U+1F600 sorts after U+FB01 by scalar value, though its UTF-16 code units are smaller.
        const QString emoji = QString::fromUcs4(U"\U0001F600");
        const QString ligature = QString::fromUcs4(U"\uFB01");
        const UsageModelSummary summary{
            .modelName = QStringLiteral("m"),
            .windows = {makeWindow(QStringLiteral("a"), UsageHorizon::shortTerm, 1, 10, emoji),
                        makeWindow(QStringLiteral("b"), UsageHorizon::shortTerm, 1, 10, ligature)}};
        QCOMPARE(summary.agentLabels(), QStringList({ligature, emoji}));
    }

    void healthCountsShortAndWeeklyOnly() {
        const UsageModelSummary summary{
            .modelName = QStringLiteral("m"),
            .windows = {makeWindow(QStringLiteral("s"), UsageHorizon::shortTerm, 10, 100),
                        makeWindow(QStringLiteral("w"), UsageHorizon::weekly, 75, 100),
                        makeWindow(QStringLiteral("b"), UsageHorizon::billing, 100, 100),
                        makeWindow(QStringLiteral("h"), UsageHorizon::historical, 100, 100)}};
        QCOMPARE(summary.health(), UsageHealth(UsageHealth::watch));

        const UsageModelSummary billingOnly{
            .modelName = QStringLiteral("m"),
            .windows = {makeWindow(QStringLiteral("b"), UsageHorizon::billing, 100, 100)}};
        QCOMPARE(billingOnly.health(), UsageHealth(UsageHealth::unavailable));
    }

    void equality() {
        const UsageModelSummary a{.modelName = QStringLiteral("m"), .windows = {}};
        UsageModelSummary b = a;
        QCOMPARE(a, b);
        QCOMPARE(qHash(a), qHash(b));
        b.windows.append(makeWindow(QStringLiteral("x"), UsageHorizon::weekly, 1, 2));
        QVERIFY(a != b);
    }
};

QTEST_GUILESS_MAIN(TestUsageModelSummary)
#include "tst_usagemodelsummary.moc"
