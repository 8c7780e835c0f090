#include "editor/AccountEditorForm.h"

#include "core/Preferences.h"
#include "model/Clock.h"
#include "providers/MockDataFactory.h"
#include "providers/OpenAIClient.h"
#include "providers/OpenAIUsageProvider.h"
#include "providers/ProviderFactory.h"
#include "providers/UsageProviderError.h"
#include "services/CredentialLifecycle.h"
#include "services/KeychainError.h"
#include "services/KeychainStore.h"
#include "store/AccountStore.h"
#include "store/ProviderAccount.h"
#include "store/ProviderAuthentication.h"

#include <QCoro/QCoroTask>
#include <QDateTime>
#include <QUuid>

#include <charconv>
#include <cmath>
#include <limits>

namespace {
// A number as the platform's strict parser reads it: the whole text and nothing else,
// no blank before or after, an optional sign, decimal or "0x" hexadecimal digits with
// an optional exponent, or "inf", "infinity" and "nan" in any case.
std::optional<double> parseNumber(QStringView text) {
    if (text.isEmpty()) {
        return std::nullopt;
    }
    QByteArray bytes;
    bytes.reserve(text.size());
    for (QChar c : text) {
        if (c.unicode() > 0x7F) {
            return std::nullopt;
        }
        bytes.append(static_cast<char>(c.unicode()));
    }
    const char* begin = bytes.constData();
    const char* const end = begin + bytes.size();
    bool negative = false;
    if (*begin == '+' || *begin == '-') {
        negative = *begin == '-';
        ++begin;
    }
    if (begin == end || *begin == '+' || *begin == '-') {
        return std::nullopt;
    }
    std::chars_format format = std::chars_format::general;
    if (end - begin > 2 && begin[0] == '0' && (begin[1] == 'x' || begin[1] == 'X')) {
        format = std::chars_format::hex;
        begin += 2;
    }
    double value = 0;
    const std::from_chars_result result = std::from_chars(begin, end, value, format);
    if (result.ptr != end) {
        return std::nullopt;
    }
    if (result.ec == std::errc::result_out_of_range) {
        // Too large for a double reads as infinity, too small as zero, as the platform's does.
        const bool huge = [&] {
            const QByteArray lower = QByteArray(begin, end - begin).toLower();
            const qsizetype exponent = lower.indexOf(format == std::chars_format::hex ? 'p' : 'e');
            return exponent < 0 || !lower.mid(exponent + 1).startsWith('-');
        }();
        value = huge ? std::numeric_limits<double>::infinity() : 0.0;
    } else if (result.ec != std::errc()) {
        return std::nullopt;
    }
    return negative ? -value : value;
}

// A whole number as typed: an optional sign and decimal digits, within 64 bits.
std::optional<qint64> parseInteger(QStringView text) {
    QByteArray bytes = text.toLatin1();
    if (text.isEmpty() || bytes.size() != text.size()) {
        return std::nullopt;
    }
    const char* begin = bytes.constData();
    const char* const end = begin + bytes.size();
    if (*begin == '+') {
        ++begin;
        if (begin == end || *begin == '-') {
            return std::nullopt;
        }
    }
    qint64 value = 0;
    const std::from_chars_result result = std::from_chars(begin, end, value);
    if (result.ec != std::errc() || result.ptr != end) {
        return std::nullopt;
    }
    return value;
}

QString optionalNumberText(std::optional<double> value) {
    return value ? AccountEditorForm::decimalText(*value) : QString();
}

bool isPresent(const QString& field) {
    return !field.trimmed().isEmpty();
}

// The first short-term window of a snapshot, else its first window of any horizon.
std::optional<UsageWindow> shortWindowOf(const UsageSnapshot& snapshot) {
    const QList<UsageWindow> shortTerm = snapshot.shortTermWindows();
    if (!shortTerm.isEmpty()) {
        return shortTerm.first();
    }
    if (!snapshot.windows.isEmpty()) {
        return snapshot.windows.first();
    }
    return std::nullopt;
}

Timestamp oneMonthFrom(Timestamp now) {
    const QDateTime later = now.toDateTime().toLocalTime().addMonths(1);
    return later.isValid() ? Timestamp::fromDateTime(later) : now;
}

QString budgetLine(const AgentBudget& budget) {
    return QStringList{budget.name,
                       budget.unit.rawValue(),
                       optionalNumberText(budget.shortUsed),
                       optionalNumberText(budget.shortLimit),
                       optionalNumberText(budget.weeklyUsed),
                       optionalNumberText(budget.weeklyLimit)}
        .join(u'|');
}

// What a failed connection test says: the error's own description.
QString describeFailure(const std::exception_ptr& failure) {
    try {
        std::rethrow_exception(failure);
    } catch (const UsageProviderError& error) {
        return error.errorDescription();
    } catch (const OpenAIClient::TransportError& error) {
        return error.message;
    } catch (const OpenAIClient::DecodingError&) {
        return QStringLiteral("The data couldn’t be read because it isn’t in the correct format.");
    } catch (...) {
        return QStringLiteral("The operation couldn’t be completed.");
    }
}

// The manual windows of a saved form, short first, each only where both its numbers passed.
QList<UsageWindow> manualWindows(const AccountEditorFields& form, std::optional<double> shortUsed,
                                 std::optional<double> shortLimit, std::optional<double> weeklyUsed,
                                 std::optional<double> weeklyLimit) {
    QList<UsageWindow> windows;
    const QString unitTitle = form.manualUnit.capitalizedTitle();
    const auto add = [&](const char* id, const char* title, UsageHorizon horizon, std::optional<double> used,
                         std::optional<double> limit, bool hasReset, Timestamp reset) {
        if (!used || !limit) {
            return;
        }
        windows.append(UsageWindow{.id = QString::fromLatin1(id),
                                   .title = unitTitle + QString::fromLatin1(title),
                                   .unit = form.manualUnit,
                                   .horizon = horizon,
                                   .used = used,
                                   .limit = limit,
                                   .resetAt = hasReset ? std::optional<Timestamp>(reset) : std::nullopt,
                                   .note = hasReset ? QStringLiteral("Manual value")
                                                    : QStringLiteral("Manual value · reset not provided")});
    };
    add("manual-short", " / short term", UsageHorizon::shortTerm, shortUsed, shortLimit,
        form.manualShortHasReset, form.manualShortReset);
    add("manual-weekly", " / weekly", UsageHorizon::weekly, weeklyUsed, weeklyLimit,
        form.manualWeeklyHasReset, form.manualWeeklyReset);
    return windows;
}

const QString kBudgetFormatError =
    QStringLiteral("Agent budget lines must use Name|unit|short used|short limit|weekly used|weekly limit.");
} // namespace

