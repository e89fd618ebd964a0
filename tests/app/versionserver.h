#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

namespace quillet::guitest {

// An update server on 127.0.0.1 for one test: answers every GET with the
// given status and body, or, made silent, takes the connection and never
// says a word.
class VersionServer : public QObject {
  public:
    VersionServer() {
        m_server.listen(QHostAddress::LocalHost);
        QObject::connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection()) {
                m_sockets.append(socket);
                QObject::connect(socket, &QTcpSocket::readyRead, this, [this, socket] { answer(socket); });
            }
        });
    }
    void serve(int status, const QByteArray& body) {
        m_status = status;
        m_body = body;
        m_silent = false;
    }
    void beSilent() { m_silent = true; }
    // "127.0.0.1:port", the form of the "UpdateServer" setting.
    QString address() const { return QStringLiteral("127.0.0.1:%1").arg(m_server.serverPort()); }
    int requests() const { return int(m_paths.size()); }
    QList<QByteArray> paths() const { return m_paths; }

  private:
    void answer(QTcpSocket* socket) {
        m_request += socket->readAll();
        if (!m_request.contains("\r\n\r\n"))
            return;
        m_paths.append(m_request.split(' ').value(1));
        m_request.clear();
        if (m_silent)
            return;
        socket->write("HTTP/1.1 " + QByteArray::number(m_status) + " X\r\nContent-Length: " +
                      QByteArray::number(m_body.size()) + "\r\nConnection: close\r\n\r\n" + m_body);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QList<QPointer<QTcpSocket>> m_sockets;
    QByteArray m_request;
    QList<QByteArray> m_paths;
    int m_status = 200;
    QByteArray m_body;
    bool m_silent = false;
};

} // namespace quillet::guitest
