#include "ContentView.h"

#include "Clock.h"
#include "CommandCenter.h"
#include "KeychainStore.h"
#include "MockDataFactory.h"
#include "NotificationService.h"
#include "OnboardingDraft.h"
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

bool ContentView::createOnboardingAccount(const OnboardingDraft& draft) {
    auto* account = new ProviderAccount(
        ProviderAccount::Init{.provider = draft.provider,
                              .label = draft.normalizedLabel(),
                              .accountKind = draft.accountKind,
                              .planName = QString(),
                              .connectionMode = draft.connectionMode,
                              .syncStatus = SyncStatus::needsAttention,
                              .syncMessage = QStringLiteral("Ready for its first refresh")});
    if (draft.connectionMetadata) {
        account->applyDetectedMetadata(draft.connectionMetadata);
    }
    const bool usesKey = draft.connectionMode == ConnectionMode::apiKey;
    if (usesKey) {
        try {
            KeychainStore::save(draft.apiKey, account->secretReference());
        } catch (const KeychainError&) {
            delete account; // never inserted: nothing remains
            return false;
        }
    }

    const auto finish = [account](SyncStatus status, const QString& message) {
        account->setSyncStatus(status);
        account->setSyncMessage(message);
    };
    const auto start = [account](const UsageSnapshot& snapshot, Timestamp refreshedAt) {
        account->setSnapshot(snapshot);
        account->record(snapshot);
        account->setLastRefreshAt(refreshedAt);
    };
    const Timestamp now = Clock::now();
    switch (draft.connectionMode.value()) {
    case ConnectionMode::mock:
        account->setSampleDataEnabled(true);
        start(MockDataFactory::snapshot(*account, now), now);
        finish(SyncStatus::current, QStringLiteral("Sample snapshot loaded locally"));
        break;
    case ConnectionMode::manual: {
        account->setSampleDataEnabled(false);
        const QList<UsageWindow> windows = onboardingManualWindows(draft);
        if (windows.isEmpty()) {
            finish(SyncStatus::needsAttention,
                   QStringLiteral("Add a limit from Edit Subscription when you’re ready"));
            break;
        }
        const UsageWindow& first = windows.first();
        start(
            UsageSnapshot{
                .source = UsageSource::manual,
                .capturedAt = now,
                .windows = windows,
                .history = {UsagePoint{.date = now, .value = first.used.value_or(0.0), .unit = first.unit}},
                .warnings = windows.size() == 1
                                ? QStringList{QStringLiteral("Only one manual window is configured.")}
                                : QStringList{}},
            now);
        if (windows.size() == 1) {
            finish(SyncStatus::partial, QStringLiteral("One manual window is being tracked"));
        } else {
            finish(SyncStatus::current, QStringLiteral("Manual limits saved"));
        }
        break;
    }
    case ConnectionMode::apiKey: {
        account->setSampleDataEnabled(false);
        const std::optional<UsageSnapshot> initial =
            draft.connectionMetadata ? draft.connectionMetadata->initialSnapshot() : std::nullopt;
        if (initial) {
            start(*initial, initial->capturedAt);
            finish(SyncStatus::partial,
                   QStringLiteral("Connected — caps detected; refresh for current usage"));
        } else {
            finish(SyncStatus::needsAttention,
                   QStringLiteral("Key verified — press Refresh for the first usage signal"));
        }
        break;
    }
    case ConnectionMode::browser:
        account->setSampleDataEnabled(false);
        finish(
            SyncStatus::needsAttention,
            QStringLiteral("Provider page opened for reference — choose Manual tracking to monitor limits"));
        break;
    }

    m_store->insert(account);
    if (!m_store->save()) {
        // No secret outlives its account, and no half-made account stays on the list.
        if (usesKey) {
            KeychainStore::deleteItem(account->secretReference());
        }
        m_store->remove(account);
        return false;
    }
    setSelection(SidebarSelection::account(account->id()));
    return true;
}

QString ContentView::manualResetNote(OnboardingResetMode mode) {
    switch (mode.value()) {
    case OnboardingResetMode::later:
        return QStringLiteral("Operator-entered · reset to add later");
    case OnboardingResetMode::notProvided:
        return QStringLiteral("Operator-entered · reset not provided");
    case OnboardingResetMode::setTime:
        return QStringLiteral("Operator-entered");
    }
    Q_UNREACHABLE();
    return QString();
}

QList<UsageWindow> ContentView::onboardingManualWindows(const OnboardingDraft& draft) {
    // The unit's title with a capital first letter; "USD" stays "USD".
    QString unitTitle = draft.manualUnit.title();
    if (!unitTitle.isEmpty()) {
        unitTitle[0] = unitTitle[0].toUpper();
    }
    QList<UsageWindow> windows;
    if (draft.manualShortUsed && draft.manualShortLimit) {
        windows.append(UsageWindow{.id = QStringLiteral("onboarding-short"),
                                   .title = unitTitle + QStringLiteral(" / current window"),
                                   .unit = draft.manualUnit,
                                   .horizon = UsageHorizon::shortTerm,
                                   .used = draft.manualShortUsed,
                                   .limit = draft.manualShortLimit,
                                   .resetAt = draft.shortResetAt(),
                                   .note = manualResetNote(draft.manualShortResetMode)});
    }
    if (draft.manualWeeklyUsed && draft.manualWeeklyLimit) {
        windows.append(UsageWindow{.id = QStringLiteral("onboarding-weekly"),
                                   .title = unitTitle + QStringLiteral(" / weekly"),
                                   .unit = draft.manualUnit,
                                   .horizon = UsageHorizon::weekly,
                                   .used = draft.manualWeeklyUsed,
                                   .limit = draft.manualWeeklyLimit,
                                   .resetAt = draft.weeklyResetAt(),
                                   .note = manualResetNote(draft.manualWeeklyResetMode)});
    }
    return windows;
}

