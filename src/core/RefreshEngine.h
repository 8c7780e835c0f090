#pragma once

#include "core/Preferences.h"
#include "model/SyncStatus.h"
#include "model/Timestamp.h"
#include "providers/DateInterval.h"
#include "store/AccountStore.h"

#include <QList>
#include <QObject>

#include <QSet>
#include <QTimer>
#include <QUuid>
#include <optional>

#include <QCoro/QCoroTask>

#include <chrono>
#include <functional>
#include <memory>

class UsageProvider;
class UsageProviderError;

// Turns "refresh this account" and the heartbeat into new snapshots on accounts: one
// refresh in flight per account, the last good data kept on failure, every outcome
// written as a status and a sentence, and one notification per urgent episode. It
// knows no provider; ProviderFactory chooses one per refresh. Main thread only.
class RefreshEngine final : public QObject {
    Q_OBJECT

public:
    // The heartbeat's period.
    static constexpr int kHeartbeatMilliseconds = 60'000;

    // Makes the provider for one refresh; ProviderFactory::make unless a test says otherwise.
    using ProviderMaker = std::function<std::unique_ptr<UsageProvider>(const ProviderAccount&)>;

    RefreshEngine(AccountStore* store, Preferences* preferences, QObject* parent = nullptr);

    AccountStore* store() const noexcept { return m_store; }
    const QSet<QUuid>& refreshingIDs() const noexcept { return m_refreshingIDs; }
    const QSet<QUuid>& notifiedUrgentIDs() const noexcept { return m_notifiedUrgentIDs; }
    Timestamp heartbeat() const noexcept { return m_heartbeat; }
    Timestamp lastAutoRefreshAt() const noexcept { return m_lastAutoRefreshAt; }
    const QTimer& heartbeatTimer() const noexcept { return m_heartbeatTimer; }
    QTimer& heartbeatTimer() noexcept { return m_heartbeatTimer; }

    // The main screen appeared at `now`: automatic refresh counts from here, and the
    // heartbeat starts.
    void start(Timestamp now);
    // One beat of the heartbeat, at `now`.
    void tick(Timestamp now);

    // Starts one refresh unless one is in flight for the account; returns at once.
    void refresh(ProviderAccount* account);
    // refresh() for each, in order.
    void refresh(const QList<ProviderAccount*>& accounts);
    void refreshAllAccounts();

    static SyncStatus status(const UsageProviderError& error);
    // From 30 calendar days before `now` to `now`, in the user's calendar.
    static DateInterval queryRange(Timestamp now);
    void setProviderMaker(ProviderMaker maker);

signals:
    // The account entered or left refreshingIDs.
    void refreshingChanged(const QUuid& id);
    // A refresh of this account ended, whatever its outcome.
    void refreshFinished(const QUuid& id);
    // The heartbeat beat; time-dependent texts (ages, staleness) may have moved.
    void ticked(Timestamp now);
    // The store was saved after refreshes: absent, or why it could not be.
    void saved(const std::optional<QString>& failure);

private:
    QCoro::Task<> run(ProviderAccount& target);
    void recordSuccess(ProviderAccount& account, const UsageSnapshot& snapshot);
    void updateNotificationEpisode(ProviderAccount& account);
    // Saves a moment later: refreshes that end together share one transaction, and the
    // event loop gets a turn between their results and the write. A failed save is
    // dropped; its changes stay pending for the next one.
    void scheduleSave();
    // The refresh of this account is over: it leaves the set in flight.
    void finish(const QUuid& id);
    static constexpr std::chrono::milliseconds kSaveDelay{10};

    AccountStore* m_store;
    Preferences* m_preferences;
    QSet<QUuid> m_refreshingIDs;
    QSet<QUuid> m_notifiedUrgentIDs;
    Timestamp m_heartbeat;
    Timestamp m_lastAutoRefreshAt;
    QTimer m_heartbeatTimer;
    ProviderMaker m_makeProvider;
    bool m_saveScheduled = false;
    // Finished refreshes whose results wait for the shared save.
    QList<QUuid> m_awaitingSave;
};
