#pragma once

#include "ui/Theme.h"

#include <QColor>
#include <QStyle>

class QPainter;
class QPalette;
class QStyleOption;
class QStyleOptionMenuItem;
class QWidget;

// What AppStyle draws the controls with: their measures in device-independent pixels,
// their colours in one palette's appearance, and the small painting steps they share.
namespace StyleParts {
// Measures of the controls, in device-independent pixels: the border is one pixel (two
// for a primary button, whose fill is its border), and the padding inside it is the
// rest of each margin.
inline constexpr int kButtonMarginX = 13;
inline constexpr int kLinkMarginX = 4;
inline constexpr int kButtonMarginY = 6;
inline constexpr int kToolMarginX = 8;
inline constexpr int kToolMarginY = 4;
// Qt's tool buttons measure a few pixels short of their drawn content.
inline constexpr int kToolSlack = 3;
inline constexpr int kFieldMarginX = 9;
inline constexpr int kFieldMarginY = 6;
inline constexpr int kPickerMarginX = 11;
inline constexpr int kDatePickerMarginX = 9;
inline constexpr int kPickerMarginY = 5;
inline constexpr int kPickerArrowWidth = 22;
inline constexpr int kPickerArrowSize = 12;
// A picker's label is drawn a pixel inside its field on either side.
inline constexpr int kPickerLabelInset = 1;
inline constexpr int kTextAreaMargin = 5;
inline constexpr int kScrollBarExtent = 10;
inline constexpr int kScrollBarInset = 2;
inline constexpr int kScrollBarHandleMinimum = 32;
inline constexpr int kScrollBarHandleRadius = 3;
inline constexpr int kToolBarPadding = 12;
inline constexpr int kToolBarSpacing = 6;
inline constexpr int kMenuPadding = 4;
inline constexpr int kMenuItemMarginX = 18;
inline constexpr int kMenuItemMarginY = 5;
inline constexpr int kMenuItemRadius = 4;
inline constexpr int kMenuSeparatorInset = 6;
inline constexpr int kMenuShortcutGap = 24;
inline constexpr int kMenuMarkSize = 12;
inline constexpr int kToolTipPadding = 4;

// The controls' colours in one palette's appearance.
struct Ink {
    QColor text;
    QColor secondary;
    QColor surface;
    QColor line;
    QColor accent;
    QColor accentFill;
    QColor onAccent;
    QColor critical;
    QColor criticalFill;
    QColor muted;
};

// The look of a push button in its role and state.
struct ButtonLook {
    QColor fill;
    QColor border;
    QColor text;
    qreal borderWidth = 1;
    bool underline = false;
};

Ink inkFor(const QPalette& palette);
// A rounded rectangle over `rect`: filled with `fill` and bordered inside its edge by
// `border` `width` pixels wide; an invalid colour leaves that part out.
void drawPanel(QPainter* painter, const QRect& rect, const QColor& fill, const QColor& border, qreal width,
               qreal radius);
QString roleOf(const QWidget* widget);
bool isLink(const QWidget* widget);
int textFlags(const QStyle* style, const QStyleOption* option, const QWidget* widget);
ButtonLook buttonLook(const QString& role, const Ink& ink, QStyle::State state);
// A field's frame: the surface with a hairline that turns accent with focus.
void drawField(QPainter* painter, const QStyleOption* option);
qreal pixelRatio(const QPainter* painter, const QWidget* widget);
// Draws the bundled symbol centred in `rect`.
void drawSymbol(QPainter* painter, const QRect& rect, const QString& symbol, const QColor& color, int size,
                const QWidget* widget);
int pickerMarginX(const QWidget* widget);
// The room a menu line keeps for icons: a menu keeps it on every line when one has an
// icon; a picker's list reserves it whatever its lines hold, so only a line's own icon
// counts there.
int iconRoom(const QStyleOptionMenuItem* item, const QWidget* widget);
bool inComboPopup(const QWidget* widget);
} // namespace StyleParts
