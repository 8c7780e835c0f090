#include "onboarding/OnboardingFlow.h"

#include "core/ConnectionTest.h"
#include "model/Clock.h"
#include "model/PlatformWording.h"
#include "model/ReasonText.h"
#include "onboarding/OnboardingSavedDraft.h"
#include "onboarding/OnboardingValidation.h"
#include "providers/UsageProviderError.h"

#include <QSettings>

namespace {
const QString kTimeLimitText =
    QStringLiteral("We couldn’t reach OpenAI in 12 seconds. Try again or choose manual setup.");

UsageUnit defaultUnit(AIProvider provider) {
    return provider == AIProvider::openAI ? UsageUnit::requests : UsageUnit::messages;
}
} // namespace

OnboardingFlow::OnboardingFlow(QSettings* settings, QStringList existingLabels, Hooks hooks, QObject* parent)
    : QObject(parent)
    , m_settings(settings)
    , m_existingLabels(std::move(existingLabels))
    , m_hooks(std::move(hooks)) {
    const Timestamp now = Clock::now();
    m_shortResetDate = now;
    m_weeklyResetDate = now;
}

OnboardingFlow::~OnboardingFlow() {
    // A held test is abandoned with the flow: its request ends and nothing reports.
    delete m_test.data();
    m_apiKey.fill(QChar(0));
    m_apiKey.clear();
}

// ---- fields ----

void OnboardingFlow::setLabel(const QString& label) {
    if (label == m_label) {
        return;
    }
    m_label = label;
    m_duplicateNameConfirmed = false;
    Q_EMIT changed();
}

void OnboardingFlow::setAPIKey(const QString& key) {
    if (key == m_apiKey) {
        return;
    }
    m_apiKey = key;
    // A verified key edited by one letter must be tested again.
    m_connectionVerified = false;
    m_connectionMetadata.reset();
    m_connectionTestMessage.reset();
    Q_EMIT changed();
}

void OnboardingFlow::setManualUnit(UsageUnit unit) {
    assign(m_manualUnit, unit);
}

void OnboardingFlow::setShortUsed(const QString& text) {
    assign(m_shortUsed, text);
}

void OnboardingFlow::setShortLimit(const QString& text) {
    assign(m_shortLimit, text);
}

void OnboardingFlow::setWeeklyUsed(const QString& text) {
    assign(m_weeklyUsed, text);
}

void OnboardingFlow::setWeeklyLimit(const QString& text) {
    assign(m_weeklyLimit, text);
}

void OnboardingFlow::setShortResetMode(OnboardingResetMode mode) {
    assign(m_shortResetMode, mode);
}

void OnboardingFlow::setWeeklyResetMode(OnboardingResetMode mode) {
    assign(m_weeklyResetMode, mode);
}

void OnboardingFlow::setShortResetDate(Timestamp date) {
    assign(m_shortResetDate, date);
}

void OnboardingFlow::setWeeklyResetDate(Timestamp date) {
    assign(m_weeklyResetDate, date);
}

void OnboardingFlow::setManualOverageConfirmed(bool confirmed) {
    assign(m_manualOverageConfirmed, confirmed);
}

void OnboardingFlow::setOverdueResetConfirmed(bool confirmed) {
    assign(m_overdueResetConfirmed, confirmed);
}

void OnboardingFlow::setDuplicateNameConfirmed(bool confirmed) {
    assign(m_duplicateNameConfirmed, confirmed);
}

void OnboardingFlow::useNameAnyway() {
    m_duplicateNameConfirmed = true;
    // The person has answered the message: it goes with the answer.
    m_validationMessage.reset();
    Q_EMIT changed();
}

// ---- derived ----

std::optional<double> OnboardingFlow::manualShortLimit() const {
    return OnboardingValidation::number(m_shortLimit);
}

std::optional<double> OnboardingFlow::manualWeeklyLimit() const {
    return OnboardingValidation::number(m_weeklyLimit);
}

bool OnboardingFlow::hasManualAllowance() const {
    return manualShortLimit() || manualWeeklyLimit();
}

