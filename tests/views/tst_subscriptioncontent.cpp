#include "views/AgentBudgetPanelContent.h"
#include "views/MatrixRowContent.h"
#include "views/ModelBreakdownContent.h"
#include "views/SubscriptionCardContent.h"

#include "store/ProviderAccount.h"

#include <QTest>

namespace {
const QLocale kEnglish(QStringLiteral("en_US"));
const QTimeZone kUTC(QByteArrayLiteral("UTC"));
const Timestamp kNow = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30), kUTC));

UsageWindow window(const QString& id, UsageHorizon horizon, std::optional<double> used,
                   std::optional<double> limit, UsageUnit unit = UsageUnit::requests) {
    return UsageWindow{.id = id, .title = id, .unit = unit, .horizon = horizon, .used = used, .limit = limit};
}

ProviderAccount::Init init() {
    return ProviderAccount::Init{
        .id = QUuid::fromString(QStringLiteral("1a2b3c4d-0000-4000-8000-000000000001")),
        .provider = AIProvider::openAI,
        .label = QStringLiteral("Work"),
        .accountKind = AccountKind::api};
}

UsageSnapshot snapshotWith(QList<UsageWindow> windows) {
    return UsageSnapshot{.source = UsageSource::manual,
                         .capturedAt = kNow,
                         .windows = std::move(windows),
                         .history = {},
                         .warnings = {}};
}
} // namespace

class TestSubscriptionContent final : public QObject {
    Q_OBJECT

private slots:
    void matrixCellsShowThreeAndSayHowManyMore() {
        QList<UsageWindow> four;
        for (int i = 0; i < 4; ++i) {
            four.append(window(QStringLiteral("w%1").arg(i), UsageHorizon::shortTerm, 10 + i,
                               i == 3 ? std::nullopt : std::optional<double>(60)));
        }
        const MatrixRowContent::Cell cell = MatrixRowContent::cell(four, kEnglish);
        QCOMPARE(cell.lines.size(), 3);
        QCOMPARE(cell.more, QStringLiteral("+1 more"));
        QCOMPARE(cell.lines[0].used, QStringLiteral("10 requests"));
        QCOMPARE(cell.lines[0].limit, QStringLiteral("of 60 requests"));
        QVERIFY(MatrixRowContent::cell(four.mid(0, 3), kEnglish).more.isEmpty());
        QCOMPARE(MatrixRowContent::cell(
                     {window(QStringLiteral("x"), UsageHorizon::shortTerm, 1, std::nullopt)}, kEnglish)
                     .lines[0]
                     .limit,
                 QStringLiteral("No limit"));
        QCOMPARE(MatrixRowContent::cell({}, kEnglish).empty, QStringLiteral("—"));
    }

    void matrixRow() {
        ProviderAccount account(init());
        QCOMPARE(MatrixRowContent::kColumns,
                 (QStringList{"Subscription", "Short term", "Weekly", "Pulse / status"}));
        MatrixRowContent row = MatrixRowContent::make(account, kNow, kEnglish);
        QCOMPARE(row.name, QStringLiteral("Work"));
        QCOMPARE(row.subtitle, QStringLiteral("OpenAI · #1A2B3C"));
        QCOMPARE(row.shortTerm.empty, QStringLiteral("—")); // no snapshot: empty lists
        QCOMPARE(row.weekly.empty, QStringLiteral("—"));
        QVERIFY(row.source.isEmpty());
        QCOMPARE(row.countdown, QStringLiteral("Reset not provided"));
        QCOMPARE(row.status, account.effectiveSyncStatus().title());

        account.setSnapshot(snapshotWith(
            {window(QStringLiteral("spend"), UsageHorizon::billing, 5, 10, UsageUnit::dollars)}));
        row = MatrixRowContent::make(account, kNow, kEnglish);
        QCOMPARE(row.billingOnly, QStringLiteral("Billing only"));
        QCOMPARE(row.source, UsageSource(UsageSource::manual).title());
    }

