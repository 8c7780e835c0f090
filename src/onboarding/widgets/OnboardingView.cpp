#include "onboarding/widgets/OnboardingView.h"

#include "core/ContentView.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/widgets/ManualEntryPair.h"
#include "onboarding/widgets/OnboardingOrbit.h"
#include "onboarding/widgets/StepCapsules.h"
#include "services/MotionPreference.h"
#include "ui/BlockParts.h"
#include "ui/BrandMark.h"
#include "ui/FormField.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/SelectableTile.h"
#include "ui/Theme.h"
#include "ui/ToggleSwitch.h"

#include <QClipboard>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QGraphicsOpacityEffect>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QScrollArea>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace {
using Ink = ElidedLabel::Ink;

constexpr int kTransitionMilliseconds = 220;

ElidedLabel* heading(const QString& text, QWidget* parent) {
    return BlockParts::text(text, Theme::kLargeTitle, QFont::DemiBold, Ink::primary, parent, Tone::muted, 3);
}

ElidedLabel* paragraph(const QString& text, QWidget* parent) {
    return BlockParts::text(text, Theme::kBody, QFont::Normal, Ink::secondary, parent, Tone::muted, 6);
}

// A symbol and a line of text beside it; the text is the child named "message".
QWidget* symbolLine(const QString& symbol, const QString& text, Tone tone, Ink ink, QWidget* parent) {
    auto* row = new QWidget(parent);
    auto* layout = BlockParts::row(Theme::kSpaceS);
    row->setLayout(layout);
    layout->addWidget(BlockParts::icon(symbol, 16, row, tone), 0, Qt::AlignTop);
    ElidedLabel* label = BlockParts::text(text, Theme::kBody, QFont::Normal, ink, row, tone, 4);
    label->setObjectName(QStringLiteral("message"));
    layout->addWidget(label, 1);
    return row;
}

void setMessage(QWidget* row, const std::optional<QString>& text) {
    row->setVisible(text.has_value());
    if (text) {
        row->findChild<ElidedLabel*>(QStringLiteral("message"))->setFullText(*text);
    }
}

// A page: its content in a column, scrolling when the sheet is short.
QWidget* pageFrame(QVBoxLayout*& layout) {
    auto* scroll = new QScrollArea;
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* page = new QWidget(scroll);
    layout = new QVBoxLayout(page);
    layout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceL, Theme::kSpaceXXL, Theme::kSpaceL);
    layout->setSpacing(Theme::kSpaceM);
    scroll->setWidget(page);
    return scroll;
}

// Puts the provider's logo inside `holder`, replacing another provider's; the flow's every
// change redraws the page, and most of them keep the provider.
void showLogo(QWidget* holder, AIProvider provider, int size) {
    const QString raw = provider.rawValue();
    if (holder->property("provider").toString() == raw) {
        return;
    }
    holder->setProperty("provider", raw);
    delete holder->findChild<ProviderLogoWidget*>();
    auto* logo = new ProviderLogoWidget(provider, size, holder);
    logo->setAccessibleName(provider.displayName());
    holder->layout()->addWidget(logo);
}

QWidget* logoHolder(QWidget* parent, int size) {
    auto* holder = new QWidget(parent);
    auto* layout = new QVBoxLayout(holder);
    layout->setContentsMargins(0, 0, 0, 0);
    holder->setFixedSize(size, size);
    return holder;
}
} // namespace

