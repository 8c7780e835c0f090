#include "core/RefreshEngine.h"

#include "core/UrgentNotification.h"
#include "model/Clock.h"
#include "model/ReasonText.h"
#include "model/UsageJson.h"
#include "providers/OfficialMetadata.h"
#include "providers/OpenAIClient.h"
#include "providers/ProviderFactory.h"
#include "providers/UsageProviderError.h"
#include "services/NotificationService.h"

#include <QPointer>

#include <utility>

namespace {
// The platform's distant past: earlier than any date the program will see.
constexpr Timestamp kDistantPast(-63'114'076'800.0);
} // namespace

RefreshEngine::RefreshEngine(AccountStore* store, Preferences* preferences, QObject* parent)
    : QObject(parent)
    , m_store(store)
    , m_preferences(preferences)
    , m_heartbeat(Clock::now())
    , m_lastAutoRefreshAt(kDistantPast) {
    m_heartbeatTimer.setInterval(kHeartbeatMilliseconds);
    m_heartbeatTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_heartbeatTimer, &QTimer::timeout, this, [this] { tick(Clock::now()); });
    m_makeProvider = [](const ProviderAccount& account) { return ProviderFactory::make(account); };
}

void RefreshEngine::setProviderMaker(ProviderMaker maker) {
    m_makeProvider = std::move(maker);
}

void RefreshEngine::start(Timestamp now) {
    m_lastAutoRefreshAt = now;
    m_heartbeatTimer.start();
}

void RefreshEngine::tick(Timestamp now) {
    m_heartbeat = now;
    Q_EMIT ticked(now);
    if (!m_preferences->autoRefreshEnabled()) {
        return;
    }
    const double interval = static_cast<double>(m_preferences->autoRefreshMinutes()) * 60.0;
    if (interval > now.secondsSince(m_lastAutoRefreshAt)) {
        return;
    }
    m_lastAutoRefreshAt = now;
    refreshAllAccounts();
}

void RefreshEngine::refresh(ProviderAccount* account) {
    if (!account || m_refreshingIDs.contains(account->id())) {
        return;
    }
    m_refreshingIDs.insert(account->id());
    Q_EMIT refreshingChanged(account->id());
    // Not kept: the task runs to its end on its own, and nothing cancels it.
    run(*account);
}

void RefreshEngine::refresh(const QList<ProviderAccount*>& accounts) {
    for (ProviderAccount* account : accounts) {
        refresh(account);
    }
}

void RefreshEngine::refreshAllAccounts() {
    // A copy: the list may change while refreshes start.
    const QList<ProviderAccount*> all = m_store->accounts();
    refresh(all);
}

SyncStatus RefreshEngine::status(const UsageProviderError& error) {
    switch (error.kind()) {
    case UsageProviderError::Kind::unsupported:
        return SyncStatus::unsupported;
    case UsageProviderError::Kind::server:
    case UsageProviderError::Kind::malformedResponse:
        return SyncStatus::offline;
    case UsageProviderError::Kind::missingCredential:
    case UsageProviderError::Kind::unauthorized:
        return SyncStatus::unauthorized;
    case UsageProviderError::Kind::rateLimited:
        return SyncStatus::rateLimited;
    }
    Q_UNREACHABLE();
    return SyncStatus::offline;
}

DateInterval RefreshEngine::queryRange(Timestamp now) {
    const QDateTime local = now.toDateTime();
    const QDateTime monthAgo = local.addDays(-30);
    const Timestamp start =
        monthAgo.isValid() ? now.addingSeconds(static_cast<double>(local.msecsTo(monthAgo)) / 1000.0) : now;
    return DateInterval{.start = start, .end = now};
}

