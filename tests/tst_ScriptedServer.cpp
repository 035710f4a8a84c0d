#include "ScriptedServer.h"

#include <QTcpSocket>
#include <QtTest>

#ifdef Q_OS_UNIX
#    include <netinet/in.h>
#    include <sys/socket.h>
#    include <unistd.h>
#endif

using Server = ScriptedServer;

Q_DECLARE_METATYPE(ScriptedServer::Script)

// A bare socket sees what the server really sends; nothing here goes through an HTTP client.
class tst_ScriptedServer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void understandsRequests();
    void plays_data();
    void plays();
    void resetIsNoClose();
    void keepsConnectionsOpen();
    void hangsOpen();
    void pausesBetweenSteps();
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

} // namespace

void tst_ScriptedServer::understandsRequests()
{
    Server server([](const Server::Request &) { return Server::page("ok"); });
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
    QCOMPARE(server.requests().last().path, QByteArray("/next"));
}

void tst_ScriptedServer::plays_data()
{
    QTest::addColumn<Server::Script>("script");
    QTest::addColumn<QByteArray>("received");
    QTest::addColumn<QAbstractSocket::SocketError>("end");

    const QByteArray ok("HTTP/1.1 200 Scripted\r\n");
    const QByteArray part = ok + "Content-Length: 100\r\n\r\npart";
    const auto closed = QAbstractSocket::RemoteHostClosedError;
    const Server::Step close{Server::Step::Close};
    QTest::newRow("page") << Server::page("body") + Server::Script{close}
                          << ok + "Content-Length: 4\r\n\r\nbody" << closed;
    QTest::newRow("error page") << Server::page("gone", 404) + Server::Script{close}
                                << QByteArray("HTTP/1.1 404 Scripted\r\nContent-Length: 4\r\n\r\ngone")
                                << closed;
    QTest::newRow("redirect") << Server::redirect("/x") + Server::Script{close}
                              << QByteArray(
                                     "HTTP/1.1 302 Scripted\r\nLocation: /x\r\nContent-Length: 0\r\n\r\n")
                              << closed;
    QTest::newRow("drip") << Server::drip(3, 1) + Server::Script{close} << ok + "Content-Length: 3\r\n\r\nxxx"
                          << closed;
    QTest::newRow("close at once") << Server::closeAtOnce() << QByteArray() << closed;
    QTest::newRow("close in header") << Server::closeInHeader() << ok + "Content-" << closed;
    QTest::newRow("close in body") << Server::closeInBody() << part << closed;
    QTest::newRow("half close") << Server::halfClose() << QByteArray() << closed;
    QTest::newRow("half close in body") << Server::halfCloseInBody() << part << closed;
    QTest::newRow("reset") << Server::reset() << QByteArray() << closed;
    QTest::newRow("garbage") << Server::garbage() << Server::garbage().first().bytes << closed;
    const QByteArray large(20 * 1024 * 1024, 'l');
    QTest::newRow("large body") << Server::page(large) + Server::Script{close}
                                << ok + "Content-Length: 20971520\r\n\r\n" + large << closed;
}

void tst_ScriptedServer::plays()
{
    QFETCH(Server::Script, script);
    QFETCH(QByteArray, received);
    Server server([&script](const Server::Request &) { return script; });
    QTcpSocket client;
    send(&client, server, get());
    QTRY_COMPARE(client.state(), QAbstractSocket::UnconnectedState);
    const QByteArray all = client.readAll();
    QVERIFY2(all == received, all.left(200));
    QTEST(client.error(), "end");
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

void tst_ScriptedServer::keepsConnectionsOpen()
{
    Server server([](const Server::Request &request) { return Server::page(request.path); });
    QTcpSocket client;
    for (const QByteArray path : {"/1", "/2"}) {
        send(&client, server, get(path));
        QTRY_VERIFY(client.bytesAvailable() > 0);
        QVERIFY(client.readAll().endsWith(path));
    }
    QCOMPARE(client.state(), QAbstractSocket::ConnectedState);
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

void tst_ScriptedServer::pausesBetweenSteps()
{
    Server server([](const Server::Request &) { return Server::drip(4, 30); });
    QTcpSocket client;
    QElapsedTimer time;
    time.start();
    send(&client, server, get());
    QByteArray received;
    QTRY_VERIFY((received += client.readAll()).endsWith("xxxx"));
    QVERIFY(time.elapsed() >= 4 * 28); // timers may be early by 5 %
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
