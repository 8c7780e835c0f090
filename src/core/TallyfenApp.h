#pragma once

#include "store/AccountStore.h"

#include <QProcessEnvironment>
#include <QString>

#include <memory>

// The application's entry: opens the local database before any window exists.
class TallyfenApp final {
public:
    TallyfenApp() = delete;

    static const QString kFatalStorePrefix;

    // The store at the location the environment chooses. The default location's folder
    // is created when missing; a path given by the environment is taken as it is.
    static std::unique_ptr<AccountStore> openStore(const QProcessEnvironment& environment,
                                                   QString* errorMessage);
    // The whole line printed when the store can't be opened.
    static QString fatalStoreMessage(const QString& reason);
};
