#include "views/Tone.h"

#include <QTest>

class TestTone final : public QObject {
    Q_OBJECT

private slots:
    void statuses_data() {
        QTest::addColumn<QString>("status");
        QTest::addColumn<int>("tone");
        QTest::newRow("current") << "current" << int(Tone::positive);
        QTest::newRow("stale") << "stale" << int(Tone::caution);
        QTest::newRow("partial") << "partial" << int(Tone::caution);
        QTest::newRow("offline") << "offline" << int(Tone::critical);
        QTest::newRow("unauthorized") << "unauthorized" << int(Tone::critical);
        QTest::newRow("rate limited") << "rateLimited" << int(Tone::critical);
        QTest::newRow("needs attention") << "needsAttention" << int(Tone::critical);
        QTest::newRow("unsupported") << "unsupported" << int(Tone::muted);
    }
    void statuses() {
        QFETCH(QString, status);
        QFETCH(int, tone);
        const std::optional<SyncStatus> parsed = SyncStatus::fromRawValue(status);
        QVERIFY(parsed);
        QCOMPARE(static_cast<int>(Tones::forStatus(*parsed)), tone);
    }

    void everyStatusHasARow() { QCOMPARE(SyncStatus::allCases().size(), 8); }

    void healths_data() {
        QTest::addColumn<QString>("health");
        QTest::addColumn<int>("tone");
        QTest::newRow("healthy") << "healthy" << int(Tone::positive);
        QTest::newRow("watch") << "watch" << int(Tone::caution);
        QTest::newRow("urgent") << "urgent" << int(Tone::critical);
        QTest::newRow("unavailable") << "unavailable" << int(Tone::muted);
    }
    void healths() {
        QFETCH(QString, health);
        QFETCH(int, tone);
        const std::optional<UsageHealth> parsed = UsageHealth::fromRawValue(health);
        QVERIFY(parsed);
        QCOMPARE(static_cast<int>(Tones::forHealth(*parsed)), tone);
    }
};

QTEST_GUILESS_MAIN(TestTone)
#include "tst_tone.moc"
