#include "views/OverviewView.h"

#include "model/NaturalOrder.h"
#include "store/ProviderAccount.h"
#include "views/DisplayFormatters.h"

#include <QSet>

#include <algorithm>
#include <limits>

namespace {
QString count(qsizetype value, const QLocale& locale) {
    return locale.toString(static_cast<qlonglong>(value));
}

// An account's first dollar window among its billing windows, with its snapshot's source.
struct CostWindow {
    std::optional<double> used;
    UsageSource source;
};

std::optional<CostWindow> costWindow(const ProviderAccount& account) {
    const std::optional<UsageSnapshot> snapshot = account.snapshot();
    if (!snapshot) {
        return std::nullopt;
    }
    for (const UsageWindow& window : snapshot->billingWindows()) {
        if (window.unit == UsageUnit::dollars) {
            return CostWindow{window.used, snapshot->source};
        }
    }
    return std::nullopt;
}

double resetKey(const ProviderAccount& account) {
    const std::optional<UsageSnapshot> snapshot = account.snapshot();
    const std::optional<Timestamp> reset = snapshot ? snapshot->nextReset() : std::nullopt;
    return reset ? reset->secondsSinceReference() : std::numeric_limits<double>::infinity();
}
} // namespace

OverviewView::Screen OverviewView::make(const QString& title, const QList<ProviderAccount*>& accounts,
                                        MonitoringSort sort, MonitoringViewMode viewMode, Timestamp now,
                                        const QLocale& locale, const QTimeZone& timeZone) {
    Screen screen;
    screen.header = header(title);
    screen.tiles = summaryTiles(accounts, now, locale, timeZone);
    screen.sampleNotice = sampleDataNotice(accounts);
    if (accounts.isEmpty()) {
        screen.emptyState = emptyState();
        return screen;
    }
    screen.attention = attentionSection(accounts);
    screen.monitoring = monitoringSection(accounts, sort, viewMode, locale);
    return screen;
}

OverviewView::Header OverviewView::header(const QString& title) {
    return Header{
        title,
        QStringLiteral("A calm view of usage, allowances, and reset timing across independent accounts.")};
}

QList<OverviewView::SummaryTile> OverviewView::summaryTiles(const QList<ProviderAccount*>& accounts,
                                                            Timestamp now, const QLocale& locale,
                                                            const QTimeZone& timeZone) {
    qsizetype current = 0;
    qsizetype urgent = 0;
    qsizetype watch = 0;
    std::optional<Timestamp> earliest;
    bool anyCost = false;
    double spend = 0;
    QSet<UsageSource> sources;
    for (const ProviderAccount* account : accounts) {
        if (account->effectiveSyncStatus() == SyncStatus::current) {
            ++current;
        }
        const UsageHealth pulse = account->pulse();
        urgent += pulse == UsageHealth::urgent ? 1 : 0;
        watch += pulse == UsageHealth::watch ? 1 : 0;
        if (const std::optional<UsageSnapshot> snapshot = account->snapshot()) {
            if (const std::optional<Timestamp> reset = snapshot->nextReset()) {
                if (!earliest || *reset < *earliest) {
                    earliest = reset;
                }
            }
        }
        if (const std::optional<CostWindow> cost = costWindow(*account)) {
            anyCost = true;
            spend += cost->used.value_or(0);
            sources.insert(cost->source);
        }
    }

    const Tone attentionTone = urgent > 0 ? Tone::critical : watch > 0 ? Tone::caution : Tone::positive;
    const bool overdue = earliest && *earliest <= now;
    QString spendDetail = QStringLiteral("no cost signal");
    if (sources.size() == 1) {
        spendDetail = sources.cbegin()->title() + QStringLiteral(" signal");
    } else if (sources.size() > 1) {
        spendDetail = QStringLiteral("mixed data sources");
    }

    return {
        SummaryTile{QStringLiteral("Accounts"), count(accounts.size(), locale),
                    QStringLiteral("independent connections"), QStringLiteral("person.2.fill")},
        SummaryTile{QStringLiteral("Current"), count(current, locale),
                    current == 1 ? QStringLiteral("fresh snapshot") : QStringLiteral("fresh snapshots"),
                    QStringLiteral("checkmark.circle.fill")},
        SummaryTile{QStringLiteral("Attention"), count(urgent + watch, locale),
                    count(urgent, locale) + QStringLiteral(" urgent · ") + count(watch, locale) +
                        QStringLiteral(" watch"),
                    QStringLiteral("exclamationmark.triangle.fill"), attentionTone},
        SummaryTile{overdue ? QStringLiteral("Overdue reset") : QStringLiteral("Next reset"),
                    DisplayFormatters::resetCountdown(earliest, now),
                    earliest ? DisplayFormatters::dateTime(earliest, timeZone, locale)
                             : QStringLiteral("No reset reported"),
                    QStringLiteral("timer"), overdue ? Tone::critical : Tone::accent},
        SummaryTile{QStringLiteral("Spend"),
                    anyCost ? DisplayFormatters::metric(spend, UsageUnit::dollars, locale)
                            : QStringLiteral("—"),
                    spendDetail, QStringLiteral("dollarsign.circle")},
    };
}

