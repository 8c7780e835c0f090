#pragma once

#include <QProcessEnvironment>
#include <QString>

// Where the local database lives: TALLYFEN_STORE_PATH when it is set and not empty,
// exactly as given (no trimming, no tilde expansion, relative stays relative);
// otherwise a file in the platform's application-data folder.
class StoreLocation final {
public:
    StoreLocation() = delete;

    static const QString kEnvironmentVariable;
    static const QString kDefaultFileName;

    // The path the variable names, or empty when it is unset or empty.
    static QString pathFromEnvironment(const QProcessEnvironment& environment);
    static QString defaultPath();
    static QString resolve(const QProcessEnvironment& environment);
    // Whether `path` is the default location, whose folder may be created.
    static bool isDefault(const QProcessEnvironment& environment);
};