bool OnboardingFlow::manualHasOverage() const {
    const auto over = [](const QString& usedText, const QString& limitText) {
        const std::optional<double> used = OnboardingValidation::number(usedText);
        const std::optional<double> limit = OnboardingValidation::number(limitText);
        return used && limit && *limit < *used;
    };
    return over(m_shortUsed, m_shortLimit) || over(m_weeklyUsed, m_weeklyLimit);
}

bool OnboardingFlow::manualHasPastReset() const {
    const Timestamp now = Clock::now();
    return (m_shortResetMode == OnboardingResetMode::setTime && m_shortResetDate.secondsSince(now) <= 0) ||
           (m_weeklyResetMode == OnboardingResetMode::setTime && m_weeklyResetDate.secondsSince(now) <= 0);
}

// ---- moves ----

void OnboardingFlow::setPage(OnboardingPage page) {
    m_page = page;
    m_validationMessage.reset();
    focusCurrentField();
    Q_EMIT pageChanged(page);
    Q_EMIT changed();
}

QString OnboardingFlow::creationRefusalMessage(const Hooks::Refusal& refusal) {
    const bool keychain = refusal && refusal->source == AccountLifecycle::Refusal::Source::keychain;
    // The keychain, not the local database, is what refused a key.
    const QString message =
        keychain
            ? QStringLiteral(
                  "We couldn’t save your key in macOS Keychain. Your setup is still here; try again.")
            : QStringLiteral("We couldn’t save this account locally. Your setup is still here; try again.");
    return PlatformWording::apply(refusal ? withReason(message, refusal->reason) : message);
}

void OnboardingFlow::next() {
    if (const std::optional<QString> message = validationMessageForCurrentPage()) {
        m_validationMessage = message;
        focusFirstInvalidField();
        Q_EMIT changed();
        return;
    }
    if (m_page == OnboardingPage::connection) {
        Hooks::Refusal refusal;
        if (m_hooks.createAccount && m_hooks.createAccount(makeDraft(), &refusal)) {
            clearSavedDraft();
            setPage(OnboardingPage::ready);
        } else {
            m_validationMessage = creationRefusalMessage(refusal);
            Q_EMIT changed();
        }
        return;
    }
    if (const std::optional<OnboardingPage> following = OnboardingPage::fromRawValue(m_page.rawValue() + 1)) {
        setPage(*following);
    }
}

void OnboardingFlow::back() {
    if (const std::optional<OnboardingPage> previous = OnboardingPage::fromRawValue(m_page.rawValue() - 1)) {
        setPage(*previous);
    }
}

std::optional<QString> OnboardingFlow::validationMessageForCurrentPage() const {
    switch (m_page.value()) {
    case OnboardingPage::name:
        if (m_label.trimmed().isEmpty()) {
            return QStringLiteral("Give this account a short name, like Claude · Work.");
        }
        if (isDuplicateName() && !m_duplicateNameConfirmed) {
            return QStringLiteral(
                "Choose a different name so you can tell these subscriptions apart, or choose Use anyway.");
        }
        return std::nullopt;
    case OnboardingPage::connection:
        switch (m_connectionMode.value()) {
        case ConnectionMode::mock:
            return std::nullopt;
        case ConnectionMode::manual:
            return OnboardingValidation::manualMessage(m_shortUsed, m_shortLimit, m_weeklyUsed, m_weeklyLimit,
                                                       m_shortResetMode, m_shortResetDate, m_weeklyResetMode,
                                                       m_weeklyResetDate, m_manualOverageConfirmed,
                                                       m_overdueResetConfirmed, Clock::now());
        case ConnectionMode::apiKey:
            if (m_apiKey.trimmed().isEmpty()) {
                return QStringLiteral("Paste the organization admin key, or choose manual setup.");
            }
            if (!OnboardingValidation::canSubmitAPI(m_apiKey, m_connectionVerified)) {
                return QStringLiteral("Test the connection before continuing, or choose manual setup.");
            }
            return std::nullopt;
        case ConnectionMode::browser:
            return QStringLiteral("This provider has no live connector here; choose manual setup.");
        }
        return std::nullopt;
    case OnboardingPage::welcome:
    case OnboardingPage::provider:
    case OnboardingPage::ready:
        return std::nullopt;
    }
    return std::nullopt;
}

