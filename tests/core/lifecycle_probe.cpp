// Creates an API-key account from a draft in a process of its own, on whatever
// keychain the environment gives, and prints what came of it.
#include "core/ContentView.h"
#include "onboarding/OnboardingDraft.h"

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
    const bool created = content.createOnboardingAccount(draft.accountDraft());
    std::printf("created=%s accounts=%lld unsaved=%s\n", created ? "true" : "false",
                static_cast<long long>(content.accounts().size()), store->hasChanges() ? "true" : "false");
    return 0;
}
