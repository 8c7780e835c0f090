#include "ContentView.h"

#include "Clock.h"
#include "CommandCenter.h"
#include "NotificationService.h"
#include "ProviderCancelled.h"
#include "ProviderFactory.h"
#include "UsageProviderError.h"

#include <QLocale>

#include <limits>

namespace {
// The platform's distant past: earlier than any date the program will see.
constexpr Timestamp kDistantPast(-63'114'076'800.0);

QString comparableLabel(const QString& label) {
    return QLocale().toLower(label.trimmed());
}
} // namespace

ContentView::ContentView(AccountStore* store, Preferences* preferences, QObject* parent)
    : QObject(parent)
    , m_store(store)
    , m_preferences(preferences)
    , m_heartbeat(Clock::now())
    , m_lastAutoRefreshAt(kDistantPast) {
    connect(m_store, &AccountStore::accountsChanged, this, &ContentView::accountsChanged);
    connect(m_store, &AccountStore::accountChanged, this, &ContentView::accountsChanged);
    connect(m_preferences, &Preferences::changed, this, &ContentView::onPreferenceChanged);
    connect(&CommandCenter::shared(), &CommandCenter::posted, this, &ContentView::handleCommand);
    m_heartbeatTimer.setInterval(kHeartbeatMilliseconds);
    m_heartbeatTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_heartbeatTimer, &QTimer::timeout, this, [this] { tick(Clock::now()); });
    m_makeProvider = [](const ProviderAccount& account) { return ProviderFactory::make(account); };
}

void ContentView::setProviderMaker(ProviderMaker maker) {
    m_makeProvider = std::move(maker);
}

void ContentView::setSelection(const SidebarSelection& selection) {
    if (m_selection == selection) {
        return;
    }
    m_selection = selection;
    Q_EMIT stateChanged();
}

void ContentView::setEditorState(const std::optional<EditorState>& state) {
    m_editorState = state;
    Q_EMIT stateChanged();
}

void ContentView::setShowDeleteConfirmation(bool shown) {
    m_showDeleteConfirmation = shown;
    Q_EMIT stateChanged();
}

void ContentView::setShowSampleClearConfirmation(bool shown) {
    m_showSampleClearConfirmation = shown;
    Q_EMIT stateChanged();
}

void ContentView::onAppear() {
    migrateLegacyBrowserConnections();
    m_lastAutoRefreshAt = Clock::now();
    if (m_preferences->thresholdNotificationsEnabled()) {
        requestNotificationPermission();
    }
    if (accounts().isEmpty() && !m_preferences->onboardingCompleted()) {
        // On the next turn of the event loop, once the window is up.
        QTimer::singleShot(0, this, [this] {
            m_showOnboarding = true;
            Q_EMIT stateChanged();
        });
    } else if (!accounts().isEmpty()) {
        m_preferences->setOnboardingCompleted(true);
    }
    m_heartbeatTimer.start();
    Q_EMIT stateChanged();
}

