#include "views/widgets/AppStyle.h"

#include "views/widgets/SymbolIcon.h"
#include "views/widgets/Theme.h"

#include <QApplication>
#include <QStyleFactory>
#include <QWidget>

AppStyle::AppStyle()
    : QProxyStyle(QStyleFactory::create(QStringLiteral("Fusion"))) {}

QIcon AppStyle::standardIcon(StandardPixmap standardIcon, const QStyleOption* option,
                             const QWidget* widget) const {
    // A toolbar builds its overflow button (and so asks for this icon) when it is made,
    // whether or not it ever overflows.
    if (standardIcon == SP_ToolBarHorizontalExtensionButton ||
        standardIcon == SP_ToolBarVerticalExtensionButton) {
        const QPalette palette = widget ? widget->palette() : QApplication::palette();
        const qreal ratio = widget ? widget->devicePixelRatioF() : qApp->devicePixelRatio();
        const QString symbol = standardIcon == SP_ToolBarHorizontalExtensionButton
                                   ? QStringLiteral("chevron.right")
                                   : QStringLiteral("chevron.down");
        return QIcon(SymbolIcon::pixmap(symbol, Theme::primaryText(Theme::appearance(palette)), 12, ratio));
    }
    return QProxyStyle::standardIcon(standardIcon, option, widget);
}
