#pragma once

#include <QColor>
#include <QPixmap>
#include <QString>

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
};