bool OnboardingFlow::isDuplicateName() const {
    const QString name = m_label.trimmed();
    if (name.isEmpty()) {
        return false;
    }
    return OnboardingValidation::duplicateLabel(name, m_existingLabels) ||
           (m_hooks.labelExists && m_hooks.labelExists(name));
}

void OnboardingFlow::selectProvider(AIProvider provider) {
    if (provider == m_provider) {
        return;
    }
    m_provider = provider;
    clearEntries();
    m_manualUnit = defaultUnit(provider);
    if (provider != AIProvider::openAI && m_connectionMode == ConnectionMode::apiKey) {
        m_connectionMode = ConnectionMode::manual;
    }
    Q_EMIT changed();
}

void OnboardingFlow::selectConnectionMode(ConnectionMode mode) {
    m_connectionMode = mode;
    m_validationMessage.reset();
    if (mode != ConnectionMode::apiKey) {
        // Leaving key mode always forgets the key.
        m_connectionVerified = false;
        m_connectionMetadata.reset();
        m_connectionTestMessage.reset();
        m_apiKey.clear();
    }
    if (mode != ConnectionMode::manual) {
        m_manualOverageConfirmed = false;
        m_overdueResetConfirmed = false;
    }
    Q_EMIT changed();
}

OnboardingDraft OnboardingFlow::makeDraft() const {
    return OnboardingDraft{.provider = m_provider,
                           .label = m_label,
                           .connectionMode = m_connectionMode,
                           .accountKind =
                               m_provider == AIProvider::openAI ? AccountKind::api : AccountKind::consumer,
                           .apiKey = m_apiKey,
                           .manualUnit = m_manualUnit,
                           .manualShortUsed = OnboardingValidation::number(m_shortUsed),
                           .manualShortLimit = OnboardingValidation::number(m_shortLimit),
                           .manualWeeklyUsed = OnboardingValidation::number(m_weeklyUsed),
                           .manualWeeklyLimit = OnboardingValidation::number(m_weeklyLimit),
                           .manualShortResetMode = m_shortResetMode,
                           .manualShortReset = m_shortResetDate,
                           .manualWeeklyResetMode = m_weeklyResetMode,
                           .manualWeeklyReset = m_weeklyResetDate,
                           .connectionMetadata = m_connectionMetadata};
}

// ---- the connection test ----

void OnboardingFlow::testConnection() {
    const QString key = m_apiKey.trimmed();
    if (key.isEmpty()) {
        m_connectionTestMessage = QStringLiteral("Paste a key first.");
        m_focusedField = OnboardingFocusField::apiKey;
        Q_EMIT focusRequested(OnboardingFocusField::apiKey);
        Q_EMIT changed();
        return;
    }
    m_isTestingConnection = true;
    m_connectionVerified = false;
    m_connectionMetadata.reset();
    m_connectionTestMessage = QStringLiteral("Checking the official endpoint…");
    const QString trialName = m_label.isEmpty() ? QStringLiteral("Connection test") : m_label;

    auto* test = new ConnectionTest(key,
                                    ProviderAccount::Init{.provider = AIProvider::openAI,
                                                          .label = trialName,
                                                          .accountKind = AccountKind::api,
                                                          .connectionMode = ConnectionMode::apiKey,
                                                          .sampleDataEnabled = false},
                                    this);
    // A finished test held until now goes; one still running goes when it ends.
    if (m_test && m_test->isFinished()) {
        delete m_test.data();
    }
    m_test = test;
    m_latest = test;
    Q_EMIT changed();
    connect(test, &ConnectionTest::finished, this, [this, test] { finishTest(test); });
}