OnboardingView::OnboardingView(ContentView* content, QWidget* parent)
    : QDialog(parent, Qt::Sheet)
    , m_content(content)
    , m_reduceMotion(MotionPreference::reduceMotion()) {
    setObjectName(QStringLiteral("onboarding"));
    setWindowTitle(QStringLiteral("Tallyfen"));
    setWindowModality(Qt::WindowModal);
    resize(760, 680);
    setMinimumSize(600, 560);
    m_flow = new OnboardingFlow(
        &content->preferences()->settings(), content->existingLabels(),
        OnboardingFlow::Hooks{
            .createAccount =
                [this](const OnboardingDraft& draft) { return m_content->createOnboardingAccount(draft.accountDraft()); },
            .exploreSample = [this] { m_content->createDemoAccounts(); },
            .finish = [this] { m_content->finishOnboarding(); },
            .dismiss = [this] { QDialog::done(QDialog::Accepted); },
            .labelExists = [this](const QString& name) { return m_content->labelExists(name); }},
        this);

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    auto* header = new QWidget(this);
    header->setObjectName(QStringLiteral("onboardingHeader"));
    auto* headerLayout = BlockParts::row(Theme::kSpaceM);
    header->setLayout(headerLayout);
    headerLayout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceL, Theme::kSpaceXXL, Theme::kSpaceS);
    headerLayout->addWidget(new BrandMark(32, header));
    auto* brand = new QVBoxLayout;
    brand->setSpacing(0);
    brand->addWidget(BlockParts::text(QStringLiteral("Tallyfen"), Theme::kHeadline, QFont::DemiBold,
                                      Ink::primary, header));
    brand->addWidget(BlockParts::text(QStringLiteral("A Harrowmere product"), Theme::kFootnote, QFont::Normal,
                                      Ink::secondary, header));
    headerLayout->addLayout(brand, 1);
    auto* steps = new QVBoxLayout;
    steps->setSpacing(Theme::kSpaceXS);
    m_step = BlockParts::text(QString(), Theme::kFootnote, QFont::Medium, Ink::secondary, header);
    m_step->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    m_step->setMinimumWidth(200);
    steps->addWidget(m_step);
    m_capsules = new StepCapsules(header);
    steps->addWidget(m_capsules, 0, Qt::AlignRight);
    headerLayout->addLayout(steps);
    outer->addWidget(header);

    m_pages = new QStackedWidget(this);
    m_pages->addWidget(buildWelcome());
    m_pages->addWidget(buildProvider());
    m_pages->addWidget(buildName());
    m_pages->addWidget(buildConnection());
    m_pages->addWidget(buildReady());
    outer->addWidget(m_pages, 1);

    auto* footer = new QWidget(this);
    footer->setObjectName(QStringLiteral("onboardingFooter"));
    auto* footerLayout = BlockParts::row(Theme::kSpaceS);
    footer->setLayout(footerLayout);
    footerLayout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceM, Theme::kSpaceXXL, Theme::kSpaceL);
    m_back = BlockParts::button(QStringLiteral("Back"), Theme::ButtonRole::plain, footer);
    m_back->setObjectName(QStringLiteral("backButton"));
    footerLayout->addWidget(m_back);
    m_saveForLater = BlockParts::button(QStringLiteral("Save for later"), Theme::ButtonRole::link, footer);
    m_saveForLater->setObjectName(QStringLiteral("saveForLaterButton"));
    footerLayout->addWidget(m_saveForLater);
    footerLayout->addStretch(1);
    for (int i = 0; i < 2; ++i) {
        QPushButton* button = BlockParts::button(QString(), Theme::ButtonRole::standard, footer);
        button->setObjectName(QStringLiteral("footerButton%1").arg(i));
        footerLayout->addWidget(button);
        m_trailing.append(button);
        connect(button, &QPushButton::clicked, this, [this, i] {
            switch (m_flow->page().value()) {
            case OnboardingPage::ready:
                if (i == 0) {
                    m_flow->resetForAnother();
                } else {
                    m_flow->openDashboard();
                }
                break;
            default:
                m_flow->next();
                break;
            }
        });
    }
    m_footerLine = BlockParts::separator(this);
    outer->addWidget(m_footerLine);
    outer->addWidget(footer);
    m_footer = footer;
    connect(m_back, &QPushButton::clicked, m_flow, &OnboardingFlow::back);
    connect(m_saveForLater, &QPushButton::clicked, m_flow, &OnboardingFlow::saveDraftAndDismiss);

    connect(m_flow, &OnboardingFlow::changed, this, &OnboardingView::sync);
    connect(m_flow, &OnboardingFlow::pageChanged, this, &OnboardingView::showPage);
    connect(m_flow, &OnboardingFlow::focusRequested, this, &OnboardingView::focusField);
    sync();
}

OnboardingView::~OnboardingView() = default;

void OnboardingView::setReduceMotion(bool reduce) {
    m_reduceMotion = reduce;
    m_orbit->setReduceMotion(reduce);
}

void OnboardingView::reject() {
    // A first run can't slip past onboarding.
    if (m_content->onboardingDismissDisabled()) {
        return;
    }
    QDialog::reject();
}

void OnboardingView::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (!m_appeared) {
        m_appeared = true;
        m_orbit->setReduceMotion(m_reduceMotion);
        m_flow->appear();
        sync();
    }
}

// ---- pages ----