void ContentView::tick(Timestamp now) {
    m_heartbeat = now;
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

void ContentView::handleCommand(const QString& name) {
    if (name == CommandCenter::kAddAccount) {
        setEditorState(EditorState::newAccount());
    } else if (name == CommandCenter::kRefreshAccounts) {
        refreshSelection();
    } else if (name == CommandCenter::kDeleteSelectedAccount) {
        if (const auto id = m_selection.accountID()) {
            requestDelete(*id);
        }
    }
}

void ContentView::requestDelete(const QUuid& id) {
    m_deleteTargetID = id;
    m_showDeleteConfirmation = true;
    Q_EMIT stateChanged();
}

QList<ProviderAccount*> ContentView::accountsForSelection() const {
    QList<ProviderAccount*> selected;
    for (ProviderAccount* account : accounts()) {
        switch (m_selection.kind()) {
        case SidebarSelection::Kind::overview:
            selected.append(account);
            break;
        case SidebarSelection::Kind::provider:
            if (account->provider() == *m_selection.providerValue()) {
                selected.append(account);
            }
            break;
        case SidebarSelection::Kind::account:
            if (account->id() == *m_selection.accountID()) {
                selected.append(account);
            }
            break;
        }
    }
    return selected;
}

void ContentView::finishOnboarding() {
    m_preferences->setOnboardingCompleted(true);
    m_showOnboarding = false;
    Q_EMIT stateChanged();
}

bool ContentView::onboardingDismissDisabled() const {
    return accounts().isEmpty() && !m_preferences->onboardingCompleted();
}

QStringList ContentView::existingLabels() const {
    QStringList labels;
    for (const ProviderAccount* account : accounts()) {
        const QString name = account->displayName();
        if (!labels.contains(name)) {
            labels.append(name);
        }
    }
    return labels;
}

bool ContentView::labelExists(const QString& candidate) const {
    const QString wanted = comparableLabel(candidate);
    for (const ProviderAccount* account : accounts()) {
        if (comparableLabel(account->displayName()) == wanted) {
            return true;
        }
    }
    return false;
}

void ContentView::migrateLegacyBrowserConnections() {
    // Filled in by the account lifecycle: converts records of the retired browser mode.
}

void ContentView::requestNotificationPermission() {
    NotificationService::requestAuthorization();
}

void ContentView::refresh(ProviderAccount* account) {
    if (!account || m_refreshingIDs.contains(account->id())) {
        return;
    }
    m_refreshingIDs.insert(account->id());
    Q_EMIT stateChanged();
    // Not kept: the task runs to its end on its own, and nothing cancels it.
    runRefresh(*account);
}

void ContentView::refreshAllAccounts() {
    // A copy: the list may change while refreshes start.
    const QList<ProviderAccount*> all = accounts();
    for (ProviderAccount* account : all) {
        refresh(account);
    }
}

void ContentView::refreshSelection() {
    const QList<ProviderAccount*> selected = accountsForSelection();
    for (ProviderAccount* account : selected) {
        refresh(account);
    }
}

SyncStatus ContentView::status(const UsageProviderError& error) {
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

DateInterval ContentView::queryRange(Timestamp now) {
    const QDateTime local = now.toDateTime();
    const QDateTime monthAgo = local.addDays(-30);
    const Timestamp start =
        monthAgo.isValid() ? now.addingSeconds(static_cast<double>(local.msecsTo(monthAgo)) / 1000.0) : now;
    return DateInterval{.start = start, .end = now};
}

QCoro::Task<> ContentView::runRefresh(ProviderAccount& target) {
    const QPointer<ContentView> self(this);
    const QPointer<ProviderAccount> account(&target);
    const QUuid id = target.id();
    std::unique_ptr<UsageProvider> provider = m_makeProvider(target);
    const DateInterval range = queryRange(Clock::now());

    std::optional<UsageSnapshot> snapshot;
    std::optional<UsageProviderError> providerError;
    try {
        snapshot = co_await provider->fetchUsage(target, range);
    } catch (const UsageProviderError& error) {
        providerError = error;
    } catch (...) {
        // Cancellation or anything else: the existing snapshot stays.
    }
    if (!self) {
        co_return; // the screen is gone
    }

    // An account deleted while its refresh was in flight has nothing left to show it.
    if (account) {
        if (snapshot) {
            recordSuccess(*account, *snapshot);
        } else if (providerError) {
            account->setSyncStatus(status(*providerError));
            const QString sentence = providerError->errorDescription();
            account->setSyncMessage(sentence.isEmpty() ? QStringLiteral("Refresh failed") : sentence);
        } else {
            account->setSyncStatus(SyncStatus::offline);
            account->setSyncMessage(QStringLiteral("Refresh failed; existing snapshot was kept"));
        }
        scheduleSave();
    }
    m_refreshingIDs.remove(id);
    Q_EMIT refreshFinished(id);
    Q_EMIT stateChanged();
}

void ContentView::recordSuccess(ProviderAccount& account, const UsageSnapshot& snapshot) {
    account.setSnapshot(snapshot);
    account.record(snapshot);
    if (snapshot.source == UsageSource::officialAPI) {
        const ProviderConnectionMetadata base =
            account.detectedMetadata().value_or(ProviderConnectionMetadata{
                .displayName = account.provider() == AIProvider::openAI
                                   ? std::optional<QString>(QStringLiteral("OpenAI API organization"))
                                   : std::nullopt,
                .windows = {},
                .sourceDescription = QStringLiteral("Official provider usage API"),
                .notes = {},
                .capturedAt = snapshot.capturedAt});
        account.applyDetectedMetadata(base.merging(snapshot, account.provider()));
    }
    account.setLastRefreshAt(Clock::now());
    const bool partial = snapshot.isPartial();
    account.setSyncStatus(partial ? SyncStatus::partial : SyncStatus::current);
    account.setSyncMessage(partial ? QStringLiteral("Refresh completed with warnings")
                                   : QStringLiteral("Refresh completed"));
    updateNotificationEpisode(account);
}

void ContentView::updateNotificationEpisode(ProviderAccount& account) {
    const QUuid id = account.id();
    if (!m_preferences->thresholdNotificationsEnabled() && !m_notifiedUrgentIDs.contains(id)) {
        return; // nothing to post and nothing to forget
    }
    const bool urgent = account.pulse() == UsageHealth::urgent;
    if (m_preferences->thresholdNotificationsEnabled() && urgent) {
        if (!m_notifiedUrgentIDs.contains(id)) {
            NotificationService::postUrgent(account);
            m_notifiedUrgentIDs.insert(id);
        }
    } else if (!urgent) {
        m_notifiedUrgentIDs.remove(id);
    }
}

void ContentView::scheduleSave() {
    if (m_saveScheduled) {
        return;
    }
    m_saveScheduled = true;
    QTimer::singleShot(kSaveDelay, this, [this] {
        m_saveScheduled = false;
        // Best effort: a failed save keeps its changes pending for the next one.
        (void)m_store->save();
    });
}

void ContentView::onPreferenceChanged(const QString& key) {
    if (key == Preferences::kThresholdNotificationsEnabled &&
        m_preferences->thresholdNotificationsEnabled()) {
        requestNotificationPermission();
    }
}
