#include "views/widgets/MetricCardWidget.h"

#include "views/widgets/ElidedLabel.h"
#include "views/widgets/MeterBar.h"
#include "views/widgets/SymbolIcon.h"
#include "views/widgets/Theme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPainter>
#include <QVBoxLayout>

namespace {
constexpr int kIconSize = 16;

void setTextColor(QWidget* widget, const QColor& color) {
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, color);
    palette.setColor(QPalette::Text, color);
    widget->setPalette(palette);
}
} // namespace

MetricCardWidget::MetricCardWidget(const MetricCardContent& content, QWidget* parent)
    : QWidget(parent)
    , m_title(new ElidedLabel(QString(), this))
    , m_unitIcon(new QLabel(this))
    , m_value(new QLabel(this))
    , m_ceiling(new ElidedLabel(QString(), this))
    , m_remainder(new QLabel(this))
    , m_bar(new MeterBar(this))
    , m_resetIcon(new QLabel(this))
    , m_countdown(new QLabel(this))
    , m_resetDate(new QLabel(this))
    , m_note(new ElidedLabel(QString(), this)) {
    setObjectName(QStringLiteral("metricCard"));
    setAttribute(Qt::WA_StyledBackground, false);
    m_title->setObjectName(QStringLiteral("metricTitle"));
    m_value->setObjectName(QStringLiteral("metricValue"));
    m_ceiling->setObjectName(QStringLiteral("metricCeiling"));
    m_remainder->setObjectName(QStringLiteral("metricRemainder"));
    m_bar->setObjectName(QStringLiteral("metricBar"));
    m_countdown->setObjectName(QStringLiteral("metricCountdown"));
    m_resetDate->setObjectName(QStringLiteral("metricResetDate"));
    m_note->setObjectName(QStringLiteral("metricNote"));

    m_title->setFont(Theme::font(font(), Theme::kHeadline, QFont::DemiBold));
    m_value->setFont(Theme::font(font(), Theme::kLargeTitle, QFont::DemiBold));
    m_ceiling->setFont(Theme::font(font(), Theme::kFootnote));
    m_remainder->setFont(Theme::font(font(), Theme::kFootnote, QFont::Medium));
    m_countdown->setFont(Theme::font(font(), Theme::kFootnote));
    m_resetDate->setFont(Theme::font(font(), Theme::kFootnote));
    m_note->setFont(Theme::font(font(), Theme::kCaption));
    m_note->setMaximumLines(2);
    m_value->setTextInteractionFlags(Qt::TextSelectableByMouse);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL, Theme::kSpaceL);
    layout->setSpacing(Theme::kSpaceS);
    auto* header = new QHBoxLayout;
    header->addWidget(m_title, 1);
    header->addWidget(m_unitIcon, 0, Qt::AlignRight | Qt::AlignVCenter);
    layout->addLayout(header);
    layout->addWidget(m_value);
    auto* ceiling = new QHBoxLayout;
    ceiling->addWidget(m_ceiling, 1);
    ceiling->addWidget(m_remainder, 0, Qt::AlignRight);
    layout->addLayout(ceiling);
    layout->addWidget(m_bar);
    auto* reset = new QHBoxLayout;
    reset->setSpacing(Theme::kSpaceXS);
    reset->addWidget(m_resetIcon);
    reset->addWidget(m_countdown);
    reset->addStretch(1);
    reset->addWidget(m_resetDate);
    layout->addLayout(reset);
    layout->addWidget(m_note);
    layout->addStretch(1);
    setContent(content);
}

void MetricCardWidget::setContent(const MetricCardContent& content) {
    m_content = content;
    m_title->setFullText(content.title);
    m_value->setText(content.value);
    m_value->setAccessibleName(content.value);
    // A value nobody reported is a sentence, not a figure: body size, secondary colour.
    m_value->setFont(Theme::font(font(), content.valueReported ? Theme::kLargeTitle : Theme::kBody,
                                 content.valueReported ? QFont::DemiBold : QFont::Normal));
    m_ceiling->setFullText(content.ceiling);
    m_remainder->setText(content.remainder);
    m_remainder->setAccessibleName(content.remainder);
    m_remainder->setVisible(!content.remainder.isEmpty());
    m_bar->setVisible(content.progress.has_value());
    m_bar->setValue(content.progress.value_or(0), content.progressTone);
    m_countdown->setText(content.countdown);
    m_countdown->setAccessibleName(content.countdown);
    m_resetDate->setText(content.resetDate);
    m_resetDate->setAccessibleName(content.resetDate);
    m_resetDate->setVisible(!content.resetDate.isEmpty());
    m_note->setFullText(content.note);
    m_note->setVisible(!content.note.isEmpty());
    setAccessibleName(content.title);
    applyColors();
}

void MetricCardWidget::applyColors() {
    const Theme::Appearance look = Theme::appearance(palette());
    const QColor primary = Theme::primaryText(look);
    const QColor secondary = Theme::secondaryText(look);
    setTextColor(m_title, primary);
    setTextColor(m_value, m_content.valueReported ? primary : secondary);
    setTextColor(m_ceiling, secondary);
    setTextColor(m_remainder, Theme::colors(m_content.remainderTone, look).foreground);
    setTextColor(m_countdown, secondary);
    setTextColor(m_resetDate, secondary);
    setTextColor(m_note, secondary);
    const qreal ratio = devicePixelRatioF();
    m_unitIcon->setPixmap(SymbolIcon::pixmap(m_content.unitSymbol, secondary, kIconSize, ratio));
    m_resetIcon->setPixmap(SymbolIcon::pixmap(m_content.resetSymbol, secondary, 12, ratio));
}

void MetricCardWidget::paintEvent(QPaintEvent*) {
    Theme::paintCard(this);
}

void MetricCardWidget::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) {
        // The children's colours come from the theme, not from the palette they inherit.
        applyColors();
    }
}
