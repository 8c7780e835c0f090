#pragma once

#include <QByteArray>
#include <QList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

// A server on the loopback address that misbehaves on purpose: once a request arrived
// it sends a status line and headers promising a large body, then either trickles the
// body one byte at a time for ever or sends a little of it and hangs up.
class RawHttpServer final : public QTcpServer {
public:
    enum class Behaviour { trickle, dropMidBody };

    explicit RawHttpServer(Behaviour behaviour, int trickleMilliseconds = 50)
        : m_behaviour(behaviour)
        , m_trickleMilliseconds(trickleMilliseconds) {
        listen(QHostAddress::LocalHost);
        QObject::connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answer(socket); });
        });
    }

    QUrl base() const { return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(serverPort())); }
    int bytesSent() const noexcept { return m_bytesSent; }

private:
    void answer(QTcpSocket* socket) {
        if (!socket->readAll().contains("\r\n\r\n") || socket->property("answered").toBool()) {
            return;
        }
        socket->setProperty("answered", true);
        socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 1000000\r\n\r\n");
        if (m_behaviour == Behaviour::dropMidBody) {
            socket->write(R"({"object":"list","data":[)");
            socket->flush();
            socket->disconnectFromHost();
            return;
        }
        auto* timer = new QTimer(socket);
        timer->setInterval(m_trickleMilliseconds);
        QObject::connect(timer, &QTimer::timeout, socket, [this, socket] {
            if (socket->state() == QAbstractSocket::ConnectedState) {
                socket->write(" ");
                ++m_bytesSent;
            }
        });
        timer->start();
    }

    Behaviour m_behaviour;
    int m_trickleMilliseconds;
    int m_bytesSent = 0;
};
