#include "editor/AccountEditorForm.h"

#include "core/AccountLifecycle.h"
#include "core/ConnectionTest.h"
#include "core/Preferences.h"
#include "model/Clock.h"
#include "model/ReasonText.h"
#include "store/ProviderAccount.h"
#include "store/ProviderAuthentication.h"

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

const QString kBudgetFormatError =
    QStringLiteral("Agent budget lines must use Name|unit|short used|short limit|weekly used|weekly limit.");
} // namespace

AccountEditorForm::AccountEditorForm(AccountLifecycle* lifecycle, ProviderAccount* existing,
                                     std::function<void()> onSave, QObject* parent)
    : QObject(parent)
    , m_lifecycle(lifecycle)
    , m_existing(existing)
    , m_hadExisting(existing != nullptr)
    , m_onSave(std::move(onSave)) {
    const Timestamp now = Clock::now();
    m_fields.renewalDate = oneMonthFrom(now);
    m_fields.manualShortReset = now;
    m_fields.manualWeeklyReset = now;
    m_fields.sampleDataEnabled = m_lifecycle && m_lifecycle->preferences()
                                     ? m_lifecycle->preferences()->useSampleDataByDefault()
                                     : Preferences::kUseSampleDataByDefaultDefault;
    if (existing) {
        initialiseFrom(*existing);
    }
}

AccountEditorForm::~AccountEditorForm() {
    m_fields.secretInput.fill(QChar(0));
    m_fields.secretInput.clear();
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
    const bool usesLiveMode =
        form.connectionMode == ConnectionMode::apiKey || form.connectionMode == ConnectionMode::browser;
    AccountDraft draft = makeDraft();
    if (usesLiveMode) {
        form.sampleDataEnabled = false;
    }
    // The form's own checks come before anything is written, in the order their messages
    // come: the budget lines, then the manual values. A value refused here leaves the
    // record, the keychain and the store as they were.
    const std::optional<QList<AgentBudget>> budgets = parseAgentBudgets(form.agentBudgetText);
    if (!budgets) {
        return refuse(kBudgetFormatError);
    }
    draft.agentBudgets = *budgets;
    if (!AccountLifecycle::showsSampleData(draft) && form.connectionMode == ConnectionMode::manual) {
        if (const std::optional<QString> refusal = readManualAllowance(now, draft)) {
            return refuse(*refusal);
        }
    }

    // A refused save leaves the record, the store and the keychain as they were: trying
    // again starts from the same place and adds no second record.
    const AccountLifecycle::EditorSave result = m_lifecycle->saveEditorAccount(draft, m_existing.data());
    if (!result.saved) {
        return refuse(result.refusal.value_or(QString()));
    }
    m_keyKept = result.keyKept;
    if (m_onSave) {
        m_onSave();
    }
    return true;
}

bool AccountEditorForm::refuse(const QString& message) {
    m_fields.errorMessage = message;
    Q_EMIT changed();
    return false;
}

AccountDraft AccountEditorForm::makeDraft() const {
    const AccountEditorFields& form = m_fields;
    return AccountDraft{.provider = form.provider,
                        .accountKind = form.accountKind,
                        .label = form.label,
                        .connectionMode = form.connectionMode,
                        .apiKey = form.secretInput,
                        .connectionMetadata = form.detectedMetadata,
                        .manualUnit = form.manualUnit,
                        .sampleDataEnabled = form.sampleDataEnabled,
                        .planName = form.planName,
                        .identityDetail = form.identityDetail,
                        .modelScope = form.modelScope,
                        .agentScope = form.agentScope,
                        .agentRosterText = form.agentRosterText,
                        .agentCount = parseInteger(form.agentCount).value_or(0),
                        .renewalDate =
                            form.hasRenewalDate ? std::optional<Timestamp>(form.renewalDate) : std::nullopt};
}