QCoro::Task<> RefreshEngine::run(ProviderAccount& target) {
    const QPointer<RefreshEngine> self(this);
    const QPointer<ProviderAccount> account(&target);
    const QUuid id = target.id();
    std::unique_ptr<UsageProvider> provider = m_makeProvider(target);
    const DateInterval range = queryRange(Clock::now());

    std::optional<UsageSnapshot> snapshot;
    std::optional<UsageProviderError> providerError;
    // Why a request got no usable response, when it can be told.
    QString failure;
    try {
        snapshot = co_await provider->fetchUsage(target, range);
    } catch (const UsageProviderError& error) {
        providerError = error;
    } catch (const OpenAIClient::TransportError& error) {
        failure = error.message;
    } catch (const OpenAIClient::DecodingError& error) {
        failure = QStringLiteral("the response could not be read (%1)").arg(error.reason);
    } catch (...) {
        // Cancellation or anything else: the existing snapshot stays.
    }
    if (!self) {
        co_return; // the engine is gone
    }

    // A snapshot that can't be stored (a number that is not finite got through) is a
    // failed refresh: storing it would wipe the last good one.
    if (snapshot && !UsageJson::encode(*snapshot)) {
        snapshot.reset();
    }

    // An account deleted while its refresh was in flight has nothing left to show it.
    if (account) {
        if (snapshot) {
            recordSuccess(*account, *snapshot);
        } else if (providerError) {
            // The error's own sentence, also when its payload is the empty text.
            account->setSyncStatus(status(*providerError));
            account->setSyncMessage(providerError->errorDescription());
        } else {
            account->setSyncStatus(SyncStatus::offline);
            // The sentence of a refresh that got no usable response, with why when it is known.
            account->setSyncMessage(
                withReason(QStringLiteral("Refresh failed; existing snapshot was kept"), failure));
        }
        // In flight until the save that holds the result: no second refresh of the
        // account can start from a state that is not yet stored.
        m_awaitingSave.append(id);
        scheduleSave();
    } else {
        finish(id);
    }
}

void RefreshEngine::finish(const QUuid& id) {
    m_refreshingIDs.remove(id);
    Q_EMIT refreshFinished(id);
    Q_EMIT refreshingChanged(id);
}

void RefreshEngine::recordSuccess(ProviderAccount& account, const UsageSnapshot& snapshot) {
    account.setSnapshot(snapshot);
    account.record(snapshot);
    if (snapshot.source == UsageSource::officialAPI) {
        const ProviderConnectionMetadata base = account.detectedMetadata().value_or(
            OfficialMetadata::base(account.provider(), snapshot.capturedAt));
        account.applyDetectedMetadata(base.merging(snapshot, account.provider()));
    }
    account.setLastRefreshAt(Clock::now());
    const bool partial = snapshot.isPartial();
    account.setSyncStatus(partial ? SyncStatus::partial : SyncStatus::current);
    account.setSyncMessage(partial ? QStringLiteral("Refresh completed with warnings")
                                   : QStringLiteral("Refresh completed"));
    updateNotificationEpisode(account);
}

void RefreshEngine::updateNotificationEpisode(ProviderAccount& account) {
    const QUuid id = account.id();
    const bool enabled = m_preferences->thresholdNotificationsEnabled();
    if (!enabled && !m_notifiedUrgentIDs.contains(id)) {
        return; // nothing to post and nothing to forget
    }
    const bool urgent = account.pulse() == UsageHealth::urgent;
    if (enabled && urgent) {
        if (!m_notifiedUrgentIDs.contains(id)) {
            NotificationService::postUrgent(UrgentNotification::request(account));
            m_notifiedUrgentIDs.insert(id);
        }
    } else if (!urgent) {
        m_notifiedUrgentIDs.remove(id);
    }
}

void RefreshEngine::scheduleSave() {
    if (m_saveScheduled) {
        return;
    }
    m_saveScheduled = true;
    QTimer::singleShot(kSaveDelay, this, [this] {
        m_saveScheduled = false;
        // Best effort: a failed save keeps its changes pending for the next one, and
        // says why, so that it is never lost without a trace.
        QString reason;
        const bool stored = m_store->save(&reason);
        Q_EMIT saved(stored ? std::nullopt : std::optional<QString>(reason));
        const QList<QUuid> saved = std::exchange(m_awaitingSave, {});
        for (const QUuid& id : saved) {
            finish(id);
        }
    });
}
