#include "model/PlatformWording.h"

PlatformWording::Platform PlatformWording::current() {
#ifdef Q_OS_MACOS
    return Platform::macOS;
#else
    return Platform::other;
#endif
}

QString PlatformWording::apply(const QString& text, Platform platform) {
    QString result = text;
    result.replace(QStringLiteral("SwiftData"), QStringLiteral("the local database"));
    if (platform != Platform::macOS) {
        result.replace(QStringLiteral("macOS Keychain"), QStringLiteral("the system keychain"));
        result.replace(QStringLiteral("macOS notification permission"),
                       QStringLiteral("notification permission"));
    }
    return result;
}