QWidget* OnboardingView::buildWelcome() {
    QVBoxLayout* layout = nullptr;
    QWidget* frame = pageFrame(layout);
    QWidget* page = layout->parentWidget();
    page->setObjectName(QStringLiteral("welcomePage"));
    layout->addSpacing(Theme::kSpaceL);
    m_orbit = new OnboardingOrbit(page);
    layout->addWidget(m_orbit, 0, Qt::AlignHCenter);
    m_welcomeHeading = heading(QString(), page);
    m_welcomeHeading->setAlignment(Qt::AlignHCenter);
    layout->addWidget(m_welcomeHeading);
    m_welcomeText = paragraph(QString(), page);
    m_welcomeText->setAlignment(Qt::AlignHCenter);
    m_welcomeText->setMaximumWidth(560);
    layout->addWidget(m_welcomeText, 0, Qt::AlignHCenter);
    auto* privacy = BlockParts::card(page, Tone::muted);
    privacy->setFixedWidth(520);
    auto* privacyLayout = static_cast<QVBoxLayout*>(privacy->layout());
    const OnboardingContent first = OnboardingContent::make(*m_flow);
    privacyLayout->addWidget(symbolLine(first.welcome->privacySymbol, first.welcome->privacyLabel,
                                        Tone::accent, Ink::primary, privacy));
    privacyLayout->addWidget(BlockParts::text(first.welcome->privacyLine, Theme::kFootnote, QFont::Normal,
                                              Ink::secondary, privacy, Tone::muted, 3));
    layout->addWidget(privacy, 0, Qt::AlignHCenter);
    layout->addSpacing(Theme::kSpaceS);

    auto* buttons = new QVBoxLayout;
    buttons->setSpacing(Theme::kSpaceS);
    m_begin = BlockParts::button(QString(), Theme::ButtonRole::primary, page);
    m_begin->setObjectName(QStringLiteral("beginButton"));
    m_begin->setMinimumWidth(260);
    buttons->addWidget(m_begin, 0, Qt::AlignHCenter);
    m_startOver = BlockParts::button(QStringLiteral("Start over"), Theme::ButtonRole::standard, page);
    m_startOver->setMinimumWidth(260);
    buttons->addWidget(m_startOver, 0, Qt::AlignHCenter);
    QPushButton* sample =
        BlockParts::button(QStringLiteral("Try sample workspace"), Theme::ButtonRole::standard, page);
    sample->setObjectName(QStringLiteral("trySampleButton"));
    sample->setMinimumWidth(260);
    buttons->addWidget(sample, 0, Qt::AlignHCenter);
    QPushButton* later =
        BlockParts::button(QStringLiteral("I’ll do this later"), Theme::ButtonRole::link, page);
    later->setObjectName(QStringLiteral("laterButton"));
    buttons->addWidget(later, 0, Qt::AlignHCenter);
    layout->addLayout(buttons);
    layout->addStretch(1);
    connect(m_begin, &QPushButton::clicked, m_flow, &OnboardingFlow::begin);
    connect(m_startOver, &QPushButton::clicked, m_flow, &OnboardingFlow::startOver);
    connect(sample, &QPushButton::clicked, m_flow, &OnboardingFlow::trySampleWorkspace);
    connect(later, &QPushButton::clicked, m_flow, &OnboardingFlow::doThisLater);
    return frame;
}

QWidget* OnboardingView::buildProvider() {
    QVBoxLayout* layout = nullptr;
    QWidget* frame = pageFrame(layout);
    QWidget* page = layout->parentWidget();
    page->setObjectName(QStringLiteral("providerPage"));
    const OnboardingContent::ProviderPage content = OnboardingContent::providerPage(*m_flow);
    layout->addWidget(heading(content.title, page));
    layout->addWidget(paragraph(content.subtitle, page));
    auto* grid = new QGridLayout;
    grid->setSpacing(Theme::kSpaceS);
    const QList<AIProvider> providers = AIProvider::allCases();
    for (qsizetype i = 0; i < providers.size(); ++i) {
        const OnboardingContent::ChoiceCard& card = content.cards.at(i);
        auto* tile = new SelectableTile(providers.at(i), card.title, card.subtitle, page);
        tile->setObjectName(QStringLiteral("providerCard-") + providers.at(i).rawValue());
        tile->setAccessibleName(card.accessibleName);
        tile->setShowsEmptyCircle(true);
        const AIProvider provider = providers.at(i);
        connect(tile, &SelectableTile::clicked, this, [this, provider] { m_flow->selectProvider(provider); });
        grid->addWidget(tile, static_cast<int>(i / 2), static_cast<int>(i % 2));
        m_providerCards.append(tile);
    }
    layout->addLayout(grid);
    layout->addWidget(paragraph(content.line, page));
    QPushButton* disclosure = BlockParts::button(content.disclosureTitle, Theme::ButtonRole::plain, page,
                                                 QStringLiteral("chevron.right"));
    disclosure->setObjectName(QStringLiteral("notSureButton"));
    disclosure->setCheckable(true);
    layout->addWidget(disclosure, 0, Qt::AlignLeft);
    m_disclosureText = BlockParts::text(content.disclosureText, Theme::kBody, QFont::Normal, Ink::secondary,
                                        page, Tone::muted, 4);
    m_disclosureText->setVisible(false);
    layout->addWidget(m_disclosureText);
    connect(disclosure, &QPushButton::toggled, m_disclosureText, &QWidget::setVisible);
    layout->addStretch(1);
    return frame;
}

