#include "editor/widgets/AccountEditorView.h"

#include "editor/AccountEditorForm.h"
#include "editor/widgets/EditorParts.h"
#include "editor/widgets/ManualHorizonEditor.h"
#include "ui/BlockParts.h"
#include "ui/BoundText.h"
#include "ui/CardGrid.h"
#include "ui/FormField.h"
#include "ui/SectionCard.h"
#include "ui/SelectableTile.h"
#include "ui/Theme.h"
#include "ui/ToggleSwitch.h"

#include <QComboBox>
#include <QDateEdit>
#include <QDateTimeEdit>
#include <QDesktopServices>
#include <QGridLayout>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;
using namespace EditorParts;

constexpr int kAuthTileCount = 3;
} // namespace

AccountEditorView::AccountEditorView(AccountLifecycle* lifecycle, ProviderAccount* existing,
                                     std::function<void()> onSave, QWidget* parent)
    : QDialog(parent, Qt::Sheet)
    , m_form(new AccountEditorForm(lifecycle, existing, std::move(onSave), this)) {
    setObjectName(QStringLiteral("accountEditor"));
    setWindowModality(Qt::WindowModal);
    setSizeGripEnabled(true);
    m_content = AccountEditorContent::make(m_form->fields(), !m_form->isNew());
    setWindowTitle(m_content.title);
    setAccessibleName(m_content.title);
    resize(680, 780);
    setMinimumSize(520, 420);
    build();
    sync();
    connect(m_form, &AccountEditorForm::changed, this, &AccountEditorView::sync);
}

AccountEditorView::~AccountEditorView() = default;

void AccountEditorView::build() {
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->setSpacing(0);

    outer->addWidget(sheetHeader(m_content.title, m_title, this));

    m_scroll = new QScrollArea(this);
    // It takes the focus for scrolling by keyboard; a screen reader names it by the sheet.
    m_scroll->setAccessibleName(m_content.title);
    m_scroll->setWidgetResizable(true);
    m_scroll->setFrameShape(QFrame::NoFrame);
    m_scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_page = new QWidget(m_scroll);
    m_page->setObjectName(QStringLiteral("editorPage"));
    auto* layout = new QVBoxLayout(m_page);
    layout->setContentsMargins(Theme::kSpaceXL, Theme::kSpaceS, Theme::kSpaceXL, Theme::kSpaceXL);
    layout->setSpacing(Theme::kSpaceS);
    m_scroll->setWidget(m_page);
    outer->addWidget(m_scroll, 1);

    buildSubscription(m_page);
    buildAuthentication(m_page);
    buildManual(m_page);
    buildAdvanced(m_page);
    buildBudgets(m_page);

    m_errorRow = errorRow(m_page, m_error);
    layout->addWidget(m_errorRow);
    layout->addStretch(1);

    auto* footer = new QWidget(this);
    footer->setObjectName(QStringLiteral("editorFooter"));
    auto* footerLayout = BlockParts::row(Theme::kSpaceS);
    footer->setLayout(footerLayout);
    footerLayout->setContentsMargins(Theme::kSpaceXL, Theme::kSpaceM, Theme::kSpaceXL, Theme::kSpaceL);
    footerLayout->addStretch(1);
    m_cancel = sheetButton(m_content.cancelTitle, Theme::ButtonRole::standard, QStringLiteral("cancelButton"),
                           footer);
    footerLayout->addWidget(m_cancel);
    m_save = BlockParts::button(m_content.saveTitle, Theme::ButtonRole::primary, footer);
    m_save->setObjectName(QStringLiteral("saveButton"));
    m_save->setDefault(true);
    footerLayout->addWidget(m_save);
    outer->addWidget(BlockParts::separator(this));
    outer->addWidget(footer);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(m_save, &QPushButton::clicked, this, &AccountEditorView::save);
    orderFocus();
}

