#include "onboarding/widgets/OnboardingView.h"

#include "core/ContentView.h"
#include "onboarding/OnboardingFlow.h"
#include "onboarding/widgets/OnboardingConnectionPage.h"
#include "onboarding/widgets/OnboardingOrbit.h"
#include "onboarding/widgets/OnboardingParts.h"
#include "onboarding/widgets/StepCapsules.h"
#include "ui/BlockParts.h"
#include "ui/BoundText.h"
#include "ui/BrandMark.h"
#include "ui/FormField.h"
#include "ui/SelectableTile.h"
#include "ui/Theme.h"

#include <QGraphicsOpacityEffect>
#include <QGridLayout>
#include <QLineEdit>
#include <QPropertyAnimation>
#include <QPushButton>
#include <QStackedWidget>
#include <QVBoxLayout>
#include <QVariantAnimation>

namespace {
using Ink = ElidedLabel::Ink;
using namespace OnboardingParts;

constexpr int kTransitionMilliseconds = 220;
} // namespace

OnboardingView::OnboardingView(ContentView* content, bool reduceMotion, QWidget* parent)
    : QDialog(parent, Qt::Sheet)
    , m_content(content)
    , m_reduceMotion(reduceMotion) {
    setObjectName(QStringLiteral("onboarding"));
    setWindowTitle(QStringLiteral("Tallyfen"));
    setWindowModality(Qt::WindowModal);
    resize(760, 680);
    setMinimumSize(600, 560);
    m_flow = new OnboardingFlow(
        &content->preferences()->settings(), content->existingLabels(),
        OnboardingFlow::Hooks{
            .createAccount =
                [this](const OnboardingDraft& draft, OnboardingFlow::Hooks::Refusal* refusal) {
                    return m_content->createOnboardingAccount(draft.accountDraft(), refusal);
                },
            .exploreSample = [this] { m_content->createDemoAccounts(); },
            .finish = [this] { m_content->finishOnboarding(); },
            .dismiss = [this] { QDialog::done(QDialog::Accepted); },
            .labelExists = [this](const QString& name) { return m_content->labelExists(name); }},
        this);

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    outer->addWidget(buildHeader());

    m_pages = new QStackedWidget(this);
    m_pages->addWidget(buildWelcome());
    m_pages->addWidget(buildProvider());
    m_pages->addWidget(buildName());
    m_pages->addWidget(buildConnection());
    m_pages->addWidget(buildReady());
    outer->addWidget(m_pages, 1);

    m_footer = buildFooter();
    m_footerLine = BlockParts::separator(this);
    outer->addWidget(m_footerLine);
    outer->addWidget(m_footer);
    connect(m_back, &QPushButton::clicked, m_flow, &OnboardingFlow::back);
    connect(m_saveForLater, &QPushButton::clicked, m_flow, &OnboardingFlow::saveDraftAndDismiss);

    connect(m_flow, &OnboardingFlow::changed, this, &OnboardingView::sync);
    connect(m_flow, &OnboardingFlow::pageChanged, this, &OnboardingView::showPage);
    connect(m_flow, &OnboardingFlow::focusRequested, this, &OnboardingView::focusField);
    sync();
}

// The brand at the left, the step and its capsules at the right.
QWidget* OnboardingView::buildHeader() {
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
    return header;
}

// Back and "Save for later" at the left, the page's own buttons at the right.
QWidget* OnboardingView::buildFooter() {
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
    return footer;
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
    auto* page = new QWidget;
    QVBoxLayout* layout = pageLayout(page);
    QWidget* frame = scrollFrame(page, OnboardingPage::welcome);
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
                                              Ink::secondary, privacy, Tone::muted));
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
    auto* page = new QWidget;
    QVBoxLayout* layout = pageLayout(page);
    QWidget* frame = scrollFrame(page, OnboardingPage::provider);
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
                                        page, Tone::muted);
    m_disclosureText->setVisible(false);
    layout->addWidget(m_disclosureText);
    connect(disclosure, &QPushButton::toggled, m_disclosureText, &QWidget::setVisible);
    layout->addStretch(1);
    return frame;
}

