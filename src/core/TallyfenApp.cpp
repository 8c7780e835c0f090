#include "core/TallyfenApp.h"

#include "core/StoreLocation.h"
#include "store/StoreFile.h"

#include <QDir>
#include <QFileInfo>

const QString TallyfenApp::kFatalStorePrefix = QStringLiteral("Unable to create the local tracker store: ");

std::unique_ptr<AccountStore> TallyfenApp::openStore(const QProcessEnvironment& environment,
                                                     QString* errorMessage) {
    const QString path = StoreLocation::resolve(environment);
    if (StoreLocation::isDefault(environment)) {
        const QString folder = QFileInfo(path).absolutePath();
        if (!StoreFile::makePrivateFolder(folder)) {
            if (errorMessage) {
                *errorMessage = QStringLiteral("the folder “%1” could not be created").arg(folder);
            }
            return nullptr;
        }
    }
    return AccountStore::open(path, errorMessage);
}

QString TallyfenApp::fatalStoreMessage(const QString& reason) {
    return kFatalStorePrefix + reason;
}
