#pragma once

#include "core/AccountLifecycle.h"
#include "core/ConnectionTest.h"
#include "model/AIProvider.h"
#include "model/ConnectionMode.h"
#include "model/OnboardingResetMode.h"
#include "model/ProviderConnectionMetadata.h"
#include "model/Timestamp.h"
#include "model/UsageUnit.h"
#include "onboarding/OnboardingDraft.h"
#include "onboarding/OnboardingPage.h"

#include <QObject>
#include <QPointer>
#include <QStringList>

#include <functional>
#include <optional>

class QSettings;
class UsageProviderError;

// The guided first-account flow without its screens: its state, the moves between its
// five pages, the checks that guard them, the timed connection test and the draft that
// can be saved for later. The sheet drives it by calls and redraws on changed().
class OnboardingFlow final : public QObject {
    Q_OBJECT

public:
    // What the flow asks of the window around it.
    struct Hooks {
        // Stores the account the draft describes; false when it could not, with why in
        // `refusal` when the store or the keychain said.
        using Refusal = std::optional<AccountLifecycle::Refusal>;
        std::function<bool(const OnboardingDraft&, Refusal* refusal)> createAccount;
        std::function<void()> exploreSample;
        std::function<void()> finish;
        std::function<void()> dismiss;
        // A second test of a name, beside the names the flow was given.
        std::function<bool(const QString&)> labelExists;
    };

    // `settings` holds the saved draft; `existingLabels` the names of the accounts now.
    OnboardingFlow(QSettings* settings, QStringList existingLabels, Hooks hooks, QObject* parent = nullptr);
    // The flow disappears: a running test is cancelled and the key forgotten.
    ~OnboardingFlow() override;

    // ---- state ----
    OnboardingPage page() const noexcept { return m_page; }
    AIProvider provider() const noexcept { return m_provider; }
    const QString& label() const noexcept { return m_label; }
    ConnectionMode connectionMode() const noexcept { return m_connectionMode; }
    const QString& apiKey() const noexcept { return m_apiKey; }
    UsageUnit manualUnit() const noexcept { return m_manualUnit; }
    const QString& shortUsed() const noexcept { return m_shortUsed; }
    const QString& shortLimit() const noexcept { return m_shortLimit; }
    const QString& weeklyUsed() const noexcept { return m_weeklyUsed; }
    const QString& weeklyLimit() const noexcept { return m_weeklyLimit; }
    OnboardingResetMode shortResetMode() const noexcept { return m_shortResetMode; }
    OnboardingResetMode weeklyResetMode() const noexcept { return m_weeklyResetMode; }
    Timestamp shortResetDate() const noexcept { return m_shortResetDate; }
    Timestamp weeklyResetDate() const noexcept { return m_weeklyResetDate; }
    bool manualOverageConfirmed() const noexcept { return m_manualOverageConfirmed; }
    bool overdueResetConfirmed() const noexcept { return m_overdueResetConfirmed; }
    bool duplicateNameConfirmed() const noexcept { return m_duplicateNameConfirmed; }
    bool isTestingConnection() const noexcept { return m_isTestingConnection; }
    bool connectionVerified() const noexcept { return m_connectionVerified; }
    const std::optional<ProviderConnectionMetadata>& connectionMetadata() const noexcept {
        return m_connectionMetadata;
    }
    const std::optional<QString>& connectionTestMessage() const noexcept { return m_connectionTestMessage; }
    bool hasConnectionTest() const noexcept { return m_test != nullptr; }
    const std::optional<QString>& validationMessage() const noexcept { return m_validationMessage; }
    bool hasSavedDraft() const noexcept { return m_hasSavedDraft; }
    OnboardingPage resumePage() const noexcept { return m_resumePage; }
    const std::optional<OnboardingFocusField>& focusedField() const noexcept { return m_focusedField; }

