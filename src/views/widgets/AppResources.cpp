#include "views/widgets/AppResources.h"

#include <QFontDatabase>
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
} // namespace

void AppResources::load() {
    static bool loaded = false;
    if (loaded) {
        return;
    }
    loaded = true;
    initialiseResources();
    for (const char* weight : {"400", "500", "600"}) {
        const int id = QFontDatabase::addApplicationFont(
            QStringLiteral(":/fonts/Inter-%1.woff").arg(QLatin1StringView(weight)));
        if (id >= 0 && family().isEmpty()) {
            family() = QFontDatabase::applicationFontFamilies(id).value(0);
        }
    }
}

QString AppResources::fontFamily() {
    load();
    return family();
}
