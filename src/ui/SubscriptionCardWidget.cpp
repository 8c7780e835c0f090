#include "ui/SubscriptionCardWidget.h"

#include "ui/BadgeWidget.h"
#include "ui/BlockParts.h"
#include "ui/MeterBar.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/ReflowRow.h"
#include "ui/Theme.h"
#include "ui/TrendChartWidget.h"
#include "views/TrendChartContent.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;

// A section heading: a symbol and a label in secondary type.
QWidget* horizonPanel(const HorizonPanelContent& panel, QWidget* parent) {
    auto* box = new QWidget(parent);
    auto* layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(Theme::kSpaceS);
    layout->addLayout(BlockParts::symbolHeading(panel.symbol, panel.title, box));
    if (panel.rows.isEmpty()) {
        QHBoxLayout* line = BlockParts::row(Theme::kSpaceXS);
        line->addWidget(BlockParts::icon(panel.unavailableSymbol, 14, box));
        line->addWidget(
            BlockParts::text(panel.unavailableTitle, Theme::kFootnote, QFont::Medium, Ink::secondary, box),
            1);
        layout->addLayout(line);
        layout->addWidget(BlockParts::text(panel.unavailableMessage, Theme::kCaption, QFont::Normal,
                                           Ink::secondary, box, Tone::muted));
    }
    for (const HorizonPanelContent::Row& window : panel.rows) {
        QHBoxLayout* top = BlockParts::row(Theme::kSpaceXS);
        top->addWidget(new BadgeWidget(window.dot, box));
        top->addWidget(BlockParts::text(window.title, Theme::kFootnote, QFont::Medium, Ink::primary, box), 1);
        top->addWidget(BlockParts::value(window.used, Theme::kFootnote, QFont::DemiBold, Ink::primary, box));
        layout->addLayout(top);
        if (!window.limitReported) {
            layout->addWidget(
                BlockParts::text(window.noLimit, Theme::kCaption, QFont::Normal, Ink::secondary, box));
        } else {
            auto* bar = new MeterBar(box);
            bar->setValue(window.progress, window.tone);
            layout->addWidget(bar);
            QHBoxLayout* numbers = BlockParts::row(Theme::kSpaceS);
            numbers->addWidget(BlockParts::text(window.remainder, Theme::kCaption, QFont::Medium, Ink::tone,
                                                box, window.tone),
                               1);
            numbers->addWidget(
                BlockParts::value(window.ceiling, Theme::kCaption, QFont::Normal, Ink::secondary, box));
            layout->addLayout(numbers);
        }
        QHBoxLayout* reset = BlockParts::row(Theme::kSpaceXS);
        reset->addWidget(BlockParts::icon(window.resetSymbol, 12, box));
        reset->addWidget(
            BlockParts::text(window.countdown, Theme::kCaption, QFont::Normal, Ink::secondary, box), 1);
        if (!window.resetDate.isEmpty()) {
            reset->addWidget(
                BlockParts::value(window.resetDate, Theme::kCaption, QFont::Normal, Ink::secondary, box));
        }
        layout->addLayout(reset);
        if (!window.modelName.isEmpty()) {
            QHBoxLayout* model = BlockParts::row(Theme::kSpaceXS);
            model->addWidget(BlockParts::icon(window.modelSymbol, 12, box));
            model->addWidget(
                BlockParts::text(window.modelName, Theme::kCaption, QFont::Normal, Ink::secondary, box), 1);
            layout->addLayout(model);
        }
    }
    layout->addStretch(1);
    return box;
}
} // namespace

SubscriptionCardWidget::SubscriptionCardWidget(const SubscriptionCardContent& card,
                                               const QList<UsagePoint>& trend, QWidget* parent)
    : QWidget(parent) {
    setObjectName(QStringLiteral("subscriptionCard"));
    setAccessibleName(card.name);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL);
    layout->setSpacing(Theme::kSpaceM);

    layout->addLayout(identityRow(card));

    if (!card.hasSnapshot) {
        QHBoxLayout* none = BlockParts::row(Theme::kSpaceXS);
        none->addWidget(BlockParts::icon(card.noSnapshotSymbol, 14, this, Tone::caution));
        none->addWidget(
            BlockParts::text(card.noSnapshotTitle, Theme::kFootnote, QFont::DemiBold, Ink::primary, this), 1);
        layout->addLayout(none);
        layout->addWidget(BlockParts::text(card.noSnapshotMessage, Theme::kCaption, QFont::Normal,
                                           Ink::secondary, this, Tone::muted));
        return;
    }

    QHBoxLayout* horizons = BlockParts::row(Theme::kSpaceXL);
    for (const HorizonPanelContent& panel : card.horizons) {
        horizons->addWidget(horizonPanel(panel, this), 1);
    }
    layout->addLayout(horizons);

    if (card.models) {
        layout->addWidget(BlockParts::separator(this));
        BlockParts::addModelBreakdown(layout, *card.models, this);
    }
    if (card.budgets) {
        layout->addWidget(BlockParts::separator(this));
        BlockParts::addAgentBudgets(layout, *card.budgets, this);
    }
    if (card.billingOnly) {
        QHBoxLayout* billing = BlockParts::row(Theme::kSpaceXS);
        billing->addWidget(BlockParts::icon(card.billingOnlySymbol, 14, this));
        billing->addWidget(
            BlockParts::text(card.billingOnlyText, Theme::kCaption, QFont::Normal, Ink::secondary, this), 1);
        billing->addWidget(new BadgeWidget(*card.billingOnly, this));
        layout->addLayout(billing);
    }
    if (!card.additional.isEmpty()) {
        addAdditional(layout, card);
    }

    // Footer: the daily trend and the next reset.
    layout->addWidget(BlockParts::separator(this));
    layout->addLayout(footerRow(card, trend));
}

