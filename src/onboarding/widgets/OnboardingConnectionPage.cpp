#include "onboarding/widgets/OnboardingConnectionPage.h"

#include "onboarding/OnboardingFlow.h"
#include "onboarding/widgets/ManualEntryPair.h"
#include "onboarding/widgets/OnboardingParts.h"
#include "ui/BlockParts.h"
#include "ui/BoundText.h"
#include "ui/FormField.h"
#include "ui/SelectableTile.h"
#include "ui/Theme.h"
#include "ui/ToggleSwitch.h"

#include <QClipboard>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QGuiApplication>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

using namespace OnboardingParts;
using Ink = ElidedLabel::Ink;

OnboardingConnectionPage::OnboardingConnectionPage(OnboardingFlow* flow, QWidget* parent)
    : QWidget(parent)
    , m_flow(flow) {
    setObjectName(QStringLiteral("connectionPage"));
    QVBoxLayout* layout = pageLayout(this);
    layout->addWidget(heading(QStringLiteral("How should we keep this account up to date?"), this));
    layout->addWidget(paragraph(QStringLiteral("Choose the clearest source for your subscription."), this));
    buildModeCards(layout);
    layout->addWidget(buildKeyPanel());
    layout->addWidget(buildManualPanel());
    bindManualPanel();
    m_sampleLine =
        symbolLine(QStringLiteral("checkmark.shield.fill"), QString(), Tone::positive, Ink::secondary, this);
    m_sampleLine->setObjectName(QStringLiteral("sampleLine"));
    layout->addWidget(m_sampleLine);
    layout->addWidget(buildDetected());
    m_connectionError =
        symbolLine(QStringLiteral("exclamationmark.circle.fill"), QString(), Tone::critical, Ink::tone, this);
    m_connectionError->setObjectName(QStringLiteral("connectionError"));
    layout->addWidget(m_connectionError);
    layout->addStretch(1);
}

void OnboardingConnectionPage::buildModeCards(QVBoxLayout* layout) {
    for (int i = 0; i < 3; ++i) {
        auto* tile = new SelectableTile(AIProvider::openAI, QString(), QString(), this);
        tile->setObjectName(QStringLiteral("modeCard%1").arg(i));
        tile->setShowsEmptyCircle(true);
        connect(tile, &SelectableTile::clicked, this, [this, i] {
            if (i < m_cardModes.size()) {
                m_flow->selectConnectionMode(m_cardModes.at(i));
            }
        });
        layout->addWidget(tile);
        m_modeCards.append(tile);
    }
}

QWidget* OnboardingConnectionPage::buildKeyPanel() {
    // The key.
    m_keyPanel = BlockParts::card(this);
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
        BlockParts::text(QString(), Theme::kBody, QFont::Medium, Ink::tone, m_keyPanel, Tone::muted);
    m_testMessage->setObjectName(QStringLiteral("testMessage"));
    keyLayout->addWidget(m_testMessage);
    keyLayout->addWidget(BlockParts::text(keyTexts.note, Theme::kFootnote, QFont::Normal, Ink::secondary,
                                          m_keyPanel, Tone::muted));
    QPushButton* manual = BlockParts::button(keyTexts.manualLink, Theme::ButtonRole::link, m_keyPanel);
    manual->setObjectName(QStringLiteral("setUpManuallyButton"));
    keyLayout->addWidget(manual, 0, Qt::AlignLeft);
    BoundText::bind(m_key, m_flow, [flow = m_flow](const QString& key) { flow->setAPIKey(key); });
    connect(paste, &QPushButton::clicked, this, [this] {
        const QString clip = QGuiApplication::clipboard()->text();
        if (!clip.isEmpty()) {
            m_key->setText(clip);
        }
    });
    connect(m_test, &QPushButton::clicked, m_flow, &OnboardingFlow::testConnection);
    connect(m_cancelTest, &QPushButton::clicked, m_flow, &OnboardingFlow::cancelConnectionTest);
    connect(manual, &QPushButton::clicked, this,
            [this] { m_flow->selectConnectionMode(ConnectionMode::manual); });

    return m_keyPanel;
}

QWidget* OnboardingConnectionPage::buildManualPanel() {
    // The limits typed by hand.
    m_manualPanel = BlockParts::card(this);
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
                                             Ink::secondary, m_manualPanel, Tone::muted));
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
            BlockParts::text(hint, Theme::kFootnote, QFont::Normal, Ink::secondary, row, Tone::muted));
        manualLayout->addWidget(row);
        return row;
    };
    m_overageRow = toggleRow(manualTexts.overageHint, m_overage);
    m_overdueRow = toggleRow(manualTexts.overdueHint, m_overdue);
    manualLayout->addWidget(symbolLine(QStringLiteral("info.circle"), manualTexts.footnote, Tone::muted,
                                       Ink::secondary, m_manualPanel));
    return m_manualPanel;
}

