#include "views/Badge.h"

#include <QTest>

class TestBadge final : public QObject {
    Q_OBJECT

private slots:
    void statusBadges_data() {
        QTest::addColumn<QString>("status");
        QTest::addColumn<QString>("symbol");
        QTest::addColumn<int>("tone");
        QTest::newRow("current") << "current"
                                 << "checkmark.circle.fill" << int(Tone::positive);
        QTest::newRow("stale") << "stale"
                               << "clock.badge.exclamationmark" << int(Tone::caution);
        QTest::newRow("partial") << "partial"
                                 << "circle.lefthalf.filled" << int(Tone::caution);
        QTest::newRow("offline") << "offline"
                                 << "wifi.slash" << int(Tone::critical);
        QTest::newRow("unauthorized") << "unauthorized"
                                      << "lock.trianglebadge.exclamationmark" << int(Tone::critical);
        QTest::newRow("unsupported") << "unsupported"
                                     << "questionmark.circle" << int(Tone::muted);
        QTest::newRow("rate limited") << "rateLimited"
                                      << "hourglass" << int(Tone::critical);
        QTest::newRow("needs attention") << "needsAttention"
                                         << "exclamationmark.triangle" << int(Tone::critical);
    }
    void statusBadges() {
        QFETCH(QString, status);
        QFETCH(QString, symbol);
        QFETCH(int, tone);
        const SyncStatus value = *SyncStatus::fromRawValue(status);
        const Badge badge = Badge::status(value);
        QCOMPARE(badge.symbol, symbol);
        QCOMPARE(badge.text, value.title());
        QCOMPARE(static_cast<int>(badge.tone), tone);
        QCOMPARE(badge.accessibleName, value.title());
    }

    void pulseBadgesAndDots_data() {
        QTest::addColumn<QString>("health");
        QTest::addColumn<QString>("symbol");
        QTest::addColumn<int>("tone");
        QTest::newRow("healthy") << "healthy"
                                 << "waveform.path.ecg" << int(Tone::positive);
        QTest::newRow("watch") << "watch"
                               << "eye" << int(Tone::caution);
        QTest::newRow("urgent") << "urgent"
                                << "exclamationmark.triangle.fill" << int(Tone::critical);
        QTest::newRow("unavailable") << "unavailable"
                                     << "minus.circle" << int(Tone::muted);
    }
    void pulseBadgesAndDots() {
        QFETCH(QString, health);
        QFETCH(QString, symbol);
        QFETCH(int, tone);
        const UsageHealth value = *UsageHealth::fromRawValue(health);
        const Badge badge = Badge::pulse(value);
        QCOMPARE(badge.symbol, symbol);
        QCOMPARE(badge.text, value.title());
        QCOMPARE(static_cast<int>(badge.tone), tone);
        QCOMPARE(badge.accessibleName, QStringLiteral("Usage pulse: ") + value.title());
        const Badge dot = Badge::dot(value);
        QVERIFY(dot.text.isEmpty()); // a dot has no text, only its name
        QCOMPARE(dot.accessibleName, value.title());
        QCOMPARE(static_cast<int>(dot.tone), tone);
    }

    void sourceBadges_data() {
        QTest::addColumn<QString>("source");
        QTest::addColumn<QString>("symbol");
        QTest::newRow("mock") << "mock"
                              << "wand.and.stars";
        QTest::newRow("manual") << "manual"
                                << "pencil";
        QTest::newRow("official API") << "officialAPI"
                                      << "network";
    }
    void sourceBadges() {
        QFETCH(QString, source);
        QFETCH(QString, symbol);
        const UsageSource value = *UsageSource::fromRawValue(source);
        const Badge badge = Badge::source(value);
        QCOMPARE(badge.symbol, symbol);
        QCOMPARE(badge.text, value.title());
        QCOMPARE(badge.tone, Tone::muted); // on a faint secondary fill
        QCOMPARE(badge.accessibleName, QStringLiteral("Data source: ") + value.title());
    }

    void unitSymbols_data() {
        QTest::addColumn<QString>("unit");
        QTest::addColumn<QString>("symbol");
        QTest::newRow("messages") << "messages"
                                  << "message.fill";
        QTest::newRow("requests") << "requests"
                                  << "arrow.up.right.circle.fill";
        QTest::newRow("tokens") << "tokens"
                                << "textformat.123";
        QTest::newRow("credits") << "credits"
                                 << "creditcard.fill";
        QTest::newRow("dollars") << "dollars"
                                 << "dollarsign.circle.fill";
        QTest::newRow("items") << "items"
                               << "square.grid.2x2.fill";
    }
    void unitSymbols() {
        QFETCH(QString, unit);
        QFETCH(QString, symbol);
        QCOMPARE(Badge::unitSymbol(*UsageUnit::fromRawValue(unit)), symbol);
    }
};

QTEST_GUILESS_MAIN(TestBadge)
#include "tst_badge.moc"