void AccountEditorView::buildSubscription(QWidget* page) {
    const AccountEditorFields& fields = m_form->fields();
    auto* layout = static_cast<QVBoxLayout*>(page->layout());
    layout->addWidget(BlockParts::text(m_content.subscriptionHeading, Theme::kHeadline, QFont::DemiBold,
                                       Ink::primary, page));
    auto* card = new SectionCard(page);
    layout->addWidget(card);
    card->add(paragraph(m_content.subscriptionText, card));
    m_label = lineEdit(m_content.label.prompt, card);
    m_label->setObjectName(QStringLiteral("accountLabel"));
    m_label->setText(fields.label);
    card->add(FormField::labelled(m_content.label.title, m_label, card));
    BoundText::bind(m_label, this, [this](const QString& text) { m_form->edit().label = text; });

    // Four in a row, or two and two where the sheet is narrow for four whole names.
    QList<QWidget*> buttons;
    int narrowest = 0;
    for (qsizetype i = 0; i < m_content.providers.size(); ++i) {
        const AccountEditorContent::ProviderTile& tile = m_content.providers.at(i);
        auto* button = new SelectableTile(tile.provider, tile.name, QString(), card);
        button->setObjectName(QStringLiteral("providerTile-") + tile.provider.rawValue());
        const AIProvider provider = tile.provider;
        connect(button, &SelectableTile::clicked, this, [this, provider] { m_form->setProvider(provider); });
        m_providerTiles.append(button);
        buttons.append(button);
        narrowest = qMax(narrowest, button->minimumSizeHint().width());
    }
    auto* grid = new CardGrid(narrowest, card);
    grid->setObjectName(QStringLiteral("providerTiles"));
    grid->setCards(buttons);
    grid->setBalanced(Theme::kSpaceS);
    grid->setContentsMargins(0, Theme::kSpaceXS, 0, Theme::kSpaceXS);
    card->add(grid);
}

void AccountEditorView::buildAuthentication(QWidget* page) {
    auto* layout = static_cast<QVBoxLayout*>(page->layout());
    layout->addSpacing(Theme::kSpaceL);
    layout->addWidget(BlockParts::text(m_content.authenticationHeading, Theme::kHeadline, QFont::DemiBold,
                                       Ink::primary, page));
    auto* card = new SectionCard(page);
    layout->addWidget(card);
    card->add(paragraph(m_content.authenticationText, card));

    // One tile a line, so each second line reads whole.
    auto* tiles = new QWidget(card);
    auto* tilesLayout = new QVBoxLayout(tiles);
    tilesLayout->setSpacing(Theme::kSpaceS);
    tilesLayout->setContentsMargins(0, Theme::kSpaceXS, 0, Theme::kSpaceXS);
    for (int i = 0; i < kAuthTileCount; ++i) {
        auto* tile = new SelectableTile(AIProvider::openAI, QString(), QString(), tiles);
        tile->setObjectName(QStringLiteral("authTile%1").arg(i));
        connect(tile, &SelectableTile::clicked, this, [this, i] {
            if (i >= m_content.authTiles.size()) {
                return;
            }
            switch (m_content.authTiles.at(i).action) {
            case ProviderAuthTile::Action::openProviderPage:
                openProviderPage();
                break;
            case ProviderAuthTile::Action::officialAPIKey:
                m_form->chooseOfficialAPIKey();
                break;
            case ProviderAuthTile::Action::manualTracking:
                m_form->chooseManualTracking();
                break;
            }
        });
        tilesLayout->addWidget(tile);
        m_authTiles.append(tile);
    }
    card->add(tiles);

    card->add(buildBrowserPanel(card));

    card->add(buildKeyPanel(card));

    m_testMessage = BlockParts::text(QString(), Theme::kBody, QFont::Normal, Ink::primary, card, Tone::muted);
    m_testMessage->setObjectName(QStringLiteral("testMessage"));
    card->add(m_testMessage);

    m_samplePanel = new QWidget(card);
    auto* sampleLayout = new QVBoxLayout(m_samplePanel);
    sampleLayout->setContentsMargins(0, 0, 0, 0);
    sampleLayout->setSpacing(Theme::kSpaceXS);
    m_sample = new ToggleSwitch(QString(), m_samplePanel);
    m_sample->setObjectName(QStringLiteral("sampleDataToggle"));
    sampleLayout->addWidget(m_sample);
    sampleLayout->addWidget(note(QString(), m_samplePanel));
    card->add(m_samplePanel);
    connect(m_sample, &ToggleSwitch::toggled, this, [this](bool on) {
        if (!m_syncing) {
            m_form->edit().sampleDataEnabled = on;
        }
    });

    card->add(note(m_content.securityNote, card));
}

