#include "ui/SelectableTile.h"

#include "ui/BadgeWidget.h"
#include "ui/LongText.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"

#include <QPainter>

namespace {
constexpr int kLogo = 22;
constexpr int kCheck = 16;
constexpr int kPadding = Theme::kSpaceM;
} // namespace

SelectableTile::SelectableTile(AIProvider logo, const QString& title, const QString& subtitle,
                               QWidget* parent)
    : PressableButton(parent)
    , m_logo(logo) {
    setCheckable(true);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    setAttribute(Qt::WA_Hover);
    // As tall as its second line needs when that wraps.
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setContent(logo, title, subtitle);
}

void SelectableTile::setContent(AIProvider logo, const QString& title, const QString& subtitle) {
    if (m_logo == logo && text() == title && m_subtitle == subtitle) {
        return;
    }
    m_logo = logo;
    m_subtitle = subtitle;
    setText(title);
    setAccessibleName(title);
    setAccessibleDescription(subtitle);
    updateGeometry();
    update();
}

void SelectableTile::setSymbol(const QString& symbol) {
    m_symbol = symbol;
    update();
}

void SelectableTile::setBadge(const QString& badge) {
    m_badge = badge;
    updateGeometry();
    update();
}

Badge SelectableTile::tag() const {
    return Badge{.symbol = QString(), .text = m_badge, .tone = Tone::accent, .accessibleName = m_badge};
}

void SelectableTile::setShowsEmptyCircle(bool shows) {
    m_emptyCircle = shows;
    update();
}

void SelectableTile::setSelected(bool selected) {
    m_selected = selected;
    setChecked(selected);
    update();
}

int SelectableTile::chromeWidth() {
    return kPadding * 2 + kLogo + Theme::kSpaceS + Theme::kSpaceS + kCheck;
}

int SelectableTile::titleWidth() const {
    const QFontMetrics title(Theme::font(font(), Theme::kBody, QFont::DemiBold));
    const int badge =
        m_badge.isEmpty() ? 0 : BadgeWidget::capsuleSize(tag(), font()).width() + Theme::kSpaceS;
    return title.horizontalAdvance(LongText::bounded(text())) + badge;
}

int SelectableTile::secondLineHeight(int room) const {
    const QFontMetrics second(Theme::font(font(), Theme::kFootnote));
    return second
        .boundingRect(QRect(0, 0, qMax(1, room), 100000), kSecondLineFlags, LongText::bounded(m_subtitle))
        .height();
}

int SelectableTile::heightForWidth(int width) const {
    const QFontMetrics title(Theme::font(font(), Theme::kBody, QFont::DemiBold));
    const int room = width - chromeWidth();
    const int height = m_subtitle.isEmpty() ? title.height() : title.height() + 2 + secondLineHeight(room);
    return qMax(kLogo, height) + kPadding * 2;
}

QSize SelectableTile::sizeHint() const {
    const QFontMetrics second(Theme::font(font(), Theme::kFootnote));
    const int textWidth = qMax(titleWidth(), second.horizontalAdvance(LongText::bounded(m_subtitle)));
    const int width = chromeWidth() + qMax(qMin(textWidth, 220), titleWidth());
    return QSize(width, heightForWidth(width));
}

QSize SelectableTile::minimumSizeHint() const {
    // The title whole and the second line's widest word; the rest of that line wraps.
    const QFontMetrics second(Theme::font(font(), Theme::kFootnote));
    const int widestWord = LongText::widestWord(second, LongText::bounded(m_subtitle), 220);
    const int width = chromeWidth() + qMin(qMax(titleWidth(), widestWord), 220);
    return QSize(width, heightForWidth(width));
}

