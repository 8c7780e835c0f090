#include "ui/AppResources.h"

#include <QFontDatabase>
#include <QImageReader>
#include <QResource>
#include <QStringList>

// Outside any namespace, as Qt's resource macro requires; the resources live in a
// static library, whose initialiser the linker would otherwise drop.
static void initialiseResources() {
    Q_INIT_RESOURCE(resources);
}

namespace {
QString& family() {
    static QString name;
    return name;
}

QString& tabularFamily() {
    static QString name;
    return name;
}

// Registers one bundled face and remembers its family name. The faces are stored
// uncompressed, so the font database reads them where they lie in the program's image
// instead of a copy of each on the heap.
void addFont(const QString& path, QString& familyName) {
    const QResource resource(path);
    const int id =
        resource.compressionAlgorithm() == QResource::NoCompression && resource.data()
            ? QFontDatabase::addApplicationFontFromData(QByteArray::fromRawData(
                  reinterpret_cast<const char*>(resource.data()), static_cast<qsizetype>(resource.size())))
            : QFontDatabase::addApplicationFont(path);
    if (id >= 0 && familyName.isEmpty()) {
        familyName = QFontDatabase::applicationFontFamilies(id).value(0);
    }
}
} // namespace

void AppResources::load() {
    static bool loaded = false;
    if (loaded) {
        return;
    }
    loaded = true;
    initialiseResources();
    for (const char* weight : {"400", "500", "600"}) {
        const QLatin1StringView name(weight);
        addFont(QStringLiteral(":/fonts/Inter-%1.ttf").arg(name), family());
        addFont(QStringLiteral(":/fonts/InterTabular-%1.ttf").arg(name), tabularFamily());
    }
}

QString AppResources::fontFamily() {
    load();
    return family();
}

QString AppResources::tabularFontFamily() {
    load();
    return tabularFamily();
}

QImage AppResources::png(const QString& path) {
    QImageReader reader(path, QByteArrayLiteral("png"));
    reader.setAutoDetectImageFormat(false);
    return reader.read();
}
