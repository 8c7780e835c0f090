#include "ui/StatusCardWidget.h"

#include "ui/BadgeWidget.h"
#include "ui/BlockParts.h"
#include "ui/MeterBar.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;

QVBoxLayout* column(QWidget* owner) {
    auto* layout = new QVBoxLayout(owner);
    layout->setContentsMargins(Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL);
    layout->setSpacing(Theme::kSpaceS);
    return layout;
}
} // namespace

StatusCardWidget::StatusCardWidget(QWidget* parent, bool muted)
    : QWidget(parent)
    , m_muted(muted) {}

StatusCardWidget::StatusCardWidget(const StatusCardsContent::EmptyState& content,
                                   std::function<void()> action, QWidget* parent)
    : StatusCardWidget(parent, false) {
    setObjectName(QStringLiteral("emptyStateCard"));
    QVBoxLayout* layout = column(this);
    layout->setContentsMargins(Theme::kSpaceXXL, Theme::kSpaceXXL, Theme::kSpaceXXL, Theme::kSpaceXXL);
    layout->setSpacing(Theme::kSpaceM);
    layout->addStretch(1);
    layout->addWidget(BlockParts::icon(content.symbol, 36, this), 0, Qt::AlignHCenter);
    ElidedLabel* title = BlockParts::value(content.title, Theme::kTitle, QFont::DemiBold, Ink::primary, this);
    title->setAlignment(Qt::AlignHCenter);
    layout->addWidget(title, 0, Qt::AlignHCenter);
    ElidedLabel* message =
        BlockParts::text(content.message, Theme::kBody, QFont::Normal, Ink::secondary, this, Tone::muted);
    message->setAlignment(Qt::AlignHCenter);
    message->setMaximumWidth(StatusCardsContent::EmptyState::kMessageWidth);
    message->setMinimumWidth(qMin(StatusCardsContent::EmptyState::kMessageWidth, 320));
    layout->addWidget(message, 0, Qt::AlignHCenter);
    if (content.actionTitle && action) {
        m_action = new QPushButton(*content.actionTitle, this);
        m_action->setObjectName(QStringLiteral("emptyStateAction"));
        m_action->setDefault(true);
        // The one prominent action.
        Theme::setButtonRole(m_action, Theme::ButtonRole::primary);
        connect(m_action, &QPushButton::clicked, this, std::move(action));
        layout->addWidget(m_action, 0, Qt::AlignHCenter);
    }
    layout->addStretch(1);
}

StatusCardWidget::StatusCardWidget(const StatusCardsContent::Unavailable& content, QWidget* parent)
    : StatusCardWidget(parent, true) {
    setObjectName(QStringLiteral("unavailableMetric"));
    QVBoxLayout* layout = column(this);
    auto* top = new QHBoxLayout;
    top->setSpacing(Theme::kSpaceXS);
    top->addWidget(BlockParts::icon(content.symbol, 14, this));
    top->addWidget(BlockParts::text(content.title, Theme::kFootnote, QFont::Medium, Ink::primary, this), 1);
    layout->addLayout(top);
    layout->addWidget(
        BlockParts::text(content.message, Theme::kCaption, QFont::Normal, Ink::secondary, this, Tone::muted));
    layout->addStretch(1);
}

StatusCardWidget::StatusCardWidget(const StatusCardsContent::AccountSummary& content, QWidget* parent)
    : StatusCardWidget(parent, false) {
    setObjectName(QStringLiteral("accountSummaryCard"));
    QVBoxLayout* layout = column(this);
    auto* top = new QHBoxLayout;
    top->setSpacing(Theme::kSpaceXS);
    top->addWidget(BlockParts::icon(content.symbol, 16, this));
    top->addWidget(BlockParts::text(content.name, Theme::kHeadline, QFont::DemiBold, Ink::primary, this), 1);
    top->addWidget(new BadgeWidget(content.status, this));
    layout->addLayout(top);
    layout->addWidget(
        BlockParts::text(content.provider, Theme::kCaption, QFont::Normal, Ink::secondary, this));
    if (!content.noSnapshot.isEmpty()) {
        layout->addWidget(
            BlockParts::text(content.noSnapshot, Theme::kFootnote, QFont::Normal, Ink::secondary, this));
        return;
    }
    for (const auto& [title, remaining] : content.windows) {
        auto* line = new QHBoxLayout;
        line->addWidget(BlockParts::text(title, Theme::kFootnote, QFont::Medium, Ink::primary, this), 1);
        line->addWidget(BlockParts::value(remaining, Theme::kFootnote, QFont::Normal, Ink::secondary, this));
        layout->addLayout(line);
    }
    layout->addWidget(
        BlockParts::value(content.updated, Theme::kCaption, QFont::Normal, Ink::secondary, this));
}

StatusCardWidget::StatusCardWidget(const StatusCardsContent::MetricCell& content, QWidget* parent)
    : StatusCardWidget(parent, false) {
    setObjectName(QStringLiteral("monitorMetricCell"));
    QVBoxLayout* layout = column(this);
    layout->addWidget(BlockParts::text(content.title, Theme::kFootnote, QFont::Medium, Ink::secondary, this));
    layout->addWidget(BlockParts::value(content.used, Theme::kTitle, QFont::DemiBold, Ink::primary, this));
    if (!content.noLimit.isEmpty()) {
        layout->addWidget(
            BlockParts::text(content.noLimit, Theme::kCaption, QFont::Normal, Ink::secondary, this));
    } else {
        auto* bar = new MeterBar(this);
        bar->setValue(content.progress, content.progressTone);
        layout->addWidget(bar);
        auto* numbers = new QHBoxLayout;
        numbers->addWidget(
            BlockParts::text(content.remainder, Theme::kCaption, QFont::Medium, Ink::secondary, this), 1);
        numbers->addWidget(
            BlockParts::value(content.ceiling, Theme::kCaption, QFont::Normal, Ink::secondary, this));
        layout->addLayout(numbers);
    }
    auto* reset = new QHBoxLayout;
    reset->setSpacing(Theme::kSpaceXS);
    reset->addWidget(BlockParts::icon(content.resetSymbol, 12, this));
    reset->addWidget(
        BlockParts::text(content.countdown, Theme::kCaption, QFont::Normal, Ink::secondary, this), 1);
    layout->addLayout(reset);
    layout->addStretch(1);
}

void StatusCardWidget::paintEvent(QPaintEvent*) {
    Theme::paintCard(this, m_muted);
}
