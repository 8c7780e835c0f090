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

// The sample workspace as a refresh leaves it: an OpenAI and a Claude account, current, and
// a Grok account gone stale.
struct SampleWorkspace {
    ProviderAccount* openAI;
    ProviderAccount* claude;
    ProviderAccount* grok;
};
inline SampleWorkspace addSampleWorkspace(AccountStore& store, Timestamp now) {
    SampleWorkspace workspace{refreshedAccount(store, QStringLiteral("OpenAI · Work API"), AIProvider::openAI,
                                               ConnectionMode::mock, UsageSource::mock, 1, now),
                              refreshedAccount(store, QStringLiteral("Claude · Personal"),
                                               AIProvider::anthropic, ConnectionMode::mock, UsageSource::mock,
                                               2, now),
                              refreshedAccount(store, QStringLiteral("Grok · Labs"), AIProvider::xAI,
                                               ConnectionMode::mock, UsageSource::mock, 3, now)};
    workspace.grok->setSyncStatus(SyncStatus::stale);
    workspace.grok->setSyncMessage(QStringLiteral("Snapshot is older than its reset"));
    return workspace;
}

// An OpenAI organization read through its admin key, whose costs could not be read.
inline ProviderAccount* addOfficialKeyAccount(AccountStore& store, double createdAt, Timestamp now) {
    ProviderAccount* key = refreshedAccount(store, QStringLiteral("Production org"), AIProvider::openAI,
                                            ConnectionMode::apiKey, UsageSource::officialAPI, createdAt, now);
    UsageSnapshot official = *key->snapshot();
    official.warnings = {QStringLiteral("Costs could not be read; usage is shown without spend.")};
    key->setSnapshot(official);
    return key;
}

// Fifty accounts across the providers, every third one manual, every seventh offline.
inline void addFiftyAccounts(AccountStore& store, Timestamp now) {
    const QList<AIProvider> providers = AIProvider::allCases();
    for (int i = 0; i < 50; ++i) {
        ProviderAccount* account =
            refreshedAccount(store, QStringLiteral("Team %1").arg(i + 1), providers.at(i % providers.size()),
                             i % 3 == 0 ? ConnectionMode::manual : ConnectionMode::mock,
                             i % 3 == 0 ? UsageSource::manual : UsageSource::mock, 100 + i, now);
        if (i % 7 == 3) {
            account->setSyncStatus(SyncStatus::offline);
            account->setSyncMessage(QStringLiteral("The provider could not be reached"));
        }
    }
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
