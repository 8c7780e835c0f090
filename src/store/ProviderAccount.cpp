#include "store/ProviderAccount.h"

#include "model/UsageJson.h"
#include "model/UuidText.h"

#include <QDateTime>
#include <QHash>
#include <QTimeZone>

#include <algorithm>
#include <cmath>

namespace {
// JSON of the optional value itself: absent becomes the four bytes of `null`.
template <typename T>
std::optional<QByteArray> encodeOptional(const std::optional<T>& value) {
    if (!value) {
        return QByteArrayLiteral("null");
    }
    return UsageJson::encode(*value).toOptional();
}

template <typename T>
std::optional<T> decodeOptional(const std::optional<QByteArray>& bytes) {
    if (!bytes) {
        return std::nullopt;
    }
    return UsageJson::decode<T>(*bytes).toOptional();
}

template <typename T>
QList<T> decodeList(const std::optional<QByteArray>& bytes) {
    return decodeOptional<QList<T>>(bytes).value_or(QList<T>());
}

QString orEmpty(const std::optional<QString>& text) {
    return text.value_or(QString());
}

// The local calendar day a moment falls on, in the user's time zone.
// The local day of a moment in `zone` (the system's, looked up once by the caller: a
// conversion through the C library's local time reads the zone files every time).
qint64 localDayKey(Timestamp moment, const QTimeZone& zone) {
    const auto milliseconds = static_cast<qint64>(std::floor(moment.clamped().unixSeconds() * 1000.0));
    const QDateTime local = zone.isValid() ? QDateTime::fromMSecsSinceEpoch(milliseconds, zone)
                                           : QDateTime::fromMSecsSinceEpoch(milliseconds, Qt::LocalTime);
    return local.date().toJulianDay();
}
} // namespace

ProviderAccount::ProviderAccount(const Init& init, QObject* parent)
    : QObject(parent)
    , m_row{.id = init.id,
            .providerRaw = init.provider.rawValue(),
            .label = init.label,
            .accountKindRaw = init.accountKind.rawValue(),
            .planName = init.planName,
            .detectedMetadataData = init.detectedMetadataData,
            .identityDetail = init.identityDetail,
            .modelScope = init.modelScope,
            .agentScope = init.agentScope,
            .agentRosterText = init.agentRosterText,
            .agentBudgetsData = init.agentBudgetsData,
            .agentCount = init.agentCount,
            .renewalDate = init.renewalDate,
            .connectionModeRaw = init.connectionMode.rawValue(),
            .createdAt = init.createdAt,
            .lastRefreshAt = init.lastRefreshAt,
            .syncStatusRaw = init.syncStatus.rawValue(),
            .syncMessage = init.syncMessage,
            .snapshotData = init.snapshotData,
            .snapshotHistoryData = init.snapshotHistoryData,
            .sampleDataEnabled = init.sampleDataEnabled} {}

ProviderAccount::ProviderAccount(ProviderAccountRow row, QObject* parent)
    : QObject(parent)
    , m_row(std::move(row)) {}

ProviderAccount::ProviderAccount(ProviderAccountRow row, HistoryLoader loadHistory, QObject* parent)
    : QObject(parent)
    , m_row(std::move(row))
    , m_loadHistory(std::move(loadHistory)) {
    m_row.snapshotHistoryData.reset();
}

void ProviderAccount::ensureHistoryLoaded() const {
    if (!m_loadHistory) {
        return;
    }
    // A failed read leaves the history unread: it reads as absent and is tried again
    // next time, and the store never writes the column over the stored bytes.
    if (auto stored = m_loadHistory()) {
        m_row.snapshotHistoryData = std::move(*stored);
        m_loadHistory = nullptr;
    }
}

const ProviderAccountRow& ProviderAccount::row() const {
    ensureHistoryLoaded();
    return m_row;
}

const std::optional<QByteArray>& ProviderAccount::snapshotHistoryData() const {
    ensureHistoryLoaded();
    return m_row.snapshotHistoryData;
}

template <typename T>
void ProviderAccount::assign(T& field, const T& value, Field group) {
    if (field == value) {
        return;
    }
    field = value;
    Q_EMIT changed(group);
}

