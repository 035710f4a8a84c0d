#ifndef SCRIPTEDSERVER_H
#define SCRIPTEDSERVER_H

#include <QTcpServer>
#include <QUrl>

#include <functional>

/**
 * An HTTP server on a free port of the loopback interface that answers as it is told: well or badly.
 *
 * All of it runs on the event loop of the thread that made the server.
 *
 * @code
 * ScriptedServer server([] { return ScriptedServer::page("hello"); });
 * get(server.url("/any"));
 * @endcode
 */
class ScriptedServer {
public:
    /// What becomes of the connection after an answer.
    enum End {
        Keep, ///< It waits for the next request.
        Hang, ///< It stays open, but nothing is answered any more.
        Close,
        Reset ///< It is dropped with a TCP reset.
    };

    struct Answer {
        QByteArray bytes; ///< All that is sent, header lines included.
        End end = Keep;
        int pause = 0; ///< Milliseconds before each piece.
        int piece = 1 << 30; ///< Bytes that are sent at a time.
    };

    /// @p answer is called for each request.
    explicit ScriptedServer(std::function<Answer()> answer);

    /// The address of @p path, which starts with a slash.
    QUrl url(const char *path = "/") const;

    const QByteArray &lastRequest() const { return m_lastRequest; } ///< As received.

    static Answer page(const QByteArray &body, int status = 200, const QByteArray &headerLines = {});

private:
    QByteArray m_lastRequest;
    QTcpServer m_server;
};

#endif
