#include "core/SingleInstance.h"

#include <QCryptographicHash>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QLocalSocket>
#include <QThread>

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
} // namespace

QString SingleInstance::serverName(const QString& storePath) {
    const QByteArray digest =
        QCryptographicHash::hash(canonical(storePath).toUtf8(), QCryptographicHash::Sha256).toHex().left(24);
    return QStringLiteral("tallyfen-") + QString::fromLatin1(digest);
}

QString SingleInstance::lockPath(const QString& storePath) {
    return canonical(storePath) + QStringLiteral(".lock");
}

SingleInstance::SingleInstance(const QString& storePath)
    : m_lock(lockPath(storePath)) {
    // A lock is stale only when its process is gone, however long it was held.
    m_lock.setStaleLockTime(0);
}

SingleInstance::~SingleInstance() {
    m_server.close();
    m_lock.unlock();
}

std::unique_ptr<SingleInstance> SingleInstance::claim(const QString& storePath, Outcome* outcome) {
    std::unique_ptr<SingleInstance> instance(new SingleInstance(storePath));
    if (!instance->m_lock.tryLock(0)) {
        if (instance->m_lock.error() == QLockFile::LockFailedError) {
            askOwnerToActivate(serverName(storePath));
            *outcome = Outcome::handedOver;
        } else {
            *outcome = Outcome::unguarded;
        }
        return nullptr;
    }
    const QString name = serverName(storePath);
    // A socket file left by a process that died would refuse the name.
    QLocalServer::removeServer(name);
    instance->m_server.setSocketOptions(QLocalServer::UserAccessOption);
    instance->m_server.listen(name);
    SingleInstance* self = instance.get();
    connect(&instance->m_server, &QLocalServer::newConnection, self, [self] {
        while (QLocalSocket* socket = self->m_server.nextPendingConnection()) {
            const auto read = [self, socket] {
                if (socket->readAll().contains(kActivate.trimmed())) {
                    Q_EMIT self->activationRequested();
                }
            };
            connect(socket, &QLocalSocket::readyRead, self, read);
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            read(); // what arrived before the connection was made
        }
    });
    *outcome = Outcome::first;
    return instance;
}
