#include "ContentView.h"

#include "Clock.h"
#include "CommandCenter.h"

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
    // Filled in by the notification service.
}

void ContentView::refreshSelection() {
    // Filled in by the refresh engine, which refreshes accountsForSelection().
}

void ContentView::onPreferenceChanged(const QString& key) {
    if (key == Preferences::kThresholdNotificationsEnabled &&
        m_preferences->thresholdNotificationsEnabled()) {
        requestNotificationPermission();
    }
}
