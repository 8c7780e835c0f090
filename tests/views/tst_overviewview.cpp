#include "views/OverviewView.h"

#include "model/Clock.h"
#include "store/ProviderAccount.h"

#include <QTest>

#include <memory>
#include <vector>

namespace {
const QLocale kEnglish(QStringLiteral("en_US"));
const QTimeZone kUTC(QByteArrayLiteral("UTC"));
const Timestamp kNow = Timestamp::fromDateTime(QDateTime(QDate(2026, 4, 2), QTime(9, 30), kUTC));

UsageWindow shortWindow(double used, std::optional<Timestamp> reset = std::nullopt) {
    return UsageWindow{.id = QStringLiteral("rpm"),
                       .title = QStringLiteral("Requests / minute"),
                       .unit = UsageUnit::requests,
                       .horizon = UsageHorizon::shortTerm,
                       .used = used,
                       .limit = 100,
                       .resetAt = reset};
}

UsageWindow dollarWindow(std::optional<double> used, const QString& id = QStringLiteral("spend")) {
    return UsageWindow{.id = id,
                       .title = QStringLiteral("API spend / 30 days"),
                       .unit = UsageUnit::dollars,
                       .horizon = UsageHorizon::billing,
                       .used = used};
}

// Accounts owned by the test, handed to the pure functions as the controller's list.
class Accounts {
public:
    ProviderAccount* add(const QString& label, AIProvider provider = AIProvider::openAI,
                         SyncStatus status = SyncStatus::current, QList<UsageWindow> windows = {},
                         UsageSource source = UsageSource::manual, bool sample = false) {
        auto account =
            std::make_unique<ProviderAccount>(ProviderAccount::Init{.provider = provider,
                                                                    .label = label,
                                                                    .accountKind = AccountKind::api,
                                                                    .createdAt = kNow,
                                                                    .lastRefreshAt = kNow,
                                                                    .syncStatus = status,
                                                                    .syncMessage = label + " message",
                                                                    .sampleDataEnabled = sample});
        if (!windows.isEmpty()) {
            account->setSnapshot(UsageSnapshot{.source = source,
                                               .capturedAt = kNow,
                                               .windows = std::move(windows),
                                               .history = {},
                                               .warnings = {}});
        }
        m_owned.push_back(std::move(account));
        m_list.append(m_owned.back().get());
        return m_list.last();
    }
    const QList<ProviderAccount*>& list() const { return m_list; }

private:
    std::vector<std::unique_ptr<ProviderAccount>> m_owned;
    QList<ProviderAccount*> m_list;
};

QStringList names(const QList<ProviderAccount*>& accounts) {
    QStringList result;
    for (const ProviderAccount* account : accounts) {
        result.append(account->displayName());
    }
    return result;
}
} // namespace

class TestOverviewView final : public QObject {
    Q_OBJECT

private slots:
    void init() { Clock::setFixedNow(kNow); }
    void cleanup() { Clock::setFixedNow(std::nullopt); }

    void pickersStartAsTheyShould() {
        QCOMPARE(MonitoringSort::allCases().size(), 3);
        QCOMPARE(MonitoringSort(MonitoringSort::attention).title(), QStringLiteral("Attention first"));
        QCOMPARE(MonitoringSort(MonitoringSort::nextReset).title(), QStringLiteral("Next reset"));
        QCOMPARE(MonitoringSort(MonitoringSort::name).title(), QStringLiteral("Name"));
        QCOMPARE(MonitoringViewMode(MonitoringViewMode::cards).title(), QStringLiteral("Cards"));
        QCOMPARE(MonitoringViewMode(MonitoringViewMode::matrix).title(), QStringLiteral("Matrix"));
        QCOMPARE(MonitoringViewMode(MonitoringViewMode::cards).icon(), QStringLiteral("rectangle.grid.1x2"));
        QCOMPARE(MonitoringViewMode(MonitoringViewMode::matrix).icon(), QStringLiteral("tablecells"));
    }

