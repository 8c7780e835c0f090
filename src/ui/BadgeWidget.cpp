#include "ui/BadgeWidget.h"

#include "ui/SymbolIcon.h"
#include "ui/Theme.h"

#include <QEvent>
#include <QPainter>
#include <QPainterPath>

namespace {
constexpr int kIconSize = 12;
constexpr int kDotSize = 8;
constexpr int kHalo = 3;
} // namespace

BadgeWidget::BadgeWidget(const Badge& badge, QWidget* parent)
    : QWidget(parent) {
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setBadge(badge);
}

void BadgeWidget::setBadge(const Badge& badge) {
    m_badge = badge;
    setAccessibleName(badge.accessibleName);
    updateGeometry();
    update();
}

QFont BadgeWidget::badgeFont() const {
    return Theme::font(font(), Theme::kCaption, QFont::Medium);
}

QSize BadgeWidget::sizeHint() const {
    if (isDot()) {
        return QSize(kDotSize + 2 * kHalo, kDotSize + 2 * kHalo);
    }
    return capsuleSize(m_badge, font());
}

void BadgeWidget::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Appearance look = Theme::appearance(palette());
    const Theme::ToneColors colors = Theme::colors(m_badge.tone, look);
    if (isDot()) {
        const QRectF dot = QRectF(rect()).adjusted(kHalo, kHalo, -kHalo, -kHalo);
        QColor halo = colors.foreground;
        halo.setAlphaF(0.25F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(halo);
        painter.drawEllipse(QRectF(rect()));
        painter.setBrush(colors.foreground);
        painter.drawEllipse(dot);
        return;
    }
    const QRectF capsule = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.fill);
    painter.drawRoundedRect(capsule, capsule.height() / 2, capsule.height() / 2);

    const int iconTop = (height() - kIconSize) / 2;
    painter.drawPixmap(Theme::kSpaceS, iconTop,
                       SymbolIcon::pixmap(m_badge.symbol, colors.foreground, kIconSize, devicePixelRatioF()));
    const QFont font = badgeFont();
    if (m_laidOut.text() != m_badge.text || m_laidOutFont != font) {
        m_laidOut = QStaticText(m_badge.text);
        m_laidOut.setTextFormat(Qt::PlainText);
        m_laidOut.prepare(QTransform(), font);
        m_laidOutFont = font;
    }
    painter.setFont(font);
    painter.setPen(colors.foreground);
    painter.drawStaticText(
        QPointF(Theme::kSpaceS + kIconSize + Theme::kSpaceXS, (height() - m_laidOut.size().height()) / 2),
        m_laidOut);
}

void BadgeWidget::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        updateGeometry();
    }
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        update();
    }
}

QSize BadgeWidget::capsuleSize(const Badge& badge, const QFont& base) {
    const QFontMetrics metrics(Theme::font(base, Theme::kCaption, QFont::Medium));
    // A badge without a symbol is its text alone.
    const int icon = badge.symbol.isEmpty() ? 0 : kIconSize + Theme::kSpaceXS;
    return QSize(Theme::kSpaceS + icon + metrics.horizontalAdvance(badge.text) + Theme::kSpaceS + 2,
                 qMax(metrics.height(), kIconSize) + Theme::kSpaceXS * 2);
}

void BadgeWidget::paintCapsule(QPainter& painter, const QRect& rect, const Badge& badge, const QFont& base,
                               Theme::Appearance look) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::ToneColors colors = Theme::colors(badge.tone, look);
    const QRectF capsule = QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.fill);
    painter.drawRoundedRect(capsule, capsule.height() / 2, capsule.height() / 2);
    int textLeft = Theme::kSpaceS;
    if (!badge.symbol.isEmpty()) {
        const qreal ratio = painter.device()->devicePixelRatioF();
        painter.drawPixmap(rect.left() + Theme::kSpaceS, rect.top() + (rect.height() - kIconSize) / 2,
                           SymbolIcon::pixmap(badge.symbol, colors.foreground, kIconSize, ratio));
        textLeft += kIconSize + Theme::kSpaceXS;
    }
    painter.setFont(Theme::font(base, Theme::kCaption, QFont::Medium));
    painter.setPen(colors.foreground);
    painter.drawText(rect.adjusted(textLeft, 0, 0, 0), Qt::AlignVCenter | Qt::AlignLeft, badge.text);
    painter.restore();
}
