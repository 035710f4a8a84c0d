#include "Cases.h"
#include "ScriptedServer.h"

#include <QTcpSocket>

#ifdef Q_OS_UNIX
#    include <netinet/in.h>
#    include <sys/socket.h>
#    include <unistd.h>
#endif

using Server = ScriptedServer;

// A bare socket sees what the server really sends; nothing here goes through an HTTP client.
class tst_ScriptedServer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void understandsRequests();
    void plays_data();
    void plays();
    void resetIsNoClose();
    void hangsOpen();
    void goesOnReadingAfterHalfClose();
};

namespace {

void send(QTcpSocket *client, const Server &server, const QByteArray &request)
{
    if (client->state() != QTcpSocket::ConnectedState) {
        client->connectToHost(server.url().host(), quint16(server.url().port()));
        QVERIFY(client->waitForConnected());
    }
    client->write(request);
}

QByteArray get(const char *path = "/")
{
    return QByteArray("GET ") + path + " HTTP/1.1\r\nHost: x\r\n\r\n";
}

const struct {
    const char *name;
    Server::Script (*script)();
    const char *received;
} scripts[] = {
    {"error page", [] { return Server::page("gone", 404); },
     "HTTP/1.1 404 Scripted\r\nContent-Length: 4\r\n\r\ngone"},
    {"redirect", [] { return Server::redirect("/x"); },
     "HTTP/1.1 302 Scripted\r\nLocation: /x\r\nContent-Length: 0\r\n\r\n"},
    {"drip", [] { return Server::drip(3, 1); }, "HTTP/1.1 200 Scripted\r\nContent-Length: 3\r\n\r\nxxx"},
    {"close at once", Server::closeAtOnce, ""},
    {"close in header", Server::closeInHeader, "HTTP/1.1 200 Scripted\r\nContent-"},
    {"close in body", Server::closeInBody, "HTTP/1.1 200 Scripted\r\nContent-Length: 100\r\n\r\npart"},
    {"half close in body", Server::halfCloseInBody,
     "HTTP/1.1 200 Scripted\r\nContent-Length: 100\r\n\r\npart"},
};

} // namespace

void tst_ScriptedServer::understandsRequests()
{
    Server server([](const Server::Request &request) { return Server::page(request.path); });
    QTcpSocket client;
    // Two requests, cut at an odd place.
    send(&client, server, "POST /a?b=1 HTTP/1.1\r\nX-Key: V\r\nContent-Length: 5\r\n\r\nhe");
    QVERIFY(client.waitForBytesWritten());
    send(&client, server, "llo" + get("/next"));
    QTRY_COMPARE(server.requests().size(), 2);
    const Server::Request post = server.requests().first();
    QCOMPARE(post.method, QByteArray("POST"));
    QCOMPARE(post.path, QByteArray("/a?b=1"));
    QVERIFY(post.headers.contains("\r\nx-key: v\r\n"));
    QCOMPARE(post.body, QByteArray("hello"));
    QByteArray answers; // both on one connection
    QTRY_VERIFY((answers += client.readAll()).endsWith("/next"));
    QVERIFY(answers.contains("\r\n\r\n/a?b=1HTTP/1.1 200"));
    QCOMPARE(client.state(), QAbstractSocket::ConnectedState);
}

void tst_ScriptedServer::plays_data()
{
    addCases(scripts);
}

void tst_ScriptedServer::plays()
{
    const auto &c = currentCase(scripts);
    Server server([&c](const Server::Request &) { return c.script() + Server::closeAtOnce(); });
    QTcpSocket client;
    send(&client, server, get());
    QTRY_COMPARE(client.state(), QAbstractSocket::UnconnectedState);
    QCOMPARE(client.readAll(), QByteArray(c.received));
    QCOMPARE(client.error(), QAbstractSocket::RemoteHostClosedError);
}

// QTcpSocket reports both ends alike; the system tells them apart.
void tst_ScriptedServer::resetIsNoClose()
{
#ifdef Q_OS_UNIX
    Server server([](const Server::Request &) { return Server::reset(); });
    const int client = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(quint16(server.url().port()));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    QCOMPARE(::connect(client, reinterpret_cast<sockaddr *>(&address), sizeof address), 0);
    QCOMPARE(::send(client, get().constData(), size_t(get().size()), 0), ssize_t(get().size()));
    char byte;
    bool isReset = false; // the system says so once
    QTRY_VERIFY(isReset = isReset || (::recv(client, &byte, 1, MSG_DONTWAIT) < 0 && errno == ECONNRESET));
    ::close(client);
#else
    QSKIP("needs BSD sockets");
#endif
}

void tst_ScriptedServer::hangsOpen()
{
    Server server([](const Server::Request &) { return Server::hangInBody(); });
    QTcpSocket client;
    send(&client, server, get());
    QTRY_VERIFY(client.bytesAvailable() > 0);
    QVERIFY(client.readAll().endsWith("part"));
    send(&client, server, get());
    QVERIFY(client.waitForBytesWritten());
    QCoreApplication::processEvents();
    QCOMPARE(client.state(), QAbstractSocket::ConnectedState);
    QCOMPARE(server.requests().size(), 1);
}

void tst_ScriptedServer::goesOnReadingAfterHalfClose()
{
    Server server([](const Server::Request &) { return Server::halfClose(); });
    QTcpSocket client;
    send(&client, server, get("/1") + get("/2"));
    QTRY_COMPARE(server.requests().size(), 2);
}

QTEST_GUILESS_MAIN(tst_ScriptedServer)
#include "tst_ScriptedServer.moc"