    void noAccountsReadZeroAndShowOnlyTheEmptyState() {
        const OverviewView::Screen screen =
            OverviewView::make(QStringLiteral("Overview"), {}, MonitoringSort::attention,
                               MonitoringViewMode::cards, kNow, kEnglish, kUTC);
        QCOMPARE(screen.header.title, QStringLiteral("Overview"));
        QCOMPARE(screen.header.tagline,
                 QStringLiteral(
                     "A calm view of usage, allowances, and reset timing across independent accounts."));
        const QList<OverviewView::SummaryTile> expected{
            {"Accounts", "0", "independent connections", "person.2.fill", Tone::accent},
            {"Current", "0", "fresh snapshots", "checkmark.circle.fill", Tone::accent},
            {"Attention", "0", "0 urgent · 0 watch", "exclamationmark.triangle.fill", Tone::positive},
            {"Next reset", "Reset not provided", "No reset reported", "timer", Tone::accent},
            {"Spend", "—", "no cost signal", "dollarsign.circle", Tone::accent},
        };
        QCOMPARE(screen.tiles, expected);
        QVERIFY(screen.emptyState);
        QCOMPARE(screen.emptyState->title, QStringLiteral("No accounts in this view"));
        QCOMPARE(screen.emptyState->message,
                 QStringLiteral(
                     "Add an account to start tracking provider-native limits, reset times, and freshness."));
        QCOMPARE(screen.emptyState->actionTitle, QStringLiteral("Add Account"));
        QVERIFY(!screen.sampleNotice);
        QVERIFY(!screen.attention);
        QVERIFY(!screen.monitoring);
    }

    void currentCountsOneInTheSingular() {
        Accounts accounts;
        accounts.add(QStringLiteral("A"), AIProvider::openAI, SyncStatus::current, {shortWindow(10)});
        QCOMPARE(OverviewView::summaryTiles(accounts.list(), kNow, kEnglish, kUTC)[1].detail,
                 QStringLiteral("fresh snapshot"));
        accounts.add(QStringLiteral("B"), AIProvider::openAI, SyncStatus::current, {shortWindow(10)});
        const auto tiles = OverviewView::summaryTiles(accounts.list(), kNow, kEnglish, kUTC);
        QCOMPARE(tiles[1].value, QStringLiteral("2"));
        QCOMPARE(tiles[1].detail, QStringLiteral("fresh snapshots"));
    }

    void attentionTileCountsUrgentAndWatch() {
        Accounts accounts;
        accounts.add(QStringLiteral("Urgent"), AIProvider::openAI, SyncStatus::current, {shortWindow(95)});
        accounts.add(QStringLiteral("Watch"), AIProvider::openAI, SyncStatus::current, {shortWindow(80)});
        accounts.add(QStringLiteral("Quiet"), AIProvider::openAI, SyncStatus::current, {shortWindow(10)});
        const OverviewView::SummaryTile tile =
            OverviewView::summaryTiles(accounts.list(), kNow, kEnglish, kUTC)[2];
        QCOMPARE(tile.value, QStringLiteral("2"));
        QCOMPARE(tile.detail, QStringLiteral("1 urgent · 1 watch"));
        QCOMPARE(tile.accent, Tone::critical);
        Accounts watchOnly;
        watchOnly.add(QStringLiteral("Watch"), AIProvider::openAI, SyncStatus::current, {shortWindow(80)});
        QCOMPARE(OverviewView::summaryTiles(watchOnly.list(), kNow, kEnglish, kUTC)[2].accent, Tone::caution);
    }

    void aResetExactlyNowIsOverdue() {
        Accounts accounts;
        accounts.add(QStringLiteral("A"), AIProvider::openAI, SyncStatus::current,
                     {shortWindow(10, kNow.addingSeconds(3600))});
        OverviewView::SummaryTile tile = OverviewView::summaryTiles(accounts.list(), kNow, kEnglish, kUTC)[3];
        QCOMPARE(tile.title, QStringLiteral("Next reset"));
        QCOMPARE(tile.value, QStringLiteral("in 1h 0m"));
        QCOMPARE(tile.detail, QStringLiteral("Apr 2, 2026, 10:30\u202FAM"));
        QCOMPARE(tile.accent, Tone::accent);
        tile = OverviewView::summaryTiles(accounts.list(), kNow.addingSeconds(3600), kEnglish, kUTC)[3];
        QCOMPARE(tile.title, QStringLiteral("Overdue reset"));
        QCOMPARE(tile.accent, Tone::critical);
    }