QWidget* OnboardingView::buildName() {
    QVBoxLayout* layout = nullptr;
    QWidget* frame = pageFrame(layout);
    QWidget* page = layout->parentWidget();
    page->setObjectName(QStringLiteral("namePage"));
    layout->addWidget(heading(QStringLiteral("What should we call this one?"), page));
    layout->addWidget(paragraph(QStringLiteral("Use a name you’ll recognize in two seconds."), page));
    m_label = new QLineEdit(page);
    m_label->setObjectName(QStringLiteral("accountName"));
    layout->addWidget(FormField::labelled(QStringLiteral("Account name"), m_label, page));
    m_nameHint =
        BlockParts::text(QString(), Theme::kFootnote, QFont::Normal, Ink::secondary, page, Tone::muted, 2);
    layout->addWidget(m_nameHint);
    m_nameError =
        symbolLine(QStringLiteral("exclamationmark.circle.fill"), QString(), Tone::critical, Ink::tone, page);
    m_nameError->setObjectName(QStringLiteral("nameError"));
    layout->addWidget(m_nameError);

    m_duplicate = BlockParts::card(page, Tone::caution);
    m_duplicate->setObjectName(QStringLiteral("duplicateName"));
    auto* duplicateLayout = static_cast<QVBoxLayout*>(m_duplicate->layout());
    duplicateLayout->addWidget(symbolLine(QStringLiteral("exclamationmark.triangle.fill"),
                                          QStringLiteral("You already have an account with this name."),
                                          Tone::caution, Ink::primary, m_duplicate));
    QPushButton* useAnyway =
        BlockParts::button(QStringLiteral("Use anyway"), Theme::ButtonRole::standard, m_duplicate);
    useAnyway->setObjectName(QStringLiteral("useAnywayButton"));
    duplicateLayout->addWidget(useAnyway, 0, Qt::AlignLeft);
    layout->addWidget(m_duplicate);
    connect(useAnyway, &QPushButton::clicked, this, [this] { m_flow->setDuplicateNameConfirmed(true); });

    auto* preview = BlockParts::card(page);
    preview->setObjectName(QStringLiteral("namePreview"));
    auto* previewLayout = BlockParts::row(Theme::kSpaceS);
    static_cast<QVBoxLayout*>(preview->layout())->addLayout(previewLayout);
    m_previewLogo = logoHolder(preview, 24);
    previewLayout->addWidget(m_previewLogo);
    m_preview = BlockParts::text(QString(), Theme::kBody, QFont::DemiBold, Ink::primary, preview);
    previewLayout->addWidget(m_preview, 1);
    previewLayout->addWidget(
        BlockParts::icon(QStringLiteral("checkmark.circle.fill"), 16, preview, Tone::positive));
    layout->addWidget(preview);
    layout->addStretch(1);
    connect(m_label, &QLineEdit::textEdited, m_flow, &OnboardingFlow::setLabel);
    return frame;
}