QWidget* AccountEditorView::buildBrowserPanel(QWidget* parent) {
    // The provider page: a reference link only.
    m_browserPanel = BlockParts::card(parent, Tone::accent);
    m_browserPanel->setObjectName(QStringLiteral("browserPanel"));
    auto* browserLayout = static_cast<QVBoxLayout*>(m_browserPanel->layout());
    auto* browserHeading = BlockParts::row(Theme::kSpaceS);
    browserHeading->addWidget(
        BlockParts::icon(QStringLiteral("safari.fill"), 16, m_browserPanel, Tone::accent));
    m_browserHeading =
        BlockParts::text(QString(), Theme::kBody, QFont::DemiBold, Ink::primary, m_browserPanel);
    browserHeading->addWidget(m_browserHeading, 1);
    browserLayout->addLayout(browserHeading);
    ElidedLabel* browserText = note(QString(), m_browserPanel);
    browserText->setObjectName(QStringLiteral("browserText"));
    browserLayout->addWidget(browserText);
    auto* browserButtons = BlockParts::row(Theme::kSpaceS);
    m_openPage = sheetButton(QString(), Theme::ButtonRole::standard, QStringLiteral("openProviderPageButton"),
                             m_browserPanel);
    browserButtons->addWidget(m_openPage);
    m_browserRefresh = sheetButton(QStringLiteral("Refresh connection"), Theme::ButtonRole::standard,
                                   QStringLiteral("browserRefreshButton"), m_browserPanel);
    browserButtons->addWidget(m_browserRefresh);
    browserButtons->addStretch(1);
    browserLayout->addLayout(browserButtons);
    connect(m_openPage, &QPushButton::clicked, this, &AccountEditorView::openProviderPage);
    connect(m_browserRefresh, &QPushButton::clicked, m_form, &AccountEditorForm::refreshConnection);

    return m_browserPanel;
}

QWidget* AccountEditorView::buildKeyPanel(QWidget* parent) {
    // The key: typed, never shown, never read back.
    m_keyPanel = new QWidget(parent);
    m_keyPanel->setObjectName(QStringLiteral("keyPanel"));
    auto* keyLayout = new QVBoxLayout(m_keyPanel);
    keyLayout->setContentsMargins(0, 0, 0, 0);
    keyLayout->setSpacing(Theme::kSpaceS);
    m_key = new QLineEdit(m_keyPanel);
    m_key->setObjectName(QStringLiteral("apiKeyField"));
    m_key->setEchoMode(QLineEdit::Password);
    m_key->setAttribute(Qt::WA_InputMethodEnabled, false);
    m_key->setContextMenuPolicy(Qt::NoContextMenu);
    QWidget* keyRow = FormField::labelled(QStringLiteral("API key"), m_key, m_keyPanel);
    keyLayout->addWidget(keyRow);
    m_keyNote = note(QString(), m_keyPanel);
    keyLayout->addWidget(m_keyNote);
    auto* keyButtons = BlockParts::row(Theme::kSpaceS);
    m_test = sheetButton(QString(), Theme::ButtonRole::standard, QStringLiteral("testConnectionButton"),
                         m_keyPanel);
    keyButtons->addWidget(m_test);
    m_keyRefresh = sheetButton(QStringLiteral("Refresh connection"), Theme::ButtonRole::standard,
                               QStringLiteral("refreshConnectionButton"), m_keyPanel);
    keyButtons->addWidget(m_keyRefresh);
    m_logout = sheetButton(QStringLiteral("Log out"), Theme::ButtonRole::destructive,
                           QStringLiteral("logOutButton"), m_keyPanel);
    keyButtons->addWidget(m_logout);
    keyButtons->addStretch(1);
    keyLayout->addLayout(keyButtons);
    BoundText::bind(m_key, this, [this](const QString& text) { m_form->edit().secretInput = text; });
    connect(m_test, &QPushButton::clicked, m_form, &AccountEditorForm::testConnection);
    connect(m_keyRefresh, &QPushButton::clicked, m_form, &AccountEditorForm::refreshConnection);
    connect(m_logout, &QPushButton::clicked, m_form, &AccountEditorForm::logoutConnection);

    return m_keyPanel;
}