// Logo, name, kind and chips; the badges and the age at the right.
QHBoxLayout* SubscriptionCardWidget::identityRow(const SubscriptionCardContent& card) {
    QHBoxLayout* identity = BlockParts::row(Theme::kSpaceM);
    identity->addWidget(new ProviderLogoWidget(*AIProvider::fromRawValue(card.providerRaw), 22, this), 0,
                        Qt::AlignTop);
    auto* who = new QVBoxLayout;
    who->setSpacing(2);
    ElidedLabel* name = BlockParts::text(card.name, Theme::kHeadline, QFont::DemiBold, Ink::primary, this);
    name->setFreeText(true);
    who->addWidget(name);
    who->addWidget(BlockParts::text(card.subtitle, Theme::kCaption, QFont::Normal, Ink::secondary, this));
    if (!card.chips.isEmpty()) {
        QHBoxLayout* chips = BlockParts::row(Theme::kSpaceXS);
        for (const SubscriptionCardContent::Chip& chip : card.chips) {
            chips->addWidget(BlockParts::chip(chip.symbol, chip.text, this));
        }
        chips->addStretch(1);
        who->addLayout(chips);
    }
    // The badges and age stand beside the name while both fit, under it when not.
    auto* reflow = new ReflowRow(Theme::kSpaceM);
    reflow->addLayout(who);
    identity->addLayout(reflow, 1);
    auto* state = new QVBoxLayout;
    state->setSpacing(Theme::kSpaceXS);
    QHBoxLayout* badges = BlockParts::row(Theme::kSpaceXS);
    badges->addStretch(1);
    for (const Badge& badge : card.badges) {
        badges->addWidget(new BadgeWidget(badge, this));
    }
    state->addLayout(badges);
    ElidedLabel* updated =
        BlockParts::value(card.updated, Theme::kCaption, QFont::Normal, Ink::secondary, this);
    updated->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    state->addWidget(updated);
    reflow->addLayout(state);
    // Under the name, the age reads from the leading edge like the badges above it.
    reflow->setArrangementFollower([updated](bool sideBySide) {
        updated->setAlignment((sideBySide ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
    });

    return identity;
}

// Further windows, a line each: dot, title, used and limit.
void SubscriptionCardWidget::addAdditional(QVBoxLayout* layout, const SubscriptionCardContent& card) {
    layout->addWidget(BlockParts::separator(this));
    layout->addWidget(
        BlockParts::text(card.additionalHeading, Theme::kFootnote, QFont::DemiBold, Ink::secondary, this));
    for (const SubscriptionCardContent::AdditionalRow& signal : card.additional) {
        QHBoxLayout* line = BlockParts::row(Theme::kSpaceXS);
        line->addWidget(new BadgeWidget(signal.dot, this));
        line->addWidget(BlockParts::text(signal.title, Theme::kCaption, QFont::Medium, Ink::primary, this),
                        1);
        line->addWidget(BlockParts::value(signal.used, Theme::kCaption, QFont::DemiBold, Ink::primary, this));
        line->addWidget(
            BlockParts::value(signal.limitText, Theme::kCaption, QFont::Normal, Ink::secondary, this));
        layout->addLayout(line);
    }
}

// The daily trend and the next reset.
QHBoxLayout* SubscriptionCardWidget::footerRow(const SubscriptionCardContent& card,
                                               const QList<UsagePoint>& trend) {
    QHBoxLayout* footer = BlockParts::row(Theme::kSpaceL);
    auto* trendText = new QVBoxLayout;
    trendText->setSpacing(2);
    trendText->addWidget(
        BlockParts::value(card.trendTitle, Theme::kCaption, QFont::DemiBold, Ink::secondary, this));
    trendText->addWidget(
        BlockParts::value(card.trendUnit, Theme::kCaption, QFont::Normal, Ink::secondary, this));
    footer->addLayout(trendText);
    footer->addWidget(new TrendChartWidget(TrendChartContent::sparkline(trend), this));
    footer->addStretch(1);
    auto* resetText = new QVBoxLayout;
    resetText->setSpacing(2);
    ElidedLabel* resetTitle =
        BlockParts::value(card.resetTitle, Theme::kCaption, QFont::DemiBold, Ink::secondary, this);
    ElidedLabel* countdown =
        BlockParts::value(card.resetCountdown, Theme::kFootnote, QFont::DemiBold, Ink::primary, this);
    ElidedLabel* resetDate =
        BlockParts::value(card.resetDate, Theme::kCaption, QFont::Normal, Ink::secondary, this);
    for (ElidedLabel* label : {resetTitle, countdown, resetDate}) {
        label->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        resetText->addWidget(label);
    }
    footer->addLayout(resetText);
    return footer;
}

void SubscriptionCardWidget::paintEvent(QPaintEvent*) {
    Theme::paintCard(this);
}
