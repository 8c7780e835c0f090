#include "ui/MetricCardWidget.h"

#include "ui/BlockParts.h"
#include "ui/ElidedLabel.h"
#include "ui/MeterBar.h"
#include "ui/Theme.h"

#include <QHBoxLayout>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;
} // namespace

MetricCardWidget::MetricCardWidget(const MetricCardContent& content, QWidget* parent)
    : QWidget(parent)
    , m_content(content) {
    setObjectName(QStringLiteral("metricCard"));
    setAccessibleName(content.title);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL);
    layout->setSpacing(Theme::kSpaceS);

    QHBoxLayout* header = BlockParts::row(Theme::kSpaceS);
    ElidedLabel* title =
        BlockParts::text(content.title, Theme::kHeadline, QFont::DemiBold, Ink::primary, this);
    title->setObjectName(QStringLiteral("metricTitle"));
    header->addWidget(title, 1);
    header->addWidget(BlockParts::icon(content.unitSymbol, 16, this), 0, Qt::AlignVCenter);
    layout->addLayout(header);

    // A value nobody reported is a sentence, not a figure: body size, secondary colour.
    ElidedLabel* value =
        content.valueReported
            ? BlockParts::value(content.value, Theme::kLargeTitle, QFont::DemiBold, Ink::primary, this)
            : BlockParts::value(content.value, Theme::kBody, QFont::Normal, Ink::secondary, this);
    value->setObjectName(QStringLiteral("metricValue"));
    layout->addWidget(value);

    QHBoxLayout* ceiling = BlockParts::row(Theme::kSpaceS);
    ElidedLabel* ceilingText =
        BlockParts::text(content.ceiling, Theme::kFootnote, QFont::Normal, Ink::secondary, this);
    ceilingText->setObjectName(QStringLiteral("metricCeiling"));
    ceiling->addWidget(ceilingText, 1);
    if (!content.remainder.isEmpty()) {
        ElidedLabel* remainder = BlockParts::value(content.remainder, Theme::kFootnote, QFont::Medium,
                                                   Ink::tone, this, content.remainderTone);
        remainder->setObjectName(QStringLiteral("metricRemainder"));
        ceiling->addWidget(remainder);
    }
    layout->addLayout(ceiling);

    auto* bar = new MeterBar(this);
    bar->setObjectName(QStringLiteral("metricBar"));
    bar->setValue(content.progress.value_or(0), content.progressTone);
    bar->setVisible(content.progress.has_value());
    layout->addWidget(bar);

    QHBoxLayout* reset = BlockParts::row(Theme::kSpaceXS);
    reset->addWidget(BlockParts::icon(content.resetSymbol, 12, this));
    m_countdown = BlockParts::value(content.countdown, Theme::kFootnote, QFont::Normal, Ink::secondary, this);
    m_countdown->setObjectName(QStringLiteral("metricCountdown"));
    reset->addWidget(m_countdown);
    reset->addStretch(1);
    if (!content.resetDate.isEmpty()) {
        ElidedLabel* date =
            BlockParts::value(content.resetDate, Theme::kFootnote, QFont::Normal, Ink::secondary, this);
        date->setObjectName(QStringLiteral("metricResetDate"));
        reset->addWidget(date);
    }
    layout->addLayout(reset);

    if (!content.note.isEmpty()) {
        ElidedLabel* note =
            BlockParts::text(content.note, Theme::kCaption, QFont::Normal, Ink::secondary, this, Tone::muted);
        note->setObjectName(QStringLiteral("metricNote"));
        layout->addWidget(note);
    }
    layout->addStretch(1);
}

void MetricCardWidget::paintEvent(QPaintEvent*) {
    Theme::paintCard(this);
}

bool MetricCardWidget::follow(const MetricCardContent& content) {
    MetricCardContent sameTime = content;
    sameTime.countdown = m_content.countdown;
    if (!(sameTime == m_content)) {
        return false;
    }
    m_countdown->setFullText(content.countdown);
    m_content = content;
    return true;
}
