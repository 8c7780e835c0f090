#include "core/AccountLifecycle.h"

#include "core/AccountLabel.h"
#include "model/Clock.h"
#include "model/ReasonText.h"
#include "model/SecretText.h"
#include "model/UuidText.h"
#include "providers/MockDataFactory.h"
#include "services/CredentialLifecycle.h"
#include "services/KeychainError.h"
#include "services/KeychainStore.h"

#include <array>

namespace {
// How each flow names the windows it makes.
struct ManualVocabulary {
    QString shortID;
    QString shortTitle;
    QString weeklyID;
    QString weeklyTitle;
    QString oneWindowWarning;
};

const ManualVocabulary& vocabulary(AccountLifecycle::ManualWording wording) {
    static const ManualVocabulary onboarding{QStringLiteral("onboarding-short"),
                                             QStringLiteral(" / current window"),
                                             QStringLiteral("onboarding-weekly"), QStringLiteral(" / weekly"),
                                             QStringLiteral("Only one manual window is configured.")};
    static const ManualVocabulary editor{QStringLiteral("manual-short"), QStringLiteral(" / short term"),
                                         QStringLiteral("manual-weekly"), QStringLiteral(" / weekly"),
                                         QStringLiteral("Only one manual horizon is configured.")};
    return wording == AccountLifecycle::ManualWording::onboarding ? onboarding : editor;
}

QString resetNote(const ManualHorizonDraft& horizon, AccountLifecycle::ManualWording wording) {
    if (wording == AccountLifecycle::ManualWording::onboarding) {
        return AccountLifecycle::manualResetNote(horizon.resetMode);
    }
    return horizon.resetAt ? QStringLiteral("Manual value")
                           : QStringLiteral("Manual value · reset not provided");
}

void setStatus(ProviderAccount& account, SyncStatus status, const QString& message) {
    account.setSyncStatus(status);
    account.setSyncMessage(message);
}

// A snapshot the account now shows and records, taken at `refreshedAt`.
void start(ProviderAccount& account, const UsageSnapshot& snapshot, Timestamp refreshedAt) {
    account.setSnapshot(snapshot);
    account.record(snapshot);
    account.setLastRefreshAt(refreshedAt);
}

// The snapshot, its history and the moment of the last refresh go.
void forgetData(ProviderAccount& account) {
    account.setSnapshot(std::nullopt);
    account.setSnapshotHistoryData(std::nullopt);
    account.setLastRefreshAt(std::nullopt);
}

void loadSample(ProviderAccount& account, Timestamp now) {
    start(account, MockDataFactory::snapshot(account, now), now);
    setStatus(account, SyncStatus::current, QStringLiteral("Sample snapshot loaded locally"));
}

const QString kSignedOut =
    QStringLiteral("Signed out — enter manual limits or reconnect an official API key");

// A manual account from now on, its key's metadata gone, its data kept.
void signOut(ProviderAccount& account) {
    account.setSampleDataEnabled(false);
    account.setDetectedMetadata(std::nullopt);
    account.setConnectionMode(ConnectionMode::manual);
    setStatus(account, SyncStatus::needsAttention, kSignedOut);
}
} // namespace

AccountLifecycle::AccountLifecycle(AccountStore* store, Preferences* preferences)
    : m_store(store)
    , m_preferences(preferences) {}

// ---- what an account is made of ----

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

QList<UsageWindow> AccountLifecycle::manualWindows(const AccountDraft& draft, ManualWording wording) {
    const ManualVocabulary& words = vocabulary(wording);
    const QString unitTitle = draft.manualUnit.capitalizedTitle();
    QList<UsageWindow> windows;
    const auto add = [&](const ManualHorizonDraft& horizon, const QString& id, const QString& title,
                         UsageHorizon kind) {
        if (!horizon.used || !horizon.limit) {
            return;
        }
        windows.append(UsageWindow{.id = id,
                                   .title = unitTitle + title,
                                   .unit = draft.manualUnit,
                                   .horizon = kind,
                                   .used = horizon.used,
                                   .limit = horizon.limit,
                                   .resetAt = horizon.resetAt,
                                   .note = resetNote(horizon, wording)});
    };
    add(draft.shortTerm, words.shortID, words.shortTitle, UsageHorizon::shortTerm);
    add(draft.weekly, words.weeklyID, words.weeklyTitle, UsageHorizon::weekly);
    return windows;
}