AccountEditorForm::AccountEditorForm(AccountStore* store, Preferences* preferences, ProviderAccount* existing,
                                     std::function<void()> onSave, QObject* parent)
    : QObject(parent)
    , m_store(store)
    , m_preferences(preferences)
    , m_existing(existing)
    , m_hadExisting(existing != nullptr)
    , m_onSave(std::move(onSave)) {
    const Timestamp now = Clock::now();
    m_fields.renewalDate = oneMonthFrom(now);
    m_fields.manualShortReset = now;
    m_fields.manualWeeklyReset = now;
    m_fields.sampleDataEnabled =
        m_preferences ? m_preferences->useSampleDataByDefault() : Preferences::kUseSampleDataByDefaultDefault;
    if (existing) {
        initialiseFrom(*existing);
    }
}

AccountEditorForm::~AccountEditorForm() {
    m_fields.secretInput.fill(QChar(0));
    m_fields.secretInput.clear();
    // A new record whose save failed at the last step is not left behind in the store,
    // nor the key this sheet stored for it.
    if (m_created && !m_saved && m_store) {
        KeychainStore::deleteItem(m_created->secretReference());
        m_store->remove(m_created);
    }
}

void AccountEditorForm::initialiseFrom(const ProviderAccount& account) {
    m_fields.provider = account.provider();
    m_fields.label = account.label();
    m_fields.accountKind = account.accountKind();
    m_fields.planName = account.planName();
    m_fields.detectedMetadata = account.detectedMetadata();
    m_fields.identityDetail = account.identityDetail().value_or(QString());
    m_fields.modelScope = account.modelScope().value_or(QString());
    m_fields.agentScope = account.agentScope().value_or(QString());
    m_fields.agentRosterText = account.agentRosterText().value_or(QString());
    QStringList lines;
    for (const AgentBudget& budget : account.agentBudgets()) {
        lines.append(budgetLine(budget));
    }
    m_fields.agentBudgetText = lines.join(u'\n');
    m_fields.agentCount = QString::number(account.agentCount().value_or(0));
    if (const auto renewal = account.renewalDate()) {
        m_fields.renewalDate = *renewal;
        m_fields.hasRenewalDate = true;
    }
    m_fields.connectionMode = account.connectionMode();
    m_fields.sampleDataEnabled = account.sampleDataEnabled();

    const std::optional<UsageSnapshot> snapshot = account.snapshot();
    const std::optional<UsageWindow> shortWindow = snapshot ? shortWindowOf(*snapshot) : std::nullopt;
    const QList<UsageWindow> weekly = snapshot ? snapshot->weeklyWindows() : QList<UsageWindow>{};
    const std::optional<UsageWindow> weeklyWindow =
        weekly.isEmpty() ? std::nullopt : std::optional<UsageWindow>(weekly.first());
    // A window's numbers and reset, as the manual fields show them.
    const auto prefill = [](const std::optional<UsageWindow>& window, QString& limit, QString& used,
                            Timestamp& reset, bool& hasReset) {
        if (!window) {
            return;
        }
        limit = optionalNumberText(window->limit);
        used = optionalNumberText(window->used);
        if (window->resetAt) {
            reset = *window->resetAt;
            hasReset = true;
        }
    };
    m_fields.manualUnit = shortWindow                                     ? shortWindow->unit
                          : m_fields.accountKind == AccountKind::consumer ? UsageUnit::messages
                                                                          : UsageUnit::requests;
    prefill(shortWindow, m_fields.manualShortLimit, m_fields.manualShortUsed, m_fields.manualShortReset,
            m_fields.manualShortHasReset);
    prefill(weeklyWindow, m_fields.manualWeeklyLimit, m_fields.manualWeeklyUsed, m_fields.manualWeeklyReset,
            m_fields.manualWeeklyHasReset);
}

