#pragma once

#include <QSettings>

// The application's own settings file, the one the preferences live in, for the local
// services that keep a little non-secret state of their own there (pending key
// deletions, notification ids). Named explicitly, so that it is the same file whoever
// calls, also before or without the application object's names.
class ApplicationSettings final {
public:
    ApplicationSettings() = delete;

    static QSettings open() { return QSettings(QStringLiteral("Tallyfen"), QStringLiteral("Tallyfen")); }
};
