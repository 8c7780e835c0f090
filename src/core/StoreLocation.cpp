#include "core/StoreLocation.h"

#include <QDir>
#include <QStandardPaths>

const QString StoreLocation::kEnvironmentVariable = QStringLiteral("TALLYFEN_STORE_PATH");
const QString StoreLocation::kDefaultFileName = QStringLiteral("Tallyfen.store");

QString StoreLocation::pathFromEnvironment(const QProcessEnvironment& environment) {
    return environment.value(kEnvironmentVariable);
}

QString StoreLocation::defaultPath() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation);
    return QDir(folder).filePath(kDefaultFileName);
}

QString StoreLocation::resolve(const QProcessEnvironment& environment) {
    const QString fromEnvironment = pathFromEnvironment(environment);
    return fromEnvironment.isEmpty() ? defaultPath() : fromEnvironment;
}

bool StoreLocation::isDefault(const QProcessEnvironment& environment) {
    return pathFromEnvironment(environment).isEmpty();
}
