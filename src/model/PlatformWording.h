#pragma once

#include <QString>

// Texts for the operator that name a platform technology say what this build really
// uses: the local database always, and on platforms other than macOS the system keychain
// and plain notification permission. Every such text passes through here.
class PlatformWording final {
public:
    PlatformWording() = delete;

    enum class Platform { macOS, other };

    static Platform current();
    static QString apply(const QString& text, Platform platform = current());
    // A text of the system's own, written as UTF-8 in the source, as this platform says it.
    static QString text(const char* utf8) { return apply(QString::fromUtf8(utf8)); }
};
