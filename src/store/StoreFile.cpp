#include "store/StoreFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStorageInfo>

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
// Below this a database can't even grow its log by one page and its index.
constexpr qint64 kFullBelowBytes = 64 * 1024;
} // namespace

std::optional<quint32> StoreFile::schemaVersion(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return std::nullopt;
    }
    const QByteArray header = file.read(100);
    if (header.size() < 100 || !header.startsWith(QByteArrayView("SQLite format 3\0", 16))) {
        return std::nullopt;
    }
    // Big-endian, at byte 60 of the 100-byte header.
    const auto byte = [&](int at) { return static_cast<quint32>(static_cast<unsigned char>(header.at(at))); };
    return (byte(60) << 24U) | (byte(61) << 16U) | (byte(62) << 8U) | byte(63);
}

std::optional<QString> StoreFile::whyNotWritable(const QString& path) {
    const QByteArray native = QFile::encodeName(path);
    if (::access(native.constData(), F_OK) == 0 && ::access(native.constData(), W_OK) != 0) {
        return QStringLiteral("the file “%1” is read-only, so nothing could be kept").arg(path);
    }
    const QString folder = QFileInfo(path).absolutePath();
    if (::access(QFile::encodeName(folder).constData(), W_OK | X_OK) != 0) {
        return QStringLiteral("the folder “%1” is read-only, so nothing could be kept").arg(folder);
    }
    return std::nullopt;
}

bool StoreFile::createPrivately(const QString& path) {
    const int fd = ::open(QFile::encodeName(path).constData(),
                          O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
    if (fd < 0) {
        return errno == EEXIST;
    }
    ::close(fd);
    return true;
}

bool StoreFile::makePrivateFolder(const QString& folder) {
    if (QFileInfo(folder).isDir()) {
        return true;
    }
    if (!QDir().mkpath(folder)) {
        return false;
    }
    return ::chmod(QFile::encodeName(folder).constData(), S_IRWXU) == 0;
}

QString StoreFile::explain(const QString& reason, const QString& path) {
    // The engine reports a file made read-only under it as a plain I/O error.
    if (reason != QStringLiteral("attempt to write a readonly database")) {
        if (const auto readOnly = whyNotWritable(path)) {
            if (!reason.contains(QStringLiteral("read-only"))) {
                return QStringLiteral("%1 (%2)").arg(*readOnly, reason);
            }
        }
    }
    const QStorageInfo storage(QFileInfo(path).absolutePath());
    if (storage.isValid() && storage.bytesAvailable() < kFullBelowBytes) {
        return QStringLiteral("the disk is full (%1)").arg(reason);
    }
    return reason;
}
