#include "ScriptedServer.h"

#include <QTcpSocket>
#include <QTimer>

#ifdef Q_OS_WIN
#    include <winsock2.h>
#else
#    include <sys/socket.h>
#endif

namespace {

// How much of what was received is the first request; 0 as long as that is incomplete.
int requestSize(const QByteArray &received)
{
    int size = received.indexOf("\r\n\r\n") + 4;
    const QList<QByteArray> lines = received.left(size).toLower().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("content-length:"))
            size += line.mid(15).trimmed().toInt();
    }
    return size < 4 || received.size() < size ? 0 : size;
}

void reset(QTcpSocket *socket)
{
    while (socket->bytesToWrite() > 0 && socket->waitForBytesWritten(1000)) { }
    const linger drop{1, 0};
    const int result = ::setsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER,
                                    reinterpret_cast<const char *>(&drop), sizeof drop);
    if (result != 0 && socket->state() == QTcpSocket::ConnectedState)
        qFatal("ScriptedServer: this would be no reset");
    socket->abort();
}

void send(QTcpSocket *socket, const ScriptedServer::Answer &answer)
{
    QTimer::singleShot(answer.pause, socket, [socket, rest = answer]() mutable {
        socket->write(rest.bytes.left(rest.piece));
        rest.bytes.remove(0, rest.piece);
        if (!rest.bytes.isEmpty())
            send(socket, rest);
        else if (rest.end == ScriptedServer::Hang)
            socket->disconnect(SIGNAL(readyRead()));
        else if (rest.end == ScriptedServer::Close)
            socket->disconnectFromHost();
        else if (rest.end == ScriptedServer::Reset)
            reset(socket);
    });
}

} // namespace

ScriptedServer::ScriptedServer(std::function<Answer()> answer)
{
    const auto serve = [this, answer](QTcpSocket *socket) {
        if (const int size = requestSize(socket->peek(socket->bytesAvailable()))) {
            m_lastRequest = socket->read(size);
            send(socket, answer());
        }
    };
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this, serve] {
        while (QTcpSocket *const socket = m_server.nextPendingConnection()) {
            QObject::connect(socket, &QTcpSocket::readyRead, socket, [socket, serve] { serve(socket); });
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("ScriptedServer: %s", qPrintable(m_server.errorString()));
}

QUrl ScriptedServer::url(const char *path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(QLatin1String(path)));
}

ScriptedServer::Answer ScriptedServer::page(const QByteArray &body, int status, const QByteArray &headerLines)
{
    return {"HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\n" + headerLines
            + "Content-Length: " + QByteArray::number(body.size()) + "\r\n\r\n" + body};
}