UsageSnapshot AccountLifecycle::manualSnapshot(const QList<UsageWindow>& windows, Timestamp now,
                                               ManualWording wording) {
    const UsageWindow& first = windows.first();
    return UsageSnapshot{
        .source = UsageSource::manual,
        .capturedAt = now,
        .windows = windows,
        .history = {UsagePoint{.date = now, .value = first.used.value_or(0.0), .unit = first.unit}},
        .warnings = windows.size() == 1 ? QStringList{vocabulary(wording).oneWindowWarning} : QStringList{}};
}

bool AccountLifecycle::showsSampleData(const AccountDraft& draft) {
    const ConnectionMode mode = draft.connectionMode;
    const bool usesLiveMode = mode == ConnectionMode::apiKey || mode == ConnectionMode::browser;
    return !usesLiveMode && (draft.sampleDataEnabled || mode == ConnectionMode::mock);
}

QString AccountLifecycle::keyKeptMessage(const QString& reason) {
    return withReason(
        QStringLiteral("The key couldn’t be removed from macOS Keychain yet; Tallyfen removes it at "
                       "the next chance."),
        reason);
}

QString AccountLifecycle::providerPageMessage() {
    return QStringLiteral("Provider page opened for reference — choose Manual tracking to monitor limits");
}

std::optional<QString> AccountLifecycle::storedKey(const ProviderAccount& account) {
    return KeychainStore::read(account.secretReference());
}

// ---- creating ----

AccountLifecycle::Outcome AccountLifecycle::createOnboardingAccount(const AccountDraft& draft) {
    const AccountStore::Savepoint point = m_store->savepoint();
    auto* account = new ProviderAccount(
        ProviderAccount::Init{.provider = draft.provider,
                              .label = AccountLabel::normalized(draft.label, draft.provider),
                              .accountKind = draft.accountKind,
                              .planName = QString(),
                              .connectionMode = draft.connectionMode,
                              .syncStatus = SyncStatus::needsAttention,
                              .syncMessage = QStringLiteral("Ready for its first refresh")});
    if (draft.connectionMetadata) {
        account->applyDetectedMetadata(draft.connectionMetadata);
    }
    const Timestamp now = Clock::now();
    account->setSampleDataEnabled(draft.connectionMode == ConnectionMode::mock);
    switch (draft.connectionMode.value()) {
    case ConnectionMode::mock:
        loadSample(*account, now);
        break;
    case ConnectionMode::manual: {
        const QList<UsageWindow> windows = onboardingManualWindows(draft);
        if (windows.isEmpty()) {
            setStatus(*account, SyncStatus::needsAttention,
                      QStringLiteral("Add a limit from Edit Subscription when you’re ready"));
            break;
        }
        start(*account, manualSnapshot(windows, now, ManualWording::onboarding), now);
        if (windows.size() == 1) {
            setStatus(*account, SyncStatus::partial, QStringLiteral("One manual window is being tracked"));
        } else {
            setStatus(*account, SyncStatus::current, QStringLiteral("Manual limits saved"));
        }
        break;
    }
    case ConnectionMode::apiKey:
        if (const std::optional<UsageSnapshot> initial =
                draft.connectionMetadata ? draft.connectionMetadata->initialSnapshot() : std::nullopt) {
            start(*account, *initial, initial->capturedAt);
            setStatus(*account, SyncStatus::partial,
                      QStringLiteral("Connected — caps detected; refresh for current usage"));
        } else {
            setStatus(*account, SyncStatus::needsAttention,
                      QStringLiteral("Key verified — press Refresh for the first usage signal"));
        }
        break;
    case ConnectionMode::browser:
        setStatus(*account, SyncStatus::needsAttention, providerPageMessage());
        break;
    }

    const QString reference = account->secretReference();
    const QUuid id = account->id();
    const bool usesKey = draft.connectionMode == ConnectionMode::apiKey;
    const QList<KeyJournal::Entry> owed =
        usesKey ? QList<KeyJournal::Entry>{{KeyJournal::Change::createKey, reference}}
                : QList<KeyJournal::Entry>{};
    m_store->insert(account);
    if (auto refusal =
            commitThenSaveKey(point, owed, usesKey ? std::optional(draft.apiKey) : std::nullopt, reference)) {
        return Outcome{.refusal = std::move(refusal)};
    }
    journal().crossOut(owed);
    return Outcome{.done = true, .account = id};
}