void AccountEditorForm::setProvider(AIProvider provider) {
    m_fields.provider = provider;
    m_fields.detectedMetadata.reset();
    m_fields.testMessage.reset();
    m_fields.browserAuthOpened = false;
    Q_EMIT changed();
}

void AccountEditorForm::setConnectionMode(ConnectionMode mode) {
    applyModeChange(mode);
    Q_EMIT changed();
}

void AccountEditorForm::chooseOfficialAPIKey() {
    applyModeChange(ConnectionMode::apiKey);
    m_fields.browserAuthOpened = false;
    m_fields.sampleDataEnabled = false;
    Q_EMIT changed();
}

void AccountEditorForm::chooseManualTracking() {
    applyModeChange(ConnectionMode::manual);
    m_fields.browserAuthOpened = false;
    m_fields.sampleDataEnabled = false;
    Q_EMIT changed();
}

void AccountEditorForm::applyModeChange(ConnectionMode mode) {
    const ConnectionMode old = m_fields.connectionMode;
    m_fields.connectionMode = mode;
    if (mode == ConnectionMode::mock) {
        m_fields.sampleDataEnabled = true;
    }
    if (old == ConnectionMode::mock && mode != ConnectionMode::mock) {
        m_fields.sampleDataEnabled = false;
    }
    if (old != mode) {
        m_fields.detectedMetadata.reset();
        if (mode != ConnectionMode::browser) {
            m_fields.testMessage.reset();
            m_fields.browserAuthOpened = false;
        }
    }
}

