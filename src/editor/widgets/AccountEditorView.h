#pragma once

#include "editor/AccountEditorContent.h"

#include <QDialog>

#include <functional>

class AccountEditorForm;
class AccountLifecycle;
class ElidedLabel;
class ManualHorizonEditor;
class ProviderAccount;
class QComboBox;
class QDateTimeEdit;
class QLineEdit;
class QPlainTextEdit;
class QPushButton;
class QScrollArea;
class SectionCard;
class SelectableTile;
class ToggleSwitch;

// The sheet in which one account is added or changed by hand, over the main window.
// It draws AccountEditorContent and writes what is typed into the form; only Save
// touches the account. Escape and Cancel close it without saving; the typed key is
// wiped when it closes.
class AccountEditorView final : public QDialog {
    Q_OBJECT

public:
    AccountEditorView(AccountLifecycle* lifecycle, ProviderAccount* existing, std::function<void()> onSave,
                      QWidget* parent = nullptr);
    ~AccountEditorView() override;

    AccountEditorForm* form() const noexcept { return m_form; }
    // The sheet's controls, for the window's own tests and tools.
    QLineEdit* keyField() const noexcept { return m_key; }
    QPushButton* saveButton() const noexcept { return m_save; }

    void done(int result) override;

private:
    void build();
    void buildSubscription(QWidget* page);
    void buildAuthentication(QWidget* page);
    QWidget* buildBrowserPanel(QWidget* parent);
    QWidget* buildKeyPanel(QWidget* parent);
    void buildManual(QWidget* page);
    void buildRenewal(SectionCard* card);
    QWidget* buildDetectedPanel(QWidget* parent);
    void buildAdvanced(QWidget* page);
    void buildBudgets(QWidget* page);
    // Redraws from the form: texts, chosen tiles, which panels show, and the values the
    // form changed itself.
    void sync();
    void save();
    void openProviderPage();
    void orderFocus();

    AccountEditorForm* m_form;
    AccountEditorContent m_content;
    bool m_syncing = false;

    QScrollArea* m_scroll = nullptr;
    QWidget* m_page = nullptr;
    ElidedLabel* m_title = nullptr;
    QLineEdit* m_label = nullptr;
    QList<SelectableTile*> m_providerTiles;
    QList<SelectableTile*> m_authTiles;
    QWidget* m_browserPanel = nullptr;
    ElidedLabel* m_browserHeading = nullptr;
    QPushButton* m_openPage = nullptr;
    QPushButton* m_browserRefresh = nullptr;
    QWidget* m_keyPanel = nullptr;
    QLineEdit* m_key = nullptr;
    ElidedLabel* m_keyNote = nullptr;
    QPushButton* m_test = nullptr;
    QPushButton* m_keyRefresh = nullptr;
    QPushButton* m_logout = nullptr;
    ElidedLabel* m_testMessage = nullptr;
    QWidget* m_samplePanel = nullptr;
    ToggleSwitch* m_sample = nullptr;
    QWidget* m_manualSection = nullptr;
    QComboBox* m_unit = nullptr;
    ManualHorizonEditor* m_short = nullptr;
    ManualHorizonEditor* m_weekly = nullptr;
    QLineEdit* m_identity = nullptr;
    ElidedLabel* m_identityTitle = nullptr;
    QLineEdit* m_modelScope = nullptr;
    QLineEdit* m_agentScope = nullptr;
    QLineEdit* m_roster = nullptr;
    QLineEdit* m_agentCount = nullptr;
    ToggleSwitch* m_trackRenewal = nullptr;
    QWidget* m_renewalRow = nullptr;
    QDateTimeEdit* m_renewal = nullptr;
    QWidget* m_detectedPanel = nullptr;
    ElidedLabel* m_detectedName = nullptr;
    ElidedLabel* m_detectedSignals = nullptr;
    QLineEdit* m_detectedOverride = nullptr;
    QWidget* m_planOverrideRow = nullptr;
    QLineEdit* m_planOverride = nullptr;
    QPlainTextEdit* m_budgets = nullptr;
    QWidget* m_errorRow = nullptr;
    ElidedLabel* m_error = nullptr;
    QPushButton* m_cancel = nullptr;
    QPushButton* m_save = nullptr;
};
