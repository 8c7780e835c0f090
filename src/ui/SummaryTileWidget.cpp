#include "ui/SummaryTileWidget.h"

#include "ui/BlockParts.h"
#include "ui/Theme.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;
constexpr int kIconSize = 16;
} // namespace

SummaryTileWidget::SummaryTileWidget(const OverviewView::SummaryTile& tile, QWidget* parent)
    : QWidget(parent)
    , m_tile(tile) {
    setObjectName(QStringLiteral("summaryTile"));
    setAccessibleName(tile.title);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(Theme::kSpaceL, Theme::kSpaceM, Theme::kSpaceL, Theme::kSpaceM);
    layout->setSpacing(Theme::kSpaceXS);
    auto* top = BlockParts::row(Theme::kSpaceS);
    m_icon = BlockParts::icon(tile.icon, kIconSize, this, tile.accent);
    top->addWidget(m_icon);
    m_title = BlockParts::text(tile.title, Theme::kFootnote, QFont::Medium, Ink::secondary, this);
    top->addWidget(m_title, 1);
    layout->addLayout(top);
    m_value = BlockParts::text(tile.value, Theme::kTitle, QFont::DemiBold, Ink::primary, this);
    m_value->setTabularFigures(true);
    layout->addWidget(m_value);
    m_detail = BlockParts::text(tile.detail, Theme::kCaption, QFont::Normal, Ink::secondary, this);
    layout->addWidget(m_detail);
}

void SummaryTileWidget::setTile(const OverviewView::SummaryTile& tile) {
    if (tile == m_tile) {
        return;
    }
    if (tile.icon != m_tile.icon || tile.accent != m_tile.accent) {
        QWidget* icon = BlockParts::icon(tile.icon, kIconSize, this, tile.accent);
        static_cast<QHBoxLayout*>(layout()->itemAt(0)->layout())->replaceWidget(m_icon, icon);
        delete m_icon;
        m_icon = icon;
    }
    m_tile = tile;
    m_largeValueWidth = -1;
    setAccessibleName(tile.title);
    m_title->setFullText(tile.title);
    m_value->setFullText(tile.value);
    m_detail->setFullText(tile.detail);
    fitValue();
}

void SummaryTileWidget::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    fitValue();
}

void SummaryTileWidget::fitValue() {
    const int room =
        contentsRect().width() - layout()->contentsMargins().left() - layout()->contentsMargins().right();
    const QFont large = Theme::font(m_value->font(), Theme::kTitle, QFont::DemiBold);
    const QFontMetrics metrics(large);
    // Measured once per value: tiles are resized many times while the window is laid out.
    if (m_largeValueWidth < 0) {
        m_largeValueWidth = metrics.horizontalAdvance(m_tile.value);
    }
    const int pixels = room > 0 && m_largeValueWidth > room ? Theme::kHeadline : Theme::kTitle;
    // The smaller size keeps the line's height, so the tiles of a row stay even.
    m_value->setMinimumHeight(metrics.height());
    if (m_value->font().pixelSize() != pixels) {
        m_value->setStyle(pixels, QFont::DemiBold, ElidedLabel::Ink::primary);
    }
}

void SummaryTileWidget::paintEvent(QPaintEvent*) {
    Theme::paintCard(this);
}
