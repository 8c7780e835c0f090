#pragma once

#include <QList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QUrl>

// A server on the loopback address that accepts every connection and never answers.
class SilentServer final : public QTcpServer {
public:
    SilentServer() {
        listen(QHostAddress::LocalHost);
        QObject::connect(this, &QTcpServer::newConnection, this,
                         [this] { m_held.append(nextPendingConnection()); });
    }

    QUrl base() const { return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(serverPort())); }
    qsizetype connectionCount() const { return m_held.size(); }

private:
    QList<QTcpSocket*> m_held;
};
