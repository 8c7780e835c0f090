#include "model/SecretText.h"

#include <QTimer>

#include <cstdlib> // defines __GLIBC__ for the test below

#if defined(__linux__) && defined(__GLIBC__)
#include <malloc.h>
#endif

namespace {
int g_holders = 0;
// How long freed memory is still wiped after the last holder let go: the network
// thread frees its last buffers a little later.
constexpr int kGraceMilliseconds = 3000;

void setFreedMemoryWipe(bool on) {
#if defined(__linux__) && defined(__GLIBC__)
    mallopt(M_PERTURB, on ? 0xA5 : 0);
#else
    (void)on;
#endif
}
} // namespace

void SecretText::holdFreedMemoryWipe() {
    if (g_holders++ == 0) {
        setFreedMemoryWipe(true);
    }
}

void SecretText::releaseFreedMemoryWipe() {
    if (g_holders <= 0) {
        return;
    }
    if (--g_holders == 0) {
        QTimer::singleShot(kGraceMilliseconds, [] {
            if (g_holders == 0) {
                setFreedMemoryWipe(false);
            }
        });
    }
}
