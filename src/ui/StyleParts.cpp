#include "ui/StyleParts.h"

#include "ui/SymbolIcon.h"

#include <QApplication>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QMenu>
#include <QPainter>
#include <QStyleOption>
#include <QWidget>

namespace StyleParts {
Ink inkFor(const QPalette& palette) {
    const Theme::Appearance look = Theme::appearance(palette);
    return Ink{.text = Theme::primaryText(look),
               .secondary = Theme::secondaryText(look),
               .surface = palette.color(QPalette::Base),
               .line = Theme::separator(look),
               .accent = Theme::colors(Tone::accent, look).foreground,
               .accentFill = Theme::colors(Tone::accent, look).fill,
               .onAccent = Theme::onAccent(look),
               .critical = Theme::colors(Tone::critical, look).foreground,
               .criticalFill = Theme::colors(Tone::critical, look).fill,
               .muted = Theme::colors(Tone::muted, look).fill};
}

// A rounded rectangle over `rect`: filled with `fill` and bordered inside its edge by
// `border` `width` pixels wide; an invalid colour leaves that part out.
void drawPanel(QPainter* painter, const QRect& rect, const QColor& fill, const QColor& border, qreal width,
               qreal radius) {
    const bool bordered = border.isValid() && border.alpha() > 0 && width > 0;
    const bool filled = fill.isValid() && fill.alpha() > 0;
    if (!bordered && !filled) {
        return;
    }
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const qreal inset = bordered ? width / 2 : 0;
    painter->setPen(bordered ? QPen(border, width) : QPen(Qt::NoPen));
    painter->setBrush(filled ? QBrush(fill) : QBrush(Qt::NoBrush));
    painter->drawRoundedRect(QRectF(rect).adjusted(inset, inset, -inset, -inset), radius - inset,
                             radius - inset);
    painter->restore();
}

QString roleOf(const QWidget* widget) {
    return widget ? widget->property("role").toString() : QString();
}

bool isLink(const QWidget* widget) {
    return roleOf(widget) == QLatin1StringView("link");
}

int textFlags(const QStyle* style, const QStyleOption* option, const QWidget* widget) {
    return style->styleHint(QStyle::SH_UnderlineShortcut, option, widget) ? Qt::TextShowMnemonic
                                                                          : Qt::TextHideMnemonic;
}

ButtonLook buttonLook(const QString& role, const Ink& ink, QStyle::State state) {
    const bool enabled = state.testFlag(QStyle::State_Enabled);
    const bool hover = enabled && (state & (QStyle::State_MouseOver | QStyle::State_Sunken));
    const bool focus = enabled && state.testFlag(QStyle::State_HasFocus);
    ButtonLook look;
    look.text = enabled ? ink.text : ink.secondary;
    if (role == QLatin1StringView("primary")) {
        look.borderWidth = 2;
        if (enabled) {
            look.fill = ink.accent;
            look.border = focus ? ink.accentFill : ink.accent;
            look.text = ink.onAccent;
        } else {
            look.fill = ink.muted;
            look.border = ink.muted;
        }
    } else if (role == QLatin1StringView("destructive")) {
        look.fill = hover ? ink.criticalFill : ink.surface;
        look.border = focus ? ink.accent : ink.line;
        look.text = enabled ? ink.critical : ink.secondary;
    } else if (role == QLatin1StringView("plain")) {
        look.fill = hover ? ink.muted : QColor();
        look.border = focus ? ink.accent : QColor();
    } else if (role == QLatin1StringView("link")) {
        look.border = focus ? ink.accent : QColor();
        look.text = enabled ? ink.accent : ink.secondary;
        look.underline = hover;
    } else {
        look.fill = hover ? ink.muted : ink.surface;
        look.border = focus ? ink.accent : ink.line;
    }
    return look;
}

// A field's frame: the surface with a hairline that turns accent with focus.
void drawField(QPainter* painter, const QStyleOption* option) {
    const Ink ink = inkFor(option->palette);
    const bool focus =
        option->state.testFlag(QStyle::State_HasFocus) && option->state.testFlag(QStyle::State_Enabled);
    drawPanel(painter, option->rect, option->palette.color(QPalette::Base), focus ? ink.accent : ink.line, 1,
              Theme::kRadiusSmall);
}

qreal pixelRatio(const QPainter* painter, const QWidget* widget) {
    if (painter && painter->device()) {
        return painter->device()->devicePixelRatio();
    }
    return widget ? widget->devicePixelRatioF() : qApp->devicePixelRatio();
}

// Draws the bundled symbol centred in `rect`.
void drawSymbol(QPainter* painter, const QRect& rect, const QString& symbol, const QColor& color, int size,
                const QWidget* widget) {
    const QPixmap pixmap = SymbolIcon::pixmap(symbol, color, size, pixelRatio(painter, widget));
    const QRect target(rect.x() + (rect.width() - size) / 2, rect.y() + (rect.height() - size) / 2, size,
                       size);
    painter->drawPixmap(target, pixmap);
}

int pickerMarginX(const QWidget* widget) {
    return qobject_cast<const QDateTimeEdit*>(widget) ? kDatePickerMarginX : kPickerMarginX;
}

// The room a menu line keeps for icons: a menu keeps it on every line when one has an
// icon; a picker's list reserves it whatever its lines hold, so only a line's own icon
// counts there.
int iconRoom(const QStyleOptionMenuItem* item, const QWidget* widget) {
    if (qobject_cast<const QMenu*>(widget)) {
        return item->maxIconWidth;
    }
    return item->icon.isNull() ? 0 : item->maxIconWidth;
}

bool inComboPopup(const QWidget* widget) {
    return widget && (widget->inherits("QComboBoxListView") || widget->inherits("QComboBoxPrivateContainer"));
}
} // namespace StyleParts
