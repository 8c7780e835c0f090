// Changes accounts and their keys again and again through the lifecycle until it is
// killed: editor saves of new accounts with keys, guided creations, sign-outs, changes of
// connection and deletes. Prints each finished round. For the kill -9 soak.
#include "core/AccountLifecycle.h"
#include "core/Preferences.h"

#include <QCoreApplication>

#include <cstdio>

namespace {
ProviderAccount* oldestSignedIn(AccountStore& store) {
    for (ProviderAccount* account : store.accounts()) {
        if (account->connectionMode() == ConnectionMode::apiKey) {
            return account;
        }
    }
    return nullptr;
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QString error;
    auto store = AccountStore::open(arguments.value(1), &error);
    if (!store) {
        std::fprintf(stderr, "%s\n", qPrintable(error));
        return 1;
    }
    Preferences preferences(arguments.value(2));
    AccountLifecycle lifecycle(store.get(), &preferences);
    lifecycle.settleKeyJournal();
    for (qint64 round = 1;; ++round) {
        const QString key = QStringLiteral("sk-admin-soak-%1").arg(round);
        AccountDraft draft{.provider = AIProvider::openAI,
                           .accountKind = AccountKind::api,
                           .label = QStringLiteral("Soak %1").arg(round),
                           .connectionMode = ConnectionMode::apiKey,
                           .apiKey = key,
                           .sampleDataEnabled = false};
        switch (round % 5) {
        case 0:
            (void)lifecycle.saveEditorAccount(draft, nullptr);
            break;
        case 1:
            (void)lifecycle.createOnboardingAccount(draft);
            break;
        case 2:
            (void)lifecycle.logout(oldestSignedIn(*store));
            break;
        case 3:
            if (ProviderAccount* account = oldestSignedIn(*store)) {
                draft.connectionMode = ConnectionMode::manual;
                draft.apiKey.clear();
                draft.label = account->label();
                (void)lifecycle.saveEditorAccount(draft, account);
            }
            break;
        case 4:
            if (store->accounts().size() > 4) {
                (void)lifecycle.deleteAccount(store->accounts().first()->id());
            }
            break;
        }
        std::printf("%lld\n", static_cast<long long>(round));
        std::fflush(stdout);
    }
}