void ContentView::createDemoAccounts() {
    if (!accounts().isEmpty()) {
        return;
    }
    struct Seed {
        const char* label;
        AIProvider provider;
        AccountKind kind;
        const char* plan;
    };
    const std::array<Seed, 3> seeds{
        Seed{"OpenAI · Work API", AIProvider::openAI, AccountKind::api, "Platform project"},
        Seed{"Claude · Personal", AIProvider::anthropic, AccountKind::consumer, "Consumer subscription"},
        Seed{"Grok · Labs", AIProvider::xAI, AccountKind::api, "API project"}};
    for (const Seed& seed : seeds) {
        const Timestamp now = Clock::now();
        auto* account = new ProviderAccount(ProviderAccount::Init{.provider = seed.provider,
                                                                  .label = QString::fromUtf8(seed.label),
                                                                  .accountKind = seed.kind,
                                                                  .planName = QString::fromUtf8(seed.plan),
                                                                  .connectionMode = ConnectionMode::mock,
                                                                  .createdAt = now});
        // No recorded history for seeded accounts: only the snapshot itself.
        account->setSnapshot(MockDataFactory::snapshot(*account, now));
        account->setLastRefreshAt(now);
        account->setSyncStatus(SyncStatus::current);
        account->setSyncMessage(QStringLiteral("Sample snapshot loaded locally"));
        m_store->insert(account);
    }
    if (!m_store->save()) {
        return;
    }
    m_preferences->setDidSeedSampleAccounts(true);
}

void ContentView::deleteSelectedAccount() {
    const std::optional<QUuid> target = m_deleteTargetID ? m_deleteTargetID : m_selection.accountID();
    if (!target) {
        return;
    }
    ProviderAccount* account = m_store->account(*target);
    if (!account) {
        return;
    }
    KeychainStore::deleteItem(account->secretReference());
    m_store->remove(account);
    (void)m_store->save();
    m_deleteTargetID.reset();
    m_selection = SidebarSelection::overview();
    Q_EMIT stateChanged();
}

void ContentView::requestSampleClear() {
    setShowSampleClearConfirmation(true);
}

void ContentView::clearSampleData() {
    QList<ProviderAccount*> samples;
    for (ProviderAccount* account : accounts()) {
        if (account->sampleDataEnabled()) {
            samples.append(account);
        }
    }
    if (samples.isEmpty()) {
        return;
    }
    for (ProviderAccount* account : samples) {
        KeychainStore::deleteItem(account->secretReference());
        m_store->remove(account);
    }
    (void)m_store->save();
    setSelection(SidebarSelection::overview());
}

void ContentView::logout(ProviderAccount* account) {
    if (!account) {
        return;
    }
    KeychainStore::deleteItem(account->secretReference());
    account->setSampleDataEnabled(false);
    account->setDetectedMetadata(std::nullopt);
    account->setConnectionMode(ConnectionMode::manual);
    account->setSyncStatus(SyncStatus::needsAttention);
    account->setSyncMessage(
        QStringLiteral("Signed out — enter manual limits or reconnect an official API key"));
    (void)m_store->save();
}

void ContentView::migrateLegacyBrowserConnections() {
    QList<ProviderAccount*> legacy;
    for (ProviderAccount* account : accounts()) {
        if (account->connectionMode() == ConnectionMode::browser) {
            legacy.append(account);
        }
    }
    if (legacy.isEmpty()) {
        return;
    }
    for (ProviderAccount* account : legacy) {
        account->setConnectionMode(ConnectionMode::manual);
        account->setDetectedMetadata(std::nullopt);
        account->setIdentityDetail(QString());
        account->setModelScope(QString());
        account->setSampleDataEnabled(false);
        account->setSyncStatus(SyncStatus::needsAttention);
        account->setSyncMessage(
            QStringLiteral("Legacy provider link removed — enter manual limits to monitor this account"));
    }
    (void)m_store->save();
}

void ContentView::editorDidSave(const EditorState& state) {
    if (const auto id = state.editID()) {
        setSelection(SidebarSelection::account(*id));
    }
}

void ContentView::requestNotificationPermission() {
    NotificationService::requestAuthorization();
}

void ContentView::refresh(ProviderAccount* account) {
    if (!account || m_refreshingIDs.contains(account->id())) {
        return;
    }
    m_refreshingIDs.insert(account->id());
    Q_EMIT refreshingChanged();
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
    Q_EMIT refreshingChanged();
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