AccountLifecycle::Outcome AccountLifecycle::createDemoAccounts() {
    if (!m_store->accounts().isEmpty()) {
        return {};
    }
    const AccountStore::Savepoint point = m_store->savepoint();
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
        setStatus(*account, SyncStatus::current, QStringLiteral("Sample snapshot loaded locally"));
        m_store->insert(account);
    }
    if (auto refusal = commit(point)) {
        return Outcome{.refusal = std::move(refusal)};
    }
    m_preferences->setDidSeedSampleAccounts(true);
    return Outcome{.done = true};
}

// ---- the editor's save ----

namespace {
// What the editor's form sets on the record whatever its connection.
void applyEditorFields(ProviderAccount& account, const AccountDraft& draft, const QString& label) {
    account.setProvider(draft.provider);
    account.setLabel(label);
    account.setAccountKind(draft.accountKind);
    account.setPlanName(draft.planName.trimmed());
    account.setIdentityDetail(draft.identityDetail.trimmed());
    account.setModelScope(draft.modelScope.trimmed());
    account.setAgentScope(draft.agentScope.trimmed());
    account.setAgentRosterText(draft.agentRosterText.trimmed());
    account.setAgentBudgets(draft.agentBudgets);
    account.setAgentCount(qMax<qint64>(0, draft.agentCount));
    account.setRenewalDate(draft.renewalDate);
}

// Where the account's data comes from now: sample data, the manual windows, or nothing
// until the provider's page or the next refresh.
void fillEditorData(ProviderAccount& account, const AccountDraft& draft, bool sample, Timestamp now) {
    if (sample || draft.connectionMode == ConnectionMode::mock) {
        loadSample(account, now);
    } else if (draft.connectionMode == ConnectionMode::manual) {
        const QList<UsageWindow> windows =
            AccountLifecycle::manualWindows(draft, AccountLifecycle::ManualWording::editor);
        if (windows.isEmpty()) {
            forgetData(account);
            setStatus(account, SyncStatus::needsAttention,
                      QStringLiteral("Add at least one manual short-term or weekly allowance"));
        } else {
            start(account,
                  AccountLifecycle::manualSnapshot(windows, now, AccountLifecycle::ManualWording::editor),
                  now);
            if (windows.size() == 1) {
                setStatus(account, SyncStatus::partial,
                          QStringLiteral("Manual short-term or weekly allowance updated"));
            } else {
                setStatus(account, SyncStatus::current, QStringLiteral("Manual allowances updated"));
            }
        }
    } else if (draft.connectionMode == ConnectionMode::browser) {
        setStatus(account, SyncStatus::needsAttention, AccountLifecycle::providerPageMessage());
    } else {
        // Every save of an official API account waits for its next refresh to be current.
        setStatus(account, SyncStatus::needsAttention,
                  QStringLiteral("Add a manual allowance or refresh with an official API connection"));
    }
}
} // namespace

