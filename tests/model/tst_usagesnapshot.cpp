#include "model/UsageSnapshot.h"

#include "ModelFixtures.h"

#include <QTest>

namespace {
UsageSnapshot snapshotWith(QList<UsageWindow> windows, QStringList warnings = {}) {
    return UsageSnapshot{.source = UsageSource::mock,
                         .capturedAt = Timestamp(100),
                         .windows = std::move(windows),
                         .history = {},
                         .warnings = std::move(warnings)};
}
} // namespace

class TestUsageSnapshot final : public QObject {
    Q_OBJECT

private slots:
    void initialiserDefaults() {
        const UsageSnapshot s = snapshotWith({});
        QVERIFY(s.billingHistory.isEmpty());
        QVERIFY(s.modelSummaries.isEmpty());
    }

    void horizonLists() {
        const UsageSnapshot s =
            snapshotWith({makeWindow(QStringLiteral("s"), UsageHorizon::shortTerm, 1, 10),
                          makeWindow(QStringLiteral("w"), UsageHorizon::weekly, 1, 10),
                          makeWindow(QStringLiteral("b"), UsageHorizon::billing, 1, 10),
                          makeWindow(QStringLiteral("h"), UsageHorizon::historical, 1, 10),
                          makeWindow(QStringLiteral("u"), UsageHorizon::unspecified, 1, 10)});
        QCOMPARE(s.shortTermWindows().size(), 1);
        QCOMPARE(s.weeklyWindows().size(), 1);
        QCOMPARE(s.billingWindows().size(), 1);
        QStringList additional;
        for (const UsageWindow& w : s.additionalWindows()) {
            additional.append(w.id);
        }
        // A billing window is in both billingWindows and additionalWindows.
        QCOMPARE(additional, QStringList({"b", "h", "u"}));
    }

    void billingOnlySnapshot() {
        const UsageSnapshot s =
            snapshotWith({makeWindow(QStringLiteral("b"), UsageHorizon::billing, 95, 100)});
        QCOMPARE(s.health(), UsageHealth(UsageHealth::unavailable));
        QCOMPARE(s.billingHealth(), UsageHealth(UsageHealth::urgent));
        QCOMPARE(s.monitorHealth(), s.billingHealth());
    }

    void emptySnapshot() {
        const UsageSnapshot s = snapshotWith({});
        QCOMPARE(s.monitorHealth(), UsageHealth(UsageHealth::unavailable));
        QVERIFY(!s.nextReset().has_value());
        QVERIFY(!s.isPartial());
        QVERIFY(snapshotWith({}, {QStringLiteral("Costs could not be loaded.")}).isPartial());
    }

    void monitorHealthPrefersShortAndWeekly() {
        const UsageSnapshot s =
            snapshotWith({makeWindow(QStringLiteral("s"), UsageHorizon::shortTerm, 10, 100),
                          makeWindow(QStringLiteral("b"), UsageHorizon::billing, 100, 100)});
        QCOMPARE(s.health(), UsageHealth(UsageHealth::healthy));
        QCOMPARE(s.billingHealth(), UsageHealth(UsageHealth::urgent));
        QCOMPARE(s.monitorHealth(), UsageHealth(UsageHealth::healthy));
    }

    void healthIgnoresHistoricalAndUnspecified() {
        const UsageSnapshot s =
            snapshotWith({makeWindow(QStringLiteral("h"), UsageHorizon::historical, 100, 100),
                          makeWindow(QStringLiteral("u"), UsageHorizon::unspecified, 100, 100),
                          makeWindow(QStringLiteral("w"), UsageHorizon::weekly, 75, 100)});
        QCOMPARE(s.health(), UsageHealth(UsageHealth::watch));
        QCOMPARE(s.billingHealth(), UsageHealth(UsageHealth::unavailable));
    }

    void nextResetIsEarliestOfAll() {
        UsageWindow past = makeWindow(QStringLiteral("h"), UsageHorizon::historical, 1, 10);
        past.resetAt = Timestamp(-50); // past dates are not skipped
        UsageWindow soon = makeWindow(QStringLiteral("s"), UsageHorizon::shortTerm, 1, 10);
        soon.resetAt = Timestamp(500);
        UsageWindow later = makeWindow(QStringLiteral("w"), UsageHorizon::weekly, 1, 10);
        later.resetAt = Timestamp(9000);
        const UsageWindow none = makeWindow(QStringLiteral("n"), UsageHorizon::billing, 1, 10);
        QCOMPARE(snapshotWith({later, none, soon}).nextReset(), std::optional<Timestamp>(Timestamp(500)));
        QCOMPARE(snapshotWith({later, past, soon}).nextReset(), std::optional<Timestamp>(Timestamp(-50)));
    }

    void agentAttribution() {
        UsageSnapshot s = snapshotWith({});
        s.modelSummaries = {
            UsageModelSummary{.modelName = QStringLiteral("m"),
                              .windows = {makeWindow(QStringLiteral("a"), UsageHorizon::shortTerm, 1, 10)}}};
        QVERIFY(!s.hasAgentAttribution());
        s.modelSummaries.append(
            UsageModelSummary{.modelName = QStringLiteral("n"),
                              .windows = {makeWindow(QStringLiteral("b"), UsageHorizon::weekly, 1, 10,
                                                     QStringLiteral("agent"))}});
        QVERIFY(s.hasAgentAttribution());
    }

    void equality() {
        const UsageSnapshot a =
            snapshotWith({makeWindow(QStringLiteral("s"), UsageHorizon::shortTerm, 1, 10)});
        UsageSnapshot b = a;
        QCOMPARE(a, b);
        QCOMPARE(qHash(a), qHash(b));
        b.warnings.append(QString());
        QVERIFY(a != b);
    }
};

QTEST_GUILESS_MAIN(TestUsageSnapshot)
#include "tst_usagesnapshot.moc"
