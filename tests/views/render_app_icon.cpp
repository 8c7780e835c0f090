// Renders the application icon's SVG into the PNG sizes of the hicolor icon theme:
// <output>/<n>x<n>/apps/com.harrowmere.Tallyfen.png.
// Usage: render_app_icon <svg> <output folder>   (scripts/render-app-icon.sh)
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>

#include <cstdio>

int main(int argc, char* argv[]) {
    QGuiApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 3) {
        std::fprintf(stderr, "usage: render_app_icon <svg> <output folder>\n");
        return 2;
    }
    QSvgRenderer renderer(arguments[1]);
    if (!renderer.isValid()) {
        std::fprintf(stderr, "cannot read %s\n", qPrintable(arguments[1]));
        return 1;
    }
    for (const int size : {16, 24, 32, 48, 64, 128, 256, 512}) {
        const QString folder = QStringLiteral("%1/%2x%2/apps").arg(arguments[2]).arg(size);
        QDir().mkpath(folder);
        QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter);
        painter.end();
        const QString path = folder + QStringLiteral("/com.harrowmere.Tallyfen.png");
        if (!image.save(path)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    return 0;
}
