#pragma once

#include "core/AccountDraft.h"
#include "core/Preferences.h"
#include "model/UsageSnapshot.h"
#include "model/UsageWindow.h"
#include "store/AccountStore.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <optional>

// The one writer of accounts and their keys. The guided flow, the account editor, the
// controller and the menus hand it what they want done, and it changes the records, the
// keychain and the store in one place: creation from a draft or as sample data, the
// editor's save, sign-out, deletion of one or of all sample accounts, and the conversion
// of records of the retired browser mode. Each operation keeps the texts of the screen
// that asks for it. What the window selects afterwards is the controller's business, so
// each operation says what it did.
class AccountLifecycle final {
public:
    // Whose words a manual allowance is written in.
    enum class ManualWording { onboarding, editor };

    // What the editor's save did: the record it wrote (kept in memory also when the store
    // refused it, so that trying again adds no second record), or why it refused.
    struct EditorSave {
        ProviderAccount* account = nullptr;
        bool saved = false;
        std::optional<QString> refusal;
    };

    AccountLifecycle(AccountStore* store, Preferences* preferences);

    Preferences* preferences() const noexcept { return m_preferences; }
    const QList<ProviderAccount*>& accounts() const { return m_store->accounts(); }
    ProviderAccount* account(const QUuid& id) const { return m_store->account(id); }

    // ---- creating and changing ----
    // Creates the account the guided flow describes and saves it: its id, or none when
    // the key or the store could not be written (nothing then remains of it).
    std::optional<QUuid> createOnboardingAccount(const AccountDraft& draft);
    // Seeds three sample accounts into an empty store; does nothing otherwise.
    void createDemoAccounts();
    // The account editor's save of a checked form: to `existing`, or, with none, to a new
    // record (`pending`, when a refused save of the same sheet already made one).
    EditorSave saveEditorAccount(const AccountDraft& draft, ProviderAccount* existing,
                                 ProviderAccount* pending = nullptr);
    // A new record whose save was refused, and its key, go again: the sheet was closed.
    void discardUnsavedAccount(ProviderAccount* account);

    // ---- signing out and removing ----
    // Signs the account out: its key goes, it becomes a manual account, its data stays.
    void logout(ProviderAccount* account);
    // The editor's "Log out": the key goes at once and the record says so; its mode stays
    // until the editor's next save writes the new one.
    void logoutConnection(ProviderAccount* account);
    // Deletes the account, its key and its data; false when there is no such account.
    bool deleteAccount(const QUuid& id);
    // Deletes every sample account; false when there was none.
    bool clearSampleData();
    // Turns records of the retired browser mode into manual ones.
    void migrateLegacyBrowserConnections();

    // ---- keys ----
    // The key stored for an account, if any.
    static std::optional<QString> storedKey(const ProviderAccount& account);

    // ---- what an account is made of ----
    // The manual windows of a draft, short first, each only where both its numbers are
    // given, in the words of the flow that asked.
    static QList<UsageWindow> manualWindows(const AccountDraft& draft, ManualWording wording);
    static QList<UsageWindow> onboardingManualWindows(const AccountDraft& draft) {
        return manualWindows(draft, ManualWording::onboarding);
    }
    static QString manualResetNote(OnboardingResetMode mode);
    // The snapshot that records manual windows at `now`.
    static UsageSnapshot manualSnapshot(const QList<UsageWindow>& windows, Timestamp now,
                                        ManualWording wording);
    // Whether an account the editor saves shows sample data: the mode is sample, or the
    // operator's toggle asks for it outside a live mode.
    static bool showsSampleData(const AccountDraft& draft);
    // The status sentence of an account that only links to the provider's page.
    static QString providerPageMessage();

private:
    // Saves the store, and only once the records are saved lets the keys go: a refused
    // save leaves every key where it was.
    bool saveThenDeleteKeys(const QStringList& references);

    AccountStore* m_store;
    Preferences* m_preferences;
};
