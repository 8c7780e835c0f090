// Runs keychain operations in a process of its own, on whatever session bus it is
// given, and prints what happened and how long each call took. The tests start it on
// buses without a Secret Service, with a locked keyring, or with a service that
// never answers.
//
//   keychain_probe plain      save, read and delete one key
//   keychain_probe locked     store one key, lock the default collection, then try again
//   keychain_probe hang       claim the Secret Service name and never answer, then try
//   keychain_probe persist D  read a secret from standard input, keep it in the keychain
//                             and an account in the store and preferences in folder D
//   keychain_probe lockeddelete K  store key K, lock the collection, delete K
//   keychain_probe restart K  start as the application does, then say whether K is stored
#include "core/Preferences.h"
#include "model/UsageJson.h"
#include "services/KeychainBackend.h"
#include "services/KeychainStore.h"
#include "store/AccountStore.h"

#include "KeyringControl.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusInterface>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QDBusVirtualObject>
#include <QDir>
#include <QElapsedTimer>
#include <QTextStream>

#include <array>
#include <cstdio>

namespace {
void report(const char* operation, const QString& outcome, qint64 milliseconds) {
    std::printf("%s %s %lld\n", operation, qPrintable(outcome), static_cast<long long>(milliseconds));
    std::fflush(stdout);
}

void timedSave(const QString& value, const QString& key) {
    QElapsedTimer clock;
    clock.start();
    QString outcome = QStringLiteral("ok");
    try {
        KeychainStore::save(value, key);
    } catch (const KeychainError& error) {
        outcome = QStringLiteral("threw:%1").arg(error.status());
    }
    report("save", outcome, clock.elapsed());
}

void timedRead(const QString& key) {
    QElapsedTimer clock;
    clock.start();
    const auto value = KeychainStore::read(key);
    report("read", value ? QStringLiteral("value:") + *value : QStringLiteral("absent"), clock.elapsed());
}

void timedDelete(const QString& key) {
    QElapsedTimer clock;
    clock.start();
    KeychainStore::deleteItem(key);
    report("delete", QStringLiteral("done"), clock.elapsed());
}

// Takes every call and never replies.
class SilentService final : public QDBusVirtualObject {
public:
    QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage&, const QDBusConnection&) override { return true; }
};

// One line from standard input, waiting for it.
QString readLine() {
    std::array<char, 4096> line{};
    if (!std::fgets(line.data(), static_cast<int>(line.size()), stdin)) {
        return QString();
    }
    return QString::fromUtf8(line.data()).chopped(1);
}

int persist(const QString& folder) {
    const QString secret = readLine();
    auto* account = new ProviderAccount(ProviderAccount::Init{.provider = AIProvider::openAI,
                                                              .label = QStringLiteral("Org"),
                                                              .accountKind = AccountKind::api,
                                                              .connectionMode = ConnectionMode::apiKey});
    KeychainStore::save(secret, account->secretReference());
    QString error;
    auto store = AccountStore::open(QDir(folder).filePath(QStringLiteral("accounts.store")), &error);
    if (!store) {
        return 1;
    }
    store->insert(account);
    const UsageSnapshot snapshot{.source = UsageSource::officialAPI,
                                 .capturedAt = Clock::now(),
                                 .windows = {UsageWindow{.id = QStringLiteral("requests-rate-window"),
                                                         .title = QStringLiteral("Requests"),
                                                         .unit = UsageUnit::requests,
                                                         .used = 1,
                                                         .limit = 60}},
                                 .history = {},
                                 .warnings = {}};
    account->setSnapshot(snapshot);
    account->record(snapshot);
    account->setSyncMessage(QStringLiteral("Connected"));
    if (!store->save(&error)) {
        return 2;
    }
    Preferences preferences(QDir(folder).filePath(QStringLiteral("preferences.ini")));
    preferences.setAutoRefreshEnabled(true);
    preferences.setThresholdNotificationsEnabled(true);
    preferences.setOnboardingCompleted(true);
    const bool verified = KeychainStore::read(account->secretReference()) == secret;
    std::printf("account %s %s\n", qPrintable(account->secretReference()),
                verified ? "verified" : "mismatch");
    std::fprintf(stderr, "stored %lld bytes of history\n",
                 static_cast<long long>(account->snapshotHistoryData()->size()));
    std::fflush(stdout);
    std::fflush(stderr);
    // Stay open, with the store's write-ahead log in place, until the test has looked.
    readLine();
    return verified ? 0 : 3;
}
} // namespace

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const QString mode = QCoreApplication::arguments().value(1);
    const QString key = QStringLiteral("9C4B1E52-0000-4000-8000-%1")
                            .arg(QCoreApplication::applicationPid(), 12, 10, QLatin1Char('0'));
    if (mode == u"plain") {
        timedSave(QStringLiteral("probe-secret"), key);
        timedRead(key);
        timedDelete(key);
        return 0;
    }
    if (mode == u"locked") {
        timedSave(QStringLiteral("before-lock"), key);
        if (!lockDefaultCollection()) {
            std::printf("lock failed\n");
            return 1;
        }
        timedSave(QStringLiteral("after-lock"), key);
        timedSave(QStringLiteral("new-item"), key + QStringLiteral("-2"));
        timedRead(key);
        timedDelete(key + QStringLiteral("-3"));
        return 0;
    }
    if (mode == u"lockeddelete") {
        const QString held = QCoreApplication::arguments().value(2);
        timedSave(QStringLiteral("sk-admin-held"), held);
        if (!lockDefaultCollection()) {
            std::printf("lock failed\n");
            return 1;
        }
        timedDelete(held);
        timedRead(held); // deleted as far as anyone can tell
        report("pending", KeychainStore::pendingDeletions().join(u','), 0);
        const bool stored =
            KeychainBackend::copyMatching(KeychainStore::service, held) == KeychainBackend::kSuccess;
        report("stored", stored ? QStringLiteral("yes") : QStringLiteral("no"), 0);
        return 0;
    }
    if (mode == u"restart") {
        const QString held = QCoreApplication::arguments().value(2);
        report("pending", KeychainStore::pendingDeletions().join(u','), 0);
        QElapsedTimer clock;
        clock.start();
        KeychainStore::retryPendingDeletions(); // what the application does at start
        report("retry", QStringLiteral("done"), clock.elapsed());
        report("pending", KeychainStore::pendingDeletions().join(u','), 0);
        const bool stored =
            KeychainBackend::copyMatching(KeychainStore::service, held) == KeychainBackend::kSuccess;
        report("stored", stored ? QStringLiteral("yes") : QStringLiteral("no"), 0);
        return 0;
    }
    if (mode == u"hang") {
        QDBusConnection bus = QDBusConnection::sessionBus();
        static SilentService silent;
        if (!bus.registerService(QStringLiteral("org.freedesktop.secrets")) ||
            !bus.registerVirtualObject(QStringLiteral("/"), &silent, QDBusConnection::SubPath)) {
            std::printf("could not claim the service\n");
            return 1;
        }
        timedSave(QStringLiteral("probe-secret"), key);
        timedRead(key);
        timedDelete(key);
        return 0;
    }
    if (mode == u"persist") {
        return persist(QCoreApplication::arguments().value(2));
    }
    std::fprintf(stderr, "unknown mode\n");
    return 64;
}