    void historicalOnlySummariesShowTheChartIcon() {
        UsageModelSummary summary{.modelName = QStringLiteral("gpt-4o"), .windows = {}};
        for (int i = 0; i < 5; ++i) {
            summary.windows.append(window(QStringLiteral("h%1").arg(i), UsageHorizon::historical,
                                          100 * (i + 1), std::nullopt, UsageUnit::tokens));
        }
        const ModelBreakdownContent breakdown = ModelBreakdownContent::make({summary}, kEnglish);
        QCOMPARE(breakdown.label, QStringLiteral("Model-level usage"));
        QCOMPARE(breakdown.symbol, QStringLiteral("cpu"));
        QCOMPARE(breakdown.rows.size(), 1);
        QCOMPARE(breakdown.rows[0].symbol, QStringLiteral("chart.xyaxis.line"));
        QCOMPARE(breakdown.rows[0].symbolName, QStringLiteral("Historical model usage"));
        QCOMPARE(breakdown.rows[0].historical.size(), 3); // at most three
        QCOMPARE(breakdown.rows[0].historical[0],
                 UsageHorizon(UsageHorizon::historical).title() + QStringLiteral(": 100 tokens"));
        QCOMPARE(breakdown.attributionNote,
                 QStringLiteral("Model rows preserve the provider-reported horizon. Agent/key attribution "
                                "appears when the provider returns it."));

        UsageModelSummary attributed{.modelName = QStringLiteral("o3 · key_1"),
                                     .windows = {window(QStringLiteral("s"), UsageHorizon::shortTerm, 1, 2)}};
        attributed.windows[0].agentLabel = QStringLiteral("key_1");
        const ModelBreakdownContent withAgents = ModelBreakdownContent::make({attributed}, kEnglish);
        QCOMPARE(withAgents.label, QStringLiteral("Model & agent usage"));
        QVERIFY(withAgents.rows[0].symbol.isEmpty()); // a pulse dot instead
        QVERIFY(!withAgents.rows[0].dot.accessibleName.isEmpty());
        QVERIFY(withAgents.attributionNote.startsWith(
            QStringLiteral("Agent/key attribution is provider-reported")));
    }

    void billingOnlySnapshotsSayWhatTheyHave() {
        ProviderAccount account(init());
        account.setSnapshot(snapshotWith(
            {window(QStringLiteral("credits"), UsageHorizon::billing, 210, 500, UsageUnit::credits)}));
        account.setLastRefreshAt(kNow.addingSeconds(-7200));
        const SubscriptionCardContent card = SubscriptionCardContent::make(account, kNow, kEnglish, kUTC);
        QVERIFY(card.hasSnapshot);
        QCOMPARE(card.horizons.size(), 2);
        for (const HorizonPanelContent& panel : card.horizons) {
            QVERIFY(panel.rows.isEmpty());
            QCOMPARE(panel.unavailableTitle, QStringLiteral("Not available from provider"));
            QCOMPARE(panel.unavailableMessage,
                     QStringLiteral("This horizon is not exposed for this subscription."));
        }
        QCOMPARE(card.horizons[0].title, QStringLiteral("Short term"));
        QCOMPARE(card.horizons[1].title, QStringLiteral("Weekly"));
        QVERIFY(card.billingOnly);
        QCOMPARE(card.billingOnlyText,
                 QStringLiteral("Billing-only signal — no short-term or weekly quota is published"));
        QCOMPARE(card.billingOnly->accessibleName,
                 QStringLiteral("Usage pulse: ") + UsageHealth(UsageHealth::healthy).title());
        QCOMPARE(card.additionalHeading, QStringLiteral("Other tracked signals"));
        QCOMPARE(card.additional.size(), 1);
        QCOMPARE(card.additional[0].limitText, QStringLiteral("290 credits remaining"));
        QCOMPARE(card.trendUnit, QStringLiteral("No history"));
        QCOMPARE(card.resetDate, QStringLiteral("No reset reported"));
        QCOMPARE(card.updated, QStringLiteral("Updated 2 hr. ago"));
        QCOMPARE(card.badges.size(), 3); // pulse, status and source
    }

    void identityChips() {
        ProviderAccount account(init());
        account.setModelScope(QStringLiteral("gpt-4o"));
        account.setAgentScope(QStringLiteral("key:abc"));
        account.setAgentCount(1);
        account.setRenewalDate(kNow.addingSeconds(86400));
        const SubscriptionCardContent card = SubscriptionCardContent::make(account, kNow, kEnglish, kUTC);
        QCOMPARE(card.subtitle,
                 QStringLiteral("OpenAI · #1A2B3C · ") + AccountKind(AccountKind::api).title());
        QCOMPARE(card.chips.size(), 4);
        QCOMPARE(card.chips[0],
                 (SubscriptionCardContent::Chip{QStringLiteral("cpu"), QStringLiteral("gpt-4o")}));
        QCOMPARE(card.chips[1].text, QStringLiteral("key:abc"));
        QCOMPARE(card.chips[2].text, QStringLiteral("1 agents")); // the plural, on purpose
        QVERIFY(card.chips[3].text.startsWith(QStringLiteral("Renews Apr 3, 2026")));
        QCOMPARE(card.updated, QStringLiteral("Updated Never"));
    }