// clang-format off
void ProviderAccount::setProviderRaw(const QString& value) { assign(m_row.providerRaw, value, Field::identity); }
void ProviderAccount::setLabel(const QString& value) { assign(m_row.label, value, Field::identity); }
void ProviderAccount::setAccountKindRaw(const QString& value) { assign(m_row.accountKindRaw, value, Field::identity); }
void ProviderAccount::setPlanName(const QString& value) { assign(m_row.planName, value, Field::identity); }
void ProviderAccount::setDetectedMetadataData(const std::optional<QByteArray>& value) { assign(m_row.detectedMetadataData, value, Field::connection); }
void ProviderAccount::setIdentityDetail(const std::optional<QString>& value) { assign(m_row.identityDetail, value, Field::identity); }
void ProviderAccount::setModelScope(const std::optional<QString>& value) { assign(m_row.modelScope, value, Field::identity); }
void ProviderAccount::setAgentScope(const std::optional<QString>& value) { assign(m_row.agentScope, value, Field::agents); }
void ProviderAccount::setAgentRosterText(const std::optional<QString>& value) { assign(m_row.agentRosterText, value, Field::agents); }
void ProviderAccount::setAgentBudgetsData(const std::optional<QByteArray>& value) { assign(m_row.agentBudgetsData, value, Field::agents); }
void ProviderAccount::setAgentCount(std::optional<qint64> value) { assign(m_row.agentCount, value, Field::agents); }
void ProviderAccount::setRenewalDate(std::optional<Timestamp> value) { assign(m_row.renewalDate, value, Field::identity); }
void ProviderAccount::setConnectionModeRaw(const QString& value) { assign(m_row.connectionModeRaw, value, Field::connection); }
void ProviderAccount::setCreatedAt(Timestamp value) {
    if (m_row.createdAt == value) {
        return;
    }
    assign(m_row.createdAt, value, Field::identity);
    Q_EMIT createdAtChanged();
}
void ProviderAccount::setLastRefreshAt(std::optional<Timestamp> value) { assign(m_row.lastRefreshAt, value, Field::status); }
void ProviderAccount::setSyncStatusRaw(const QString& value) { assign(m_row.syncStatusRaw, value, Field::status); }
void ProviderAccount::setSyncMessage(const QString& value) { assign(m_row.syncMessage, value, Field::status); }
void ProviderAccount::setSnapshotData(const std::optional<QByteArray>& value) { assign(m_row.snapshotData, value, Field::usage); }
void ProviderAccount::setSnapshotHistoryData(const std::optional<QByteArray>& value) {
    ensureHistoryLoaded();
    m_loadHistory = nullptr; // a written value replaces whatever is stored
    assign(m_row.snapshotHistoryData, value, Field::usage);
}
void ProviderAccount::setSampleDataEnabled(bool value) { assign(m_row.sampleDataEnabled, value, Field::connection); }
// clang-format on

void ProviderAccount::restore(const State& state) {
    const ProviderAccountRow& row = state.row;
    setProviderRaw(row.providerRaw);
    setLabel(row.label);
    setAccountKindRaw(row.accountKindRaw);
    setPlanName(row.planName);
    setDetectedMetadataData(row.detectedMetadataData);
    setIdentityDetail(row.identityDetail);
    setModelScope(row.modelScope);
    setAgentScope(row.agentScope);
    setAgentRosterText(row.agentRosterText);
    setAgentBudgetsData(row.agentBudgetsData);
    setAgentCount(row.agentCount);
    setRenewalDate(row.renewalDate);
    setConnectionModeRaw(row.connectionModeRaw);
    setCreatedAt(row.createdAt);
    setLastRefreshAt(row.lastRefreshAt);
    setSyncStatusRaw(row.syncStatusRaw);
    setSyncMessage(row.syncMessage);
    setSnapshotData(row.snapshotData);
    setSampleDataEnabled(row.sampleDataEnabled);
    if (state.loadHistory) {
        // Unread then: unread again, whatever was written since.
        const bool changedHistory = m_row.snapshotHistoryData.has_value();
        m_row.snapshotHistoryData.reset();
        m_loadHistory = state.loadHistory;
        if (changedHistory) {
            Q_EMIT changed(Field::usage);
        }
    } else {
        m_loadHistory = nullptr;
        assign(m_row.snapshotHistoryData, row.snapshotHistoryData, Field::usage);
    }
}

AIProvider ProviderAccount::provider() const {
    return AIProvider::fromRawValue(m_row.providerRaw).value_or(AIProvider::openAI);
}

