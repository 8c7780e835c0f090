#pragma once

#include "core/AccountDraft.h"
#include "core/KeyJournal.h"
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

    // Why the store or the keychain would not take a change, in their own words
    // ("database or disk is full", "macOS Keychain is locked").
    struct Refusal {
        enum class Source { store, keychain };
        Source source;
        QString reason;
    };

    // What an operation did. A refused change left memory, the store and the keychain as
    // they were. A change that was made may still have left a key the keychain would not
    // remove yet: it is removed at the next chance, and `keyKept` says why it is not yet.
    struct Outcome {
        bool done = false;
        QUuid account;
        std::optional<Refusal> refusal;
        std::optional<QString> keyKept;
    };

    // What the editor's save did: the record it wrote, or the sentence that refuses it.
    struct EditorSave {
        ProviderAccount* account = nullptr;
        bool saved = false;
        std::optional<QString> refusal;
        std::optional<QString> keyKept;
    };

    AccountLifecycle(AccountStore* store, Preferences* preferences);

    Preferences* preferences() const noexcept { return m_preferences; }
    const QList<ProviderAccount*>& accounts() const { return m_store->accounts(); }
    ProviderAccount* account(const QUuid& id) const { return m_store->account(id); }

    // ---- creating and changing ----
    // Every change below is saved before the keychain is touched: records first, then
    // keys. A refused save puts memory back as it was.

    // Creates the account the guided flow describes and saves it, then stores its key;
    // `account` is its id. When the store or the keychain refuses, nothing remains of it.
    Outcome createOnboardingAccount(const AccountDraft& draft);
    // Seeds three sample accounts into an empty store; does nothing otherwise.
    Outcome createDemoAccounts();
    // The account editor's save of a checked form: to `existing`, or, with none, to a new
    // record. A refusal leaves no new record and no key behind.
    EditorSave saveEditorAccount(const AccountDraft& draft, ProviderAccount* existing);

    // ---- signing out and removing ----
    // Signs the account out: its key goes, it becomes a manual account, its data stays.
    Outcome logout(ProviderAccount* account);
    // The editor's "Log out": the key goes and the record says so; its mode stays until
    // the editor's next save writes the new one.
    Outcome logoutConnection(ProviderAccount* account);
    // Deletes the account, its key and its data; not done when there is no such account.
    Outcome deleteAccount(const QUuid& id);
    // Deletes every sample account; not done when there was none.
    Outcome clearSampleData();
    // Turns records of the retired browser mode into manual ones.
    Outcome migrateLegacyBrowserConnections();
    // Settles keychain changes a killed process still owed (see KeyJournal): at start,
    // once the window is up. Entries the keychain can't settle now wait for next time.
    void settleKeyJournal();

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
    // What the person is told when a change was made but a key stays in the keychain
    // for now (`Outcome::keyKept`), and of a sign-out the store refused.
    static QString keyKeptMessage(const QString& reason);
    static QString signOutRefusedMessage() {
        return QStringLiteral("The account wasn’t signed out: the local database couldn’t save the change.");
    }

private:
    // Saves the changes made since `point`; a refusal puts memory back as it was then.
    std::optional<Refusal> commit(const AccountStore::Savepoint& point);
    // Takes back changes made since `point` that were already saved: the keychain
    // refused what had to follow them. False when the store refused that too.
    bool undoSaved(const AccountStore::Savepoint& point);
    KeyJournal journal() const { return KeyJournal(m_store->path()); }
    // Notes what the change owes the keychain (`owed`), saves the changes made since
    // `point`, then stores `key` under `reference` when there is one; the keychain's
    // refusal takes the saved change back. On success the caller crosses `owed` out once
    // it has done the rest.
    std::optional<Refusal> commitThenSaveKey(const AccountStore::Savepoint& point,
                                             const QList<KeyJournal::Entry>& owed,
                                             const std::optional<QString>& key, const QString& reference);
    // Saves the changes made since `point`, then lets the keys go.
    Outcome commitThenDeleteKeys(const AccountStore::Savepoint& point, const QStringList& references);
    // Deletes the keys; the keychain's reason when one of them stays for now.
    static std::optional<QString> deleteKeys(const QStringList& references);

    AccountStore* m_store;
    Preferences* m_preferences;
};