void AccountEditorView::buildManual(QWidget* page) {
    const AccountEditorFields& fields = m_form->fields();
    auto* layout = static_cast<QVBoxLayout*>(page->layout());
    m_manualSection = new QWidget(page);
    m_manualSection->setObjectName(QStringLiteral("manualSection"));
    auto* sectionLayout = new QVBoxLayout(m_manualSection);
    sectionLayout->setContentsMargins(0, Theme::kSpaceL, 0, 0);
    sectionLayout->setSpacing(Theme::kSpaceS);
    // Built from the content a manual form would show, so its texts are the same.
    AccountEditorFields manual = fields;
    manual.connectionMode = ConnectionMode::manual;
    const AccountEditorContent::ManualSection section = *AccountEditorContent::make(manual, false).manual;
    sectionLayout->addWidget(
        BlockParts::text(section.heading, Theme::kHeadline, QFont::DemiBold, Ink::primary, m_manualSection));
    auto* card = new SectionCard(m_manualSection);
    sectionLayout->addWidget(card);
    m_unit = new QComboBox(card);
    m_unit->setObjectName(QStringLiteral("manualUnit"));
    for (const UsageUnit unit : section.units) {
        m_unit->addItem(unit.title(), unit.rawValue());
    }
    m_unit->setCurrentIndex(m_unit->findData(fields.manualUnit.rawValue()));
    QWidget* unitRow = FormField::labelled(section.unitTitle, m_unit, card);
    unitRow->setMaximumWidth(280);
    card->add(unitRow);
    connect(m_unit, &QComboBox::activated, this, [this](int index) {
        if (const auto unit = UsageUnit::fromRawValue(m_unit->itemData(index).toString())) {
            m_form->edit().manualUnit = *unit;
        }
    });

    const auto bind = [this](ManualHorizonEditor* editor, QString AccountEditorFields::*limit,
                             QString AccountEditorFields::*used, bool AccountEditorFields::*hasReset,
                             Timestamp AccountEditorFields::*reset) {
        const AccountEditorFields& values = m_form->fields();
        editor->limitField()->setText(values.*limit);
        editor->usedField()->setText(values.*used);
        editor->resetPicker()->setDateTime(localTime(values.*reset));
        BoundText::bind(editor->limitField(), this,
                        [this, limit](const QString& text) { m_form->edit().*limit = text; });
        BoundText::bind(editor->usedField(), this,
                        [this, used](const QString& text) { m_form->edit().*used = text; });
        connect(editor->resetSwitch(), &ToggleSwitch::toggled, this, [this, hasReset](bool on) {
            if (!m_syncing) {
                m_form->edit().*hasReset = on;
                sync();
            }
        });
        connect(editor->resetPicker(), &QDateTimeEdit::dateTimeChanged, this,
                [this, reset](const QDateTime& moment) {
                    if (!m_syncing) {
                        m_form->edit().*reset = Timestamp::fromDateTime(moment);
                    }
                });
    };
    m_short = new ManualHorizonEditor(section.shortTerm, card);
    m_short->setObjectName(QStringLiteral("manualShortTerm"));
    card->add(m_short);
    bind(m_short, &AccountEditorFields::manualShortLimit, &AccountEditorFields::manualShortUsed,
         &AccountEditorFields::manualShortHasReset, &AccountEditorFields::manualShortReset);
    m_weekly = new ManualHorizonEditor(section.weekly, card);
    m_weekly->setObjectName(QStringLiteral("manualWeekly"));
    card->add(m_weekly);
    bind(m_weekly, &AccountEditorFields::manualWeeklyLimit, &AccountEditorFields::manualWeeklyUsed,
         &AccountEditorFields::manualWeeklyHasReset, &AccountEditorFields::manualWeeklyReset);
    card->add(note(section.note, card));
    layout->addWidget(m_manualSection);
}

