#pragma once

#include "ui/Theme.h"

#include <QProxyStyle>

// The application's style: the standard controls drawn flat in the theme's colours
// (buttons by role, tool buttons, fields, pickers, menus, scroll bars, splitters and
// tooltips), over Qt's Fusion style for everything else. Drawing them here instead of
// through a style sheet spares every widget the sheet's matching when it is made and
// drawn. Icons Qt would read from its own image files come from the bundled set.
class AppStyle final : public QProxyStyle {
    Q_OBJECT

public:
    AppStyle();

    // Sets this style and the theme's palette for an appearance on the whole application;
    // called again, it changes only the palette, and every widget repaints in it.
    static void apply(Theme::Appearance appearance, Theme::Contrast contrast = Theme::Contrast::standard);

    using QProxyStyle::polish;
    void polish(QWidget* widget) override;

    int pixelMetric(PixelMetric metric, const QStyleOption* option = nullptr,
                    const QWidget* widget = nullptr) const override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* option, const QSize& contentsSize,
                           const QWidget* widget) const override;
    QRect subElementRect(SubElement element, const QStyleOption* option,
                         const QWidget* widget) const override;
    QRect subControlRect(ComplexControl control, const QStyleOptionComplex* option, SubControl subControl,
                         const QWidget* widget) const override;

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget = nullptr) const override;
    void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget = nullptr) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
                            const QWidget* widget = nullptr) const override;

    QIcon standardIcon(StandardPixmap standardIcon, const QStyleOption* option = nullptr,
                       const QWidget* widget = nullptr) const override;

private:
    void drawPushButton(const QStyleOption* option, QPainter* painter, const QWidget* widget, bool bevel,
                        bool label) const;
    void drawToolButton(const QStyleOptionComplex* option, QPainter* painter, const QWidget* widget) const;
    void drawComboBox(const QStyleOptionComplex* option, QPainter* painter, const QWidget* widget) const;
    void drawScrollBar(const QStyleOptionComplex* option, QPainter* painter, const QWidget* widget) const;
    void drawMenuItem(const QStyleOption* option, QPainter* painter, const QWidget* widget) const;
};
