#pragma once

// A store, preferences and the window's content in a folder of their own, with accounts as
// a finished refresh leaves them: what the screenshots and the screen-wide tests draw.

#include "core/ContentView.h"
#include "core/Preferences.h"
#include "providers/MockDataFactory.h"
#include "store/AccountStore.h"

#include <QTemporaryDir>

#include <memory>

// An account as a finished refresh leaves it: a mock snapshot for `now`, recorded with a
// few earlier days so that its trend has points.
inline ProviderAccount* refreshedAccount(AccountStore& store, const QString& label, AIProvider provider,
                                         ConnectionMode mode, UsageSource source, double createdAt,
                                         Timestamp now) {
    auto* account = new ProviderAccount(ProviderAccount::Init{
        .id = QUuid::createUuidV5(QUuid(), label),
        .provider = provider,
        .label = label,
        .accountKind = provider == AIProvider::openAI ? AccountKind::api : AccountKind::consumer,
        .connectionMode = mode,
        .createdAt = Timestamp(createdAt),
        .lastRefreshAt = now.addingSeconds(-600),
        .syncStatus = SyncStatus::current,
        .syncMessage = QStringLiteral("Refreshed from the provider"),
        .sampleDataEnabled = mode == ConnectionMode::mock});
    for (int day = 6; day >= 0; --day) {
        UsageSnapshot snapshot = MockDataFactory::snapshot(*account, now.addingSeconds(-86400.0 * day));
        snapshot.source = source;
        account->record(snapshot);
        account->setSnapshot(snapshot);
    }
    store.insert(account);
    return account;
}

struct Scenario {
    QTemporaryDir scratch;
    std::unique_ptr<AccountStore> store;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<ContentView> content;

    explicit Scenario(bool onboarded = true) {
        QString error;
        store = AccountStore::open(scratch.filePath(QStringLiteral("screens.store")), &error);
        preferences = std::make_unique<Preferences>(scratch.filePath(QStringLiteral("preferences.ini")));
        preferences->setOnboardingCompleted(onboarded);
        content = std::make_unique<ContentView>(store.get(), preferences.get());
    }
};