QWidget* OnboardingView::buildConnection() {
    QVBoxLayout* layout = nullptr;
    QWidget* frame = pageFrame(layout);
    QWidget* page = layout->parentWidget();
    page->setObjectName(QStringLiteral("connectionPage"));
    layout->addWidget(heading(QStringLiteral("How should we keep this account up to date?"), page));
    layout->addWidget(paragraph(QStringLiteral("Choose the clearest source for your subscription."), page));
    for (int i = 0; i < 3; ++i) {
        auto* tile = new SelectableTile(AIProvider::openAI, QString(), QString(), page);
        tile->setObjectName(QStringLiteral("modeCard%1").arg(i));
        tile->setShowsEmptyCircle(true);
        connect(tile, &SelectableTile::clicked, this, [this, i] {
            if (i < m_shown.connection->cardModes.size()) {
                m_flow->selectConnectionMode(m_shown.connection->cardModes.at(i));
            }
        });
        layout->addWidget(tile);
        m_modeCards.append(tile);
    }

    // The key.
    m_keyPanel = BlockParts::card(page);
    m_keyPanel->setObjectName(QStringLiteral("keyFields"));
    auto* keyLayout = static_cast<QVBoxLayout*>(m_keyPanel->layout());
    m_key = new QLineEdit(m_keyPanel);
    m_key->setObjectName(QStringLiteral("apiKeyField"));
    m_key->setEchoMode(QLineEdit::Password);
    m_key->setPlaceholderText(QStringLiteral("sk-…"));
    m_key->setContextMenuPolicy(Qt::NoContextMenu);
    keyLayout->addWidget(
        FormField::labelled(QStringLiteral("Paste your organization admin key"), m_key, m_keyPanel));
    const OnboardingContent::KeyFields keyTexts = OnboardingContent::keyFields(*m_flow);
    keyLayout->addWidget(symbolLine(QStringLiteral("lock.fill"), keyTexts.keychainLabel, Tone::accent,
                                    Ink::secondary, m_keyPanel));
    auto* keyButtons = BlockParts::row(Theme::kSpaceS);
    QPushButton* paste = BlockParts::button(keyTexts.pasteTitle, Theme::ButtonRole::standard, m_keyPanel);
    paste->setObjectName(QStringLiteral("pasteKeyButton"));
    keyButtons->addWidget(paste);
    m_test = BlockParts::button(QString(), Theme::ButtonRole::standard, m_keyPanel);
    m_test->setObjectName(QStringLiteral("testConnectionButton"));
    keyButtons->addWidget(m_test);
    m_progress = new QProgressBar(m_keyPanel);
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    m_progress->setFixedSize(48, 6);
    m_progress->setAccessibleName(QStringLiteral("Checking the official endpoint"));
    keyButtons->addWidget(m_progress);
    m_cancelTest = BlockParts::button(QStringLiteral("Cancel"), Theme::ButtonRole::plain, m_keyPanel);
    m_cancelTest->setObjectName(QStringLiteral("cancelTestButton"));
    keyButtons->addWidget(m_cancelTest);
    keyButtons->addStretch(1);
    keyLayout->addLayout(keyButtons);
    m_testMessage =
        BlockParts::text(QString(), Theme::kBody, QFont::Medium, Ink::tone, m_keyPanel, Tone::muted, 4);
    m_testMessage->setObjectName(QStringLiteral("testMessage"));
    keyLayout->addWidget(m_testMessage);
    keyLayout->addWidget(BlockParts::text(keyTexts.note, Theme::kFootnote, QFont::Normal, Ink::secondary,
                                          m_keyPanel, Tone::muted, 4));
    QPushButton* manual = BlockParts::button(keyTexts.manualLink, Theme::ButtonRole::link, m_keyPanel);
    manual->setObjectName(QStringLiteral("setUpManuallyButton"));
    keyLayout->addWidget(manual, 0, Qt::AlignLeft);
    layout->addWidget(m_keyPanel);
    connect(m_key, &QLineEdit::textEdited, m_flow, &OnboardingFlow::setAPIKey);
    connect(paste, &QPushButton::clicked, this, [this] {
        const QString clip = QGuiApplication::clipboard()->text();
        if (!clip.isEmpty()) {
            m_key->setText(clip);
            m_flow->setAPIKey(clip);
        }
    });
    connect(m_test, &QPushButton::clicked, m_flow, &OnboardingFlow::testConnection);
    connect(m_cancelTest, &QPushButton::clicked, m_flow, &OnboardingFlow::cancelConnectionTest);
    connect(manual, &QPushButton::clicked, this,
            [this] { m_flow->selectConnectionMode(ConnectionMode::manual); });

    // The limits typed by hand.
    m_manualPanel = BlockParts::card(page);
    m_manualPanel->setObjectName(QStringLiteral("manualFields"));
    auto* manualLayout = static_cast<QVBoxLayout*>(m_manualPanel->layout());
    const OnboardingContent::ManualFields manualTexts = OnboardingContent::manualFields(*m_flow);
    auto* titleRow = BlockParts::row(Theme::kSpaceM);
    titleRow->addWidget(
        BlockParts::text(manualTexts.title, Theme::kHeadline, QFont::DemiBold, Ink::primary, m_manualPanel),
        1);
    m_unit = new QComboBox(m_manualPanel);
    m_unit->setObjectName(QStringLiteral("manualUnit"));
    m_unit->setAccessibleName(manualTexts.unitTitle);
    for (const UsageUnit unit : manualTexts.units) {
        m_unit->addItem(unit.capitalizedTitle(), unit.rawValue());
    }
    ElidedLabel* unitLabel = BlockParts::text(manualTexts.unitTitle, Theme::kFootnote, QFont::DemiBold,
                                              Ink::secondary, m_manualPanel);
    unitLabel->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    unitLabel->setBuddy(m_unit);
    titleRow->addWidget(unitLabel);
    titleRow->addWidget(m_unit);
    manualLayout->addLayout(titleRow);
    manualLayout->addWidget(BlockParts::text(manualTexts.line, Theme::kFootnote, QFont::Normal,
                                             Ink::secondary, m_manualPanel, Tone::muted, 3));
    m_shortPair = new ManualEntryPair(manualTexts.shortTerm, m_manualPanel);
    m_shortPair->setObjectName(QStringLiteral("currentWindow"));
    manualLayout->addWidget(m_shortPair);
    m_weeklyPair = new ManualEntryPair(manualTexts.weekly, m_manualPanel);
    m_weeklyPair->setObjectName(QStringLiteral("weeklyWindow"));
    manualLayout->addWidget(m_weeklyPair);
    m_previews = new QWidget(m_manualPanel);
    m_previews->setObjectName(QStringLiteral("previews"));
    auto* previewLayout = new QVBoxLayout(m_previews);
    previewLayout->setContentsMargins(0, 0, 0, 0);
    previewLayout->setSpacing(2);
    for (int i = 0; i < 2; ++i) {
        previewLayout->addWidget(
            BlockParts::text(QString(), Theme::kBody, QFont::Medium, Ink::primary, m_previews));
    }
    manualLayout->addWidget(m_previews);
    const auto toggleRow = [&](const QString& hint, ToggleSwitch*& toggle) {
        auto* row = new QWidget(m_manualPanel);
        auto* rowLayout = new QVBoxLayout(row);
        rowLayout->setContentsMargins(0, 0, 0, 0);
        rowLayout->setSpacing(Theme::kSpaceXS);
        toggle = new ToggleSwitch(QString(), row);
        rowLayout->addWidget(toggle);
        rowLayout->addWidget(
            BlockParts::text(hint, Theme::kFootnote, QFont::Normal, Ink::secondary, row, Tone::muted, 2));
        manualLayout->addWidget(row);
        return row;
    };
    m_overageRow = toggleRow(manualTexts.overageHint, m_overage);
    m_overdueRow = toggleRow(manualTexts.overdueHint, m_overdue);
    manualLayout->addWidget(symbolLine(QStringLiteral("info.circle"), manualTexts.footnote, Tone::muted,
                                       Ink::secondary, m_manualPanel));
    layout->addWidget(m_manualPanel);

    const auto bindPair = [this](ManualEntryPair* pair, void (OnboardingFlow::*used)(const QString&),
                                 void (OnboardingFlow::*limit)(const QString&),
                                 void (OnboardingFlow::*mode)(OnboardingResetMode),
                                 void (OnboardingFlow::*date)(Timestamp)) {
        connect(pair->usedField(), &QLineEdit::textEdited, m_flow, used);
        connect(pair->limitField(), &QLineEdit::textEdited, m_flow, limit);
        connect(pair->resetPicker(), &QComboBox::activated, this, [this, pair, mode](int index) {
            if (const auto chosen =
                    OnboardingResetMode::fromRawValue(pair->resetPicker()->itemData(index).toString())) {
                (m_flow->*mode)(*chosen);
            }
        });
        connect(pair->datePicker(), &QDateTimeEdit::dateTimeChanged, this,
                [this, date](const QDateTime& moment) {
                    if (!m_syncing) {
                        (m_flow->*date)(Timestamp::fromDateTime(moment));
                    }
                });
    };
    bindPair(m_shortPair, &OnboardingFlow::setShortUsed, &OnboardingFlow::setShortLimit,
             &OnboardingFlow::setShortResetMode, &OnboardingFlow::setShortResetDate);
    bindPair(m_weeklyPair, &OnboardingFlow::setWeeklyUsed, &OnboardingFlow::setWeeklyLimit,
             &OnboardingFlow::setWeeklyResetMode, &OnboardingFlow::setWeeklyResetDate);
    connect(m_unit, &QComboBox::activated, this, [this](int index) {
        if (const auto unit = UsageUnit::fromRawValue(m_unit->itemData(index).toString())) {
            m_flow->setManualUnit(*unit);
        }
    });
    connect(m_overage, &ToggleSwitch::toggled, this, [this](bool on) {
        if (!m_syncing) {
            m_flow->setManualOverageConfirmed(on);
        }
    });
    connect(m_overdue, &ToggleSwitch::toggled, this, [this](bool on) {
        if (!m_syncing) {
            m_flow->setOverdueResetConfirmed(on);
        }
    });

    m_sampleLine =
        symbolLine(QStringLiteral("checkmark.shield.fill"), QString(), Tone::positive, Ink::secondary, page);
    m_sampleLine->setObjectName(QStringLiteral("sampleLine"));
    layout->addWidget(m_sampleLine);

    m_detected = BlockParts::card(page, Tone::accent);
    m_detected->setObjectName(QStringLiteral("detectedSummary"));
    auto* detectedLayout = static_cast<QVBoxLayout*>(m_detected->layout());
    detectedLayout->addLayout(BlockParts::symbolHeading(
        QStringLiteral("wand.and.stars"), QStringLiteral("Automatically detected"), m_detected));
    m_detectedName = BlockParts::text(QString(), Theme::kBody, QFont::DemiBold, Ink::primary, m_detected);
    detectedLayout->addWidget(m_detectedName);
    m_detectedLine = BlockParts::text(QString(), Theme::kFootnote, QFont::Normal, Ink::secondary, m_detected,
                                      Tone::muted, 2);
    detectedLayout->addWidget(m_detectedLine);
    layout->addWidget(m_detected);

    m_connectionError =
        symbolLine(QStringLiteral("exclamationmark.circle.fill"), QString(), Tone::critical, Ink::tone, page);
    m_connectionError->setObjectName(QStringLiteral("connectionError"));
    layout->addWidget(m_connectionError);
    layout->addStretch(1);
    return frame;
}

