#include "app/models/singleinstance.h"

#include <QCryptographicHash>
#include <QDataStream>
#include <QDir>
#include <QFileInfo>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>

#include <unistd.h>

namespace quillet {

namespace {

constexpr char Acknowledge = 'k';
// A running window answers from its event loop, which a single-file run or
// a slow disk may hold up for a while.
constexpr int AnswerTimeoutMs = 10000;
constexpr auto StreamVersion = QDataStream::Qt_6_0;

} // namespace

SingleInstance::SingleInstance(const QString& socketPath, QObject* parent)
    : QObject(parent), m_socketPath(socketPath) {}

SingleInstance::~SingleInstance() {
    if (m_server)
        m_server->close(); // removes the socket file
}

QString SingleInstance::socketPathFor(const QString& settingsFile) {
    const QByteArray store = QFileInfo(settingsFile).absoluteFilePath().toUtf8();
    const QString id =
        QString::fromLatin1(QCryptographicHash::hash(store, QCryptographicHash::Sha1).toHex().left(12));
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (!runtime.isEmpty() && QFileInfo(runtime).isDir())
        return QDir(runtime).filePath(QStringLiteral("quillet-%1.socket").arg(id));
    return QDir(QDir::tempPath()).filePath(QStringLiteral("quillet-%1-%2.socket").arg(getuid()).arg(id));
}

SingleInstance::Start SingleInstance::start(const QStringList& paths) {
    // Two starts at the same moment must not both decide they are first and
    // remove each other's socket. A lock that cannot be had in time (a stuck
    // start) is gone past: the worst left is a second window.
    QLockFile lock(m_socketPath + QStringLiteral(".lock"));
    const bool locked = lock.tryLock(AnswerTimeoutMs);
    Q_UNUSED(locked)
    switch (handOver(paths)) {
    case HandOver::Taken:
        return Start::HandedOver;
    case HandOver::NoAnswer:
        return Start::Unanswered;
    case HandOver::NoInstance:
        break;
    }
    return listen() ? Start::First : Start::Alone;
}

SingleInstance::HandOver SingleInstance::handOver(const QStringList& paths) {
    QLocalSocket socket;
    socket.connectToServer(m_socketPath);
    if (!socket.waitForConnected(1000))
        return HandOver::NoInstance;
    QByteArray message;
    QDataStream out(&message, QIODevice::WriteOnly);
    out.setVersion(StreamVersion);
    out << paths;
    socket.write(message);
    // Only an answer proves the paths arrived. Without one the instance may
    // still take them later, so this start must not open a second window
    // (or take the socket over) and run them twice.
    if (!socket.waitForBytesWritten(AnswerTimeoutMs))
        return HandOver::NoAnswer;
    while (socket.bytesAvailable() < 1)
        if (!socket.waitForReadyRead(AnswerTimeoutMs))
            return HandOver::NoAnswer;
    char answer = 0;
    return socket.getChar(&answer) && answer == Acknowledge ? HandOver::Taken : HandOver::NoAnswer;
}

bool SingleInstance::listen() {
    auto* server = new QLocalServer(this);
    server->setSocketOptions(QLocalServer::UserAccessOption);
    // Nobody answered on the socket, so a file there is a crashed
    // instance's leftover.
    QLocalServer::removeServer(m_socketPath);
    if (!server->listen(m_socketPath)) {
        delete server;
        return false;
    }
    m_server = server;
    connect(m_server, &QLocalServer::newConnection, this, &SingleInstance::acceptConnection);
    return true;
}

void SingleInstance::acceptConnection() {
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QLocalSocket::readyRead, this, [this, socket] {
            QDataStream in(socket);
            in.setVersion(StreamVersion);
            in.startTransaction();
            QStringList paths;
            in >> paths;
            if (!in.commitTransaction()) {
                if (in.status() == QDataStream::ReadCorruptData)
                    socket->abort();
                return; // otherwise the rest is still on its way
            }
            socket->putChar(Acknowledge);
            socket->flush();
            socket->disconnectFromServer();
            Q_EMIT pathsReceived(paths);
        });
    }
}

} // namespace quillet