std::optional<double> AccountEditorForm::validManualNumber(const QString& text, double minimum) {
    const std::optional<double> value = parseNumber(text);
    if (!value || !std::isfinite(*value) || *value < minimum) {
        return std::nullopt;
    }
    return value;
}

std::optional<QList<AgentBudget>> AccountEditorForm::parseAgentBudgets(const QString& text) {
    QList<AgentBudget> budgets;
    qsizetype start = 0;
    const auto isNewline = [](QChar c) {
        const char16_t u = c.unicode();
        return u == u'\n' || u == u'\r' || u == 0x0B || u == 0x0C || u == 0x85 || u == 0x2028 || u == 0x2029;
    };
    while (start <= text.size()) {
        qsizetype end = start;
        while (end < text.size() && !isNewline(text.at(end))) {
            ++end;
        }
        const QString line = text.mid(start, end - start).trimmed();
        start = end + 1;
        if (line.isEmpty()) {
            continue;
        }
        const QStringList pieces = line.split(u'|');
        if (pieces.size() != 6) {
            return std::nullopt;
        }
        const QString name = pieces.at(0).trimmed();
        if (name.isEmpty()) {
            return std::nullopt;
        }
        const std::optional<UsageUnit> unit = UsageUnit::fromRawValue(pieces.at(1).trimmed());
        if (!unit) {
            return std::nullopt;
        }
        std::array<std::optional<double>, 4> numbers;
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            const QString piece = pieces.at(static_cast<qsizetype>(i) + 2).trimmed();
            // A piece that is no number counts as an empty one.
            numbers.at(i) = piece.isEmpty() ? std::nullopt : parseNumber(piece);
            if (numbers.at(i) && (!std::isfinite(*numbers.at(i)) || *numbers.at(i) < 0)) {
                return std::nullopt;
            }
        }
        budgets.append(AgentBudget{.id = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper(),
                                   .name = name,
                                   .unit = *unit,
                                   .shortUsed = numbers[0],
                                   .shortLimit = numbers[1],
                                   .weeklyUsed = numbers[2],
                                   .weeklyLimit = numbers[3]});
    }
    return budgets;
}

QString AccountEditorForm::decimalText(double value) {
    std::array<char, 64> buffer{};
    const std::to_chars_result result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value);
    return QString::fromLatin1(buffer.data(), result.ptr - buffer.data());
}

