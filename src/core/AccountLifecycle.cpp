#include "core/AccountLifecycle.h"

#include "model/Clock.h"
#include "onboarding/OnboardingDraft.h"
#include "providers/MockDataFactory.h"
#include "services/KeychainStore.h"

#include <array>

AccountLifecycle::AccountLifecycle(AccountStore* store, Preferences* preferences)
    : m_store(store)
    , m_preferences(preferences) {}

std::optional<QUuid> AccountLifecycle::createOnboardingAccount(const OnboardingDraft& draft) {
    auto* account = new ProviderAccount(
        ProviderAccount::Init{.provider = draft.provider,
                              .label = draft.normalizedLabel(),
                              .accountKind = draft.accountKind,
                              .planName = QString(),
                              .connectionMode = draft.connectionMode,
                              .syncStatus = SyncStatus::needsAttention,
                              .syncMessage = QStringLiteral("Ready for its first refresh")});
    if (draft.connectionMetadata) {
        account->applyDetectedMetadata(draft.connectionMetadata);
    }
    const bool usesKey = draft.connectionMode == ConnectionMode::apiKey;
    if (usesKey) {
        try {
            KeychainStore::save(draft.apiKey, account->secretReference());
        } catch (const KeychainError&) {
            delete account; // never inserted: nothing remains
            return std::nullopt;
        }
    }

    const auto finish = [account](SyncStatus status, const QString& message) {
        account->setSyncStatus(status);
        account->setSyncMessage(message);
    };
    const auto start = [account](const UsageSnapshot& snapshot, Timestamp refreshedAt) {
        account->setSnapshot(snapshot);
        account->record(snapshot);
        account->setLastRefreshAt(refreshedAt);
    };
    const Timestamp now = Clock::now();
    switch (draft.connectionMode.value()) {
    case ConnectionMode::mock:
        account->setSampleDataEnabled(true);
        start(MockDataFactory::snapshot(*account, now), now);
        finish(SyncStatus::current, QStringLiteral("Sample snapshot loaded locally"));
        break;
    case ConnectionMode::manual: {
        account->setSampleDataEnabled(false);
        const QList<UsageWindow> windows = onboardingManualWindows(draft);
        if (windows.isEmpty()) {
            finish(SyncStatus::needsAttention,
                   QStringLiteral("Add a limit from Edit Subscription when you’re ready"));
            break;
        }
        const UsageWindow& first = windows.first();
        start(
            UsageSnapshot{
                .source = UsageSource::manual,
                .capturedAt = now,
                .windows = windows,
                .history = {UsagePoint{.date = now, .value = first.used.value_or(0.0), .unit = first.unit}},
                .warnings = windows.size() == 1
                                ? QStringList{QStringLiteral("Only one manual window is configured.")}
                                : QStringList{}},
            now);
        if (windows.size() == 1) {
            finish(SyncStatus::partial, QStringLiteral("One manual window is being tracked"));
        } else {
            finish(SyncStatus::current, QStringLiteral("Manual limits saved"));
        }
        break;
    }
    case ConnectionMode::apiKey: {
        account->setSampleDataEnabled(false);
        const std::optional<UsageSnapshot> initial =
            draft.connectionMetadata ? draft.connectionMetadata->initialSnapshot() : std::nullopt;
        if (initial) {
            start(*initial, initial->capturedAt);
            finish(SyncStatus::partial,
                   QStringLiteral("Connected — caps detected; refresh for current usage"));
        } else {
            finish(SyncStatus::needsAttention,
                   QStringLiteral("Key verified — press Refresh for the first usage signal"));
        }
        break;
    }
    case ConnectionMode::browser:
        account->setSampleDataEnabled(false);
        finish(
            SyncStatus::needsAttention,
            QStringLiteral("Provider page opened for reference — choose Manual tracking to monitor limits"));
        break;
    }

    m_store->insert(account);
    if (!m_store->save()) {
        // No secret outlives its account, and no half-made account stays on the list.
        if (usesKey) {
            KeychainStore::deleteItem(account->secretReference());
        }
        m_store->remove(account);
        return std::nullopt;
    }
    return account->id();
}

QString AccountLifecycle::manualResetNote(OnboardingResetMode mode) {
    switch (mode.value()) {
    case OnboardingResetMode::later:
        return QStringLiteral("Operator-entered · reset to add later");
    case OnboardingResetMode::notProvided:
        return QStringLiteral("Operator-entered · reset not provided");
    case OnboardingResetMode::setTime:
        return QStringLiteral("Operator-entered");
    }
    Q_UNREACHABLE();
    return QString();
}