void OnboardingFlow::finishTest(ConnectionTest* test) {
    // The flow keeps the handle of the test it holds, finished; any other one goes.
    if (test != m_test) {
        test->deleteLater();
    }
    if (test != m_latest) {
        return; // a newer test owns the flow's state
    }
    m_connectionVerified = test->outcome() == ConnectionTest::Outcome::connected;
    m_connectionMetadata.reset();
    switch (test->outcome()) {
    case ConnectionTest::Outcome::connected:
        m_connectionMetadata = test->connection()->metadata;
        m_connectionTestMessage =
            m_connectionMetadata ? QStringLiteral("Connected — provider metadata and rate limits detected.")
                                 : QStringLiteral("Connected — official endpoint accepted the key.");
        break;
    case ConnectionTest::Outcome::refused:
        m_connectionTestMessage = connectionErrorMessage(*test->error());
        break;
    case ConnectionTest::Outcome::timedOut:
    case ConnectionTest::Outcome::failed:
        m_connectionTestMessage = kTimeLimitText;
        break;
    }
    m_isTestingConnection = false;
    Q_EMIT changed();
    Q_EMIT testFinished();
}

void OnboardingFlow::cancelConnectionTest() {
    ConnectionTest* test = std::exchange(m_test, nullptr);
    if (!test) {
        return;
    }
    m_isTestingConnection = false;
    m_connectionTestMessage =
        QStringLiteral("Connection check cancelled. You can try again or choose manual setup.");
    Q_EMIT changed();
    // The test unwinds through its failure path, which has the last word.
    test->cancel();
}

QString OnboardingFlow::connectionErrorMessage(const UsageProviderError& error) {
    switch (error.kind()) {
    case UsageProviderError::Kind::unsupported:
        return error.errorDescription();
    case UsageProviderError::Kind::server:
        return QStringLiteral("OpenAI is unavailable right now. Try again later or choose manual setup.");
    case UsageProviderError::Kind::missingCredential:
        return QStringLiteral("Paste the organization admin key, or choose manual setup.");
    case UsageProviderError::Kind::unauthorized:
        return QStringLiteral("This key was rejected. OpenAI usage needs an organization admin key.");
    case UsageProviderError::Kind::rateLimited:
        return QStringLiteral("OpenAI asked us to wait. Try again later or choose manual setup.");
    case UsageProviderError::Kind::malformedResponse:
        return QStringLiteral("OpenAI returned an unexpected response. Try again or choose manual setup.");
    }
    return kTimeLimitText;
}

// ---- the saved draft ----

void OnboardingFlow::saveDraftAndDismiss() {
    if (m_settings) {
        OnboardingSavedDraft{.label = m_label,
                             .provider = m_provider.rawValue(),
                             .mode = m_connectionMode.rawValue(),
                             .shortUsed = m_shortUsed,
                             .shortLimit = m_shortLimit,
                             .weeklyUsed = m_weeklyUsed,
                             .weeklyLimit = m_weeklyLimit,
                             .manualUnit = m_manualUnit.rawValue(),
                             .shortResetMode = m_shortResetMode.rawValue(),
                             .weeklyResetMode = m_weeklyResetMode.rawValue(),
                             .shortResetTime = m_shortResetDate.unixSeconds(),
                             .weeklyResetTime = m_weeklyResetDate.unixSeconds(),
                             .page = m_page.rawValue()}
            .save(*m_settings);
    }
    if (m_hooks.dismiss) {
        m_hooks.dismiss();
    }
}

void OnboardingFlow::restoreDraftIfNeeded() {
    if (m_page != OnboardingPage::welcome || !m_settings) {
        return;
    }
    const OnboardingSavedDraft saved = OnboardingSavedDraft::load(*m_settings);
    if (saved.label.isEmpty() && saved.provider.isEmpty()) {
        return;
    }
    m_hasSavedDraft = true;
    if (const auto provider = AIProvider::fromRawValue(saved.provider)) {
        m_provider = *provider;
        m_manualUnit = defaultUnit(*provider);
    }
    m_label = saved.label;
    m_shortUsed = saved.shortUsed;
    m_shortLimit = saved.shortLimit;
    m_weeklyUsed = saved.weeklyUsed;
    m_weeklyLimit = saved.weeklyLimit;
    if (const auto unit = UsageUnit::fromRawValue(saved.manualUnit)) {
        m_manualUnit = *unit;
    }
    if (const auto mode = OnboardingResetMode::fromRawValue(saved.shortResetMode)) {
        m_shortResetMode = *mode;
    }
    if (const auto mode = OnboardingResetMode::fromRawValue(saved.weeklyResetMode)) {
        m_weeklyResetMode = *mode;
    }
    if (saved.shortResetTime > 0) {
        m_shortResetDate = Timestamp::fromUnixSeconds(saved.shortResetTime);
    }
    if (saved.weeklyResetTime > 0) {
        m_weeklyResetDate = Timestamp::fromUnixSeconds(saved.weeklyResetTime);
    }
    if (const auto mode = ConnectionMode::fromRawValue(saved.mode);
        mode && !(*mode == ConnectionMode::apiKey && m_provider != AIProvider::openAI)) {
        m_connectionMode = *mode;
    }
    m_resumePage = *OnboardingPage::fromRawValue(
        qBound<int>(OnboardingPage::provider, saved.page, OnboardingPage::connection));
    Q_EMIT changed();
}