void OnboardingConnectionPage::bindManualPanel() {
    const auto bindPair = [this](ManualEntryPair* pair, void (OnboardingFlow::*used)(const QString&),
                                 void (OnboardingFlow::*limit)(const QString&),
                                 void (OnboardingFlow::*mode)(OnboardingResetMode),
                                 void (OnboardingFlow::*date)(Timestamp)) {
        BoundText::bind(pair->usedField(), m_flow,
                        [flow = m_flow, used](const QString& text) { (flow->*used)(text); });
        BoundText::bind(pair->limitField(), m_flow,
                        [flow = m_flow, limit](const QString& text) { (flow->*limit)(text); });
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
}

QWidget* OnboardingConnectionPage::buildDetected() {
    m_detected = BlockParts::card(this, Tone::accent);
    m_detected->setObjectName(QStringLiteral("detectedSummary"));
    auto* detectedLayout = static_cast<QVBoxLayout*>(m_detected->layout());
    detectedLayout->addLayout(BlockParts::symbolHeading(
        QStringLiteral("wand.and.stars"), QStringLiteral("Automatically detected"), m_detected));
    m_detectedName = BlockParts::text(QString(), Theme::kBody, QFont::DemiBold, Ink::primary, m_detected);
    detectedLayout->addWidget(m_detectedName);
    m_detectedLine =
        BlockParts::text(QString(), Theme::kFootnote, QFont::Normal, Ink::secondary, m_detected, Tone::muted);
    detectedLayout->addWidget(m_detectedLine);
    return m_detected;
}

// ---- drawing ----

void OnboardingConnectionPage::sync(const OnboardingContent::ConnectionPage& connection) {
    m_syncing = true;
    m_cardModes = connection.cardModes;
    for (qsizetype i = 0; i < m_modeCards.size(); ++i) {
        SelectableTile* tile = m_modeCards.at(i);
        const bool shown = i < connection.cards.size();
        tile->setVisible(shown);
        if (shown) {
            const OnboardingContent::ChoiceCard& card = connection.cards.at(i);
            tile->setContent(m_flow->provider(), card.title, card.subtitle);
            tile->setSymbol(card.symbol);
            tile->setBadge(card.badge.value_or(QString()));
            tile->setSelected(card.isSelected);
        }
    }
    m_keyPanel->setVisible(connection.keyFields.has_value());
    if (connection.keyFields) {
        syncKeyPanel(*connection.keyFields);
    }
    m_manualPanel->setVisible(connection.manualFields.has_value());
    if (connection.manualFields) {
        syncManualPanel(*connection.manualFields);
    }
    setMessage(m_sampleLine, connection.sampleLine);
    m_detected->setVisible(connection.detected.has_value());
    if (const auto& detected = connection.detected) {
        m_detectedName->setVisible(detected->name.has_value());
        m_detectedName->setFullText(detected->name.value_or(QString()));
        m_detectedLine->setFullText(detected->signalLine);
    }
    setMessage(m_connectionError, connection.validation);
    m_syncing = false;
}

void OnboardingConnectionPage::followKey() {
    BoundText::show(m_key, m_flow->apiKey());
}

void OnboardingConnectionPage::syncKeyPanel(const OnboardingContent::KeyFields& key) {
    followKey();
    m_test->setText(key.test.title);
    m_test->setAccessibleName(key.test.title);
    m_test->setEnabled(key.test.enabled);
    m_progress->setVisible(key.showsProgress);
    m_cancelTest->setVisible(key.cancelTitle.has_value());
    m_testMessage->setVisible(key.message.has_value());
    m_testMessage->setStyle(Theme::kBody, QFont::Medium, ElidedLabel::Ink::tone,
                            key.messageIsPositive ? Tone::positive : Tone::muted);
    m_testMessage->setFullText(key.message.value_or(QString()));
}

void OnboardingConnectionPage::syncManualPanel(const OnboardingContent::ManualFields& manual) {
    m_unit->setCurrentIndex(m_unit->findData(m_flow->manualUnit().rawValue()));
    m_shortPair->setContent(manual.shortTerm);
    m_weeklyPair->setContent(manual.weekly);
    const auto fill = [](ManualEntryPair* pair, const QString& used, const QString& limit,
                         OnboardingResetMode mode, Timestamp date) {
        BoundText::show(pair->usedField(), used);
        BoundText::show(pair->limitField(), limit);
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
    m_previews->setVisible(!manual.previews.isEmpty());
    const QList<ElidedLabel*> lines = m_previews->findChildren<ElidedLabel*>();
    for (qsizetype i = 0; i < lines.size(); ++i) {
        lines.at(i)->setVisible(i < manual.previews.size());
        lines.at(i)->setFullText(manual.previews.value(i));
    }
    m_overageRow->setVisible(manual.overageToggle.has_value());
    m_overage->setText(manual.overageToggle.value_or(QString()));
    m_overage->setAccessibleName(m_overage->text());
    m_overage->setChecked(m_flow->manualOverageConfirmed());
    m_overdueRow->setVisible(manual.overdueToggle.has_value());
    m_overdue->setText(manual.overdueToggle.value_or(QString()));
    m_overdue->setAccessibleName(m_overdue->text());
    m_overdue->setChecked(m_flow->overdueResetConfirmed());
}

QWidget* OnboardingConnectionPage::field(OnboardingFocusField field) const {
    switch (field) {
    case OnboardingFocusField::apiKey:
        return m_key;
    case OnboardingFocusField::shortUsed:
        return m_shortPair->usedField();
    case OnboardingFocusField::shortLimit:
        return m_shortPair->limitField();
    case OnboardingFocusField::weeklyUsed:
        return m_weeklyPair->usedField();
    case OnboardingFocusField::weeklyLimit:
        return m_weeklyPair->limitField();
    case OnboardingFocusField::label:
        break;
    }
    return nullptr;
}
