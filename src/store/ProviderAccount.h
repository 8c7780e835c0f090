#pragma once

#include "model/AIProvider.h"
#include "model/AccountKind.h"
#include "model/AgentBudget.h"
#include "model/Clock.h"
#include "model/ConnectionMode.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/SyncStatus.h"
#include "model/UsageHealth.h"
#include "model/UsagePoint.h"
#include "model/UsageSnapshot.h"
#include "store/BlobCache.h"
#include "store/ProviderAccountRow.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <optional>

// One tracked account: the only persisted record. It keeps its stored attributes raw
// and derives everything the screens and the refresh engine need from them. Every
// change of a field emits changed() with the group of the field, so a screen redraws
// only for what it reads; the store saves the change on the next save().
class ProviderAccount final : public QObject {
    Q_OBJECT

public:
    // The stored attributes in groups, as screens read them.
    enum class Field : unsigned {
        // provider, label, kind, plan, identity, model scope, renewal, created
        identity = 1U << 0U,
        // agent scope, roster, budgets and count
        agents = 1U << 1U,
        // connection mode, detected metadata, sample flag
        connection = 1U << 2U,
        // last refresh, sync status and message
        status = 1U << 3U,
        // snapshot and its history
        usage = 1U << 4U,
    };
    Q_DECLARE_FLAGS(Fields, Field)
    static constexpr Fields kAllFields{0x1F};

    // The initialiser's parameters and their defaults.
    struct Init {
        QUuid id = QUuid::createUuid();
        AIProvider provider;
        QString label;
        AccountKind accountKind;
        QString planName = {};
        std::optional<QByteArray> detectedMetadataData = {};
        QString identityDetail = {};
        QString modelScope = {};
        QString agentScope = {};
        QString agentRosterText = {};
        std::optional<QByteArray> agentBudgetsData = {};
        qint64 agentCount = 0;
        std::optional<Timestamp> renewalDate = {};
        ConnectionMode connectionMode = ConnectionMode::mock;
        Timestamp createdAt = Clock::now();
        std::optional<Timestamp> lastRefreshAt = {};
        SyncStatus syncStatus = SyncStatus::needsAttention;
        QString syncMessage = QStringLiteral("Not refreshed yet");
        std::optional<QByteArray> snapshotData = {};
        std::optional<QByteArray> snapshotHistoryData = {};
        bool sampleDataEnabled = true;
    };

    // How many recorded snapshots the history keeps.
    static constexpr qsizetype kHistoryLimit = 90;
    // How long a `current` refresh stays current, in seconds.
    static constexpr double kStaleAfterSeconds = 21600.0;

    // Reads the stored snapshot history on first use: the outer optional is empty when
    // the read failed, the inner one when nothing is stored.
    using HistoryLoader = std::function<std::optional<std::optional<QByteArray>>()>;

    explicit ProviderAccount(const Init& init, QObject* parent = nullptr);
    // An account as loaded from the store, complete.
    explicit ProviderAccount(ProviderAccountRow row, QObject* parent = nullptr);
    // An account whose snapshot history, the one large attribute, is read only when
    // something first asks for it; `row.snapshotHistoryData` is not looked at.
    ProviderAccount(ProviderAccountRow row, HistoryLoader loadHistory, QObject* parent = nullptr);

    // Every stored attribute (the history is read first if it was not yet).
    const ProviderAccountRow& row() const;
    // The attributes as they stand, an unread history left unread (and absent here).
    const ProviderAccountRow& rowAsLoaded() const noexcept { return m_row; }
    // False while a lazily read history has not been read, or could not be.
    bool isSnapshotHistoryLoaded() const noexcept { return !m_loadHistory; }

    // Every attribute as it stands, an unread history left unread, to go back to.
    struct State {
        ProviderAccountRow row;
        HistoryLoader loadHistory;
    };
    State state() const { return State{m_row, m_loadHistory}; }
    // Puts every attribute back as `state` had it, announcing each change.
    void restore(const State& state);

    // ---- stored attributes ----
    const QUuid& id() const noexcept { return m_row.id; }
    const QString& providerRaw() const noexcept { return m_row.providerRaw; }
    void setProviderRaw(const QString& value);
    const QString& label() const noexcept { return m_row.label; }
    void setLabel(const QString& value);
    const QString& accountKindRaw() const noexcept { return m_row.accountKindRaw; }
    void setAccountKindRaw(const QString& value);
    const QString& planName() const noexcept { return m_row.planName; }
    void setPlanName(const QString& value);
    const std::optional<QByteArray>& detectedMetadataData() const noexcept {
        return m_row.detectedMetadataData;
    }
    void setDetectedMetadataData(const std::optional<QByteArray>& value);
    const std::optional<QString>& identityDetail() const noexcept { return m_row.identityDetail; }
    void setIdentityDetail(const std::optional<QString>& value);
    const std::optional<QString>& modelScope() const noexcept { return m_row.modelScope; }
    void setModelScope(const std::optional<QString>& value);
    const std::optional<QString>& agentScope() const noexcept { return m_row.agentScope; }
    void setAgentScope(const std::optional<QString>& value);
    const std::optional<QString>& agentRosterText() const noexcept { return m_row.agentRosterText; }
    void setAgentRosterText(const std::optional<QString>& value);
    const std::optional<QByteArray>& agentBudgetsData() const noexcept { return m_row.agentBudgetsData; }
    void setAgentBudgetsData(const std::optional<QByteArray>& value);
    std::optional<qint64> agentCount() const noexcept { return m_row.agentCount; }
    void setAgentCount(std::optional<qint64> value);
    std::optional<Timestamp> renewalDate() const noexcept { return m_row.renewalDate; }
    void setRenewalDate(std::optional<Timestamp> value);
    const QString& connectionModeRaw() const noexcept { return m_row.connectionModeRaw; }
    void setConnectionModeRaw(const QString& value);
    Timestamp createdAt() const noexcept { return m_row.createdAt; }
    void setCreatedAt(Timestamp value);
    std::optional<Timestamp> lastRefreshAt() const noexcept { return m_row.lastRefreshAt; }
    void setLastRefreshAt(std::optional<Timestamp> value);
    const QString& syncStatusRaw() const noexcept { return m_row.syncStatusRaw; }
    void setSyncStatusRaw(const QString& value);
    const QString& syncMessage() const noexcept { return m_row.syncMessage; }
    void setSyncMessage(const QString& value);
    const std::optional<QByteArray>& snapshotData() const noexcept { return m_row.snapshotData; }
    void setSnapshotData(const std::optional<QByteArray>& value);
    const std::optional<QByteArray>& snapshotHistoryData() const;
    void setSnapshotHistoryData(const std::optional<QByteArray>& value);
    bool sampleDataEnabled() const noexcept { return m_row.sampleDataEnabled; }
    void setSampleDataEnabled(bool value);