    // ---- fields the pages edit, with their reactions ----
    void setLabel(const QString& label);
    void setAPIKey(const QString& key);
    void setManualUnit(UsageUnit unit);
    void setShortUsed(const QString& text);
    void setShortLimit(const QString& text);
    void setWeeklyUsed(const QString& text);
    void setWeeklyLimit(const QString& text);
    void setShortResetMode(OnboardingResetMode mode);
    void setWeeklyResetMode(OnboardingResetMode mode);
    void setShortResetDate(Timestamp date);
    void setWeeklyResetDate(Timestamp date);
    void setManualOverageConfirmed(bool confirmed);
    void setOverdueResetConfirmed(bool confirmed);
    void setDuplicateNameConfirmed(bool confirmed);
    // "Use anyway": the duplicate name is confirmed and the message about it goes.
    void useNameAnyway();

    // ---- derived ----
    std::optional<double> manualShortLimit() const;
    std::optional<double> manualWeeklyLimit() const;
    bool hasManualAllowance() const;
    bool manualHasOverage() const;
    bool manualHasPastReset() const;

    // ---- operations ----
    void next();
    void back();
    void selectProvider(AIProvider provider);
    void selectConnectionMode(ConnectionMode mode);
    void testConnection();
    void cancelConnectionTest();
    void saveDraftAndDismiss();
    void restoreDraftIfNeeded();
    void clearSavedDraft();
    void resetForAnother();
    OnboardingDraft makeDraft() const;
    std::optional<QString> validationMessageForCurrentPage() const;
    bool isDuplicateName() const;
    void focusCurrentField();
    void focusFirstInvalidField();
    static QString connectionErrorMessage(const UsageProviderError& error);
    // What the connection page says when the account could not be created.
    static QString creationRefusalMessage(const Hooks::Refusal& refusal);

    // The welcome page's actions.
    void begin();
    void startOver();
    void trySampleWorkspace();
    void doThisLater();
    // The ready page's closing action.
    void openDashboard();

    // The flow appeared: the saved draft comes back and the page's field takes focus.
    void appear();

signals:
    void changed();
    // The page changed; the screen shows the move (or not, with reduced motion).
    void pageChanged(OnboardingPage page);
    // A field should take the keyboard focus.
    void focusRequested(OnboardingFocusField field);
    // A connection test came to its end, whatever its result.
    void testFinished();

private:
    void setPage(OnboardingPage page);
    // Everything typed or confirmed for one provider goes: name, numbers, resets, key,
    // confirmations and what a test found.
    void clearEntries();
    void resetFields();
    template <typename T>
    void assign(T& field, const T& value) {
        field = value;
        Q_EMIT changed();
    }
    void finishTest(ConnectionTest* test);

    QSettings* m_settings;
    QStringList m_existingLabels;
    Hooks m_hooks;

    OnboardingPage m_page = OnboardingPage::welcome;
    AIProvider m_provider = AIProvider::openAI;
    QString m_label;
    ConnectionMode m_connectionMode = ConnectionMode::mock;
    QString m_apiKey;
    UsageUnit m_manualUnit = UsageUnit::requests;
    QString m_shortUsed;
    QString m_shortLimit;
    QString m_weeklyUsed;
    QString m_weeklyLimit;
    OnboardingResetMode m_shortResetMode = OnboardingResetMode::later;
    OnboardingResetMode m_weeklyResetMode = OnboardingResetMode::later;
    Timestamp m_shortResetDate;
    Timestamp m_weeklyResetDate;
    bool m_manualOverageConfirmed = false;
    bool m_overdueResetConfirmed = false;
    bool m_duplicateNameConfirmed = false;
    bool m_isTestingConnection = false;
    bool m_connectionVerified = false;
    std::optional<ProviderConnectionMetadata> m_connectionMetadata;
    std::optional<QString> m_connectionTestMessage;
    std::optional<QString> m_validationMessage;
    bool m_hasSavedDraft = false;
    OnboardingPage m_resumePage = OnboardingPage::provider;
    std::optional<OnboardingFocusField> m_focusedField;
    // The test the flow holds (in flight or last finished), and the newest one started.
    QPointer<ConnectionTest> m_test;
    QPointer<ConnectionTest> m_latest;
};
