#pragma once

#include <QFile>
#include <QProcess>
#include <QString>

#include <sys/stat.h>
#include <unistd.h>

// Makes a file unwritable even for root (the immutable attribute), or by mode otherwise,
// and writable again. For tests of what a store does when it can't write.
inline bool makeReadOnly(const QString& path, bool readOnly) {
    if (geteuid() == 0) {
        return QProcess::execute(QStringLiteral("chattr"),
                                 {readOnly ? QStringLiteral("+i") : QStringLiteral("-i"), path}) == 0;
    }
    return ::chmod(QFile::encodeName(path).constData(), readOnly ? 0444 : 0644) == 0;
}
