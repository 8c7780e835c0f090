#include "views/StatusCardsContent.h"

#include "store/ProviderAccount.h"

#include <QTest>

namespace {
const QLocale kEnglish(QStringLiteral("en_US"));
const QTimeZone kUTC(QByteArrayLiteral("UTC"));
const Timestamp kNow(800'000'000);
} // namespace

class TestStatusCardsContent final : public QObject {
    Q_OBJECT

private slots:
    void emptyStateShowsAButtonOnlyWithTitleAndAction() {
        const auto both = StatusCardsContent::emptyState(
            QStringLiteral("No accounts"), QStringLiteral("Add one."), QStringLiteral("Add Account"), true);
        QCOMPARE(both.symbol, QStringLiteral("tray"));
        QCOMPARE(both.actionTitle, std::optional<QString>(QStringLiteral("Add Account")));
        QCOMPARE(StatusCardsContent::EmptyState::kMessageWidth, 420);
        QVERIFY(!StatusCardsContent::emptyState(QStringLiteral("t"), QStringLiteral("m"),
                                                QStringLiteral("Go"), false)
                     .actionTitle);
        QVERIFY(!StatusCardsContent::emptyState(QStringLiteral("t"), QStringLiteral("m"), std::nullopt, true)
                     .actionTitle);
    }

    void unavailableMetric() {
        const auto panel =
            StatusCardsContent::unavailable(QStringLiteral("Spend"), QStringLiteral("no cost signal"));
        QCOMPARE(panel.symbol, QStringLiteral("minus.circle"));
        QCOMPARE(panel.title, QStringLiteral("Spend"));
    }

    void accountSummaryUsesTheStoredStatus() {
        ProviderAccount account(ProviderAccount::Init{.provider = AIProvider::anthropic,
                                                      .label = QStringLiteral("Claude"),
                                                      .accountKind = AccountKind::consumer,
                                                      .syncStatus = SyncStatus::current});
        auto summary = StatusCardsContent::accountSummary(account, kNow, kEnglish, kUTC);
        QCOMPARE(summary.status.text, SyncStatus(SyncStatus::current).title()); // stored, though it has aged
        QCOMPARE(summary.symbol, QStringLiteral("sparkles"));
        QCOMPARE(summary.noSnapshot, QStringLiteral("No snapshot yet — refresh or add manual data."));
        account.setSnapshot(UsageSnapshot{.source = UsageSource::manual,
                                          .capturedAt = kNow,
                                          .windows = {UsageWindow{.id = QStringLiteral("a"),
                                                                  .title = QStringLiteral("A"),
                                                                  .unit = UsageUnit::messages,
                                                                  .used = 1,
                                                                  .limit = 5},
                                                      UsageWindow{.id = QStringLiteral("b"),
                                                                  .title = QStringLiteral("B"),
                                                                  .unit = UsageUnit::messages},
                                                      UsageWindow{.id = QStringLiteral("c"),
                                                                  .title = QStringLiteral("C"),
                                                                  .unit = UsageUnit::messages}},
                                          .history = {},
                                          .warnings = {}});
        account.setLastRefreshAt(kNow.addingSeconds(-60));
        summary = StatusCardsContent::accountSummary(account, kNow, kEnglish, kUTC);
        QCOMPARE(summary.windows.size(), 2);
        QCOMPARE(summary.windows[0].second, QStringLiteral("4 messages remaining"));
        QCOMPARE(summary.windows[1].second, QStringLiteral("Not available from provider"));
        QCOMPARE(summary.updated, QStringLiteral("Updated 1 min. ago"));
    }

    void metricCell() {
        const UsageWindow over{.id = QStringLiteral("w"),
                               .title = QStringLiteral("Tokens"),
                               .unit = UsageUnit::tokens,
                               .used = 12,
                               .limit = 10};
        auto cell = StatusCardsContent::metricCell(over, kNow, kEnglish);
        QCOMPARE(cell.progressTone, Tone::critical);
        QCOMPARE(cell.remainder, QStringLiteral("2 tokens over"));
        QCOMPARE(cell.ceiling, QStringLiteral("of 10 tokens"));
        QCOMPARE(cell.countdown, QStringLiteral("Reset not provided"));
        const UsageWindow bare{.id = QStringLiteral("w"),
                               .title = QStringLiteral("Tokens"),
                               .unit = UsageUnit::tokens,
                               .used = 3};
        cell = StatusCardsContent::metricCell(bare, kNow, kEnglish);
        QCOMPARE(cell.noLimit, QStringLiteral("Limit not reported"));
        QVERIFY(cell.remainder.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestStatusCardsContent)
#include "tst_statuscardscontent.moc"
