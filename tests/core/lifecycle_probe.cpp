// Creates an API-key account from a draft in a process of its own, on whatever
// keychain the environment gives, and prints what came of it.
#include "core/ContentView.h"
#include "model/PlatformWording.h"
#include "onboarding/OnboardingDraft.h"
#include "onboarding/OnboardingFlow.h"
#include "services/KeychainStore.h"

#include "KeyringControl.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    if (QCoreApplication::arguments().contains(QStringLiteral("--lock")) && !lockDefaultCollection()) {
        std::printf("lock failed\n");
        return 2;
    }
    QTemporaryDir dir;
    QString error;
    auto store = AccountStore::open(dir.filePath(QStringLiteral("probe.store")), &error);
    if (!store) {
        return 1;
    }
    Preferences preferences(dir.filePath(QStringLiteral("preferences.ini")));
    ContentView content(store.get(), &preferences);
    OnboardingDraft draft;
    draft.connectionMode = ConnectionMode::apiKey;
    draft.apiKey = QStringLiteral("sk-admin-probe");
    std::optional<AccountLifecycle::Refusal> refusal;
    const bool created = content.createOnboardingAccount(draft.accountDraft(), &refusal);
    std::printf("created=%s accounts=%lld unsaved=%s\n", created ? "true" : "false",
                static_cast<long long>(content.accounts().size()), store->hasChanges() ? "true" : "false");
    std::printf("%s\n", qPrintable(OnboardingFlow::creationRefusalMessage(refusal)));
    if (created && QCoreApplication::arguments().contains(QStringLiteral("--lock-then-delete"))) {
        // Deleted while the keychain is locked: the account goes, the window says the key
        // stays for now, and the key is still to be deleted.
        if (!lockDefaultCollection()) {
            std::printf("lock failed\n");
            return 2;
        }
        const QString reference = content.accounts().first()->secretReference();
        content.requestDelete(content.accounts().first()->id());
        content.deleteSelectedAccount();
        std::printf("accounts=%lld pending=%s\n%s\n", static_cast<long long>(content.accounts().size()),
                    KeychainStore::pendingDeletions().contains(reference) ? "true" : "false",
                    qPrintable(PlatformWording::apply(content.notice().value_or(QString()))));
    }
    if (created && QCoreApplication::arguments().contains(QStringLiteral("--lock-then-refresh"))) {
        // Signed in while the keychain was open; refreshed after the screen locked.
        if (!lockDefaultCollection()) {
            std::printf("lock failed\n");
            return 2;
        }
        ProviderAccount* account = content.accounts().first();
        content.refresh(account);
        while (!content.refreshingIDs().isEmpty()) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        std::printf("%s: %s\n", qPrintable(account->syncStatus().rawValue()),
                    qPrintable(account->syncMessage()));
    }
    return 0;
}