QWidget* OnboardingView::buildReady() {
    QVBoxLayout* layout = nullptr;
    QWidget* frame = pageFrame(layout);
    QWidget* page = layout->parentWidget();
    page->setObjectName(QStringLiteral("readyPage"));
    layout->addSpacing(Theme::kSpaceXL);
    m_readyTile = BlockParts::card(page, Tone::positive);
    m_readyTile->setFixedSize(88, 88);
    static_cast<QVBoxLayout*>(m_readyTile->layout())
        ->addWidget(BlockParts::icon(QStringLiteral("checkmark"), 40, m_readyTile, Tone::positive), 0,
                    Qt::AlignCenter);
    layout->addWidget(m_readyTile, 0, Qt::AlignHCenter);
    m_readyHeading = heading(QString(), page);
    m_readyHeading->setAlignment(Qt::AlignHCenter);
    layout->addWidget(m_readyHeading);
    m_readyText = paragraph(QString(), page);
    m_readyText->setAlignment(Qt::AlignHCenter);
    layout->addWidget(m_readyText);
    auto* summary = BlockParts::card(page);
    summary->setObjectName(QStringLiteral("readySummary"));
    summary->setFixedWidth(520);
    auto* row = BlockParts::row(Theme::kSpaceM);
    static_cast<QVBoxLayout*>(summary->layout())->addLayout(row);
    m_readyLogoHolder = logoHolder(summary, 28);
    row->addWidget(m_readyLogoHolder);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    m_readyName = BlockParts::text(QString(), Theme::kBody, QFont::DemiBold, Ink::primary, summary);
    texts->addWidget(m_readyName);
    m_readySummary = BlockParts::text(QString(), Theme::kFootnote, QFont::Normal, Ink::secondary, summary);
    texts->addWidget(m_readySummary);
    row->addLayout(texts, 1);
    m_readyTag =
        BlockParts::text(QString(), Theme::kCaption, QFont::DemiBold, Ink::tone, summary, Tone::positive);
    m_readyTag->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    row->addWidget(m_readyTag);
    layout->addWidget(summary, 0, Qt::AlignHCenter);
    layout->addStretch(1);
    return frame;
}

