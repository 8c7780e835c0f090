#include "core/ContentView.h"

#include "core/AccountLabel.h"
#include "core/CommandCenter.h"
#include "model/Clock.h"
#include "services/NotificationService.h"

#include <QTimer>

ContentView::ContentView(AccountStore* store, Preferences* preferences, QObject* parent)
    : QObject(parent)
    , m_store(store)
    , m_preferences(preferences)
    , m_engine(store, preferences)
    , m_lifecycle(store, preferences) {
    connect(m_store, &AccountStore::accountsChanged, this, &ContentView::accountListChanged);
    connect(m_store, &AccountStore::accountChanged, this, &ContentView::accountChanged);
    connect(&m_engine, &RefreshEngine::refreshingChanged, this, &ContentView::refreshingChanged);
    connect(&m_engine, &RefreshEngine::refreshFinished, this, &ContentView::refreshFinished);
    connect(&m_engine, &RefreshEngine::ticked, this, &ContentView::heartbeatTicked);
    connect(m_preferences, &Preferences::changed, this, &ContentView::onPreferenceChanged);
    connect(&CommandCenter::shared(), &CommandCenter::posted, this, &ContentView::handleCommand);
}

void ContentView::setSelection(const SidebarSelection& selection) {
    if (m_selection == selection) {
        return;
    }
    m_selection = selection;
    Q_EMIT selectionChanged(m_selection);
}

void ContentView::setEditorState(const std::optional<EditorState>& state) {
    if (m_editorState == state) {
        return;
    }
    m_editorState = state;
    Q_EMIT editorStateChanged();
}

void ContentView::setShowDeleteConfirmation(bool shown) {
    if (m_showDeleteConfirmation == shown) {
        return;
    }
    m_showDeleteConfirmation = shown;
    Q_EMIT presentationChanged();
}

void ContentView::setShowSampleClearConfirmation(bool shown) {
    if (m_showSampleClearConfirmation == shown) {
        return;
    }
    m_showSampleClearConfirmation = shown;
    Q_EMIT presentationChanged();
}

void ContentView::onAppear() {
    m_lifecycle.migrateLegacyBrowserConnections();
    const Timestamp now = Clock::now();
    if (m_preferences->thresholdNotificationsEnabled()) {
        NotificationService::requestAuthorization();
    }
    if (accounts().isEmpty() && !m_preferences->onboardingCompleted()) {
        // On the next turn of the event loop, once the window is up.
        QTimer::singleShot(0, this, [this] {
            m_showOnboarding = true;
            Q_EMIT presentationChanged();
        });
    } else if (!accounts().isEmpty()) {
        m_preferences->setOnboardingCompleted(true);
    }
    // Automatic refresh counts from now, so its first run is one whole interval away.
    m_engine.start(now);
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
    Q_EMIT presentationChanged();
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
    if (m_showOnboarding) {
        m_showOnboarding = false;
        Q_EMIT presentationChanged();
    }
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
    const QString wanted = AccountLabel::comparable(candidate);
    for (const ProviderAccount* account : accounts()) {
        if (AccountLabel::comparable(account->displayName()) == wanted) {
            return true;
        }
    }
    return false;
}

bool ContentView::createOnboardingAccount(const AccountDraft& draft) {
    const std::optional<QUuid> created = m_lifecycle.createOnboardingAccount(draft);
    if (!created) {
        return false;
    }
    setSelection(SidebarSelection::account(*created));
    return true;
}

void ContentView::deleteSelectedAccount() {
    const std::optional<QUuid> target = m_deleteTargetID ? m_deleteTargetID : m_selection.accountID();
    if (!target || !m_lifecycle.deleteAccount(*target)) {
        return;
    }
    m_deleteTargetID.reset();
    // Back to the overview, whichever screen the delete was started from.
    setSelection(SidebarSelection::overview());
}

void ContentView::clearSampleData() {
    if (m_lifecycle.clearSampleData()) {
        setSelection(SidebarSelection::overview());
    }
}

void ContentView::editorDidSave(const EditorState& state) {
    if (const auto id = state.editID()) {
        setSelection(SidebarSelection::account(*id));
    }
}

void ContentView::onPreferenceChanged(const QString& key) {
    if (key == Preferences::kThresholdNotificationsEnabled &&
        m_preferences->thresholdNotificationsEnabled()) {
        NotificationService::requestAuthorization();
    }
}
