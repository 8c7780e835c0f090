#pragma once

#include <QByteArray>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

// A server on the loopback address that answers every request with one fixed response,
// but only after a delay: a provider that is slow, not dead.
class DelayedHttpServer final : public QTcpServer {
public:
    DelayedHttpServer(int delayMilliseconds, int status, QByteArray body)
        : m_delay(delayMilliseconds)
        , m_status(status)
        , m_body(std::move(body)) {
        listen(QHostAddress::LocalHost);
        QObject::connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket* socket = nextPendingConnection();
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket] { answerLater(socket); });
        });
    }

    QUrl base() const { return QUrl(QStringLiteral("http://127.0.0.1:%1").arg(serverPort())); }

private:
    void answerLater(QTcpSocket* socket) {
        if (!socket->readAll().contains("\r\n\r\n") || socket->property("answered").toBool()) {
            return;
        }
        socket->setProperty("answered", true);
        QTimer::singleShot(m_delay, socket, [this, socket] {
            socket->write("HTTP/1.1 " + QByteArray::number(m_status) +
                          " Status\r\nContent-Type: application/json\r\nContent-Length: " +
                          QByteArray::number(m_body.size()) + "\r\n\r\n" + m_body);
            socket->flush();
        });
    }

    int m_delay;
    int m_status;
    QByteArray m_body;
};