bool AccountEditorForm::save() {
    const Timestamp now = Clock::now();
    AccountEditorFields& form = m_fields;
    QString finalLabel = form.label.trimmed();
    if (finalLabel.isEmpty()) {
        finalLabel = form.provider.shortName() + QStringLiteral(" · Personal");
    }
    const bool usesLiveMode =
        form.connectionMode == ConnectionMode::apiKey || form.connectionMode == ConnectionMode::browser;
    const bool effectiveSample =
        !usesLiveMode && (form.sampleDataEnabled || form.connectionMode == ConnectionMode::mock);
    const bool sampleRequest = form.sampleDataEnabled;
    if (usesLiveMode) {
        form.sampleDataEnabled = false;
    }

    // Everything that can refuse is asked before the record changes, in the order the
    // messages would come otherwise: the budget lines, the key, the manual values. A
    // refused save leaves the record as it was and adds no record.
    const std::optional<QList<AgentBudget>> budgets = parseAgentBudgets(form.agentBudgetText);
    if (!budgets) {
        form.errorMessage = kBudgetFormatError;
        Q_EMIT changed();
        return false;
    }
    const QUuid newID = QUuid::createUuid();
    ProviderAccount* reused = m_existing ? m_existing.data() : m_created.data();
    const QString secretReference =
        reused ? reused->secretReference() : newID.toString(QUuid::WithoutBraces).toUpper();
    if (!form.secretInput.isEmpty()) {
        try {
            KeychainStore::save(form.secretInput, secretReference);
        } catch (const KeychainError&) {
            form.errorMessage = QStringLiteral("The credential could not be saved in Keychain.");
            Q_EMIT changed();
            return false;
        }
    }
    const bool manualSteps = !effectiveSample && form.connectionMode == ConnectionMode::manual;
    std::optional<double> shortLimit;
    std::optional<double> shortUsed;
    std::optional<double> weeklyLimit;
    std::optional<double> weeklyUsed;
    if (manualSteps) {
        std::optional<QString> refusal;
        if (form.manualShortHasReset && form.manualShortReset.secondsSince(now) <= 0) {
            refusal = QStringLiteral(
                "Short-term reset time has passed. Choose a future time or turn off the reset.");
        } else if (form.manualWeeklyHasReset && form.manualWeeklyReset.secondsSince(now) <= 0) {
            refusal =
                QStringLiteral("Weekly reset time has passed. Choose a future time or turn off the reset.");
        } else {
            shortLimit = validManualNumber(form.manualShortLimit, kMinimumLimit);
            shortUsed = validManualNumber(form.manualShortUsed, 0);
            weeklyLimit = validManualNumber(form.manualWeeklyLimit, kMinimumLimit);
            weeklyUsed = validManualNumber(form.manualWeeklyUsed, 0);
            if ((isPresent(form.manualShortLimit) || isPresent(form.manualShortUsed)) &&
                (!shortLimit || !shortUsed)) {
                refusal = QStringLiteral("Short-term limit and used values must be finite numbers, with a "
                                         "limit greater than zero.");
            } else if ((isPresent(form.manualWeeklyLimit) || isPresent(form.manualWeeklyUsed)) &&
                       (!weeklyLimit || !weeklyUsed)) {
                refusal = QStringLiteral(
                    "Weekly limit and used values must be finite numbers, with a limit greater than zero.");
            }
        }
        if (refusal) {
            form.errorMessage = refusal;
            Q_EMIT changed();
            return false;
        }
    }

    // The record: the account being edited, the one a failed save of this sheet already
    // created, or a new one.
    ProviderAccount* target = reused;
    const bool isNewRecord = !m_existing;
    if (!target) {
        target = new ProviderAccount(ProviderAccount::Init{.id = newID,
                                                           .provider = form.provider,
                                                           .label = finalLabel,
                                                           .accountKind = form.accountKind,
                                                           .connectionMode = form.connectionMode,
                                                           .sampleDataEnabled = form.sampleDataEnabled});
        m_store->insert(target);
        m_created = target;
    }
    const bool providerChanged = !isNewRecord && target->provider() != form.provider;
    const bool modeChanged = !isNewRecord && target->connectionMode() != form.connectionMode;
    if (providerChanged || modeChanged) {
        target->setSnapshot(std::nullopt);
        target->setSnapshotHistoryData(std::nullopt);
        target->setDetectedMetadata(std::nullopt);
        target->setLastRefreshAt(std::nullopt);
        target->setSyncStatus(SyncStatus::needsAttention);
        target->setSyncMessage(
            QStringLiteral("Connection changed; refresh this subscription to establish a new snapshot"));
        // A key typed in this sheet was stored above, in the old one's place.
        if (form.secretInput.isEmpty() &&
            CredentialLifecycle::shouldDeleteCredential(target->connectionMode(), form.connectionMode,
                                                        providerChanged)) {
            KeychainStore::deleteItem(target->secretReference());
        }
    }
    target->setProvider(form.provider);
    target->setLabel(finalLabel);
    target->setAccountKind(form.accountKind);
    target->setPlanName(form.planName.trimmed());
    if (!providerChanged && !modeChanged) {
        target->applyDetectedMetadata(form.detectedMetadata);
    }
    if (usesLiveMode) {
        target->applyDetectedMetadata(form.detectedMetadata);
    }
    target->setIdentityDetail(form.identityDetail.trimmed());
    target->setModelScope(form.modelScope.trimmed());
    target->setAgentScope(form.agentScope.trimmed());
    target->setAgentRosterText(form.agentRosterText.trimmed());
    target->setAgentBudgets(*budgets);
    target->setAgentCount(qMax<qint64>(0, parseInteger(form.agentCount).value_or(0)));
    target->setRenewalDate(form.hasRenewalDate ? std::optional<Timestamp>(form.renewalDate) : std::nullopt);
    target->setConnectionMode(form.connectionMode);
    target->setSampleDataEnabled(effectiveSample);
    if (!effectiveSample && form.connectionMode != ConnectionMode::mock &&
        (sampleRequest || providerChanged || modeChanged)) {
        target->setSnapshot(std::nullopt);
        target->setSnapshotHistoryData(std::nullopt);
        target->setLastRefreshAt(std::nullopt);
    }

    if (effectiveSample || form.connectionMode == ConnectionMode::mock) {
        const UsageSnapshot sample = MockDataFactory::snapshot(*target, now);
        target->setSnapshot(sample);
        target->record(sample);
        target->setLastRefreshAt(now);
        target->setSyncStatus(SyncStatus::current);
        target->setSyncMessage(QStringLiteral("Sample snapshot loaded locally"));
    } else if (form.connectionMode == ConnectionMode::manual) {
        const QList<UsageWindow> windows =
            manualWindows(form, shortUsed, shortLimit, weeklyUsed, weeklyLimit);
        if (windows.isEmpty()) {
            target->setSnapshot(std::nullopt);
            target->setSnapshotHistoryData(std::nullopt);
            target->setLastRefreshAt(std::nullopt);
            target->setSyncStatus(SyncStatus::needsAttention);
            target->setSyncMessage(QStringLiteral("Add at least one manual short-term or weekly allowance"));
        } else {
            const UsageWindow& first = windows.first();
            const UsageSnapshot snapshot{
                .source = UsageSource::manual,
                .capturedAt = now,
                .windows = windows,
                .history = {UsagePoint{.date = now, .value = first.used.value_or(0.0), .unit = first.unit}},
                .warnings = windows.size() == 1
                                ? QStringList{QStringLiteral("Only one manual horizon is configured.")}
                                : QStringList{}};
            target->setSnapshot(snapshot);
            target->record(snapshot);
            target->setLastRefreshAt(now);
            if (windows.size() == 1) {
                target->setSyncStatus(SyncStatus::partial);
                target->setSyncMessage(QStringLiteral("Manual short-term or weekly allowance updated"));
            } else {
                target->setSyncStatus(SyncStatus::current);
                target->setSyncMessage(QStringLiteral("Manual allowances updated"));
            }
        }
    } else if (form.connectionMode == ConnectionMode::browser) {
        target->setSyncStatus(SyncStatus::needsAttention);
        target->setSyncMessage(
            QStringLiteral("Provider page opened for reference — choose Manual tracking to monitor limits"));
    } else {
        target->setSyncStatus(SyncStatus::needsAttention);
        target->setSyncMessage(
            QStringLiteral("Add a manual allowance or refresh with an official API connection"));
    }

    if (!m_store->save()) {
        form.errorMessage = QStringLiteral("The account could not be saved locally.");
        Q_EMIT changed();
        return false;
    }
    m_saved = true;
    if (m_onSave) {
        m_onSave();
    }
    return true;
}

