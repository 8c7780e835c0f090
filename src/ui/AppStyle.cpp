#include "ui/AppStyle.h"

#include "ui/StyleParts.h"
#include "ui/SymbolIcon.h"
#include "ui/Theme.h"

#include <QApplication>
#include <QCalendarWidget>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollArea>
#include <QStyleFactory>
#include <QStyleOption>
#include <QToolButton>
#include <QWidget>

using namespace StyleParts;

void AppStyle::apply(Theme::Appearance appearance, Theme::Contrast contrast) {
    if (!qobject_cast<AppStyle*>(QApplication::style())) {
        QApplication::setStyle(new AppStyle);
    }
    Theme::setContrast(contrast);
    QApplication::setPalette(Theme::palette(appearance, contrast));
    // A calendar's palette was set from the old one when it was polished.
    for (QWidget* widget : QApplication::allWidgets()) {
        if (auto* calendar = qobject_cast<QCalendarWidget*>(widget)) {
            calendar->setPalette(QPalette());
            QApplication::style()->polish(calendar);
        }
    }
}

AppStyle::AppStyle()
    : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

void AppStyle::polish(QWidget* widget) {
    QProxyStyle::polish(widget);
    // A date picker's calendar reads as one surface, its chosen day in the accent.
    if (auto* calendar = qobject_cast<QCalendarWidget*>(widget)) {
        const Ink ink = inkFor(calendar->palette());
        QPalette palette = calendar->palette();
        for (const QPalette::ColorRole role :
             {QPalette::Window, QPalette::Base, QPalette::AlternateBase, QPalette::Button}) {
            palette.setColor(role, ink.surface);
        }
        palette.setColor(QPalette::Highlight, ink.accent);
        palette.setColor(QPalette::HighlightedText, ink.onAccent);
        calendar->setPalette(palette);
        // The month bar is drawn in the highlight colour; here it is the surface.
        if (auto* bar = calendar->findChild<QWidget*>(QStringLiteral("qt_calendar_navigationbar"))) {
            QPalette plain = bar->palette();
            plain.setColor(QPalette::Highlight, ink.surface);
            plain.setColor(QPalette::HighlightedText, ink.text);
            bar->setPalette(plain);
        }
    }
    // Scrolling areas have no frame of their own: what they hold is drawn on the window.
    if (auto* area = qobject_cast<QScrollArea*>(widget)) {
        area->setFrameShape(QFrame::NoFrame);
    }
}

