#pragma once

#include "core/AccountLifecycle.h"
#include "core/Preferences.h"
#include "store/AccountStore.h"

#include <QTemporaryDir>
#include <QTest>

#include <memory>

// A real store and real preferences in a temporary folder.
struct CoreFixture {
    QTemporaryDir dir;
    std::unique_ptr<AccountStore> store;
    std::unique_ptr<Preferences> preferences;
    std::unique_ptr<AccountLifecycle> lifecycle;

    CoreFixture() {
        QString error;
        store = AccountStore::open(dir.filePath(QStringLiteral("accounts.store")), &error);
        preferences = std::make_unique<Preferences>(dir.filePath(QStringLiteral("preferences.ini")));
        lifecycle = std::make_unique<AccountLifecycle>(store.get(), preferences.get());
    }

    ProviderAccount* addAccount(const QString& label, AIProvider provider = AIProvider::openAI,
                                double createdAt = 0) {
        auto* account = new ProviderAccount(ProviderAccount::Init{.provider = provider,
                                                                  .label = label,
                                                                  .accountKind = AccountKind::api,
                                                                  .createdAt = Timestamp(createdAt)});
        store->insert(account);
        return account;
    }
};