void OnboardingFlow::clearSavedDraft() {
    if (m_settings) {
        OnboardingSavedDraft::clear(*m_settings);
    }
    m_hasSavedDraft = false;
}

void OnboardingFlow::clearEntries() {
    const Timestamp now = Clock::now();
    m_label.clear();
    m_shortUsed.clear();
    m_shortLimit.clear();
    m_weeklyUsed.clear();
    m_weeklyLimit.clear();
    m_shortResetMode = OnboardingResetMode::later;
    m_weeklyResetMode = OnboardingResetMode::later;
    m_shortResetDate = now;
    m_weeklyResetDate = now;
    m_manualOverageConfirmed = false;
    m_overdueResetConfirmed = false;
    m_duplicateNameConfirmed = false;
    m_apiKey.clear();
    m_connectionVerified = false;
    m_connectionMetadata.reset();
    m_connectionTestMessage.reset();
    m_validationMessage.reset();
}

void OnboardingFlow::resetFields() {
    m_provider = AIProvider::openAI;
    m_connectionMode = ConnectionMode::mock;
    m_manualUnit = UsageUnit::requests;
    clearEntries();
}

void OnboardingFlow::resetForAnother() {
    resetFields();
    clearSavedDraft();
    setPage(OnboardingPage::provider);
}

// ---- focus ----

void OnboardingFlow::focusCurrentField() {
    std::optional<OnboardingFocusField> field;
    if (m_page == OnboardingPage::name) {
        field = OnboardingFocusField::label;
    } else if (m_page == OnboardingPage::connection && m_connectionMode == ConnectionMode::apiKey) {
        field = OnboardingFocusField::apiKey;
    }
    m_focusedField = field;
    if (field) {
        Q_EMIT focusRequested(*field);
    }
}

void OnboardingFlow::focusFirstInvalidField() {
    std::optional<OnboardingFocusField> field;
    if (m_page == OnboardingPage::name) {
        field = OnboardingFocusField::label;
    } else if (m_page == OnboardingPage::connection) {
        if (m_connectionMode == ConnectionMode::apiKey) {
            field = OnboardingFocusField::apiKey;
        } else if (m_shortUsed.isEmpty() || m_shortLimit.isEmpty()) {
            field = OnboardingFocusField::shortUsed;
        } else {
            field = OnboardingFocusField::weeklyUsed;
        }
    }
    m_focusedField = field;
    if (field) {
        Q_EMIT focusRequested(*field);
    }
}

// ---- the welcome and ready pages ----

void OnboardingFlow::appear() {
    restoreDraftIfNeeded();
    focusCurrentField();
}

void OnboardingFlow::begin() {
    setPage(m_hasSavedDraft ? m_resumePage : OnboardingPage::provider);
}

void OnboardingFlow::startOver() {
    clearSavedDraft();
    setPage(OnboardingPage::provider);
}

void OnboardingFlow::trySampleWorkspace() {
    clearSavedDraft();
    if (m_hooks.exploreSample) {
        m_hooks.exploreSample();
    }
    if (m_hooks.finish) {
        m_hooks.finish();
    }
    if (m_hooks.dismiss) {
        m_hooks.dismiss();
    }
}

void OnboardingFlow::doThisLater() {
    if (m_hooks.dismiss) {
        m_hooks.dismiss();
    }
}

void OnboardingFlow::openDashboard() {
    if (m_hooks.finish) {
        m_hooks.finish();
    }
    if (m_hooks.dismiss) {
        m_hooks.dismiss();
    }
}