void AccountEditorView::buildAdvanced(QWidget* page) {
    const AccountEditorFields& fields = m_form->fields();
    auto* layout = static_cast<QVBoxLayout*>(page->layout());
    layout->addSpacing(Theme::kSpaceL);
    layout->addWidget(
        BlockParts::text(m_content.advancedHeading, Theme::kHeadline, QFont::DemiBold, Ink::primary, page));
    auto* card = new SectionCard(page);
    layout->addWidget(card);

    const auto field = [&](const AccountEditorContent::TextField& content, const QString& value,
                           const QString& objectName, QString AccountEditorFields::*bound) {
        QLineEdit* edit = lineEdit(content.prompt, card);
        edit->setObjectName(objectName);
        edit->setText(value);
        BoundText::bind(edit, this, [this, bound](const QString& text) { m_form->edit().*bound = text; });
        QWidget* row = FormField::labelled(content.title, edit, card);
        card->add(row);
        return std::pair{edit, row};
    };
    QWidget* identityRow = nullptr;
    std::tie(m_identity, identityRow) =
        field(m_content.identity, fields.identityDetail, QStringLiteral("identityDetail"),
              &AccountEditorFields::identityDetail);
    m_identityTitle = titleOf(identityRow);
    m_modelScope = field(m_content.modelScope, fields.modelScope, QStringLiteral("modelScope"),
                         &AccountEditorFields::modelScope)
                       .first;
    m_agentScope = field(m_content.agentScope, fields.agentScope, QStringLiteral("agentScope"),
                         &AccountEditorFields::agentScope)
                       .first;
    m_roster = field(m_content.agentRoster, fields.agentRosterText, QStringLiteral("agentRoster"),
                     &AccountEditorFields::agentRosterText)
                   .first;
    m_agentCount = field(m_content.agentCount, fields.agentCount, QStringLiteral("agentCount"),
                         &AccountEditorFields::agentCount)
                       .first;
    m_agentCount->setMaximumWidth(120);

    buildRenewal(card);
    card->add(buildDetectedPanel(card));
    m_planOverride = lineEdit(QString(), card);
    m_planOverride->setObjectName(QStringLiteral("planOverride"));
    m_planOverrideRow =
        FormField::labelled(QStringLiteral("Plan / project override (optional)"), m_planOverride, card);
    card->add(m_planOverrideRow);
    for (QLineEdit* plan : {m_detectedOverride, m_planOverride}) {
        plan->setText(fields.planName);
        BoundText::bind(plan, this, [this](const QString& text) { m_form->edit().planName = text; });
    }
    card->add(note(m_content.advancedNote, card));
}

void AccountEditorView::buildRenewal(SectionCard* card) {
    const AccountEditorFields& fields = m_form->fields();
    m_trackRenewal = new ToggleSwitch(m_content.renewalToggleTitle, card);
    m_trackRenewal->setObjectName(QStringLiteral("trackRenewal"));
    card->add(m_trackRenewal);
    connect(m_trackRenewal, &ToggleSwitch::toggled, this, [this](bool on) {
        if (!m_syncing) {
            m_form->edit().hasRenewalDate = on;
            sync();
        }
    });
    m_renewal = new QDateEdit(card);
    m_renewal->setObjectName(QStringLiteral("renewalDate"));
    m_renewal->setCalendarPopup(true);
    m_renewal->setDisplayFormat(QLocale().dateFormat(QLocale::ShortFormat));
    m_renewal->setDateTime(localTime(fields.renewalDate));
    m_renewalRow = FormField::labelled(QStringLiteral("Renews"), m_renewal, card);
    m_renewalRow->setMaximumWidth(260);
    card->add(m_renewalRow);
    connect(m_renewal, &QDateTimeEdit::dateTimeChanged, this, [this](const QDateTime& moment) {
        if (!m_syncing) {
            m_form->edit().renewalDate = Timestamp::fromDateTime(moment);
        }
    });
}

