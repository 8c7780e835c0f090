#pragma once

#include "core/AccountDraft.h"
#include "editor/AccountEditorFields.h"
#include "model/AgentBudget.h"
#include "store/ProviderAccount.h"

#include <QList>
#include <QObject>
#include <QPointer>
#include <QUrl>

#include <functional>
#include <optional>

class AccountLifecycle;
class ConnectionTest;

// The account editor without its window: the form's values, the rules that check them,
// and what saving, testing, signing out and opening the provider's page ask of the
// account lifecycle, which writes the record and its key. The sheet binds its controls
// to `fields()` and redraws on changed().
class AccountEditorForm final : public QObject {
    Q_OBJECT

public:
    // `existing` is the account to change, or null for a new one; `onSave` runs after a
    // successful save, before the sheet closes.
    AccountEditorForm(AccountLifecycle* lifecycle, ProviderAccount* existing,
                      std::function<void()> onSave = {}, QObject* parent = nullptr);
    // Overwrites the typed key before its memory is given back.
    ~AccountEditorForm() override;

    ProviderAccount* existing() const { return m_existing.data(); }
    bool isNew() const noexcept { return !m_hadExisting; }

    const AccountEditorFields& fields() const noexcept { return m_fields; }
    // The plain fields, for the controls bound to them; the provider and the connection
    // mode change only through their setters, which apply the form's reactions.
    AccountEditorFields& edit() noexcept { return m_fields; }
    void setProvider(AIProvider provider);
    void setConnectionMode(ConnectionMode mode);
    // The "Official API key" and "Manual tracking" tiles.
    void chooseOfficialAPIKey();
    void chooseManualTracking();

    // The checks of a typed number and of the budget lines.
    static std::optional<double> validManualNumber(const QString& text, double minimum);
    static std::optional<QList<AgentBudget>> parseAgentBudgets(const QString& text);
    // How the form writes a number it prefills: the shortest text that reads back exactly.
    static QString decimalText(double value);
    static constexpr double kMinimumLimit = 0.000001;

    // Checks the form and hands it to the lifecycle to write. False, with `errorMessage`
    // set and the sheet to stay open, when a step refused.
    bool save();
    // After a successful save: the keychain's reason when a key it should have removed
    // stays for now.
    const std::optional<QString>& keyKept() const noexcept { return m_keyKept; }
    // The form as the lifecycle takes it, before the checks of a save.
    AccountDraft makeDraft() const;

    // The connection actions. openProviderAuth gives the page to open in the browser.
    std::optional<QUrl> openProviderAuth();
    void testConnection();
    void refreshConnection();
    void logoutConnection();

signals:
    // Any value of the form changed by the form itself (a test result, a reaction).
    void changed();
    // A connection test came to its end, whatever its result.
    void testFinished();

private:
    void initialiseFrom(const ProviderAccount& account);
    // What a new connection mode brings with it; the action that changed the mode sets
    // its own texts afterwards.
    void applyModeChange(ConnectionMode mode);
    // Reads the manual values into the draft: the refusal, or none when they pass.
    std::optional<QString> readManualAllowance(Timestamp now, AccountDraft& draft) const;
    bool refuse(const QString& message);
    void runConnectionTest(QString secret);

    AccountLifecycle* m_lifecycle;
    QPointer<ProviderAccount> m_existing;
    bool m_hadExisting;
    std::function<void()> m_onSave;
    AccountEditorFields m_fields;
    // After a save: why an old key stays in the keychain for now, if one does.
    std::optional<QString> m_keyKept;
    QPointer<ConnectionTest> m_test;
};