int AppStyle::pixelMetric(PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    switch (metric) {
    case PM_ScrollBarExtent:
        return kScrollBarExtent;
    case PM_ScrollBarSliderMin:
        return kScrollBarHandleMinimum;
    case PM_ToolBarFrameWidth:
        return kToolBarPadding;
    case PM_ToolBarItemMargin:
        return 0;
    case PM_ToolBarItemSpacing:
        return kToolBarSpacing;
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return kMenuPadding;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
    case PM_ButtonDefaultIndicator:
        return 0;
    case PM_ToolTipLabelFrameWidth:
        return kToolTipPadding;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

QSize AppStyle::sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contentsSize,
                                 const QWidget* widget) const {
    switch (type) {
    case CT_PushButton: {
        const int marginX = isLink(widget) ? kLinkMarginX : kButtonMarginX;
        return contentsSize + QSize(2 * marginX, 2 * kButtonMarginY);
    }
    case CT_ToolButton:
        return contentsSize + QSize(2 * kToolMarginX + kToolSlack, 2 * kToolMarginY + kToolSlack);
    case CT_LineEdit: {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (frame && frame->lineWidth > 0) {
            return contentsSize + QSize(2 * kFieldMarginX, 2 * kFieldMarginY);
        }
        return contentsSize;
    }
    case CT_ComboBox:
        return contentsSize +
               QSize(2 * (pickerMarginX(widget) + kPickerLabelInset) + kPickerArrowWidth, 2 * kPickerMarginY);
    case CT_SpinBox:
        // A date field with a calendar is drawn as a picker (its text is its own field).
        if (const auto* date = qobject_cast<const QDateTimeEdit*>(widget); date && date->calendarPopup()) {
            return contentsSize + QSize(2 * kDatePickerMarginX + kPickerArrowWidth, 2 * kPickerMarginY);
        }
        break;
    case CT_MenuItem: {
        const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        if (!item) {
            break;
        }
        if (item->menuItemType == QStyleOptionMenuItem::Separator) {
            return {contentsSize.width(), 1 + 2 * kMenuPadding};
        }
        int width = contentsSize.width() + 2 * kMenuItemMarginX;
        if (item->text.contains(u'\t')) {
            width += item->reservedShortcutWidth + kMenuShortcutGap;
        }
        if (item->menuItemType == QStyleOptionMenuItem::SubMenu) {
            width += kMenuMarkSize;
        }
        if (const int room = iconRoom(item, widget); room > 0) {
            width += room + kMenuPadding;
        }
        // A picker's list hands over its own size, not its text's: the line is measured here.
        const int line = qMax(QFontMetrics(item->font).height(), kMenuMarkSize);
        return {width, line + 2 * kMenuItemMarginY};
    }
    default:
        break;
    }
    return QProxyStyle::sizeFromContents(type, option, contentsSize, widget);
}

QRect AppStyle::subElementRect(SubElement element, const QStyleOption* option, const QWidget* widget) const {
    switch (element) {
    case SE_PushButtonContents:
    case SE_PushButtonFocusRect: {
        const int marginX = isLink(widget) ? kLinkMarginX : kButtonMarginX;
        return option->rect.adjusted(marginX, kButtonMarginY, -marginX, -kButtonMarginY);
    }
    case SE_LineEditContents: {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (frame && frame->lineWidth > 0) {
            return option->rect.adjusted(kFieldMarginX, kFieldMarginY, -kFieldMarginX, -kFieldMarginY);
        }
        return option->rect;
    }
    case SE_ShapedFrameContents:
    case SE_FrameContents:
        if (qobject_cast<const QPlainTextEdit*>(widget)) {
            return option->rect.adjusted(kTextAreaMargin, kTextAreaMargin, -kTextAreaMargin,
                                         -kTextAreaMargin);
        }
        break;
    default:
        break;
    }
    return QProxyStyle::subElementRect(element, option, widget);
}

QRect AppStyle::subControlRect(ComplexControl control, const QStyleOptionComplex* option,
                               SubControl subControl, const QWidget* widget) const {
    if (control == CC_ComboBox) {
        const QRect rect = option->rect;
        const int marginX = pickerMarginX(widget);
        switch (subControl) {
        case SC_ComboBoxFrame:
        case SC_ComboBoxListBoxPopup:
            return rect;
        case SC_ComboBoxArrow:
            return visualRect(option->direction, rect,
                              QRect(rect.right() - kPickerArrowWidth, rect.top() + 1, kPickerArrowWidth,
                                    rect.height() - 2));
        case SC_ComboBoxEditField:
            return visualRect(option->direction, rect,
                              QRect(rect.left() + marginX, rect.top() + kPickerMarginY,
                                    rect.width() - 2 * marginX - kPickerArrowWidth,
                                    rect.height() - 2 * kPickerMarginY));
        default:
            break;
        }
    }
    if (control == CC_ScrollBar) {
        const auto* bar = qstyleoption_cast<const QStyleOptionSlider*>(option);
        if (!bar) {
            return {};
        }
        // A thin handle in a groove inset from the edges; no arrow buttons.
        const bool horizontal = bar->orientation == Qt::Horizontal;
        const QRect groove =
            bar->rect.adjusted(kScrollBarInset, kScrollBarInset, -kScrollBarInset, -kScrollBarInset);
        const int length = horizontal ? groove.width() : groove.height();
        int handle = length;
        if (bar->maximum > bar->minimum) {
            const qint64 range = static_cast<qint64>(bar->maximum) - bar->minimum;
            handle = static_cast<int>(static_cast<qint64>(bar->pageStep) * length / (range + bar->pageStep));
            handle = qBound(qMin(kScrollBarHandleMinimum, length), handle, length);
        }
        const int start = sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition,
                                                  length - handle, bar->upsideDown);
        const auto span = [&](int from, int size) {
            return horizontal ? QRect(groove.left() + from, groove.top(), size, groove.height())
                              : QRect(groove.left(), groove.top() + from, groove.width(), size);
        };
        QRect result;
        switch (subControl) {
        case SC_ScrollBarGroove:
            result = groove;
            break;
        case SC_ScrollBarSlider:
            result = span(start, handle);
            break;
        case SC_ScrollBarSubPage:
            result = span(0, start);
            break;
        case SC_ScrollBarAddPage:
            result = span(start + handle, length - start - handle);
            break;
        default:
            break;
        }
        return horizontal ? visualRect(bar->direction, bar->rect, result) : result;
    }
    return QProxyStyle::subControlRect(control, option, subControl, widget);
}

void AppStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                             const QWidget* widget) const {
    switch (element) {
    case PE_PanelButtonTool:
    case PE_PanelButtonCommand:
    case PE_FrameDefaultButton:
    case PE_PanelToolBar:
    case PE_PanelMenuBar:
    case PE_IndicatorToolBarHandle:
        return;
    case PE_FrameFocusRect:
        // Buttons, tool buttons and pickers show focus in their border.
        if (inComboPopup(widget) || qobject_cast<const QPushButton*>(widget) ||
            qobject_cast<const QToolButton*>(widget) || qobject_cast<const QComboBox*>(widget)) {
            return;
        }
        break;
    case PE_PanelLineEdit: {
        const auto* frame = qstyleoption_cast<const QStyleOptionFrame*>(option);
        if (frame && frame->lineWidth > 0) {
            drawField(painter, option);
        } else {
            painter->fillRect(option->rect, option->palette.brush(QPalette::Base));
        }
        return;
    }
    case PE_FrameLineEdit:
        drawField(painter, option);
        return;
    case PE_Frame:
        if (qobject_cast<const QPlainTextEdit*>(widget)) {
            drawField(painter, option);
            return;
        }
        if (inComboPopup(widget)) {
            const Ink ink = inkFor(option->palette);
            painter->save();
            painter->setPen(ink.line);
            painter->setBrush(Qt::NoBrush);
            painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
            painter->restore();
            return;
        }
        break;
    case PE_PanelMenu:
        painter->fillRect(option->rect, inkFor(option->palette).surface);
        return;
    case PE_FrameMenu:
    case PE_PanelTipLabel: {
        const Ink ink = inkFor(option->palette);
        painter->save();
        if (element == PE_PanelTipLabel) {
            painter->fillRect(option->rect, option->palette.brush(QPalette::ToolTipBase));
        }
        painter->setPen(ink.line);
        painter->setBrush(Qt::NoBrush);
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        painter->restore();
        return;
    }
    case PE_IndicatorToolBarSeparator: {
        const Ink ink = inkFor(option->palette);
        const QRect rect = option->rect;
        if (option->state.testFlag(State_Horizontal)) {
            painter->fillRect(
                QRect(rect.center().x(), rect.top() + kMenuPadding, 1, rect.height() - 2 * kMenuPadding),
                ink.line);
        } else {
            painter->fillRect(
                QRect(rect.left() + kMenuPadding, rect.center().y(), rect.width() - 2 * kMenuPadding, 1),
                ink.line);
        }
        return;
    }
    default:
        break;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void AppStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                           const QWidget* widget) const {
    switch (element) {
    case CE_PushButton:
    case CE_PushButtonBevel:
    case CE_PushButtonLabel:
        drawPushButton(option, painter, widget, element != CE_PushButtonLabel, element != CE_PushButtonBevel);
        return;
    case CE_MenuItem:
        drawMenuItem(option, painter, widget);
        return;
    case CE_MenuBarItem: {
        const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
        if (!item) {
            break;
        }
        const Ink ink = inkFor(option->palette);
        const bool enabled = option->state.testFlag(State_Enabled);
        if (enabled && option->state.testFlag(State_Selected)) {
            drawPanel(painter, option->rect, ink.muted, QColor(), 0, kMenuItemRadius);
        }
        painter->save();
        painter->setPen(enabled ? ink.text : ink.secondary);
        painter->drawText(option->rect,
                          Qt::AlignCenter | Qt::TextSingleLine | Qt::TextDontClip |
                              textFlags(this, option, widget),
                          item->text);
        painter->restore();
        return;
    }
    case CE_MenuBarEmptyArea:
    case CE_ToolBar:
        return;
    case CE_Splitter:
        painter->fillRect(option->rect, inkFor(option->palette).line);
        return;
    default:
        break;
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

void AppStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* option,
                                  QPainter* painter, const QWidget* widget) const {
    switch (control) {
    case CC_ToolButton:
        drawToolButton(option, painter, widget);
        return;
    case CC_ComboBox:
        drawComboBox(option, painter, widget);
        return;
    case CC_ScrollBar:
        drawScrollBar(option, painter, widget);
        return;
    default:
        break;
    }
    QProxyStyle::drawComplexControl(control, option, painter, widget);
}

void AppStyle::drawPushButton(const QStyleOption* option, QPainter* painter, const QWidget* widget,
                              bool bevel, bool label) const {
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (!button) {
        return;
    }
    const ButtonLook look = buttonLook(roleOf(widget), inkFor(option->palette), option->state);
    if (bevel) {
        drawPanel(painter, option->rect, look.fill, look.border, look.borderWidth, Theme::kRadiusSmall);
    }
    if (!label) {
        return;
    }

    const QRect contents = subElementRect(SE_PushButtonContents, option, widget);
    painter->save();
    QRect textRect = contents;
    if (!button->icon.isNull()) {
        const bool enabled = option->state.testFlag(State_Enabled);
        const QPixmap pixmap = button->icon.pixmap(button->iconSize, pixelRatio(painter, widget),
                                                   enabled ? QIcon::Normal : QIcon::Disabled);
        const int spacing = button->text.isEmpty() ? 0 : 4;
        const int textWidth =
            button->text.isEmpty() ? 0 : button->fontMetrics.horizontalAdvance(button->text);
        const int width = button->iconSize.width() + spacing + textWidth;
        const int left = contents.x() + qMax(0, (contents.width() - width) / 2);
        const QRect iconRect(left, contents.y() + (contents.height() - button->iconSize.height()) / 2,
                             button->iconSize.width(), button->iconSize.height());
        painter->drawPixmap(iconRect, pixmap);
        textRect = QRect(iconRect.right() + 1 + spacing, contents.y(),
                         contents.right() - iconRect.right() - spacing, contents.height());
    }
    if (!button->text.isEmpty()) {
        QFont font = painter->font();
        font.setUnderline(look.underline);
        painter->setFont(font);
        painter->setPen(look.text);
        const int alignment = button->icon.isNull() ? static_cast<int>(Qt::AlignCenter)
                                                    : static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter);
        painter->drawText(textRect, alignment | Qt::TextSingleLine | textFlags(this, option, widget),
                          button->text);
    }
    painter->restore();
}

void AppStyle::drawToolButton(const QStyleOptionComplex* option, QPainter* painter,
                              const QWidget* widget) const {
    const auto* tool = qstyleoption_cast<const QStyleOptionToolButton*>(option);
    if (!tool) {
        return;
    }
    const Ink ink = inkFor(option->palette);
    const State state = option->state;
    const bool enabled = state.testFlag(State_Enabled);
    const bool hover = enabled && (state & (State_MouseOver | State_Sunken));
    const bool checked = state.testFlag(State_On);
    const bool focus = enabled && state.testFlag(State_HasFocus);
    drawPanel(painter, option->rect, checked ? ink.surface : (hover ? ink.muted : QColor()),
              focus ? ink.accent : (checked ? ink.line : QColor()), 1, Theme::kRadiusSmall);

    QStyleOptionToolButton label = *tool;
    label.rect = option->rect.adjusted(kToolMarginX, kToolMarginY, -kToolMarginX, -kToolMarginY);
    label.state &= ~(State_Sunken | State_HasFocus);
    label.palette.setColor(QPalette::ButtonText, enabled ? ink.text : ink.secondary);
    proxy()->drawControl(CE_ToolButtonLabel, &label, painter, widget);

    if (tool->features.testFlag(QStyleOptionToolButton::HasMenu) &&
        !tool->features.testFlag(QStyleOptionToolButton::MenuButtonPopup)) {
        const QRect rect = option->rect;
        const QRect arrow(rect.right() - kMenuMarkSize + 2, rect.bottom() - kMenuMarkSize + 2,
                          kMenuMarkSize - 4, kMenuMarkSize - 4);
        drawSymbol(painter, arrow, QStringLiteral("chevron.down"), enabled ? ink.secondary : ink.line, 8,
                   widget);
    }
}

void AppStyle::drawComboBox(const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget) const {
    drawField(painter, option);
    const Ink ink = inkFor(option->palette);
    const QRect arrow = subControlRect(CC_ComboBox, option, SC_ComboBoxArrow, widget);
    drawSymbol(painter, arrow, QStringLiteral("chevron.down"),
               option->state.testFlag(State_Enabled) ? ink.secondary : ink.line, kPickerArrowSize, widget);
}

void AppStyle::drawScrollBar(const QStyleOptionComplex* option, QPainter* painter,
                             const QWidget* widget) const {
    const Ink ink = inkFor(option->palette);
    const QRect handle = subControlRect(CC_ScrollBar, option, SC_ScrollBarSlider, widget);
    if (handle.isEmpty() || !option->state.testFlag(State_Enabled)) {
        return;
    }
    const bool active = option->activeSubControls.testFlag(SC_ScrollBarSlider) &&
                        (option->state & (State_MouseOver | State_Sunken));
    QColor color = active ? ink.secondary : ink.line;
    if (active) {
        color.setAlphaF(0.6F);
    }
    drawPanel(painter, handle, color, QColor(), 0, kScrollBarHandleRadius);
}

void AppStyle::drawMenuItem(const QStyleOption* option, QPainter* painter, const QWidget* widget) const {
    const auto* item = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    if (!item) {
        return;
    }
    const Ink ink = inkFor(option->palette);
    const QRect rect = option->rect;
    if (item->menuItemType == QStyleOptionMenuItem::Separator) {
        painter->fillRect(QRect(rect.left() + kMenuSeparatorInset, rect.center().y(),
                                rect.width() - 2 * kMenuSeparatorInset, 1),
                          ink.line);
        return;
    }
    const bool enabled = option->state.testFlag(State_Enabled);
    if (enabled && option->state.testFlag(State_Selected)) {
        drawPanel(painter, rect, ink.accentFill, QColor(), 0, kMenuItemRadius);
    }
    const QColor color = enabled ? ink.text : ink.secondary;
    // The check mark sits in the left margin; an icon takes the room after it.
    if (item->checkType != QStyleOptionMenuItem::NotCheckable && item->checked) {
        drawSymbol(painter, QRect(rect.left(), rect.top(), kMenuItemMarginX, rect.height()),
                   QStringLiteral("checkmark"), color, kMenuMarkSize, widget);
    }
    int left = rect.left() + kMenuItemMarginX;
    if (const int room = iconRoom(item, widget); room > 0) {
        if (!item->icon.isNull()) {
            const int size = qMin(room, rect.height());
            const QPixmap pixmap = item->icon.pixmap(QSize(size, size), pixelRatio(painter, widget),
                                                     enabled ? QIcon::Normal : QIcon::Disabled);
            painter->drawPixmap(QRect(left, rect.top() + (rect.height() - size) / 2, size, size), pixmap);
        }
        left += room + kMenuPadding;
    }
    const QRect textRect(left, rect.top(), rect.right() - kMenuItemMarginX - left + 1, rect.height());
    const qsizetype tab = item->text.indexOf(u'\t');
    painter->save();
    painter->setFont(item->font);
    painter->setPen(color);
    painter->drawText(textRect,
                      static_cast<int>(Qt::AlignLeft | Qt::AlignVCenter) | Qt::TextSingleLine |
                          textFlags(this, option, widget),
                      tab < 0 ? item->text : item->text.left(tab));
    if (tab >= 0) {
        painter->setPen(ink.secondary);
        painter->drawText(textRect, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine,
                          item->text.mid(tab + 1));
    }
    painter->restore();
    if (item->menuItemType == QStyleOptionMenuItem::SubMenu) {
        drawSymbol(painter,
                   QRect(rect.right() - kMenuItemMarginX + 1, rect.top(), kMenuItemMarginX, rect.height()),
                   QStringLiteral("chevron.right"), color, kMenuMarkSize, widget);
    }
}

QIcon AppStyle::standardIcon(StandardPixmap standardIcon, const QStyleOption* option,
                             const QWidget* widget) const {
    const QPalette palette = widget ? widget->palette() : QApplication::palette();
    const qreal ratio = widget ? widget->devicePixelRatioF() : qApp->devicePixelRatio();
    const QColor ink = Theme::primaryText(Theme::appearance(palette));
    switch (standardIcon) {
    // A toolbar builds its overflow button (and so asks for this icon) when it is made,
    // whether or not it ever overflows.
    case SP_ToolBarHorizontalExtensionButton:
        return QIcon(SymbolIcon::pixmap(QStringLiteral("chevron.right"), ink, 12, ratio));
    case SP_ToolBarVerticalExtensionButton:
        return QIcon(SymbolIcon::pixmap(QStringLiteral("chevron.down"), ink, 12, ratio));
    // The calendar's month arrows.
    case SP_ArrowRight:
        return QIcon(SymbolIcon::pixmap(QStringLiteral("chevron.right"), ink, 16, ratio));
    case SP_ArrowLeft: {
        const QPixmap right = SymbolIcon::pixmap(QStringLiteral("chevron.right"), ink, 16, ratio);
        QPixmap left = QPixmap::fromImage(right.toImage().mirrored(true, false));
        left.setDevicePixelRatio(right.devicePixelRatio());
        return QIcon(left);
    }
    default:
        return QProxyStyle::standardIcon(standardIcon, option, widget);
    }
}
