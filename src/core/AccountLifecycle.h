#pragma once

#include "core/Preferences.h"
#include "model/UsageWindow.h"
#include "store/AccountStore.h"

#include <QList>
#include <QString>
#include <QUuid>

#include <optional>

struct OnboardingDraft;
class OnboardingResetMode;

// What happens to accounts as a whole: creation from an onboarding draft or as sample
// data, sign-out, deletion of one or of all sample accounts, and the conversion of
// records of the retired browser mode. It changes the store and the keychain and
// saves; what the screen selects afterwards is the controller's business, so each
// operation says what it did.
class AccountLifecycle final {
public:
    AccountLifecycle(AccountStore* store, Preferences* preferences);

    // Creates the account the guided flow describes and saves it: its id, or none
    // when the key or the store could not be written (nothing then remains of it).
    std::optional<QUuid> createOnboardingAccount(const OnboardingDraft& draft);
    static QList<UsageWindow> onboardingManualWindows(const OnboardingDraft& draft);
    static QString manualResetNote(OnboardingResetMode mode);
    // Seeds three sample accounts into an empty store; does nothing otherwise.
    void createDemoAccounts();
    // Deletes the account, its key and its data; false when there is no such account.
    bool deleteAccount(const QUuid& id);
    // Deletes every sample account; false when there was none.
    bool clearSampleData();
    // Signs the account out: its key goes, it becomes a manual account, its data stays.
    void logout(ProviderAccount* account);
    // Turns records of the retired browser mode into manual ones.
    void migrateLegacyBrowserConnections();

private:
    AccountStore* m_store;
    Preferences* m_preferences;
};
