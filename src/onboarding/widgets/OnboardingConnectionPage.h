#pragma once

#include "onboarding/OnboardingContent.h"

#include <QWidget>

class ElidedLabel;
class ManualEntryPair;
class OnboardingFlow;
class QComboBox;
class QLineEdit;
class QProgressBar;
class QPushButton;
class QVBoxLayout;
class SelectableTile;
class ToggleSwitch;

// The guided flow's "Choose updates" page: the ways to keep the account up to date, the
// key with its test, the limits typed by hand, and what a test detected. It draws the
// page's content and passes what is typed and pressed to the flow.
class OnboardingConnectionPage final : public QWidget {
    Q_OBJECT

public:
    explicit OnboardingConnectionPage(OnboardingFlow* flow, QWidget* parent = nullptr);

    void sync(const OnboardingContent::ConnectionPage& content);
    // The key field follows the flow on every page: another provider empties it unseen.
    void followKey();
    // The field that takes the keyboard focus for one of the page's entries.
    QWidget* field(OnboardingFocusField field) const;

private:
    void buildModeCards(QVBoxLayout* layout);
    QWidget* buildKeyPanel();
    QWidget* buildManualPanel();
    void bindManualPanel();
    QWidget* buildDetected();
    void syncKeyPanel(const OnboardingContent::KeyFields& key);
    void syncManualPanel(const OnboardingContent::ManualFields& manual);

    OnboardingFlow* m_flow;
    QList<ConnectionMode> m_cardModes;
    bool m_syncing = false;

    QList<SelectableTile*> m_modeCards;
    QWidget* m_keyPanel = nullptr;
    QLineEdit* m_key = nullptr;
    QPushButton* m_test = nullptr;
    QProgressBar* m_progress = nullptr;
    QPushButton* m_cancelTest = nullptr;
    ElidedLabel* m_testMessage = nullptr;
    QWidget* m_manualPanel = nullptr;
    QComboBox* m_unit = nullptr;
    ManualEntryPair* m_shortPair = nullptr;
    ManualEntryPair* m_weeklyPair = nullptr;
    QWidget* m_previews = nullptr;
    ToggleSwitch* m_overage = nullptr;
    QWidget* m_overageRow = nullptr;
    ToggleSwitch* m_overdue = nullptr;
    QWidget* m_overdueRow = nullptr;
    QWidget* m_sampleLine = nullptr;
    QWidget* m_detected = nullptr;
    ElidedLabel* m_detectedName = nullptr;
    ElidedLabel* m_detectedLine = nullptr;
    QWidget* m_connectionError = nullptr;
};
