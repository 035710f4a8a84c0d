#include "ScriptedServer.h"

#include <QPointer>
#include <QTcpSocket>
#include <QTimer>

#ifdef Q_OS_WIN
#    include <winsock2.h>
#    define SHUT_WR SD_SEND
using NativeSocket = SOCKET;
#else
#    include <sys/socket.h>
using NativeSocket = int;
#endif

namespace {

using Step = ScriptedServer::Step;

QByteArray head(int status, const QByteArray &fields, int length)
{
    return "HTTP/1.1 " + QByteArray::number(status) + " Scripted\r\n" + fields
        + "Content-Length: " + QByteArray::number(length) + "\r\n\r\n";
}

void flush(QTcpSocket *socket)
{
    while (socket->bytesToWrite() > 0 && socket->waitForBytesWritten(1000)) { }
}

void halfClose(QTcpSocket *socket)
{
    flush(socket);
    ::shutdown(static_cast<NativeSocket>(socket->socketDescriptor()), SHUT_WR);
}

void reset(QTcpSocket *socket)
{
    flush(socket);
    const linger drop{1, 0};
    ::setsockopt(static_cast<NativeSocket>(socket->socketDescriptor()), SOL_SOCKET, SO_LINGER,
                 reinterpret_cast<const char *>(&drop), sizeof drop);
    socket->abort();
}

int bodySize(const QByteArray &headers)
{
    const QByteArray name("\r\ncontent-length:");
    const int start = headers.indexOf(name);
    const int value = start + name.size();
    return start < 0 ? 0 : headers.mid(value, headers.indexOf('\r', value) - value).trimmed().toInt();
}

// Takes the first whole request off the buffer.
bool take(QByteArray *buffer, ScriptedServer::Request *request)
{
    const int headEnd = buffer->indexOf("\r\n\r\n");
    if (headEnd < 0)
        return false;
    const int lineEnd = buffer->indexOf("\r\n");
    const QByteArray headers = buffer->mid(lineEnd, headEnd + 2 - lineEnd).toLower();
    const int start = headEnd + 4;
    const int size = bodySize(headers);
    if (buffer->size() < start + size)
        return false;

    const QList<QByteArray> words = buffer->left(lineEnd).split(' ');
    *request = {words.value(0), words.value(1), headers, buffer->mid(start, size)};
    buffer->remove(0, start + size);
    return true;
}

// Plays scripts on one connection, one request after the other.
class Conversation : public QObject {
public:
    using Handler = std::function<ScriptedServer::Script(const ScriptedServer::Request &)>;

    Conversation(QTcpSocket *socket, Handler handler)
        : QObject(socket), m_socket(socket), m_handler(std::move(handler))
    {
        m_pause.setSingleShot(true);
        connect(&m_pause, &QTimer::timeout, this, &Conversation::play);
        connect(socket, &QTcpSocket::readyRead, this, &Conversation::read);
    }

private:
    void read()
    {
        m_received += m_socket->readAll();
        if (!m_pause.isActive())
            play();
    }

    void play()
    {
        ScriptedServer::Request request;
        while (!m_script.isEmpty() || take(&m_received, &request)) {
            if (m_script.isEmpty())
                m_script = m_handler(request);
            else if (!perform(m_script.takeFirst()))
                return;
        }
    }

    // Whether the next step follows at once.
    bool perform(const Step &step)
    {
        switch (step.kind) {
        case Step::Send:
            m_socket->write(step.bytes);
            return true;
        case Step::Pause:
            m_pause.start(step.ms);
            return false;
        case Step::HalfClose:
            halfClose(m_socket);
            return true;
        case Step::Close:
            m_socket->disconnectFromHost();
            return false;
        case Step::Reset:
            reset(m_socket);
            return false;
        case Step::Hang:
            break;
        }
        m_socket->disconnect(this);
        return false;
    }

    QTcpSocket *m_socket;
    Handler m_handler;
    QTimer m_pause;
    QByteArray m_received;
    ScriptedServer::Script m_script;
};

} // namespace

ScriptedServer::ScriptedServer(Handler handler, Recording recording)
    : m_handler(std::move(handler)), m_recording(recording)
{
    QObject::connect(&m_server, &QTcpServer::newConnection, &m_server, [this] {
        while (QTcpSocket *const socket = m_server.nextPendingConnection())
            serve(socket);
    });
    if (!m_server.listen(QHostAddress::LocalHost))
        qFatal("ScriptedServer: %s", qPrintable(m_server.errorString()));
}

void ScriptedServer::serve(QTcpSocket *socket)
{
    QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    new Conversation(socket, [this](const Request &request) {
        if (m_recording == Keep)
            m_requests << request;
        return m_handler(request);
    });
}

QUrl ScriptedServer::url(const char *path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(m_server.serverPort()).arg(QLatin1String(path)));
}

ScriptedServer::Script ScriptedServer::page(const QByteArray &body, int status)
{
    return {{Step::Send, head(status, {}, body.size()) + body}};
}

ScriptedServer::Script ScriptedServer::redirect(const QByteArray &location)
{
    return {{Step::Send, head(302, "Location: " + location + "\r\n", 0)}};
}

ScriptedServer::Script ScriptedServer::hangInBody()
{
    return {{Step::Send, head(200, {}, 100) + "part"}, {Step::Hang}};
}

ScriptedServer::Script ScriptedServer::drip(int length, int ms)
{
    Script script{{Step::Send, head(200, {}, length)}};
    for (int i = 0; i < length; ++i)
        script << Step{Step::Pause, {}, ms} << Step{Step::Send, "x"};
    return script;
}

ScriptedServer::Script ScriptedServer::closeInHeader()
{
    return {{Step::Send, "HTTP/1.1 200 Scripted\r\nContent-"}, {Step::Close}};
}

ScriptedServer::Script ScriptedServer::closeInBody()
{
    return {{Step::Send, head(200, {}, 100) + "part"}, {Step::Close}};
}

ScriptedServer::Script ScriptedServer::halfCloseInBody()
{
    return {{Step::Send, head(200, {}, 100) + "part"}, {Step::HalfClose}};
}

ScriptedServer::Script ScriptedServer::resetInBody()
{
    return {{Step::Send, head(200, {}, 100) + "part"}, {Step::Reset}};
}

ScriptedServer::Script ScriptedServer::garbage()
{
    static const char bytes[] = "\x16\x03\x01\0\xff\xfe no HTTP \r\n\r\n";
    return {{Step::Send, QByteArray(bytes, sizeof bytes)}, {Step::Close}};
}

ScriptedServer::Script ScriptedServer::endlessHeader(int lines)
{
    return {{Step::Send, "HTTP/1.1 200 Scripted\r\n" + QByteArray("X-Filler: x\r\n").repeated(lines)},
            {Step::Hang}};
}