void SelectableTile::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const Theme::Appearance look = Theme::appearance(palette());
    const QColor accent = Theme::colors(Tone::accent, look).foreground;
    const QRectF frame = QRectF(rect()).adjusted(1, 1, -1, -1);
    painter.setBrush(m_selected ? Theme::colors(Tone::accent, look).fill : Theme::card(look));
    // The keyboard focus is a ring thicker than the selection's border, so it shows on a
    // selected tile too.
    const qreal border = hasFocus() ? 3.0 : (m_selected ? 1.5 : 1.0);
    painter.setPen(QPen(m_selected || hasFocus() ? accent : Theme::separator(look), border));
    painter.drawRoundedRect(
        frame.adjusted(border / 2 - 0.5, border / 2 - 0.5, 0.5 - border / 2, 0.5 - border / 2),
        Theme::kRadiusCard, Theme::kRadiusCard);
    if (underMouse() && !m_selected) {
        QColor hover = accent;
        hover.setAlphaF(0.06F);
        painter.setBrush(hover);
        painter.setPen(Qt::NoPen);
        painter.drawRoundedRect(frame, Theme::kRadiusCard, Theme::kRadiusCard);
    }

    const qreal ratio = devicePixelRatioF();
    const QColor ink = Theme::primaryText(look);
    const QPixmap logo = m_symbol.isEmpty() ? ProviderLogoWidget::logo(m_logo, kLogo, ink, ratio)
                                            : SymbolIcon::pixmap(m_symbol, accent, kLogo, ratio);
    const int logoTop = (height() - kLogo) / 2;
    painter.drawPixmap(QPoint(kPadding, logoTop), logo);

    const int textLeft = kPadding + kLogo + Theme::kSpaceS;
    const int textRight = width() - kPadding - kCheck - Theme::kSpaceS;
    const QFont titleFont = Theme::font(font(), Theme::kBody, QFont::DemiBold);
    const QFont secondFont = Theme::font(font(), Theme::kFootnote);
    const QFontMetrics titleMetrics(titleFont);
    const int room = qMax(0, textRight - textLeft);
    const int secondHeight = m_subtitle.isEmpty() ? 0 : secondLineHeight(room);
    const int block = m_subtitle.isEmpty() ? titleMetrics.height() : titleMetrics.height() + 2 + secondHeight;
    int y = (height() - block) / 2;
    painter.setFont(titleFont);
    painter.setPen(ink);
    const QSize pill = m_badge.isEmpty() ? QSize() : BadgeWidget::capsuleSize(tag(), font());
    const int titleRoom = m_badge.isEmpty() ? room : qMax(0, room - pill.width() - Theme::kSpaceS);
    const QString shownTitle = LongText::elided(titleMetrics, text(), titleRoom, LongText::Kind::meaningful);
    painter.drawText(QRect(textLeft, y, titleRoom, titleMetrics.height()), Qt::AlignLeft | Qt::AlignVCenter,
                     shownTitle);
    if (!m_badge.isEmpty()) {
        const QPoint corner(textLeft + titleMetrics.horizontalAdvance(shownTitle) + Theme::kSpaceS,
                            y + (titleMetrics.height() - pill.height()) / 2);
        BadgeWidget::paintCapsule(painter, QRect(corner, pill), tag(), font(), look);
    }
    if (!m_subtitle.isEmpty()) {
        y += titleMetrics.height() + 2;
        painter.setFont(secondFont);
        painter.setPen(Theme::secondaryText(look));
        painter.drawText(QRect(textLeft, y, room, secondHeight), Qt::AlignLeft | kSecondLineFlags,
                         LongText::bounded(m_subtitle));
    }
    if (!m_selected && m_emptyCircle) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(Theme::secondaryText(look), 1.5));
        painter.drawEllipse(QRectF(width() - kPadding - kCheck + 1.5, (height() - kCheck) / 2.0 + 1.5,
                                   kCheck - 3, kCheck - 3));
    }
    if (m_selected) {
        const QPixmap check =
            SymbolIcon::pixmap(QStringLiteral("checkmark.circle.fill"), accent, kCheck, ratio);
        painter.drawPixmap(QPoint(width() - kPadding - kCheck, (height() - kCheck) / 2), check);
    }
}