QWidget* AccountEditorView::buildDetectedPanel(QWidget* parent) {
    m_detectedPanel = BlockParts::card(parent, Tone::accent);
    m_detectedPanel->setObjectName(QStringLiteral("detectedPanel"));
    auto* detectedLayout = static_cast<QVBoxLayout*>(m_detectedPanel->layout());
    detectedLayout->addLayout(BlockParts::symbolHeading(
        QStringLiteral("wand.and.stars"), QStringLiteral("Detected automatically"), m_detectedPanel));
    m_detectedName = BlockParts::text(QString(), Theme::kBody, QFont::Medium, Ink::primary, m_detectedPanel);
    detectedLayout->addWidget(m_detectedName);
    m_detectedSignals = note(QString(), m_detectedPanel);
    detectedLayout->addWidget(m_detectedSignals);
    m_detectedOverride = lineEdit(QString(), m_detectedPanel);
    m_detectedOverride->setObjectName(QStringLiteral("detectedPlanOverride"));
    detectedLayout->addWidget(
        FormField::labelled(QStringLiteral("Plan / project override"), m_detectedOverride, m_detectedPanel));
    return m_detectedPanel;
}

void AccountEditorView::buildBudgets(QWidget* page) {
    auto* layout = static_cast<QVBoxLayout*>(page->layout());
    layout->addSpacing(Theme::kSpaceL);
    layout->addWidget(
        BlockParts::text(m_content.budgetsHeading, Theme::kHeadline, QFont::DemiBold, Ink::primary, page));
    auto* card = new SectionCard(page);
    layout->addWidget(card);
    m_budgets = new QPlainTextEdit(card);
    m_budgets->setObjectName(QStringLiteral("agentBudgets"));
    m_budgets->setAccessibleName(m_content.budgetsHeading);
    m_budgets->setAccessibleDescription(m_content.budgetsNote);
    m_budgets->setTabChangesFocus(true);
    m_budgets->setFont(Theme::tabular(m_budgets->font()));
    m_budgets->setFixedHeight(96);
    m_budgets->setPlainText(m_form->fields().agentBudgetText);
    card->add(m_budgets);
    card->add(note(m_content.budgetsNote, card));
    connect(m_budgets, &QPlainTextEdit::textChanged, this, [this] {
        if (!m_syncing) {
            m_form->edit().agentBudgetText = m_budgets->toPlainText();
        }
    });
}

void AccountEditorView::orderFocus() {
    // Reading order, top to bottom; the panels that are hidden are skipped by Qt.
    QList<QWidget*> order{m_label};
    for (SelectableTile* tile : m_providerTiles) {
        order.append(tile);
    }
    for (SelectableTile* tile : m_authTiles) {
        order.append(tile);
    }
    order.append({m_openPage,
                  m_browserRefresh,
                  m_key,
                  m_test,
                  m_keyRefresh,
                  m_logout,
                  m_sample,
                  m_unit,
                  m_short->limitField(),
                  m_short->usedField(),
                  m_short->resetSwitch(),
                  m_short->resetPicker(),
                  m_weekly->limitField(),
                  m_weekly->usedField(),
                  m_weekly->resetSwitch(),
                  m_weekly->resetPicker(),
                  m_identity,
                  m_modelScope,
                  m_agentScope,
                  m_roster,
                  m_agentCount,
                  m_trackRenewal,
                  m_renewal,
                  m_detectedOverride,
                  m_planOverride,
                  m_budgets,
                  m_cancel,
                  m_save});
    for (qsizetype i = 1; i < order.size(); ++i) {
        QWidget::setTabOrder(order.at(i - 1), order.at(i));
    }
}

