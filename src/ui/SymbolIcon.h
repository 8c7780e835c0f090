#pragma once

#include <QColor>
#include <QIcon>
#include <QPixmap>
#include <QString>

#include <functional>

// The symbol names the screens' content uses, drawn with the bundled icon set (Tabler
// Icons, MIT, resources/icons/): one table maps each name to its icon. Icons are tinted
// to the colour asked for and rendered crisp for the screen's pixel ratio.
class SymbolIcon final {
public:
    SymbolIcon() = delete;

    // The resource of a symbol's icon; empty for a name the table doesn't know.
    static QString resource(const QString& symbol);
    // The icon at `size` device-independent pixels in `color`; a known fallback (a
    // question mark) for an unknown name, so nothing is ever blank.
    static QPixmap pixmap(const QString& symbol, const QColor& color, int size, qreal devicePixelRatio);
    // The icon for buttons and actions, at most `size` device-independent pixels: its
    // colour is asked of `ink` whenever it is drawn, so it follows the application's
    // appearance as the desktop changes it, and it is rendered only when first drawn.
    static QIcon icon(const QString& symbol, int size, std::function<QColor()> ink);
};
