#include "core/ProcessHardening.h"

#include <QtGlobal>

#ifdef Q_OS_LINUX
#include <sys/prctl.h>
#endif

void ProcessHardening::apply() {
#ifdef Q_OS_LINUX
    ::prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
#endif
}

bool ProcessHardening::isDumpable() {
#ifdef Q_OS_LINUX
    return ::prctl(PR_GET_DUMPABLE, 0, 0, 0, 0) != 0;
#else
    return true;
#endif
}