void AccountEditorView::sync() {
    m_syncing = true;
    const AccountEditorFields& fields = m_form->fields();
    m_content = AccountEditorContent::make(fields, !m_form->isNew());

    for (qsizetype i = 0; i < m_providerTiles.size(); ++i) {
        m_providerTiles.at(i)->setSelected(m_content.providers.at(i).isSelected);
    }
    for (qsizetype i = 0; i < m_authTiles.size(); ++i) {
        SelectableTile* tile = m_authTiles.at(i);
        const bool shown = i < m_content.authTiles.size();
        tile->setVisible(shown);
        if (shown) {
            const ProviderAuthTile& content = m_content.authTiles.at(i);
            tile->setContent(content.logo, content.title, content.subtitle);
            tile->setSelected(content.isSelected);
        }
    }

    m_browserPanel->setVisible(m_content.browserPanel.has_value());
    if (const auto& panel = m_content.browserPanel) {
        m_browserHeading->setFullText(panel->heading);
        m_browserPanel->findChild<ElidedLabel*>(QStringLiteral("browserText"))->setFullText(panel->text);
        m_openPage->setText(panel->openTitle);
        m_openPage->setAccessibleName(panel->openTitle);
        m_browserRefresh->setVisible(panel->showsRefresh);
    }

    m_keyPanel->setVisible(m_content.keyPanel.has_value());
    if (const auto& panel = m_content.keyPanel) {
        titleOf(m_key->parentWidget())->setFullText(panel->fieldTitle);
        m_key->setAccessibleName(panel->fieldTitle);
        m_keyNote->setFullText(panel->note);
        m_test->setText(panel->testTitle);
        m_test->setAccessibleName(panel->testTitle);
        m_test->setEnabled(panel->testEnabled);
        m_keyRefresh->setVisible(panel->showsRefresh);
        m_keyRefresh->setEnabled(panel->refreshEnabled);
        m_logout->setVisible(panel->showsLogout);
    }
    BoundText::show(m_key, fields.secretInput);

    m_testMessage->setVisible(m_content.testMessage.has_value());
    m_testMessage->setFullText(m_content.testMessage.value_or(QString()));

    m_samplePanel->setVisible(m_content.samplePanel.has_value());
    if (const auto& panel = m_content.samplePanel) {
        m_sample->setText(panel->toggleTitle);
        m_sample->setAccessibleName(panel->toggleTitle);
        m_samplePanel->findChildren<ElidedLabel*>().constLast()->setFullText(panel->text);
    }
    m_sample->setChecked(fields.sampleDataEnabled);

    m_manualSection->setVisible(m_content.manual.has_value());
    if (const auto& manual = m_content.manual) {
        m_short->setContent(manual->shortTerm);
        m_weekly->setContent(manual->weekly);
    }

    m_identityTitle->setFullText(m_content.identity.title);
    m_identity->setAccessibleName(m_content.identity.title);
    m_trackRenewal->setChecked(fields.hasRenewalDate);
    m_renewalRow->setVisible(m_content.renewalPickerTitle.has_value());
    m_detectedPanel->setVisible(m_content.detected.has_value());
    if (const auto& detected = m_content.detected) {
        m_detectedName->setFullText(detected->name);
        m_detectedSignals->setFullText(detected->signalLine);
    }
    m_planOverrideRow->setVisible(m_content.planOverride.has_value());
    BoundText::show(m_detectedOverride, fields.planName);
    BoundText::show(m_planOverride, fields.planName);

    m_errorRow->setVisible(m_content.error.has_value());
    m_error->setFullText(m_content.error ? m_content.error->text : QString());
    m_syncing = false;
}

void AccountEditorView::openProviderPage() {
    if (const std::optional<QUrl> page = m_form->openProviderAuth()) {
        QDesktopServices::openUrl(*page);
    }
}

void AccountEditorView::save() {
    if (m_form->save()) {
        accept();
        return;
    }
    sync();
    // The reason stands at the end of the form: bring it into view.
    m_page->layout()->activate();
    m_scroll->ensureWidgetVisible(m_errorRow);
}

void AccountEditorView::done(int result) {
    // The typed key leaves memory with the sheet.
    m_key->clear();
    m_form->edit().secretInput.fill(QChar(0));
    m_form->edit().secretInput.clear();
    QDialog::done(result);
}