std::optional<QString> AccountEditorForm::readManualAllowance(Timestamp now, AccountDraft& draft) const {
    const AccountEditorFields& form = m_fields;
    if (form.manualShortHasReset && form.manualShortReset.secondsSince(now) <= 0) {
        return QStringLiteral(
            "Short-term reset time has passed. Choose a future time or turn off the reset.");
    }
    if (form.manualWeeklyHasReset && form.manualWeeklyReset.secondsSince(now) <= 0) {
        return QStringLiteral("Weekly reset time has passed. Choose a future time or turn off the reset.");
    }
    // A present field is one that isn't blank; its number is read from the text as typed.
    const auto read = [](const QString& usedText, const QString& limitText, bool hasReset, Timestamp reset,
                         ManualHorizonDraft& horizon) {
        horizon.used = validManualNumber(usedText, 0);
        horizon.limit = validManualNumber(limitText, kMinimumLimit);
        horizon.resetMode = hasReset ? OnboardingResetMode::setTime : OnboardingResetMode::notProvided;
        horizon.resetAt = hasReset ? std::optional<Timestamp>(reset) : std::nullopt;
        return !(isPresent(usedText) || isPresent(limitText)) || (horizon.used && horizon.limit);
    };
    if (!read(form.manualShortUsed, form.manualShortLimit, form.manualShortHasReset, form.manualShortReset,
              draft.shortTerm)) {
        return QStringLiteral(
            "Short-term limit and used values must be finite numbers, with a limit greater than zero.");
    }
    if (!read(form.manualWeeklyUsed, form.manualWeeklyLimit, form.manualWeeklyHasReset,
              form.manualWeeklyReset, draft.weekly)) {
        return QStringLiteral(
            "Weekly limit and used values must be finite numbers, with a limit greater than zero.");
    }
    return std::nullopt;
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
            secret = AccountLifecycle::storedKey(*m_existing).value_or(QString());
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
    delete m_test;
    m_test = new ConnectionTest(secret,
                                ProviderAccount::Init{.provider = m_fields.provider,
                                                      .label = label,
                                                      .accountKind = m_fields.accountKind,
                                                      .identityDetail = m_fields.identityDetail,
                                                      .modelScope = m_fields.modelScope,
                                                      .agentScope = m_fields.agentScope,
                                                      .connectionMode = ConnectionMode::apiKey,
                                                      .sampleDataEnabled = false},
                                this);
    secret.fill(QChar(0));
    connect(m_test, &ConnectionTest::finished, this, [this, test = m_test] {
        AccountEditorFields& form = m_fields;
        switch (test->outcome()) {
        case ConnectionTest::Outcome::connected:
            form.detectedMetadata = test->connection()->metadata;
            form.testMessage =
                form.detectedMetadata
                    ? QStringLiteral("Connected — provider metadata and rate limits detected.")
                    : QStringLiteral("Connected — official usage endpoint accepted the credential.");
            break;
        case ConnectionTest::Outcome::timedOut:
            form.detectedMetadata.reset();
            form.testMessage = QStringLiteral(
                "We couldn’t reach OpenAI in 12 seconds. Try again or choose Manual tracking.");
            break;
        case ConnectionTest::Outcome::refused:
        case ConnectionTest::Outcome::failed:
            form.detectedMetadata.reset();
            form.testMessage = test->failureDescription();
            break;
        }
        form.isTestingConnection = false;
        Q_EMIT changed();
        Q_EMIT testFinished();
    });
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
    const AccountLifecycle::Outcome outcome = m_lifecycle->logoutConnection(m_existing.data());
    if (outcome.refusal) {
        refuse(withReason(AccountLifecycle::signOutRefusedMessage(), outcome.refusal->reason));
        return;
    }
    m_fields.secretInput.fill(QChar(0));
    m_fields.secretInput.clear();
    applyModeChange(ConnectionMode::manual);
    m_fields.detectedMetadata.reset();
    m_fields.browserAuthOpened = false;
    m_fields.testMessage =
        QStringLiteral("Signed out. Choose Manual tracking, or reconnect the official OpenAI API key.");
    if (outcome.keyKept) {
        *m_fields.testMessage += u' ' + AccountLifecycle::keyKeptMessage(*outcome.keyKept);
    }
    Q_EMIT changed();
}
