#pragma once

#include "onboarding/OnboardingContent.h"

#include <QDialog>

class ContentView;
class ElidedLabel;
class OnboardingConnectionPage;
class OnboardingFlow;
class OnboardingOrbit;
class QLineEdit;
class QPushButton;
class QStackedWidget;
class SelectableTile;
class StepCapsules;

// The guided first-account flow as a sheet over the main window: a header with the step
// and its capsules, the page, and the footer. It draws OnboardingContent and passes what
// is typed and pressed to the flow. While the first run has no account and onboarding is
// not finished, Escape and the close button do nothing; the flow's own buttons still close it.
class OnboardingView final : public QDialog {
    Q_OBJECT

public:
    OnboardingView(ContentView* content, bool reduceMotion, QWidget* parent = nullptr);
    ~OnboardingView() override;

    OnboardingFlow* flow() const noexcept { return m_flow; }
    // Page changes fade and the ring turns unless the desktop asks for less motion.
    void setReduceMotion(bool reduce);
    bool reduceMotion() const noexcept { return m_reduceMotion; }

    void reject() override;

protected:
    void showEvent(QShowEvent* event) override;

private:
    QWidget* buildHeader();
    QWidget* buildFooter();
    QWidget* buildWelcome();
    QWidget* buildProvider();
    QWidget* buildName();
    QWidget* buildConnection();
    QWidget* buildReady();
    void sync();
    QPushButton* syncFooter(OnboardingPage page, const OnboardingContent::Footer& footer);
    void showPage(OnboardingPage page);
    void focusField(OnboardingFocusField field);

    ContentView* m_content;
    OnboardingFlow* m_flow;
    OnboardingContent m_shown;
    bool m_reduceMotion = false;
    bool m_appeared = false;

    ElidedLabel* m_step = nullptr;
    StepCapsules* m_capsules = nullptr;
    QStackedWidget* m_pages = nullptr;
    QWidget* m_footer = nullptr;
    QWidget* m_footerLine = nullptr;
    QPushButton* m_back = nullptr;
    QPushButton* m_saveForLater = nullptr;
    QList<QPushButton*> m_trailing;

    // welcome
    OnboardingOrbit* m_orbit = nullptr;
    ElidedLabel* m_welcomeHeading = nullptr;
    ElidedLabel* m_welcomeText = nullptr;
    QPushButton* m_begin = nullptr;
    QPushButton* m_startOver = nullptr;
    // provider
    QList<SelectableTile*> m_providerCards;
    QWidget* m_disclosureText = nullptr;
    // name
    QLineEdit* m_label = nullptr;
    ElidedLabel* m_nameHint = nullptr;
    QWidget* m_nameError = nullptr;
    QWidget* m_duplicate = nullptr;
    ElidedLabel* m_preview = nullptr;
    QWidget* m_previewLogo = nullptr;
    OnboardingConnectionPage* m_connection = nullptr;
    // ready
    QWidget* m_readyTile = nullptr;
    ElidedLabel* m_readyHeading = nullptr;
    ElidedLabel* m_readyText = nullptr;
    ElidedLabel* m_readyName = nullptr;
    ElidedLabel* m_readySummary = nullptr;
    ElidedLabel* m_readyTag = nullptr;
    QWidget* m_readyLogoHolder = nullptr;
};