    void spendAddsMixedSourcesAndSaysSo() {
        Accounts accounts;
        accounts.add(QStringLiteral("Mock"), AIProvider::openAI, SyncStatus::current, {dollarWindow(10.5)},
                     UsageSource::mock);
        accounts.add(QStringLiteral("Manual"), AIProvider::openAI, SyncStatus::current, {dollarWindow(4.25)},
                     UsageSource::manual);
        const OverviewView::SummaryTile tile =
            OverviewView::summaryTiles(accounts.list(), kNow, kEnglish, kUTC)[4];
        QCOMPARE(tile.value, QStringLiteral("14.75 USD"));
        QCOMPARE(tile.detail, QStringLiteral("mixed data sources"));
    }

    void onlyTheFirstDollarWindowCounts() {
        Accounts accounts;
        accounts.add(QStringLiteral("Two"), AIProvider::openAI, SyncStatus::current,
                     {dollarWindow(3, QStringLiteral("first")), dollarWindow(100, QStringLiteral("second"))},
                     UsageSource::officialAPI);
        const OverviewView::SummaryTile tile =
            OverviewView::summaryTiles(accounts.list(), kNow, kEnglish, kUTC)[4];
        QCOMPARE(tile.value, QStringLiteral("3.00 USD"));
        QCOMPARE(tile.detail, UsageSource(UsageSource::officialAPI).title() + QStringLiteral(" signal"));
    }

    void aDollarWindowWithoutUsedStillCounts() {
        Accounts accounts;
        accounts.add(QStringLiteral("Empty"), AIProvider::openAI, SyncStatus::current,
                     {dollarWindow(std::nullopt)}, UsageSource::manual);
        const OverviewView::SummaryTile tile =
            OverviewView::summaryTiles(accounts.list(), kNow, kEnglish, kUTC)[4];
        QCOMPARE(tile.value, QStringLiteral("0.00 USD"));
        QCOMPARE(tile.detail, UsageSource(UsageSource::manual).title() + QStringLiteral(" signal"));
    }

    void aCurrentAccountWithoutAPulseIsNotListed() {
        Accounts accounts;
        accounts.add(QStringLiteral("No data"), AIProvider::openAI, SyncStatus::current,
                     {UsageWindow{.id = QStringLiteral("x"),
                                  .title = QStringLiteral("x"),
                                  .unit = UsageUnit::requests,
                                  .horizon = UsageHorizon::shortTerm}});
        QCOMPARE(accounts.list().first()->pulse(), UsageHealth::unavailable);
        QVERIFY(!OverviewView::attentionSection(accounts.list()));
    }

    void aNotCurrentAccountIsListedWithItsMessage() {
        Accounts accounts;
        accounts.add(QStringLiteral("Quiet"), AIProvider::openAI, SyncStatus::current, {shortWindow(10)});
        accounts.add(QStringLiteral("Offline"), AIProvider::anthropic, SyncStatus::offline,
                     {shortWindow(10)});
        accounts.add(QStringLiteral("Busy"), AIProvider::openAI, SyncStatus::current, {shortWindow(80)});
        const auto section = OverviewView::attentionSection(accounts.list());
        QVERIFY(section);
        QCOMPARE(section->heading.title, QStringLiteral("Needs attention"));
        QCOMPARE(section->heading.subtitle,
                 QStringLiteral("Stale, partial, unsupported, or unavailable data stays visible."));
        QCOMPARE(section->rows.size(), 2); // in the list's order, not sorted
        QCOMPARE(section->rows[0].name, QStringLiteral("Offline"));
        QCOMPARE(section->rows[0].message, QStringLiteral("Offline message"));
        QCOMPARE(section->rows[0].provider, AIProvider::anthropic);
        QCOMPARE(section->rows[1].message, QStringLiteral("Usage pulse: Watch"));
        QCOMPARE(section->rows[1].pulse, Badge::pulse(UsageHealth::watch));
    }

