// Creates an API-key account from a draft in a process of its own, on whatever
// keychain the environment gives, and prints what came of it.
#include "ContentView.h"
#include "OnboardingDraft.h"

#include <QCoreApplication>
#include <QDBusInterface>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QTemporaryDir>

#include <cstdio>

namespace {
// Locks the keyring's default collection, as a screen locker would.
bool lockDefaultCollection() {
    QDBusInterface service(QStringLiteral("org.freedesktop.secrets"),
                           QStringLiteral("/org/freedesktop/secrets"),
                           QStringLiteral("org.freedesktop.Secret.Service"));
    const QDBusReply<QDBusObjectPath> alias =
        service.call(QStringLiteral("ReadAlias"), QStringLiteral("default"));
    return alias.isValid() &&
           service.call(QStringLiteral("Lock"), QVariant::fromValue(QList<QDBusObjectPath>{alias.value()}))
                   .type() == QDBusMessage::ReplyMessage;
}
} // namespace

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
    const bool created = content.createOnboardingAccount(draft);
    std::printf("created=%s accounts=%lld unsaved=%s\n", created ? "true" : "false",
                static_cast<long long>(content.accounts().size()), store->hasChanges() ? "true" : "false");
    return 0;
}