void ProviderAccount::setProvider(AIProvider value) {
    setProviderRaw(value.rawValue());
}

AccountKind ProviderAccount::accountKind() const {
    return AccountKind::fromRawValue(m_row.accountKindRaw).value_or(AccountKind::consumer);
}

void ProviderAccount::setAccountKind(AccountKind value) {
    setAccountKindRaw(value.rawValue());
}

ConnectionMode ProviderAccount::connectionMode() const {
    return ConnectionMode::fromRawValue(m_row.connectionModeRaw).value_or(ConnectionMode::mock);
}

void ProviderAccount::setConnectionMode(ConnectionMode value) {
    setConnectionModeRaw(value.rawValue());
}

SyncStatus ProviderAccount::syncStatus() const {
    return SyncStatus::fromRawValue(m_row.syncStatusRaw).value_or(SyncStatus::needsAttention);
}

void ProviderAccount::setSyncStatus(SyncStatus value) {
    setSyncStatusRaw(value.rawValue());
}

QString ProviderAccount::displayName() const {
    return m_row.label.trimmed().isEmpty() ? provider().displayName() : m_row.label;
}

QString ProviderAccount::identityText() const {
    return orEmpty(m_row.identityDetail);
}

QString ProviderAccount::modelScopeText() const {
    return orEmpty(m_row.modelScope);
}

QString ProviderAccount::agentScopeText() const {
    return orEmpty(m_row.agentScope);
}

QStringList ProviderAccount::agentNames() const {
    QStringList names;
    for (const QString& piece : orEmpty(m_row.agentRosterText).split(u',', Qt::SkipEmptyParts)) {
        const QString name = piece.trimmed();
        if (!name.isEmpty()) {
            names.append(name);
        }
    }
    return names;
}

qint64 ProviderAccount::configuredAgentCount() const {
    return std::max(m_row.agentCount.value_or(0), static_cast<qint64>(agentNames().size()));
}

QString ProviderAccount::effectivePlanName() const {
    const QString trimmed = m_row.planName.trimmed();
    if (!trimmed.isEmpty()) {
        return trimmed;
    }
    if (const auto metadata = detectedMetadata(); metadata && metadata->displayName) {
        return *metadata->displayName;
    }
    return QString();
}

bool ProviderAccount::planNameIsDetected() const {
    if (!m_row.planName.trimmed().isEmpty()) {
        return false;
    }
    const auto metadata = detectedMetadata();
    return metadata && metadata->displayName.has_value();
}

QString ProviderAccount::secretReference() const {
    return UuidText::toText(m_row.id);
}

QString ProviderAccount::shortIdentifier() const {
    return secretReference().remove(u'-').left(6).toUpper();
}

std::optional<ProviderConnectionMetadata> ProviderAccount::detectedMetadata() const {
    return decodeOptional<ProviderConnectionMetadata>(m_row.detectedMetadataData);
}

bool ProviderAccount::setDetectedMetadata(const std::optional<ProviderConnectionMetadata>& metadata) {
    const std::optional<QByteArray> bytes = encodeOptional(metadata);
    if (!bytes) {
        return false; // what can't be written leaves the stored value as it is
    }
    setDetectedMetadataData(bytes);
    return true;
}

std::optional<UsageSnapshot> ProviderAccount::snapshot() const {
    return cachedSnapshot();
}

bool ProviderAccount::setSnapshot(const std::optional<UsageSnapshot>& snapshot) {
    const std::optional<QByteArray> bytes = encodeOptional(snapshot);
    if (!bytes) {
        return false; // what can't be written leaves the stored snapshot as it is
    }
    setSnapshotData(bytes);
    if (snapshot) {
        m_snapshotCache.prime(m_row.snapshotData, snapshot);
    }
    return true;
}

QList<AgentBudget> ProviderAccount::agentBudgets() const {
    return decodeList<AgentBudget>(m_row.agentBudgetsData);
}

void ProviderAccount::setAgentBudgets(const QList<AgentBudget>& budgets) {
    setAgentBudgetsData(UsageJson::encode(budgets).toOptional());
}

QList<UsageSnapshot> ProviderAccount::snapshotHistory() const {
    return cachedHistory();
}

const std::optional<UsageSnapshot>& ProviderAccount::cachedSnapshot() const {
    return m_snapshotCache.get(m_row.snapshotData, decodeOptional<UsageSnapshot>);
}