    // ---- typed views; an unknown raw value reads as a fixed case ----
    AIProvider provider() const;
    void setProvider(AIProvider value);
    AccountKind accountKind() const;
    void setAccountKind(AccountKind value);
    ConnectionMode connectionMode() const;
    void setConnectionMode(ConnectionMode value);
    SyncStatus syncStatus() const;
    void setSyncStatus(SyncStatus value);

    // ---- texts and lists ----
    QString displayName() const;
    QString identityText() const;
    QString modelScopeText() const;
    QString agentScopeText() const;
    QStringList agentNames() const;
    qint64 configuredAgentCount() const;
    QString effectivePlanName() const;
    bool planNameIsDetected() const;
    // The key of the account's credential in the keychain: the id as upper-case UUID text.
    QString secretReference() const;
    QString shortIdentifier() const;

    // ---- blob views; reading never fails ----
    std::optional<ProviderConnectionMetadata> detectedMetadata() const;
    // Absent is stored as the JSON value null, not as absent bytes. A value that can't be
    // encoded (a number that is not finite) changes nothing and gives false.
    bool setDetectedMetadata(const std::optional<ProviderConnectionMetadata>& metadata);
    std::optional<UsageSnapshot> snapshot() const;
    bool setSnapshot(const std::optional<UsageSnapshot>& snapshot);
    QList<AgentBudget> agentBudgets() const;
    void setAgentBudgets(const QList<AgentBudget>& budgets);
    QList<UsageSnapshot> snapshotHistory() const;

    // ---- operations and status ----
    // Appends to the kept history (the last 90); the caller sets `snapshot` itself. False,
    // and nothing written, when the stored history could not be read or the snapshot
    // can't be encoded.
    bool record(const UsageSnapshot& snapshot);
    // Fills identity and model scope where they are blank; never overwrites them.
    void applyDetectedMetadata(const std::optional<ProviderConnectionMetadata>& metadata);

    QList<UsagePoint> trendHistory() const;
    QList<UsagePoint> billingTrendHistory() const;
    UsageHealth agentBudgetHealth() const;
    // A stored `current` ages into `stale` as time passes, without writing anything.
    SyncStatus effectiveSyncStatus() const;
    UsageHealth pulse() const;

signals:
    void changed(ProviderAccount::Fields fields);
    // `createdAt` changed, which can move the account in a list sorted by it.
    void createdAtChanged();

private:
    template <typename T>
    void assign(T& field, const T& value, Field group);

    const std::optional<UsageSnapshot>& cachedSnapshot() const;
    // Writes a blob and remembers the value it was made from, so that the next read
    // need not decode what was just encoded.
    // The stored history as read: the snapshots this version can read, and whether some
    // stored entry could not be read (and so must be carried over by its bytes).
    struct DecodedHistory {
        QList<UsageSnapshot> snapshots;
        bool hasUnreadable = false;
    };
    static DecodedHistory decodeHistory(const std::optional<QByteArray>& bytes);
    const QList<UsageSnapshot>& cachedHistory() const;
    // record() for a history that holds entries this version can't read: they stay, by
    // their stored bytes, and count against the bound like any other.
    bool recordKeepingUnreadable(const UsageSnapshot& snapshot);
    QList<UsagePoint> dailySeries(QList<UsagePoint> UsageSnapshot::*series) const;

    // A daily series as last computed, with everything it was computed from: the two
    // stored blobs and the time zone that drew the day boundaries.
    struct SeriesMemo {
        std::optional<QByteArray> snapshotData;
        std::optional<QByteArray> snapshotHistoryData;
        QByteArray timeZoneID;
        QList<UsagePoint> series;
    };
    QList<UsagePoint> memoizedSeries(std::optional<SeriesMemo>& memo,
                                     QList<UsagePoint> UsageSnapshot::*series) const;

    void ensureHistoryLoaded() const;

    // Mutable only so that a lazily read history can arrive on a const read.
    mutable ProviderAccountRow m_row;
    mutable HistoryLoader m_loadHistory;
    BlobCache<std::optional<UsageSnapshot>> m_snapshotCache;
    BlobCache<DecodedHistory> m_historyCache;
    mutable std::optional<SeriesMemo> m_trendMemo;
    mutable std::optional<SeriesMemo> m_billingTrendMemo;
};

Q_DECLARE_OPERATORS_FOR_FLAGS(ProviderAccount::Fields)
