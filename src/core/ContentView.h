#pragma once

#include "core/AccountLifecycle.h"
#include "core/EditorState.h"
#include "core/Preferences.h"
#include "core/RefreshEngine.h"
#include "core/SidebarSelection.h"
#include "store/AccountStore.h"

#include <QList>
#include <QObject>
#include <QSet>
#include <QStringList>
#include <QUuid>

#include <optional>

// The controller of the running application: the live list of accounts, what is
// selected, which sheet or dialog is up, and (through its refresh engine) which
// accounts are refreshing or were already notified, and the heartbeat. Screens read
// its state, call its operations and change nothing themselves. It holds no widget
// and runs without a window.
//
// Each signal says what changed, so a screen subscribes to exactly what it reads:
// accountChanged for the fields of one account, accountListChanged for inserts,
// removals and reordering, selectionChanged, editorStateChanged, presentationChanged
// for the dialogs and sheets, refreshingChanged for the set in flight, and
// heartbeatTicked for what ages with time.
class ContentView final : public QObject {
    Q_OBJECT

public:
    ContentView(AccountStore* store, Preferences* preferences, QObject* parent = nullptr);

    AccountStore* store() const noexcept { return m_store; }
    Preferences* preferences() const noexcept { return m_preferences; }
    const QList<ProviderAccount*>& accounts() const { return m_store->accounts(); }

    const SidebarSelection& selection() const noexcept { return m_selection; }
    void setSelection(const SidebarSelection& selection);
    const std::optional<EditorState>& editorState() const noexcept { return m_editorState; }
    void setEditorState(const std::optional<EditorState>& state);
    bool showDeleteConfirmation() const noexcept { return m_showDeleteConfirmation; }
    void setShowDeleteConfirmation(bool shown);
    std::optional<QUuid> deleteTargetID() const noexcept { return m_deleteTargetID; }
    bool showOnboarding() const noexcept { return m_showOnboarding; }
    bool showSampleClearConfirmation() const noexcept { return m_showSampleClearConfirmation; }
    void setShowSampleClearConfirmation(bool shown);

    // The parts it runs: refreshing and the heartbeat, and what happens to accounts as a
    // whole. Screens call the controller; tests and tools may reach the parts directly.
    RefreshEngine& engine() noexcept { return m_engine; }
    const RefreshEngine& engine() const noexcept { return m_engine; }
    AccountLifecycle& lifecycle() noexcept { return m_lifecycle; }

    // Accounts with a refresh in flight.
    const QSet<QUuid>& refreshingIDs() const noexcept { return m_engine.refreshingIDs(); }

    // The first appearance of the main screen: the launch steps, then the heartbeat.
    void onAppear();

    // Presents the delete dialog for one account.
    void requestDelete(const QUuid& id);
    // The accounts that "Refresh Usage" refreshes for the present selection.
    QList<ProviderAccount*> accountsForSelection() const;
    // Starts one refresh unless one is in flight for the account; returns at once.
    void refresh(ProviderAccount* account) { m_engine.refresh(account); }
    // Refreshes every account of the present selection.
    void refreshSelection() { m_engine.refresh(accountsForSelection()); }

    // Onboarding sheet wiring.
    void finishOnboarding();
    bool onboardingDismissDisabled() const;
    QStringList existingLabels() const;
    bool labelExists(const QString& candidate) const;

    // ---- accounts as a whole ----
    // Creates the account the guided flow describes and selects it; true when it
    // exists and is saved. Otherwise `refusal` says why, when it can.
    bool createOnboardingAccount(const AccountDraft& draft,
                                 std::optional<AccountLifecycle::Refusal>* refusal = nullptr);
    // Seeds three sample accounts into an empty store; does nothing otherwise.
    void createDemoAccounts();
    // The delete dialog's confirming button.
    void deleteSelectedAccount();
    // Presents the dialog that confirms removing the sample accounts.
    void requestSampleClear() { setShowSampleClearConfirmation(true); }
    // The sample dialog's confirming button.
    void clearSampleData();
    // Signs the account out: its key goes, it becomes a manual account, its data stays.
    void logout(ProviderAccount* account);
    // The editor saved what it worked on; `keyKept` when an old key stays for now.
    void editorDidSave(const EditorState& state, const std::optional<QString>& keyKept = std::nullopt);

    // ---- what the person is told outside any sheet ----
    // One calm notice on the window: a change the local database or the keychain would
    // not take, or a save in the background that failed, each with its reason. Absent
    // when there is nothing to tell. A later successful save ends a background notice.
    const std::optional<QString>& notice() const noexcept { return m_notice; }
    // The notice's heading, whatever it says.
    static QString noticeTitle() { return QStringLiteral("Not everything was saved"); }
    void dismissNotice() { setNotice(std::nullopt); }

signals:
    // The set of accounts or their order changed: an insert, a removal or a reorder.
    void accountListChanged();
    // Fields of one account changed, in the groups given.
    void accountChanged(ProviderAccount* account, ProviderAccount::Fields fields);
    void selectionChanged(const SidebarSelection& selection);
    void editorStateChanged();
    // A dialog or sheet was presented or dismissed: delete, sample clear or onboarding.
    void presentationChanged();
    // The account entered or left refreshingIDs.
    void refreshingChanged(const QUuid& id);
    // A refresh of this account ended, whatever its outcome.
    void refreshFinished(const QUuid& id);
    // The heartbeat beat: what ages with time may read differently now.
    void heartbeatTicked(Timestamp now);
    void noticeChanged();

private:
    // A named in-process notification from the menu commands.
    void handleCommand(const QString& name);
    void onPreferenceChanged(const QString& key);
    // Tells the person what an operation left undone: `refused` begins the sentence when
    // the store or keychain refused it.
    void report(const AccountLifecycle::Outcome& outcome, const QString& refused);
    void setNotice(const std::optional<QString>& notice, bool fromBackground = false);

    AccountStore* m_store;
    Preferences* m_preferences;
    RefreshEngine m_engine;
    AccountLifecycle m_lifecycle;
    SidebarSelection m_selection = SidebarSelection::overview();
    std::optional<EditorState> m_editorState;
    bool m_showDeleteConfirmation = false;
    std::optional<QUuid> m_deleteTargetID;
    bool m_showOnboarding = false;
    bool m_showSampleClearConfirmation = false;
    std::optional<QString> m_notice;
    bool m_noticeFromBackground = false;
};
