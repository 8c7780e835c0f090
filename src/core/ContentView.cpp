#include "core/ContentView.h"

#include "core/AccountLabel.h"
#include "core/CommandCenter.h"
#include "model/Clock.h"
#include "model/ReasonText.h"
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
    connect(&m_engine, &RefreshEngine::saved, this, [this](const std::optional<QString>& failure) {
        if (failure) {
            setNotice(
                withReason(QStringLiteral("Recent changes couldn’t be saved to the local database; they "
                                          "stay in this window and are saved with the next change."),
                           *failure),
                true);
        } else if (m_noticeFromBackground) {
            setNotice(std::nullopt);
        }
    });
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

void ContentView::setNotice(const std::optional<QString>& notice, bool fromBackground) {
    m_noticeFromBackground = notice && fromBackground;
    if (m_notice == notice) {
        return;
    }
    m_notice = notice;
    Q_EMIT noticeChanged();
}

void ContentView::report(const AccountLifecycle::Outcome& outcome, const QString& refused) {
    if (outcome.refusal) {
        setNotice(withReason(refused, outcome.refusal->reason));
    } else if (outcome.keyKept) {
        setNotice(AccountLifecycle::keyKeptMessage(*outcome.keyKept));
    } else if (outcome.done && m_noticeFromBackground) {
        setNotice(std::nullopt); // what waited was saved with this change
    }
}

void ContentView::onAppear() {
    report(m_lifecycle.migrateLegacyBrowserConnections(),
           QStringLiteral("Legacy provider links weren’t converted: the local database couldn’t save the "
                          "change."));
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

bool ContentView::createOnboardingAccount(const AccountDraft& draft,
                                          std::optional<AccountLifecycle::Refusal>* refusal) {
    const AccountLifecycle::Outcome created = m_lifecycle.createOnboardingAccount(draft);
    if (refusal) {
        *refusal = created.refusal;
    }
    if (!created.done) {
        return false;
    }
    setSelection(SidebarSelection::account(created.account));
    return true;
}

void ContentView::createDemoAccounts() {
    report(m_lifecycle.createDemoAccounts(),
           QStringLiteral("The sample accounts weren’t created: the local database couldn’t save them."));
}

void ContentView::logout(ProviderAccount* account) {
    report(m_lifecycle.logout(account), AccountLifecycle::signOutRefusedMessage());
}

void ContentView::deleteSelectedAccount() {
    const std::optional<QUuid> target = m_deleteTargetID ? m_deleteTargetID : m_selection.accountID();
    if (!target) {
        return;
    }
    const AccountLifecycle::Outcome deleted = m_lifecycle.deleteAccount(*target);
    report(deleted,
           QStringLiteral("The account wasn’t deleted: the local database couldn’t save the change."));
    if (!deleted.done) {
        return;
    }
    m_deleteTargetID.reset();
    // Back to the overview, whichever screen the delete was started from.
    setSelection(SidebarSelection::overview());
}

void ContentView::clearSampleData() {
    const AccountLifecycle::Outcome cleared = m_lifecycle.clearSampleData();
    report(cleared, QStringLiteral(
                        "The sample accounts weren’t removed: the local database couldn’t save the change."));
    if (cleared.done) {
        setSelection(SidebarSelection::overview());
    }
}

void ContentView::editorDidSave(const EditorState& state, const std::optional<QString>& keyKept) {
    report(AccountLifecycle::Outcome{.done = true, .keyKept = keyKept}, QString());
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