AccountLifecycle::EditorSave AccountLifecycle::saveEditorAccount(const AccountDraft& draft,
                                                                 ProviderAccount* existing) {
    const AccountStore::Savepoint point = m_store->savepoint();
    const Timestamp now = Clock::now();
    const QString finalLabel = AccountLabel::normalized(draft.label, draft.provider);
    const ConnectionMode mode = draft.connectionMode;
    const bool usesLiveMode = mode == ConnectionMode::apiKey || mode == ConnectionMode::browser;
    const bool sampleRequest = draft.sampleDataEnabled;
    const bool effectiveSample = showsSampleData(draft);

    ProviderAccount* target = existing;
    if (!target) {
        target =
            new ProviderAccount(ProviderAccount::Init{.provider = draft.provider,
                                                      .label = finalLabel,
                                                      .accountKind = draft.accountKind,
                                                      .connectionMode = mode,
                                                      .sampleDataEnabled = !usesLiveMode && sampleRequest});
        m_store->insert(target);
    }
    const bool providerChanged = existing && target->provider() != draft.provider;
    QStringList staleKeys;
    const bool modeChanged = existing && target->connectionMode() != mode;
    if (providerChanged || modeChanged) {
        // The connection's identity changed: the old data no longer belongs to it.
        forgetData(*target);
        target->setDetectedMetadata(std::nullopt);
        setStatus(
            *target, SyncStatus::needsAttention,
            QStringLiteral("Connection changed; refresh this subscription to establish a new snapshot"));
        // A key typed in this sheet takes the old one's place.
        if (draft.apiKey.isEmpty() &&
            CredentialLifecycle::shouldDeleteCredential(target->connectionMode(), mode, providerChanged)) {
            staleKeys.append(target->secretReference());
        }
    }
    applyEditorFields(*target, draft, finalLabel);
    if ((!providerChanged && !modeChanged) || usesLiveMode) {
        target->applyDetectedMetadata(draft.connectionMetadata);
    }
    target->setConnectionMode(mode);
    target->setSampleDataEnabled(effectiveSample);
    // Leaving sample mode clears the sample data.
    if (!effectiveSample && mode != ConnectionMode::mock &&
        (sampleRequest || providerChanged || modeChanged)) {
        forgetData(*target);
    }

    fillEditorData(*target, draft, effectiveSample, now);

    const QString reference = target->secretReference();
    QList<KeyJournal::Entry> owed;
    if (!draft.apiKey.isEmpty()) {
        owed.append({KeyJournal::Change::createKey, reference});
    }
    for (const QString& stale : std::as_const(staleKeys)) {
        owed.append({KeyJournal::Change::deleteKey, stale});
    }
    if (const auto refusal = commitThenSaveKey(
            point, owed, draft.apiKey.isEmpty() ? std::nullopt : std::optional(draft.apiKey), reference)) {
        const QString sentence = refusal->source == Refusal::Source::store
                                     ? QStringLiteral("The account could not be saved locally.")
                                     : QStringLiteral("The credential could not be saved in Keychain.");
        return EditorSave{.account = existing, .refusal = withReason(sentence, refusal->reason)};
    }
    std::optional<QString> keyKept = deleteKeys(staleKeys);
    journal().crossOut(owed);
    return EditorSave{.account = target, .saved = true, .keyKept = std::move(keyKept)};
}

std::optional<AccountLifecycle::Refusal>
AccountLifecycle::commitThenSaveKey(const AccountStore::Savepoint& point,
                                    const QList<KeyJournal::Entry>& owed, const std::optional<QString>& key,
                                    const QString& reference) {
    journal().note(owed);
    if (auto refusal = commit(point)) {
        journal().crossOut(owed);
        return refusal;
    }
    if (key) {
        try {
            KeychainStore::save(*key, reference);
        } catch (const KeychainError& error) {
            // No record without its key: the saved change goes again (or, should the store
            // refuse that, at the next start).
            if (undoSaved(point)) {
                journal().crossOut(owed);
            }
            return Refusal{Refusal::Source::keychain, error.reason()};
        }
    }
    return std::nullopt;
}

std::optional<AccountLifecycle::Refusal> AccountLifecycle::commit(const AccountStore::Savepoint& point) {
    QString reason;
    if (m_store->save(&reason)) {
        return std::nullopt;
    }
    m_store->rollBack(point);
    return Refusal{Refusal::Source::store, reason};
}

bool AccountLifecycle::undoSaved(const AccountStore::Savepoint& point) {
    m_store->rollBack(point);
    // The file holds what memory no longer does. Should this save fail as well, the
    // changes wait for the next one, which writes memory as it now stands.
    return m_store->save();
}

std::optional<QString> AccountLifecycle::deleteKeys(const QStringList& references) {
    std::optional<QString> kept;
    for (const QString& reference : references) {
        qint32 status = 0;
        KeychainStore::deleteItem(reference, &status);
        if (!KeychainStore::isDeleted(status) && !kept) {
            kept = KeychainError(status).reason();
        }
    }
    return kept;
}

AccountLifecycle::Outcome AccountLifecycle::commitThenDeleteKeys(const AccountStore::Savepoint& point,
                                                                 const QStringList& references) {
    QList<KeyJournal::Entry> owed;
    for (const QString& reference : references) {
        owed.append({KeyJournal::Change::deleteKey, reference});
    }
    if (auto refusal = commitThenSaveKey(point, owed, std::nullopt, QString())) {
        return Outcome{.refusal = std::move(refusal)};
    }
    Outcome outcome{.done = true, .keyKept = deleteKeys(references)};
    journal().crossOut(owed);
    return outcome;
}