std::optional<QUrl> AccountEditorForm::openProviderAuth() {
    applyModeChange(ConnectionMode::browser);
    m_fields.browserAuthOpened = true;
    m_fields.sampleDataEnabled = false;
    m_fields.testMessage = QStringLiteral("Opened the official ") + m_fields.provider.shortName() +
                           QStringLiteral(" page for reference. No browser credentials were imported.");
    Q_EMIT changed();
    return ProviderAuthentication::browserURL(m_fields.provider);
}

void AccountEditorForm::testConnection() {
    switch (m_fields.connectionMode.value()) {
    case ConnectionMode::mock:
        m_fields.testMessage = QStringLiteral("Sample mode is ready; no provider request was made.");
        break;
    case ConnectionMode::manual:
        m_fields.testMessage = QStringLiteral("Manual mode is ready; add a limit and reset time.");
        break;
    case ConnectionMode::browser:
        m_fields.testMessage = QStringLiteral("This provider page is reference-only. Choose Manual tracking "
                                              "to monitor operator-entered limits.");
        break;
    case ConnectionMode::apiKey: {
        QString secret = m_fields.secretInput;
        if (secret.isEmpty() && m_existing) {
            secret = KeychainStore::read(m_existing->secretReference()).value_or(QString());
        }
        if (secret.isEmpty()) {
            m_fields.testMessage = QStringLiteral("Enter an API key before testing.");
            break;
        }
        if (m_fields.provider != AIProvider::openAI) {
            m_fields.testMessage =
                QStringLiteral("No documented live usage adapter is enabled for this provider.");
            break;
        }
        m_fields.isTestingConnection = true;
        m_fields.detectedMetadata.reset();
        m_fields.testMessage = QStringLiteral("Checking the official usage endpoint…");
        Q_EMIT changed();
        runConnectionTest(std::move(secret));
        return;
    }
    }
    Q_EMIT changed();
    Q_EMIT testFinished();
}