QWidget* OnboardingView::buildName() {
    auto* page = new QWidget;
    QVBoxLayout* layout = pageLayout(page);
    QWidget* frame = scrollFrame(page, OnboardingPage::name);
    page->setObjectName(QStringLiteral("namePage"));
    layout->addWidget(heading(QStringLiteral("What should we call this one?"), page));
    layout->addWidget(paragraph(QStringLiteral("Use a name you’ll recognize in two seconds."), page));
    m_label = new QLineEdit(page);
    m_label->setObjectName(QStringLiteral("accountName"));
    layout->addWidget(FormField::labelled(QStringLiteral("Account name"), m_label, page));
    m_nameHint =
        BlockParts::text(QString(), Theme::kFootnote, QFont::Normal, Ink::secondary, page, Tone::muted);
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
    connect(useAnyway, &QPushButton::clicked, this, [this] { m_flow->useNameAnyway(); });

    auto* preview = BlockParts::card(page);
    preview->setObjectName(QStringLiteral("namePreview"));
    auto* previewLayout = BlockParts::row(Theme::kSpaceS);
    static_cast<QVBoxLayout*>(preview->layout())->addLayout(previewLayout);
    m_previewLogo = logoHolder(preview, 24);
    previewLayout->addWidget(m_previewLogo);
    m_preview = BlockParts::text(QString(), Theme::kBody, QFont::DemiBold, Ink::primary, preview);
    m_preview->setFreeText(true);
    previewLayout->addWidget(m_preview, 1);
    previewLayout->addWidget(
        BlockParts::icon(QStringLiteral("checkmark.circle.fill"), 16, preview, Tone::positive));
    layout->addWidget(preview);
    layout->addStretch(1);
    BoundText::bind(m_label, m_flow, [flow = m_flow](const QString& label) { flow->setLabel(label); });
    return frame;
}

QWidget* OnboardingView::buildConnection() {
    m_connection = new OnboardingConnectionPage(m_flow);
    return scrollFrame(m_connection, OnboardingPage::connection);
}

QWidget* OnboardingView::buildReady() {
    auto* page = new QWidget;
    QVBoxLayout* layout = pageLayout(page);
    QWidget* frame = scrollFrame(page, OnboardingPage::ready);
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
    m_readyName->setFreeText(true);
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

// The footer's buttons; the one Return presses, if any.
QPushButton* OnboardingView::syncFooter(OnboardingPage page, const OnboardingContent::Footer& footer) {
    // The welcome page has its own buttons and no footer.
    m_footer->setVisible(page != OnboardingPage::welcome);
    m_footerLine->setVisible(page != OnboardingPage::welcome);
    m_back->setVisible(footer.back.has_value());
    if (footer.back) {
        m_back->setEnabled(footer.back->enabled);
    }
    m_saveForLater->setVisible(footer.saveForLater.has_value());
    if (footer.saveForLater) {
        m_saveForLater->setEnabled(footer.saveForLater->enabled);
    }
    QPushButton* returnButton = nullptr;
    for (qsizetype i = 0; i < m_trailing.size(); ++i) {
        QPushButton* button = m_trailing.at(i);
        const bool shown = i < footer.trailing.size();
        button->setVisible(shown);
        button->setDefault(false);
        if (!shown) {
            continue;
        }
        const OnboardingContent::Button& content = footer.trailing.at(i);
        button->setText(content.title);
        button->setAccessibleName(content.title);
        button->setEnabled(content.enabled);
        Theme::setButtonRole(button,
                             content.isDefault ? Theme::ButtonRole::primary : Theme::ButtonRole::standard);
        if (content.isDefault) {
            returnButton = button;
        }
    }
    return returnButton;
}

void OnboardingView::sync() {
    m_shown = OnboardingContent::make(*m_flow);
    const OnboardingContent& c = m_shown;
    m_step->setFullText(c.header.step);
    m_capsules->setStep(c.header.filledCapsules, c.header.capsulesLabel);
    if (m_pages->currentIndex() != c.page.rawValue()) {
        m_pages->setCurrentIndex(c.page.rawValue());
    }

    QPushButton* returnButton = syncFooter(c.page, c.footer);

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
    BoundText::show(m_label, m_flow->label());
    m_connection->followKey();
    if (const auto& name = c.name) {
        m_label->setPlaceholderText(name->placeholder);
        m_nameHint->setFullText(name->hint);
        setMessage(m_nameError, name->validation);
        m_duplicate->setVisible(name->duplicateText.has_value());
        m_preview->setFullText(name->preview);
        showLogo(m_previewLogo, m_flow->provider(), 24);
    }
    if (c.connection) {
        m_connection->sync(*c.connection);
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
    QWidget* target = field == OnboardingFocusField::label ? m_label : m_connection->field(field);
    // After the page is on screen, so the field can take it.
    QMetaObject::invokeMethod(
        this, [target] { target->setFocus(Qt::OtherFocusReason); }, Qt::QueuedConnection);
}