void AccountLifecycle::settleKeyJournal() {
    const QList<KeyJournal::Entry> owed = journal().entries();
    QList<KeyJournal::Entry> settled;
    for (const KeyJournal::Entry& entry : owed) {
        const std::optional<QUuid> id = UuidText::fromText(entry.reference);
        ProviderAccount* account = id ? m_store->account(*id) : nullptr;
        const bool keyInUse = account && account->connectionMode() == ConnectionMode::apiKey;
        if (entry.change == KeyJournal::Change::deleteKey || !account) {
            // A key whose record is gone, or no longer signed in, goes; one still in use
            // stays (the change that would have let it go was never saved).
            if (!keyInUse) {
                KeychainStore::deleteItem(entry.reference);
            }
            settled.append(entry);
            continue;
        }
        qint32 status = 0;
        std::optional<QString> key = KeychainStore::read(entry.reference, &status);
        if (KeychainStore::isUnreachable(status)) {
            continue; // asked again at the next start
        }
        if (key) {
            SecretText::wipe(*key);
        } else if (keyInUse) {
            // Saved for a key that never reached the keychain: signed out, data kept.
            const AccountStore::Savepoint point = m_store->savepoint();
            signOut(*account);
            if (commit(point)) {
                continue;
            }
        }
        settled.append(entry);
    }
    journal().crossOut(settled);
}

// ---- signing out and removing ----

AccountLifecycle::Outcome AccountLifecycle::logout(ProviderAccount* account) {
    if (!account) {
        return {};
    }
    const AccountStore::Savepoint point = m_store->savepoint();
    signOut(*account);
    return commitThenDeleteKeys(point, {account->secretReference()});
}

AccountLifecycle::Outcome AccountLifecycle::logoutConnection(ProviderAccount* account) {
    if (!account) {
        return {};
    }
    const AccountStore::Savepoint point = m_store->savepoint();
    account->setDetectedMetadata(std::nullopt);
    setStatus(*account, SyncStatus::needsAttention, kSignedOut);
    return commitThenDeleteKeys(point, {account->secretReference()});
}

AccountLifecycle::Outcome AccountLifecycle::deleteAccount(const QUuid& id) {
    ProviderAccount* account = m_store->account(id);
    if (!account) {
        return {};
    }
    const AccountStore::Savepoint point = m_store->savepoint();
    const QString reference = account->secretReference();
    m_store->remove(account);
    return commitThenDeleteKeys(point, {reference});
}

AccountLifecycle::Outcome AccountLifecycle::clearSampleData() {
    QList<ProviderAccount*> samples;
    for (ProviderAccount* account : m_store->accounts()) {
        if (account->sampleDataEnabled()) {
            samples.append(account);
        }
    }
    if (samples.isEmpty()) {
        return {};
    }
    const AccountStore::Savepoint point = m_store->savepoint();
    QStringList references;
    for (ProviderAccount* account : samples) {
        references.append(account->secretReference());
        m_store->remove(account);
    }
    return commitThenDeleteKeys(point, references);
}

AccountLifecycle::Outcome AccountLifecycle::migrateLegacyBrowserConnections() {
    QList<ProviderAccount*> legacy;
    for (ProviderAccount* account : m_store->accounts()) {
        if (account->connectionMode() == ConnectionMode::browser) {
            legacy.append(account);
        }
    }
    if (legacy.isEmpty()) {
        return {};
    }
    const AccountStore::Savepoint point = m_store->savepoint();
    for (ProviderAccount* account : legacy) {
        account->setConnectionMode(ConnectionMode::manual);
        account->setDetectedMetadata(std::nullopt);
        account->setIdentityDetail(QString());
        account->setModelScope(QString());
        account->setSampleDataEnabled(false);
        setStatus(
            *account, SyncStatus::needsAttention,
            QStringLiteral("Legacy provider link removed — enter manual limits to monitor this account"));
    }
    if (auto refusal = commit(point)) {
        return Outcome{.refusal = std::move(refusal)};
    }
    return Outcome{.done = true};
}