QList<UsageWindow> AccountLifecycle::onboardingManualWindows(const OnboardingDraft& draft) {
    const QString unitTitle = draft.manualUnit.capitalizedTitle();
    QList<UsageWindow> windows;
    if (draft.manualShortUsed && draft.manualShortLimit) {
        windows.append(UsageWindow{.id = QStringLiteral("onboarding-short"),
                                   .title = unitTitle + QStringLiteral(" / current window"),
                                   .unit = draft.manualUnit,
                                   .horizon = UsageHorizon::shortTerm,
                                   .used = draft.manualShortUsed,
                                   .limit = draft.manualShortLimit,
                                   .resetAt = draft.shortResetAt(),
                                   .note = manualResetNote(draft.manualShortResetMode)});
    }
    if (draft.manualWeeklyUsed && draft.manualWeeklyLimit) {
        windows.append(UsageWindow{.id = QStringLiteral("onboarding-weekly"),
                                   .title = unitTitle + QStringLiteral(" / weekly"),
                                   .unit = draft.manualUnit,
                                   .horizon = UsageHorizon::weekly,
                                   .used = draft.manualWeeklyUsed,
                                   .limit = draft.manualWeeklyLimit,
                                   .resetAt = draft.weeklyResetAt(),
                                   .note = manualResetNote(draft.manualWeeklyResetMode)});
    }
    return windows;
}

void AccountLifecycle::createDemoAccounts() {
    if (!m_store->accounts().isEmpty()) {
        return;
    }
    struct Seed {
        const char* label;
        AIProvider provider;
        AccountKind kind;
        const char* plan;
    };
    const std::array<Seed, 3> seeds{
        Seed{"OpenAI · Work API", AIProvider::openAI, AccountKind::api, "Platform project"},
        Seed{"Claude · Personal", AIProvider::anthropic, AccountKind::consumer, "Consumer subscription"},
        Seed{"Grok · Labs", AIProvider::xAI, AccountKind::api, "API project"}};
    for (const Seed& seed : seeds) {
        const Timestamp now = Clock::now();
        auto* account = new ProviderAccount(ProviderAccount::Init{.provider = seed.provider,
                                                                  .label = QString::fromUtf8(seed.label),
                                                                  .accountKind = seed.kind,
                                                                  .planName = QString::fromUtf8(seed.plan),
                                                                  .connectionMode = ConnectionMode::mock,
                                                                  .createdAt = now});
        // No recorded history for seeded accounts: only the snapshot itself.
        account->setSnapshot(MockDataFactory::snapshot(*account, now));
        account->setLastRefreshAt(now);
        account->setSyncStatus(SyncStatus::current);
        account->setSyncMessage(QStringLiteral("Sample snapshot loaded locally"));
        m_store->insert(account);
    }
    if (!m_store->save()) {
        return;
    }
    m_preferences->setDidSeedSampleAccounts(true);
}

bool AccountLifecycle::deleteAccount(const QUuid& id) {
    ProviderAccount* account = m_store->account(id);
    if (!account) {
        return false;
    }
    KeychainStore::deleteItem(account->secretReference());
    m_store->remove(account);
    (void)m_store->save();
    return true;
}

bool AccountLifecycle::clearSampleData() {
    QList<ProviderAccount*> samples;
    for (ProviderAccount* account : m_store->accounts()) {
        if (account->sampleDataEnabled()) {
            samples.append(account);
        }
    }
    if (samples.isEmpty()) {
        return false;
    }
    for (ProviderAccount* account : samples) {
        KeychainStore::deleteItem(account->secretReference());
        m_store->remove(account);
    }
    (void)m_store->save();
    return true;
}

void AccountLifecycle::logout(ProviderAccount* account) {
    if (!account) {
        return;
    }
    KeychainStore::deleteItem(account->secretReference());
    account->setSampleDataEnabled(false);
    account->setDetectedMetadata(std::nullopt);
    account->setConnectionMode(ConnectionMode::manual);
    account->setSyncStatus(SyncStatus::needsAttention);
    account->setSyncMessage(
        QStringLiteral("Signed out — enter manual limits or reconnect an official API key"));
    (void)m_store->save();
}

void AccountLifecycle::migrateLegacyBrowserConnections() {
    QList<ProviderAccount*> legacy;
    for (ProviderAccount* account : m_store->accounts()) {
        if (account->connectionMode() == ConnectionMode::browser) {
            legacy.append(account);
        }
    }
    if (legacy.isEmpty()) {
        return;
    }
    for (ProviderAccount* account : legacy) {
        account->setConnectionMode(ConnectionMode::manual);
        account->setDetectedMetadata(std::nullopt);
        account->setIdentityDetail(QString());
        account->setModelScope(QString());
        account->setSampleDataEnabled(false);
        account->setSyncStatus(SyncStatus::needsAttention);
        account->setSyncMessage(
            QStringLiteral("Legacy provider link removed — enter manual limits to monitor this account"));
    }
    (void)m_store->save();
}