// ---- drawing the flow ----

void OnboardingView::sync() {
    m_syncing = true;
    m_shown = OnboardingContent::make(*m_flow);
    const OnboardingContent& c = m_shown;
    m_step->setFullText(c.header.step);
    m_capsules->setStep(c.header.filledCapsules, c.header.capsulesLabel);
    if (m_pages->currentIndex() != c.page.rawValue()) {
        m_pages->setCurrentIndex(c.page.rawValue());
    }

    // The welcome page has its own buttons and no footer.
    m_footer->setVisible(c.page != OnboardingPage::welcome);
    m_footerLine->setVisible(c.page != OnboardingPage::welcome);
    m_back->setVisible(c.footer.back.has_value());
    if (c.footer.back) {
        m_back->setEnabled(c.footer.back->enabled);
    }
    m_saveForLater->setVisible(c.footer.saveForLater.has_value());
    if (c.footer.saveForLater) {
        m_saveForLater->setEnabled(c.footer.saveForLater->enabled);
    }
    QPushButton* returnButton = nullptr;
    for (qsizetype i = 0; i < m_trailing.size(); ++i) {
        QPushButton* button = m_trailing.at(i);
        const bool shown = i < c.footer.trailing.size();
        button->setVisible(shown);
        button->setDefault(false);
        if (!shown) {
            continue;
        }
        const OnboardingContent::Button& content = c.footer.trailing.at(i);
        button->setText(content.title);
        button->setAccessibleName(content.title);
        button->setEnabled(content.enabled);
        Theme::setButtonRole(button,
                             content.isDefault ? Theme::ButtonRole::primary : Theme::ButtonRole::standard);
        if (content.isDefault) {
            returnButton = button;
        }
    }

    if (const auto& welcome = c.welcome) {
        m_welcomeHeading->setFullText(welcome->heading);
        m_welcomeText->setFullText(welcome->text);
        m_begin->setText(welcome->buttons.first().title);
        m_begin->setAccessibleName(welcome->buttons.first().title);
        m_startOver->setVisible(welcome->buttons.size() == 4);
        returnButton = m_begin;
    }
    m_begin->setDefault(c.welcome.has_value());
    if (const auto& provider = c.provider) {
        for (qsizetype i = 0; i < m_providerCards.size(); ++i) {
            m_providerCards.at(i)->setSelected(provider->cards.at(i).isSelected);
        }
    }
    // The fields follow the flow on every page: a new provider or another subscription
    // empties them while they are out of sight.
    if (m_label->text() != m_flow->label()) {
        m_label->setText(m_flow->label());
    }
    if (m_key->text() != m_flow->apiKey()) {
        m_key->setText(m_flow->apiKey());
    }
    if (const auto& name = c.name) {
        m_label->setPlaceholderText(name->placeholder);
        m_nameHint->setFullText(name->hint);
        setMessage(m_nameError, name->validation);
        m_duplicate->setVisible(name->duplicateText.has_value());
        m_preview->setFullText(name->preview);
        showLogo(m_previewLogo, m_flow->provider(), 24);
    }
    if (const auto& connection = c.connection) {
        for (qsizetype i = 0; i < m_modeCards.size(); ++i) {
            SelectableTile* tile = m_modeCards.at(i);
            const bool shown = i < connection->cards.size();
            tile->setVisible(shown);
            if (shown) {
                const OnboardingContent::ChoiceCard& card = connection->cards.at(i);
                tile->setContent(m_flow->provider(), card.title, card.subtitle);
                tile->setSymbol(card.symbol);
                tile->setBadge(card.badge.value_or(QString()));
                tile->setSelected(card.isSelected);
            }
        }
        m_keyPanel->setVisible(connection->keyFields.has_value());
        if (const auto& key = connection->keyFields) {
            if (m_key->text() != m_flow->apiKey()) {
                m_key->setText(m_flow->apiKey());
            }
            m_test->setText(key->test.title);
            m_test->setAccessibleName(key->test.title);
            m_test->setEnabled(key->test.enabled);
            m_progress->setVisible(key->showsProgress);
            m_cancelTest->setVisible(key->cancelTitle.has_value());
            m_testMessage->setVisible(key->message.has_value());
            m_testMessage->setStyle(Theme::kBody, QFont::Medium, ElidedLabel::Ink::tone,
                                    key->messageIsPositive ? Tone::positive : Tone::muted);
            m_testMessage->setFullText(key->message.value_or(QString()));
        }
        m_manualPanel->setVisible(connection->manualFields.has_value());
        if (const auto& manual = connection->manualFields) {
            m_unit->setCurrentIndex(m_unit->findData(m_flow->manualUnit().rawValue()));
            m_shortPair->setContent(manual->shortTerm);
            m_weeklyPair->setContent(manual->weekly);
            const auto fill = [](ManualEntryPair* pair, const QString& used, const QString& limit,
                                 OnboardingResetMode mode, Timestamp date) {
                if (pair->usedField()->text() != used) {
                    pair->usedField()->setText(used);
                }
                if (pair->limitField()->text() != limit) {
                    pair->limitField()->setText(limit);
                }
                pair->resetPicker()->setCurrentIndex(pair->resetPicker()->findData(mode.rawValue()));
                const QDateTime shown = date.clamped().toDateTime().toLocalTime();
                if (pair->datePicker()->dateTime() != shown) {
                    pair->datePicker()->setDateTime(shown);
                }
            };
            fill(m_shortPair, m_flow->shortUsed(), m_flow->shortLimit(), m_flow->shortResetMode(),
                 m_flow->shortResetDate());
            fill(m_weeklyPair, m_flow->weeklyUsed(), m_flow->weeklyLimit(), m_flow->weeklyResetMode(),
                 m_flow->weeklyResetDate());
            m_previews->setVisible(!manual->previews.isEmpty());
            const QList<ElidedLabel*> lines = m_previews->findChildren<ElidedLabel*>();
            for (qsizetype i = 0; i < lines.size(); ++i) {
                lines.at(i)->setVisible(i < manual->previews.size());
                lines.at(i)->setFullText(manual->previews.value(i));
            }
            m_overageRow->setVisible(manual->overageToggle.has_value());
            m_overage->setText(manual->overageToggle.value_or(QString()));
            m_overage->setAccessibleName(m_overage->text());
            m_overage->setChecked(m_flow->manualOverageConfirmed());
            m_overdueRow->setVisible(manual->overdueToggle.has_value());
            m_overdue->setText(manual->overdueToggle.value_or(QString()));
            m_overdue->setAccessibleName(m_overdue->text());
            m_overdue->setChecked(m_flow->overdueResetConfirmed());
        }
        setMessage(m_sampleLine, connection->sampleLine);
        m_detected->setVisible(connection->detected.has_value());
        if (const auto& detected = connection->detected) {
            m_detectedName->setVisible(detected->name.has_value());
            m_detectedName->setFullText(detected->name.value_or(QString()));
            m_detectedLine->setFullText(detected->signalLine);
        }
        setMessage(m_connectionError, connection->validation);
    }
    if (const auto& ready = c.ready) {
        m_readyHeading->setFullText(ready->heading);
        m_readyText->setFullText(ready->text);
        m_readyName->setFullText(ready->name);
        m_readySummary->setFullText(ready->summary);
        m_readyTag->setFullText(ready->tag);
        showLogo(m_readyLogoHolder, m_flow->provider(), 28);
    }
    if (returnButton) {
        returnButton->setDefault(true);
    }
    m_syncing = false;
}

