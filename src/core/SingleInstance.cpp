#include "core/SingleInstance.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocalSocket>
#include <QThread>

#include <cerrno>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {
const QByteArray kActivate = QByteArrayLiteral("activate\n");

QString canonical(const QString& storePath) {
    const QFileInfo info(storePath);
    const QString real = info.canonicalFilePath(); // empty while the file does not exist
    return QDir::cleanPath(real.isEmpty() ? info.absoluteFilePath() : real);
}

// Asks the owner to come forward; it may still be starting, so it is given a moment.
void askOwnerToActivate(const QString& name) {
    const QDeadlineTimer deadline(1000);
    while (!deadline.hasExpired()) {
        QLocalSocket socket;
        socket.connectToServer(name);
        if (socket.waitForConnected(200)) {
            socket.write(kActivate);
            socket.waitForBytesWritten(200);
            socket.disconnectFromServer();
            return;
        }
        QThread::msleep(50);
    }
}

enum class Lock { taken, held, unavailable };

// Opens the lock file and locks it without waiting. Nothing is synced to disk: the lock
// lives in the kernel, the file only names it.
Lock lockFile(const QString& path, int* descriptor) {
    const QByteArray native = QFile::encodeName(path);
    // A file unlinked by an owner that was ending between our open and our lock would
    // lock nothing anyone else can find: then look again.
    for (int attempt = 0; attempt < 5; ++attempt) {
        // Never through a link: one planted at the lock's name would have its target
        // truncated and written.
        struct stat named {};
        if (::lstat(native.constData(), &named) == 0 && !S_ISREG(named.st_mode)) {
            return Lock::unavailable;
        }
        const int fd = ::open(native.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NOCTTY, 0600);
        if (fd < 0) {
            return Lock::unavailable;
        }
        if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
            const int error = errno;
            ::close(fd);
            return error == EWOULDBLOCK ? Lock::held : Lock::unavailable;
        }
        struct stat opened {};
        if (::fstat(fd, &opened) == 0 && S_ISREG(opened.st_mode) &&
            ::lstat(native.constData(), &named) == 0 && opened.st_dev == named.st_dev &&
            opened.st_ino == named.st_ino) {
            // Who holds it, for a person looking at the file; the lock holds without it.
            const QByteArray pid = QByteArray::number(static_cast<qint64>(::getpid())) + '\n';
            if (::ftruncate(fd, 0) == 0) {
                [[maybe_unused]] const ssize_t written =
                    ::write(fd, pid.constData(), static_cast<size_t>(pid.size()));
            }
            *descriptor = fd;
            return Lock::taken;
        }
        ::close(fd);
    }
    return Lock::unavailable;
}
} // namespace

QString SingleInstance::serverName(const QString& storePath) {
    const QByteArray digest =
        QCryptographicHash::hash(canonical(storePath).toUtf8(), QCryptographicHash::Sha256).toHex().left(24);
    return QStringLiteral("tallyfen-") + QString::fromLatin1(digest);
}

QString SingleInstance::lockPath(const QString& storePath) {
    return canonical(storePath) + QStringLiteral(".lock");
}

SingleInstance::SingleInstance(const QString& storePath, int lockDescriptor)
    : m_storePath(storePath)
    , m_lockDescriptor(lockDescriptor) {}

SingleInstance::~SingleInstance() {
    m_server.close();
    // Unlinked while still locked, so no later launch can lock the old file.
    ::unlink(QFile::encodeName(lockPath(m_storePath)).constData());
    ::close(m_lockDescriptor);
}

std::unique_ptr<SingleInstance> SingleInstance::claim(const QString& storePath, Outcome* outcome) {
    int descriptor = -1;
    switch (lockFile(lockPath(storePath), &descriptor)) {
    case Lock::held:
        askOwnerToActivate(serverName(storePath));
        *outcome = Outcome::handedOver;
        return nullptr;
    case Lock::unavailable:
        *outcome = Outcome::unguarded;
        return nullptr;
    case Lock::taken:
        break;
    }
    *outcome = Outcome::first;
    return std::unique_ptr<SingleInstance>(new SingleInstance(storePath, descriptor));
}

void SingleInstance::listen() {
    if (m_server.isListening()) {
        return;
    }
    const QString name = serverName(m_storePath);
    // A socket file left by a process that died would refuse the name.
    QLocalServer::removeServer(name);
    m_server.setSocketOptions(QLocalServer::UserAccessOption);
    m_server.listen(name);
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server.nextPendingConnection()) {
            const auto read = [this, socket] {
                if (socket->readAll().contains(kActivate.trimmed())) {
                    Q_EMIT activationRequested();
                }
            };
            connect(socket, &QLocalSocket::readyRead, this, read);
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            read(); // what arrived before the connection was made
        }
    });
}
