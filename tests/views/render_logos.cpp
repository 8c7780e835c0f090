// Renders the provider marks of resources/logos/source/ into the PNG logos the
// application bundles, named by the provider's raw value, 128 pixels square.
// Usage: render_logos <source folder> <output folder>   (scripts/render-logos.sh)
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
        std::fprintf(stderr, "usage: render_logos <source folder> <output folder>\n");
        return 2;
    }
    const QDir source(arguments[1]);
    const QDir output(arguments[2]);
    const QList<QPair<QString, QString>> marks{
        {QStringLiteral("openai.svg"), QStringLiteral("openai.png")},
        {QStringLiteral("claude.svg"), QStringLiteral("anthropic.png")},
        {QStringLiteral("grok.svg"), QStringLiteral("xai.png")},
        {QStringLiteral("gemini-color.svg"), QStringLiteral("gemini.png")}};
    constexpr int kSize = 128;
    for (const auto& [svg, png] : marks) {
        QSvgRenderer renderer(source.filePath(svg));
        if (!renderer.isValid()) {
            std::fprintf(stderr, "cannot read %s\n", qPrintable(svg));
            return 1;
        }
        QImage image(kSize, kSize, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::Antialiasing);
        renderer.render(&painter, QRectF(0, 0, kSize, kSize));
        painter.end();
        if (!image.save(output.filePath(png))) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(png));
            return 1;
        }
        std::printf("wrote %s\n", qPrintable(output.filePath(png)));
    }
    return 0;
}