void AccountEditorForm::runConnectionTest(QString secret) {
    const QString label =
        m_fields.label.trimmed().isEmpty() ? QStringLiteral("Connection test") : m_fields.label;
    // Never inserted anywhere: only what the connector reads of an account.
    auto account =
        std::make_shared<ProviderAccount>(ProviderAccount::Init{.provider = m_fields.provider,
                                                                .label = label,
                                                                .accountKind = m_fields.accountKind,
                                                                .identityDetail = m_fields.identityDetail,
                                                                .modelScope = m_fields.modelScope,
                                                                .agentScope = m_fields.agentScope,
                                                                .connectionMode = ConnectionMode::apiKey,
                                                                .sampleDataEnabled = false});
    std::shared_ptr<OpenAIUsageProvider> provider = ProviderFactory::makeOpenAI(secret);
    secret.fill(QChar(0));
    [](QPointer<AccountEditorForm> self, std::shared_ptr<ProviderAccount> target,
       std::shared_ptr<OpenAIUsageProvider> connector) -> QCoro::Task<> {
        std::optional<ProviderConnection> connection;
        std::exception_ptr failure;
        try {
            connection = co_await connector->connect(*target);
        } catch (...) {
            failure = std::current_exception();
        }
        // A sheet closed meanwhile simply drops the result.
        if (!self) {
            co_return;
        }
        AccountEditorFields& form = self->m_fields;
        if (connection) {
            form.detectedMetadata = connection->metadata;
            form.testMessage =
                connection->metadata
                    ? QStringLiteral("Connected — provider metadata and rate limits detected.")
                    : QStringLiteral("Connected — official usage endpoint accepted the credential.");
        } else {
            form.detectedMetadata.reset();
            form.testMessage = describeFailure(failure);
        }
        form.isTestingConnection = false;
        Q_EMIT self->changed();
        Q_EMIT self->testFinished();
    }(QPointer<AccountEditorForm>(this), std::move(account), std::move(provider));
}

void AccountEditorForm::refreshConnection() {
    if (m_fields.connectionMode == ConnectionMode::apiKey) {
        testConnection();
        return;
    }
    m_fields.testMessage = QStringLiteral("This provider has no supported live connector in this build. "
                                          "Choose Manual tracking for usage monitoring.");
    Q_EMIT changed();
}

void AccountEditorForm::logoutConnection() {
    if (ProviderAccount* account = m_existing.data()) {
        KeychainStore::deleteItem(account->secretReference());
        account->setDetectedMetadata(std::nullopt);
        account->setSyncStatus(SyncStatus::needsAttention);
        account->setSyncMessage(
            QStringLiteral("Signed out — enter manual limits or reconnect an official API key"));
        (void)m_store->save();
    }
    m_fields.secretInput.fill(QChar(0));
    m_fields.secretInput.clear();
    applyModeChange(ConnectionMode::manual);
    m_fields.detectedMetadata.reset();
    m_fields.browserAuthOpened = false;
    m_fields.testMessage =
        QStringLiteral("Signed out. Choose Manual tracking, or reconnect the official OpenAI API key.");
    Q_EMIT changed();
}