    void sampleNoticeOnlyWithSamples() {
        Accounts accounts;
        accounts.add(QStringLiteral("Real"));
        QVERIFY(!OverviewView::sampleDataNotice(accounts.list()));
        accounts.add(QStringLiteral("Sample"), AIProvider::openAI, SyncStatus::current, {}, UsageSource::mock,
                     true);
        const auto notice = OverviewView::sampleDataNotice(accounts.list());
        QVERIFY(notice);
        QCOMPARE(notice->icon, QStringLiteral("sparkles.rectangle.stack.fill"));
        QCOMPARE(notice->title, QStringLiteral("You’re looking at sample data"));
        QCOMPARE(notice->message,
                 QStringLiteral("Sample records are local examples. They never contact a provider "
                                "and are labeled in every account view."));
        QCOMPARE(notice->actionTitle, QStringLiteral("Clear sample data"));
    }

    void statusAndHealthPriorities() {
        QCOMPARE(OverviewView::statusPriority(SyncStatus::current), 0);
        QCOMPARE(OverviewView::statusPriority(SyncStatus::stale), 1);
        QCOMPARE(OverviewView::statusPriority(SyncStatus::partial), 1);
        QCOMPARE(OverviewView::statusPriority(SyncStatus::unsupported), 2);
        QCOMPARE(OverviewView::statusPriority(SyncStatus::needsAttention), 2);
        QCOMPARE(OverviewView::statusPriority(SyncStatus::offline), 3);
        QCOMPARE(OverviewView::statusPriority(SyncStatus::unauthorized), 3);
        QCOMPARE(OverviewView::statusPriority(SyncStatus::rateLimited), 3);
        QCOMPARE(UsageHealth(UsageHealth::unavailable).priority(), -1);
        QCOMPARE(UsageHealth(UsageHealth::urgent).priority(), 2);
    }

    void attentionSortWeighsThePulseDouble() {
        Accounts accounts;
        accounts.add(QStringLiteral("Stale"), AIProvider::openAI, SyncStatus::stale, {shortWindow(10)});
        accounts.add(QStringLiteral("Urgent current"), AIProvider::openAI, SyncStatus::current,
                     {shortWindow(95)});
        accounts.add(QStringLiteral("Quiet"), AIProvider::openAI, SyncStatus::current, {shortWindow(10)});
        accounts.add(QStringLiteral("Unavailable"), AIProvider::openAI, SyncStatus::current,
                     {UsageWindow{.id = QStringLiteral("x"),
                                  .title = QStringLiteral("x"),
                                  .unit = UsageUnit::requests,
                                  .horizon = UsageHorizon::shortTerm}});
        accounts.add(QStringLiteral("Offline"), AIProvider::openAI, SyncStatus::offline, {shortWindow(10)});
        // A stale account's pulse is at least watch: 1 + 2 × 1; urgent and current: 0 + 2 × 2.
        QCOMPARE(OverviewView::attentionScore(*accounts.list()[0]), 3);
        QCOMPARE(OverviewView::attentionScore(*accounts.list()[1]), 4);
        QCOMPARE(OverviewView::attentionScore(*accounts.list()[2]), 0);
        QCOMPARE(OverviewView::attentionScore(*accounts.list()[3]), -2);
        QCOMPARE(OverviewView::attentionScore(*accounts.list()[4]), 7);
        QCOMPARE(names(OverviewView::sortedAccounts(accounts.list(), MonitoringSort::attention)),
                 (QStringList{"Offline", "Urgent current", "Stale", "Quiet", "Unavailable"}));
    }

    void equalScoresFallBackToNamesByNumberValue() {
        Accounts accounts;
        accounts.add(QStringLiteral("Team 10"), AIProvider::openAI, SyncStatus::current, {shortWindow(10)});
        accounts.add(QStringLiteral("Team 2"), AIProvider::openAI, SyncStatus::current, {shortWindow(10)});
        QCOMPARE(names(OverviewView::sortedAccounts(accounts.list(), MonitoringSort::attention)),
                 (QStringList{"Team 2", "Team 10"}));
        QCOMPARE(names(OverviewView::sortedAccounts(accounts.list(), MonitoringSort::name)),
                 (QStringList{"Team 2", "Team 10"}));
    }