std::optional<OverviewView::SampleDataNotice>
OverviewView::sampleDataNotice(const QList<ProviderAccount*>& accounts) {
    if (std::none_of(accounts.cbegin(), accounts.cend(),
                     [](const ProviderAccount* account) { return account->sampleDataEnabled(); })) {
        return std::nullopt;
    }
    return SampleDataNotice{
        QStringLiteral("sparkles.rectangle.stack.fill"), QStringLiteral("You’re looking at sample data"),
        QStringLiteral(
            "Sample records are local examples. They never contact a provider and are labeled in every "
            "account view."),
        QStringLiteral("Clear sample data")};
}

StatusCardsContent::EmptyState OverviewView::emptyState() {
    return StatusCardsContent::emptyState(
        QStringLiteral("No accounts in this view"),
        QStringLiteral(
            "Add an account to start tracking provider-native limits, reset times, and freshness."),
        QStringLiteral("Add Account"), true);
}

std::optional<OverviewView::AttentionSection>
OverviewView::attentionSection(const QList<ProviderAccount*>& accounts) {
    AttentionSection section{
        SectionHeading{QStringLiteral("Needs attention"),
                       QStringLiteral("Stale, partial, unsupported, or unavailable data stays visible.")},
        {}};
    for (const ProviderAccount* account : accounts) {
        const SyncStatus status = account->effectiveSyncStatus();
        const UsageHealth pulse = account->pulse();
        const bool current = status == SyncStatus::current;
        if (current && pulse != UsageHealth::urgent && pulse != UsageHealth::watch) {
            continue;
        }
        section.rows.append(
            AttentionRow{account->id(), account->provider(), account->displayName(),
                         current ? QStringLiteral("Usage pulse: ") + pulse.title() : account->syncMessage(),
                         Badge::pulse(pulse)});
    }
    if (section.rows.isEmpty()) {
        return std::nullopt;
    }
    return section;
}

OverviewView::MonitoringSection OverviewView::monitoringSection(const QList<ProviderAccount*>& accounts,
                                                                MonitoringSort sort,
                                                                MonitoringViewMode viewMode,
                                                                const QLocale& locale) {
    MonitoringSection section;
    section.heading = SectionHeading{
        QStringLiteral("Subscription monitoring"),
        QStringLiteral(
            "Every subscription keeps its own native units, limits, freshness, and reset schedule.")};
    section.viewPickerLabel = QStringLiteral("Monitoring view");
    section.sortPickerLabel = QStringLiteral("Sort subscriptions");
    section.viewMode = viewMode;
    section.sort = sort;
    section.cardHint = QStringLiteral("Open subscription details");
    section.sorted = sortedAccounts(accounts, sort);
    if (viewMode == MonitoringViewMode::cards) {
        for (const AIProvider provider : AIProvider::allCases()) {
            ProviderGroup group{provider, provider.displayName(), QString(), {}};
            for (ProviderAccount* account : section.sorted) {
                if (account->provider() == provider) {
                    group.accounts.append(account);
                }
            }
            if (group.accounts.isEmpty()) {
                continue;
            }
            const qsizetype size = group.accounts.size();
            group.count = count(size, locale) +
                          (size == 1 ? QStringLiteral(" subscription") : QStringLiteral(" subscriptions"));
            section.groups.append(group);
        }
    }
    return section;
}

QList<ProviderAccount*> OverviewView::sortedAccounts(const QList<ProviderAccount*>& accounts,
                                                     MonitoringSort sort) {
    QList<ProviderAccount*> sorted = accounts;
    // Names are compared once each way at most, and the keys read once per account.
    struct Keyed {
        ProviderAccount* account;
        QString name;
        int score;
        double reset;
    };
    QList<Keyed> keyed;
    keyed.reserve(sorted.size());
    for (ProviderAccount* account : sorted) {
        keyed.append(Keyed{account, account->displayName(),
                           sort == MonitoringSort::attention ? attentionScore(*account) : 0,
                           sort == MonitoringSort::nextReset ? resetKey(*account) : 0});
    }
    const auto byName = [](const Keyed& left, const Keyed& right) {
        return NaturalOrder::compare(left.name, right.name) < 0;
    };
    // A stable sort: equal names keep the caller's order.
    std::stable_sort(keyed.begin(), keyed.end(), [&](const Keyed& left, const Keyed& right) {
        switch (sort.value()) {
        case MonitoringSort::attention:
            if (left.score != right.score) {
                return left.score > right.score;
            }
            break;
        case MonitoringSort::nextReset:
            if (left.reset != right.reset) {
                return left.reset < right.reset;
            }
            break;
        case MonitoringSort::name:
            break;
        }
        return byName(left, right);
    });
    for (qsizetype i = 0; i < keyed.size(); ++i) {
        sorted[i] = keyed[i].account;
    }
    return sorted;
}

int OverviewView::statusPriority(SyncStatus status) {
    switch (status.value()) {
    case SyncStatus::current:
        return 0;
    case SyncStatus::stale:
    case SyncStatus::partial:
        return 1;
    case SyncStatus::unsupported:
    case SyncStatus::needsAttention:
        return 2;
    case SyncStatus::offline:
    case SyncStatus::unauthorized:
    case SyncStatus::rateLimited:
        return 3;
    }
    Q_UNREACHABLE();
    return 0;
}

int OverviewView::attentionScore(const ProviderAccount& account) {
    return statusPriority(account.effectiveSyncStatus()) + 2 * account.pulse().priority();
}