    void budgetsOnlyWithASnapshot() {
        ProviderAccount account(init());
        account.setAgentBudgets({AgentBudget{.id = QStringLiteral("b"),
                                             .name = QStringLiteral("Scout"),
                                             .unit = UsageUnit::tokens,
                                             .shortUsed = 3,
                                             .shortLimit = 10,
                                             .weeklyLimit = 50}});
        account.setSyncMessage(QStringLiteral("Not refreshed yet"));
        SubscriptionCardContent card = SubscriptionCardContent::make(account, kNow, kEnglish, kUTC);
        QVERIFY(!card.hasSnapshot);
        QCOMPARE(card.noSnapshotTitle, QStringLiteral("No snapshot yet"));
        QCOMPARE(card.noSnapshotMessage, QStringLiteral("Not refreshed yet"));
        QCOMPARE(card.noSnapshotSymbol, QStringLiteral("exclamationmark.circle"));
        QVERIFY(!card.budgets); // the card ends at "No snapshot yet"
        QVERIFY(card.horizons.isEmpty());
        QCOMPARE(card.badges.size(), 2); // no source without a snapshot

        account.setSnapshot(snapshotWith({window(QStringLiteral("s"), UsageHorizon::shortTerm, 1, 2)}));
        card = SubscriptionCardContent::make(account, kNow, kEnglish, kUTC);
        QVERIFY(card.budgets);
        QCOMPARE(card.budgets->label, QStringLiteral("Manual agent budgets"));
        QCOMPARE(card.budgets->note,
                 QStringLiteral("Operator-entered budgets; they are not provider-reported limits."));
        QCOMPARE(card.budgets->rows[0].shortValue, QStringLiteral("3 tokens / 10 tokens"));
        QCOMPARE(card.budgets->rows[0].weekValue, QStringLiteral("—")); // a limit without a used value
        QVERIFY(!card.billingOnly);
        QVERIFY(!card.models);

        account.setAgentBudgets({});
        card = SubscriptionCardContent::make(account, kNow, kEnglish, kUTC);
        QVERIFY(!card.budgets);
    }

    void horizonRows() {
        UsageWindow w = window(QStringLiteral("Messages / 5 hours"), UsageHorizon::shortTerm, 34, 50,
                               UsageUnit::messages);
        w.resetAt = kNow.addingSeconds(7920);
        w.modelName = QStringLiteral("Claude Sonnet");
        const HorizonPanelContent::Row row = HorizonPanelContent::row(w, kNow, kEnglish, kUTC);
        QCOMPARE(row.used, QStringLiteral("34 messages"));
        QCOMPARE(row.remainder, QStringLiteral("16 messages remaining"));
        QCOMPARE(row.ceiling, QStringLiteral("of 50 messages"));
        QCOMPARE(row.progress, 0.68);
        QCOMPARE(row.countdown, QStringLiteral("in 2h 12m"));
        QCOMPARE(row.modelName, QStringLiteral("Claude Sonnet"));
        QCOMPARE(row.modelSymbol, QStringLiteral("cpu"));
        const HorizonPanelContent::Row noLimit = HorizonPanelContent::row(
            window(QStringLiteral("x"), UsageHorizon::weekly, 3, std::nullopt), kNow, kEnglish, kUTC);
        QCOMPARE(noLimit.noLimit, QStringLiteral("Limit not reported by provider"));
        QVERIFY(noLimit.remainder.isEmpty());
        QVERIFY(noLimit.resetDate.isEmpty());
        QCOMPARE(SubscriptionCardContent::additionalRow(
                     window(QStringLiteral("x"), UsageHorizon::billing, 3, std::nullopt), kEnglish)
                     .limitText,
                 QStringLiteral("No limit"));
    }

    void budgetFigures() {
        QCOMPARE(AgentBudgetPanelContent::metricText(std::nullopt, std::nullopt, UsageUnit::tokens, kEnglish),
                 QStringLiteral("—"));
        QCOMPARE(AgentBudgetPanelContent::metricText(std::nullopt, 10, UsageUnit::tokens, kEnglish),
                 QStringLiteral("—"));
        QCOMPARE(AgentBudgetPanelContent::metricText(4, std::nullopt, UsageUnit::tokens, kEnglish),
                 QStringLiteral("4 tokens"));
        QCOMPARE(AgentBudgetPanelContent::metricText(4, 10, UsageUnit::dollars, kEnglish),
                 QStringLiteral("4.00 USD / 10.00 USD"));
    }
};

QTEST_GUILESS_MAIN(TestSubscriptionContent)
#include "tst_subscriptioncontent.moc"