void OnboardingView::showPage(OnboardingPage page) {
    // The flow's changed() that follows redraws the page's content.
    m_pages->setCurrentIndex(page.rawValue());
    QWidget* shown = m_pages->currentWidget();
    if (m_reduceMotion || !isVisible()) {
        return;
    }
    // A short fade in; the ready page's tile also grows into place.
    auto* fade = new QGraphicsOpacityEffect(shown);
    shown->setGraphicsEffect(fade);
    auto* animation = new QPropertyAnimation(fade, "opacity", shown);
    animation->setDuration(kTransitionMilliseconds);
    animation->setEasingCurve(QEasingCurve::InOutQuad);
    animation->setStartValue(0.0);
    animation->setEndValue(1.0);
    connect(animation, &QPropertyAnimation::finished, shown, [shown] { shown->setGraphicsEffect(nullptr); });
    animation->start(QAbstractAnimation::DeleteWhenStopped);
    if (page == OnboardingPage::ready) {
        auto* grow = new QVariantAnimation(m_readyTile);
        grow->setDuration(kTransitionMilliseconds * 2);
        grow->setEasingCurve(QEasingCurve::OutBack);
        grow->setStartValue(44);
        grow->setEndValue(88);
        connect(
            grow, &QVariantAnimation::valueChanged, m_readyTile,
            [tile = m_readyTile](const QVariant& side) { tile->setFixedSize(side.toInt(), side.toInt()); });
        grow->start(QAbstractAnimation::DeleteWhenStopped);
    }
}

void OnboardingView::focusField(OnboardingFocusField field) {
    QWidget* target = nullptr;
    switch (field) {
    case OnboardingFocusField::label:
        target = m_label;
        break;
    case OnboardingFocusField::apiKey:
        target = m_key;
        break;
    case OnboardingFocusField::shortUsed:
        target = m_shortPair->usedField();
        break;
    case OnboardingFocusField::shortLimit:
        target = m_shortPair->limitField();
        break;
    case OnboardingFocusField::weeklyUsed:
        target = m_weeklyPair->usedField();
        break;
    case OnboardingFocusField::weeklyLimit:
        target = m_weeklyPair->limitField();
        break;
    }
    // After the page is on screen, so the field can take it.
    QMetaObject::invokeMethod(
        this, [target] { target->setFocus(Qt::OtherFocusReason); }, Qt::QueuedConnection);
}
