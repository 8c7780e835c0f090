#pragma once

#include "AccountStore.h"
#include "DateInterval.h"
#include "EditorState.h"
#include "Preferences.h"
#include "SidebarSelection.h"
#include "Timestamp.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>
#include <QStringList>
#include <QTimer>
#include <QUuid>

#include <QCoro/QCoroTask>

#include <functional>
#include <memory>
#include <optional>

class UsageProvider;
class UsageProviderError;
struct OnboardingDraft;
class OnboardingResetMode;

// The controller of the running application: the live list of accounts, what is
// selected, which sheet or dialog is up, which accounts are refreshing or were already
// notified, and the heartbeat. Screens read its state and call its operations; they
// change nothing themselves. It holds no widget and runs without a window.
class ContentView final : public QObject {
    Q_OBJECT

public:
    // The heartbeat's period.
    static constexpr int kHeartbeatMilliseconds = 60'000;

    // Makes the provider for one refresh; ProviderFactory::make unless a test says otherwise.
    using ProviderMaker = std::function<std::unique_ptr<UsageProvider>(const ProviderAccount&)>;

    ContentView(AccountStore* store, Preferences* preferences, QObject* parent = nullptr);

    AccountStore* store() const noexcept { return m_store; }
    Preferences* preferences() const noexcept { return m_preferences; }
    const QList<ProviderAccount*>& accounts() const { return m_store->accounts(); }

    const SidebarSelection& selection() const noexcept { return m_selection; }
    void setSelection(const SidebarSelection& selection);
    const std::optional<EditorState>& editorState() const noexcept { return m_editorState; }
    void setEditorState(const std::optional<EditorState>& state);
    const QSet<QUuid>& refreshingIDs() const noexcept { return m_refreshingIDs; }
    bool showDeleteConfirmation() const noexcept { return m_showDeleteConfirmation; }
    void setShowDeleteConfirmation(bool shown);
    std::optional<QUuid> deleteTargetID() const noexcept { return m_deleteTargetID; }
    Timestamp heartbeat() const noexcept { return m_heartbeat; }
    Timestamp lastAutoRefreshAt() const noexcept { return m_lastAutoRefreshAt; }
    const QSet<QUuid>& notifiedUrgentIDs() const noexcept { return m_notifiedUrgentIDs; }
    bool showOnboarding() const noexcept { return m_showOnboarding; }
    bool showSampleClearConfirmation() const noexcept { return m_showSampleClearConfirmation; }
    void setShowSampleClearConfirmation(bool shown);
    const QTimer& heartbeatTimer() const noexcept { return m_heartbeatTimer; }
    QTimer& heartbeatTimer() noexcept { return m_heartbeatTimer; }

    // The first appearance of the main screen: the launch steps, then the heartbeat.
    void onAppear();
    // One beat of the heartbeat, at `now`.
    void tick(Timestamp now);
    // A named in-process notification from the menu commands.
    void handleCommand(const QString& name);

    // Presents the delete dialog for one account.
    void requestDelete(const QUuid& id);
    // The accounts that "Refresh Usage" refreshes for the present selection.
    QList<ProviderAccount*> accountsForSelection() const;

    // Onboarding sheet wiring.
    void finishOnboarding();
    bool onboardingDismissDisabled() const;
    QStringList existingLabels() const;
    bool labelExists(const QString& candidate) const;

    // ---- refreshing ----
    // Starts one refresh unless one is in flight for the account; returns at once.
    void refresh(ProviderAccount* account);
    void refreshAllAccounts();
    // Refreshes every account of the present selection.
    void refreshSelection();
    static SyncStatus status(const UsageProviderError& error);
    // From 30 calendar days before `now` to `now`, in the user's calendar.
    static DateInterval queryRange(Timestamp now);
    void setProviderMaker(ProviderMaker maker);

    // Asks the system for permission to post notifications.
    void requestNotificationPermission();

    // ---- accounts as a whole ----
    // Creates the account the guided flow describes; true when it exists and is saved.
    bool createOnboardingAccount(const OnboardingDraft& draft);
    static QList<UsageWindow> onboardingManualWindows(const OnboardingDraft& draft);
    static QString manualResetNote(OnboardingResetMode mode);
    // Seeds three sample accounts into an empty store; does nothing otherwise.
    void createDemoAccounts();
    // The delete dialog's confirming button.
    void deleteSelectedAccount();
    // Presents the dialog that confirms removing the sample accounts.
    void requestSampleClear();
    void clearSampleData();
    // Signs the account out: its key goes, it becomes a manual account, its data stays.
    void logout(ProviderAccount* account);
    // Turns records of the retired browser mode into manual ones.
    void migrateLegacyBrowserConnections();
    // The editor saved what it worked on.
    void editorDidSave(const EditorState& state);

signals:
    // Any of the state above changed; screens redraw from it.
    void stateChanged();
    // The set of accounts, their order, or any field of one changed.
    void accountsChanged();
    // A refresh of this account ended, whatever its outcome.
    void refreshFinished(const QUuid& id);
    // An account entered or left refreshingIDs.
    void refreshingChanged();

private:
    void onPreferenceChanged(const QString& key);
    QCoro::Task<> runRefresh(ProviderAccount& target);
    void recordSuccess(ProviderAccount& account, const UsageSnapshot& snapshot);
    void updateNotificationEpisode(ProviderAccount& account);
    // Saves a moment later: refreshes that end together share one transaction, and the
    // event loop gets a turn between their results and the write. A failed save is
    // dropped; its changes stay pending for the next one.
    void scheduleSave();
    static constexpr std::chrono::milliseconds kSaveDelay{10};

    AccountStore* m_store;
    Preferences* m_preferences;
    SidebarSelection m_selection = SidebarSelection::overview();
    std::optional<EditorState> m_editorState;
    QSet<QUuid> m_refreshingIDs;
    bool m_showDeleteConfirmation = false;
    std::optional<QUuid> m_deleteTargetID;
    Timestamp m_heartbeat;
    Timestamp m_lastAutoRefreshAt;
    QSet<QUuid> m_notifiedUrgentIDs;
    bool m_showOnboarding = false;
    bool m_showSampleClearConfirmation = false;
    QTimer m_heartbeatTimer;
    ProviderMaker m_makeProvider;
    bool m_saveScheduled = false;
};