ProviderAccount::DecodedHistory ProviderAccount::decodeHistory(const std::optional<QByteArray>& bytes) {
    if (!bytes) {
        return {};
    }
    if (auto whole = UsageJson::decode<QList<UsageSnapshot>>(*bytes).toOptional()) {
        return DecodedHistory{.snapshots = std::move(*whole)};
    }
    // One entry this version can't read (written by a newer one, or damaged) costs only
    // itself. Bytes that are no list at all read as an empty history.
    const auto entries = UsageJson::decodeEntries<UsageSnapshot>(*bytes);
    if (!entries) {
        return {};
    }
    DecodedHistory history;
    for (const auto& entry : *entries) {
        if (entry.value) {
            history.snapshots.append(*entry.value);
        } else {
            history.hasUnreadable = true;
        }
    }
    return history;
}

const QList<UsageSnapshot>& ProviderAccount::cachedHistory() const {
    return m_historyCache.get(snapshotHistoryData(), decodeHistory).snapshots;
}

bool ProviderAccount::record(const UsageSnapshot& snapshot) {
    ensureHistoryLoaded();
    if (m_loadHistory) {
        // The stored history could not be read: writing now would put one snapshot in
        // place of up to 90. It stays as it is on disk until a read succeeds.
        return false;
    }
    if (m_historyCache.get(snapshotHistoryData(), decodeHistory).hasUnreadable) {
        return recordKeepingUnreadable(snapshot);
    }
    QList<UsageSnapshot> history = cachedHistory();
    history.append(snapshot);
    if (history.size() > kHistoryLimit) {
        history.remove(0, history.size() - kHistoryLimit);
    }
    const std::optional<QByteArray> bytes = UsageJson::encode(history).toOptional();
    if (!bytes) {
        return false;
    }
    setSnapshotHistoryData(bytes);
    m_historyCache.prime(m_row.snapshotHistoryData, DecodedHistory{.snapshots = std::move(history)});
    return true;
}

bool ProviderAccount::recordKeepingUnreadable(const UsageSnapshot& snapshot) {
    const std::optional<QByteArray> added = UsageJson::encode(snapshot).toOptional();
    if (!added) {
        return false;
    }
    auto entries = UsageJson::decodeEntries<UsageSnapshot>(*snapshotHistoryData())
                       .value_or(QList<UsageJson::Entry<UsageSnapshot>>());
    entries.append(UsageJson::Entry<UsageSnapshot>{.json = *added, .value = snapshot});
    if (entries.size() > kHistoryLimit) {
        entries.remove(0, entries.size() - kHistoryLimit);
    }
    QList<QByteArray> texts;
    DecodedHistory history;
    for (auto& entry : entries) {
        texts.append(std::move(entry.json));
        if (entry.value) {
            history.snapshots.append(std::move(*entry.value));
        } else {
            history.hasUnreadable = true;
        }
    }
    setSnapshotHistoryData(UsageJson::joinEntries(texts));
    m_historyCache.prime(m_row.snapshotHistoryData, std::move(history));
    return true;
}

void ProviderAccount::applyDetectedMetadata(const std::optional<ProviderConnectionMetadata>& metadata) {
    setDetectedMetadata(metadata);
    if (!metadata) {
        return;
    }
    if (identityText().trimmed().isEmpty()) {
        const std::optional<QString> identity =
            metadata->connectionIdentifier ? metadata->connectionIdentifier : metadata->identityDetail;
        if (identity && !identity->isEmpty()) {
            setIdentityDetail(identity);
        }
    }
    if (modelScopeText().trimmed().isEmpty() && metadata->modelScope && !metadata->modelScope->isEmpty()) {
        setModelScope(metadata->modelScope);
    }
}

QList<UsagePoint> ProviderAccount::trendHistory() const {
    return memoizedSeries(m_trendMemo, &UsageSnapshot::history);
}

QList<UsagePoint> ProviderAccount::billingTrendHistory() const {
    return memoizedSeries(m_billingTrendMemo, &UsageSnapshot::billingHistory);
}

