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

// A store file and its write-ahead log made unwritable, or writable again: changes go to
// the log first, so both must refuse.
inline bool makeStoreReadOnly(const QString& path, bool readOnly) {
    return makeReadOnly(path, readOnly) && makeReadOnly(path + QStringLiteral("-wal"), readOnly);
}

#include <QByteArray>
#include <sys/mount.h>

// A 64 KiB file system mounted at `folder` (root only), and taken away again.
inline bool mountSmallDisk(const QString& folder) {
    return geteuid() == 0 &&
           ::mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0, "size=64k") == 0;
}
inline void unmountSmallDisk(const QString& folder) {
    ::umount(QFile::encodeName(folder).constData());
}

// Fills what is left of the disk under `folder` with one file; its path, to remove it.
inline QString fillDisk(const QString& folder) {
    const QString path = folder + QStringLiteral("/filler");
    QFile filler(path);
    if (filler.open(QIODevice::WriteOnly)) {
        const QByteArray block(4096, 'x');
        while (filler.write(block) == block.size() && filler.flush()) {
        }
    }
    return path;
}
