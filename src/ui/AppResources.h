#pragma once

#include <QImage>
#include <QString>

// The bundled resources (icons, provider logos, the Inter text face), made available
// once per process before the first widget draws.
class AppResources final {
public:
    AppResources() = delete;

    // Registers the resources and the font; safe to call more than once.
    static void load();
    // The bundled text face's family, or the platform's default when it could not load.
    static QString fontFamily();
    // The same face with tabular figures as its default glyphs, for numbers that change;
    // empty when it could not load.
    static QString tabularFontFamily();
    // A bundled PNG, decoded by Qt's own PNG reader; a null image when it is missing or
    // damaged. Unlike QImage(path), this never loads the installed image-format plugins
    // to ask each whether it knows the file better.
    static QImage png(const QString& path);
};
