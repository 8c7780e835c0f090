#pragma once

#include <QByteArray>
#include <QString>
#include <QTimer>

#include <algorithm>

// Overwrites a secret's characters before its memory goes back to the allocator, so
// that a freed block holds no key. A copy that still shares the text is left to its
// other owners: only the last one can wipe it (a shared text is merely let go here).
class SecretText final {
public:
    SecretText() = delete;

    static void wipe(QString& text) noexcept {
        if (text.isDetached()) {
            std::fill(text.begin(), text.end(), QChar(0));
        }
        text.clear();
    }
    static void wipe(QByteArray& bytes) noexcept {
        if (bytes.isDetached()) {
            std::fill(bytes.begin(), bytes.end(), '\0');
        }
        bytes.clear();
    }
    // Wipes bytes once every other owner has let them go (a network request may hold a
    // copy until its reply is deleted, a turn or two of the event loop later). Gives up
    // after a few seconds, letting them go unwiped, rather than keep them for ever.
    // While a secret is in use, memory the allocator gets back (from any thread, the
    // network thread's request buffers included) is overwritten as it is freed; a few
    // seconds after the last holder lets go, freeing is plain again. Where the C library
    // offers no such setting, these do nothing.
    static void holdFreedMemoryWipe();
    static void releaseFreedMemoryWipe();

    static void wipeWhenLast(QByteArray bytes, int triesLeft = 40) {
        if (bytes.isDetached() || triesLeft <= 0) {
            wipe(bytes);
            return;
        }
        QTimer::singleShot(100, [held = std::move(bytes), triesLeft]() mutable {
            wipeWhenLast(std::move(held), triesLeft - 1);
        });
    }
};
