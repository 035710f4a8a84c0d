#ifndef SCRIPTEDSERVER_H
#define SCRIPTEDSERVER_H

#include <QByteArray>
#include <QList>
#include <QTcpServer>
#include <QUrl>
#include <QVector>

#include <functional>

/**
 * An HTTP server on a free port of the loopback interface that answers by script: well or badly.
 *
 * A handler turns each request into a list of steps. Connections stay open for further requests unless a
 * step ends them. All of it runs on the event loop of the thread that made the server.
 *
 * @code
 * ScriptedServer server([](const ScriptedServer::Request &) { return ScriptedServer::page("hello"); });
 * get(server.url("/any"));
 * @endcode
 */
class ScriptedServer {
public:
    struct Request {
        QByteArray method;
        QByteArray path; ///< With the query.
        QByteArray headers; ///< As received, in lower case, without the request line.
        QByteArray body;
    };

    struct Step {
        enum Kind {
            Send, ///< The bytes.
            Pause, ///< For some milliseconds.
            Hang, ///< For good.
            HalfClose, ///< Sends no more, but goes on reading.
            Close, ///< Both directions, in order.
            Reset ///< Drops the connection with a TCP reset.
        };
        Kind kind;
        QByteArray bytes = {};
        int ms = 0;
    };
    using Script = QVector<Step>;
    using Handler = std::function<Script(const Request &)>;

    enum Recording {
        Keep,
        Forget
    };

    explicit ScriptedServer(Handler handler, Recording recording = Keep);

    /// The address of @p path, which starts with a slash.
    QUrl url(const char *path = "/") const;

    /// All requests so far, in order of arrival, if the server keeps them.
    const QList<Request> &requests() const { return m_requests; }

    // Well-behaved scripts.
    static Script page(const QByteArray &body, int status = 200);
    static Script redirect(const QByteArray &location);

    // Faults.
    static Script hang() { return {{Step::Hang}}; } ///< Never answers.
    static Script hangInBody(); ///< Promises more than it sends, and waits.
    static Script drip(int length, int ms); ///< A page byte by byte, each after a pause.
    static Script closeAtOnce() { return {{Step::Close}}; }
    static Script closeInHeader();
    static Script closeInBody(); ///< Promises more than it sends, and closes.
    static Script halfClose() { return {{Step::HalfClose}}; }
    static Script halfCloseInBody();
    static Script reset() { return {{Step::Reset}}; }
    static Script resetInBody();
    static Script garbage(); ///< No HTTP at all.
    static Script endlessHeader(int lines); ///< Header lines without an end, then waits.

private:
    void serve(QTcpSocket *socket);

    QTcpServer m_server;
    Handler m_handler;
    Recording m_recording;
    QList<Request> m_requests;
};

#endif
