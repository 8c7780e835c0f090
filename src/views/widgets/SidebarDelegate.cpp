#include "views/widgets/SidebarDelegate.h"

#include "ui/LongText.h"
#include "ui/ProviderLogoWidget.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"
#include "views/SidebarModel.h"

#include <QLocale>
#include <QPainter>

namespace {
SidebarModel::Kind kindOf(const QModelIndex& index) {
    return static_cast<SidebarModel::Kind>(index.data(SidebarModel::KindRole).toInt());
}

constexpr int kDot = 8;
} // namespace

QSize SidebarDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const int width = option.rect.width() > 0 ? option.rect.width() : 200;
    switch (kindOf(index)) {
    case SidebarModel::Kind::section:
        return QSize(width, kSectionHeight);
    case SidebarModel::Kind::account:
        return QSize(width, kAccountHeight);
    default:
        return QSize(width, kItemHeight);
    }
}

void SidebarDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                            const QModelIndex& index) const {
    const Theme::Appearance look = Theme::appearance(option.palette);
    const SidebarModel::Kind kind = kindOf(index);
    const QString title = index.data(Qt::DisplayRole).toString();
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    QRect row = option.rect.adjusted(Theme::kSpaceS, 1, -Theme::kSpaceS, -1);

    if (kind == SidebarModel::Kind::section) {
        QFont font = Theme::font(option.font, Theme::kCaption, QFont::DemiBold);
        painter->setFont(font);
        painter->setPen(Theme::secondaryText(look));
        painter->drawText(row.adjusted(Theme::kSpaceS, 0, 0, -Theme::kSpaceXS),
                          Qt::AlignLeft | Qt::AlignBottom, title);
        painter->restore();
        return;
    }

    const bool selected = option.state & QStyle::State_Selected;
    const bool hovered = option.state & QStyle::State_MouseOver;
    if (selected || hovered) {
        painter->setPen(Qt::NoPen);
        painter->setBrush(selected ? Theme::colors(Tone::accent, look).fill
                                   : Theme::colors(Tone::muted, look).fill);
        painter->drawRoundedRect(QRectF(row), Theme::kRadiusSmall, Theme::kRadiusSmall);
    }
    if (option.state & QStyle::State_HasFocus && selected) {
        painter->setPen(QPen(Theme::colors(Tone::accent, look).foreground, 1));
        painter->setBrush(Qt::NoBrush);
        painter->drawRoundedRect(QRectF(row).adjusted(0.5, 0.5, -0.5, -0.5), Theme::kRadiusSmall,
                                 Theme::kRadiusSmall);
    }
    row.adjust(Theme::kSpaceS, 0, -Theme::kSpaceS, 0);
    const QColor ink = Theme::primaryText(look);
    const qreal ratio = painter->device()->devicePixelRatioF();
    const QString symbol = index.data(SidebarModel::SymbolRole).toString();
    const QRect icon(row.left(), row.top() + (qMin(row.height(), kItemHeight) - kLogoSize) / 2, kLogoSize,
                     kLogoSize);
    if (kind == SidebarModel::Kind::overview) {
        painter->drawPixmap(icon.topLeft(),
                            SymbolIcon::pixmap(symbol,
                                               selected ? Theme::colors(Tone::accent, look).foreground
                                                        : Theme::secondaryText(look),
                                               kLogoSize, ratio));
    } else if (const std::optional<AIProvider> provider = AIProvider::fromRawValue(symbol)) {
        painter->drawPixmap(icon.topLeft(), ProviderLogoWidget::logo(*provider, kLogoSize, ink, ratio));
    }
    int left = icon.right() + 1 + Theme::kSpaceS;
    QFont body = Theme::font(option.font, Theme::kBody, selected ? QFont::DemiBold : QFont::Normal);
    painter->setFont(body);
    const QFontMetrics metrics(body);

    if (kind == SidebarModel::Kind::account) {
        // The status dot, then the name, and the second line below.
        const auto tone = static_cast<Tone>(index.data(SidebarModel::StatusToneRole).toInt());
        const int lineHeight = metrics.height();
        const int top = row.top() + (row.height() - lineHeight -
                                     QFontMetrics(Theme::font(option.font, Theme::kCaption)).height()) /
                                        2;
        painter->setPen(Qt::NoPen);
        painter->setBrush(Theme::colors(tone, look).foreground);
        painter->drawEllipse(QRectF(left, top + (lineHeight - kDot) / 2.0, kDot, kDot));
        left += kDot + Theme::kSpaceS;
        const QRect name(left, top, row.right() - left, lineHeight);
        painter->setPen(ink);
        painter->drawText(name, Qt::AlignLeft | Qt::AlignVCenter,
                          LongText::elided(metrics, title, name.width(), LongText::Kind::free));
        const QFont caption = Theme::font(option.font, Theme::kCaption);
        painter->setFont(caption);
        painter->setPen(Theme::secondaryText(look));
        const QFontMetrics small(caption);
        const QRect subtitle(icon.right() + 1 + Theme::kSpaceS, name.bottom() + 1,
                             row.right() - icon.right() - Theme::kSpaceS, small.height());
        painter->drawText(subtitle, Qt::AlignLeft | Qt::AlignVCenter,
                          LongText::elided(small, index.data(SidebarModel::SubtitleRole).toString(),
                                           subtitle.width(), LongText::Kind::meaningful));
        painter->restore();
        return;
    }

    QRect text(left, row.top(), row.right() - left, row.height());
    const QVariant count = index.data(SidebarModel::CountRole);
    if (count.isValid()) {
        const QFont figures = Theme::tabular(Theme::font(option.font, Theme::kFootnote, QFont::Medium));
        const QString number = QLocale().toString(count.toInt());
        const int width = QFontMetrics(figures).horizontalAdvance(number);
        painter->setFont(figures);
        painter->setPen(Theme::secondaryText(look));
        painter->drawText(QRect(row.right() - width, row.top(), width, row.height()),
                          Qt::AlignRight | Qt::AlignVCenter, number);
        text.setRight(row.right() - width - Theme::kSpaceS);
        painter->setFont(body);
    }
    painter->setPen(ink);
    painter->drawText(text, Qt::AlignLeft | Qt::AlignVCenter,
                      LongText::elided(metrics, title, text.width(), LongText::Kind::meaningful));
    painter->restore();
}