QList<UsagePoint> ProviderAccount::memoizedSeries(std::optional<SeriesMemo>& memo,
                                                  QList<UsagePoint> UsageSnapshot::*series) const {
    const QByteArray zone = QTimeZone::systemTimeZoneId();
    const bool fresh = memo && memo->timeZoneID == zone &&
                       BlobCache<int>::sameBytes(memo->snapshotData, m_row.snapshotData) &&
                       BlobCache<int>::sameBytes(memo->snapshotHistoryData, snapshotHistoryData());
    if (!fresh) {
        memo = SeriesMemo{m_row.snapshotData, snapshotHistoryData(), zone, dailySeries(series)};
    } else {
        // Share the caller's bytes so that the next comparison is by identity alone.
        memo->snapshotData = m_row.snapshotData;
        memo->snapshotHistoryData = m_row.snapshotHistoryData;
    }
    return memo->series;
}

QList<UsagePoint> ProviderAccount::dailySeries(QList<UsagePoint> UsageSnapshot::*series) const {
    const std::optional<UsageSnapshot>& current = cachedSnapshot();
    if (!current || ((*current).*series).isEmpty()) {
        return {};
    }
    const QList<UsagePoint>& currentSeries = (*current).*series;
    const UsageUnit unit = currentSeries.first().unit;

    // One point a local day: the latest one; on equal dates the earlier-recorded one stays.
    QList<UsagePoint> survivors;
    QHash<qint64, qsizetype> indexOfDay;
    // Consecutive snapshots repeat most of their points: convert each moment once.
    QHash<double, qint64> dayOfMoment;
    const QTimeZone zone = QTimeZone::systemTimeZone();
    for (const UsageSnapshot& stored : cachedHistory()) {
        for (const UsagePoint& point : stored.*series) {
            if (point.unit != unit) {
                continue;
            }
            auto knownDay = dayOfMoment.constFind(point.date.secondsSinceReference());
            if (knownDay == dayOfMoment.cend()) {
                knownDay =
                    dayOfMoment.insert(point.date.secondsSinceReference(), localDayKey(point.date, zone));
            }
            const qint64 day = *knownDay;
            const auto found = indexOfDay.constFind(day);
            if (found == indexOfDay.cend()) {
                indexOfDay.insert(day, survivors.size());
                survivors.append(point);
            } else if (survivors.at(*found).date < point.date) {
                survivors[*found] = point;
            }
        }
    }
    if (survivors.isEmpty()) {
        return currentSeries;
    }
    std::sort(survivors.begin(), survivors.end(),
              [](const UsagePoint& a, const UsagePoint& b) { return a.date < b.date; });
    if (survivors.size() > kHistoryLimit) {
        survivors.remove(0, survivors.size() - kHistoryLimit);
    }
    return survivors;
}

UsageHealth ProviderAccount::agentBudgetHealth() const {
    QList<UsageHealth> healths;
    for (const AgentBudget& budget : agentBudgets()) {
        healths.append(budget.health());
    }
    return UsageHealth::aggregate(healths);
}

SyncStatus ProviderAccount::effectiveSyncStatus() const {
    const SyncStatus stored = syncStatus();
    if (stored != SyncStatus::current) {
        return stored;
    }
    if (!m_row.lastRefreshAt) {
        return SyncStatus::needsAttention;
    }
    const Timestamp now = Clock::now();
    const Timestamp refreshedAt = *m_row.lastRefreshAt;
    if (const std::optional<UsageSnapshot>& current = cachedSnapshot()) {
        if (const auto reset = current->nextReset(); reset && *reset < now && refreshedAt < *reset) {
            return SyncStatus::stale;
        }
    }
    if (now.secondsSince(refreshedAt) > kStaleAfterSeconds) {
        return SyncStatus::stale;
    }
    return SyncStatus::current;
}

UsageHealth ProviderAccount::pulse() const {
    const std::optional<UsageSnapshot>& current = cachedSnapshot();
    const UsageHealth base = UsageHealth::aggregate(
        {current ? current->monitorHealth() : UsageHealth(UsageHealth::unavailable), agentBudgetHealth()});
    switch (effectiveSyncStatus().value()) {
    case SyncStatus::current:
        return base;
    case SyncStatus::stale:
    case SyncStatus::partial:
    case SyncStatus::needsAttention:
        return base == UsageHealth::urgent ? base : UsageHealth(UsageHealth::watch);
    case SyncStatus::offline:
    case SyncStatus::unauthorized:
    case SyncStatus::rateLimited:
        return UsageHealth::urgent;
    case SyncStatus::unsupported:
        return UsageHealth::unavailable;
    }
    Q_UNREACHABLE();
    return UsageHealth::unavailable;
}