    void nextResetPutsAccountsWithoutOneLastInNameOrder() {
        Accounts accounts;
        accounts.add(QStringLiteral("Zed none"));
        accounts.add(QStringLiteral("Late"), AIProvider::openAI, SyncStatus::current,
                     {shortWindow(10, kNow.addingSeconds(7200))});
        accounts.add(QStringLiteral("Alpha none"), AIProvider::openAI, SyncStatus::current,
                     {shortWindow(10)});
        accounts.add(QStringLiteral("Overdue"), AIProvider::openAI, SyncStatus::current,
                     {shortWindow(10, kNow.addingSeconds(-60))});
        QCOMPARE(names(OverviewView::sortedAccounts(accounts.list(), MonitoringSort::nextReset)),
                 (QStringList{"Overdue", "Late", "Alpha none", "Zed none"}));
    }

    void equalNamesKeepTheirOrder() {
        Accounts accounts;
        ProviderAccount* first = accounts.add(QStringLiteral("Same"));
        ProviderAccount* second = accounts.add(QStringLiteral("Same"));
        const auto sorted = OverviewView::sortedAccounts(accounts.list(), MonitoringSort::name);
        QCOMPARE(sorted, (QList<ProviderAccount*>{first, second}));
    }

    void providerGroupsKeepTheirOrderWhateverTheSort() {
        Accounts accounts;
        accounts.add(QStringLiteral("Gemini urgent"), AIProvider::gemini, SyncStatus::current,
                     {shortWindow(95)});
        accounts.add(QStringLiteral("OpenAI healthy"), AIProvider::openAI, SyncStatus::current,
                     {shortWindow(10)});
        accounts.add(QStringLiteral("OpenAI watch"), AIProvider::openAI, SyncStatus::current,
                     {shortWindow(80)});
        const OverviewView::MonitoringSection section = OverviewView::monitoringSection(
            accounts.list(), MonitoringSort::attention, MonitoringViewMode::cards);
        QCOMPARE(section.heading.title, QStringLiteral("Subscription monitoring"));
        QCOMPARE(
            section.heading.subtitle,
            QStringLiteral(
                "Every subscription keeps its own native units, limits, freshness, and reset schedule."));
        QCOMPARE(section.viewPickerLabel, QStringLiteral("Monitoring view"));
        QCOMPARE(section.sortPickerLabel, QStringLiteral("Sort subscriptions"));
        QCOMPARE(section.cardHint, QStringLiteral("Open subscription details"));
        QCOMPARE(section.groups.size(), 2);
        QCOMPARE(section.groups[0].provider, AIProvider::openAI);
        QCOMPARE(section.groups[0].count, QStringLiteral("2 subscriptions"));
        QCOMPARE(names(section.groups[0].accounts), (QStringList{"OpenAI watch", "OpenAI healthy"}));
        QCOMPARE(section.groups[1].provider, AIProvider::gemini);
        QCOMPARE(section.groups[1].title, AIProvider(AIProvider::gemini).displayName());
        QCOMPARE(section.groups[1].count, QStringLiteral("1 subscription"));
        // The matrix lists everyone sorted, across providers.
        const OverviewView::MonitoringSection matrix = OverviewView::monitoringSection(
            accounts.list(), MonitoringSort::attention, MonitoringViewMode::matrix);
        QVERIFY(matrix.groups.isEmpty());
        QCOMPARE(names(matrix.sorted), (QStringList{"Gemini urgent", "OpenAI watch", "OpenAI healthy"}));
    }

    void aScreenWithAccountsHasNoEmptyState() {
        Accounts accounts;
        accounts.add(QStringLiteral("A"), AIProvider::openAI, SyncStatus::current, {shortWindow(10)});
        const OverviewView::Screen screen =
            OverviewView::make(QStringLiteral("OpenAI"), accounts.list(), MonitoringSort::name,
                               MonitoringViewMode::matrix, kNow, kEnglish, kUTC);
        QVERIFY(!screen.emptyState);
        QVERIFY(!screen.attention);
        QVERIFY(screen.monitoring);
        QCOMPARE(screen.monitoring->viewMode, MonitoringViewMode::matrix);
        QCOMPARE(screen.monitoring->sort, MonitoringSort::name);
    }
};

QTEST_GUILESS_MAIN(TestOverviewView)
#include "tst_overviewview.moc"
