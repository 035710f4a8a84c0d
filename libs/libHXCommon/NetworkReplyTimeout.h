#ifndef NETWORKREPLYTIMEOUT_H
#define NETWORKREPLYTIMEOUT_H

#include "HXCommonExport.h"

#include <QBasicTimer>
#include <QObject>

class QNetworkReply;

/**
 * A time limit for one network reply.
 *
 * A reply that still runs when the time is over is aborted: it finishes with
 * QNetworkReply::OperationCanceledError, which its owner sees through the usual finished() signal. A reply
 * that has finished meanwhile is closed, which leaves what an HTTP reply has received readable. The guard
 * fires once at most. The end of the application's event loop (aboutToQuit) aborts a guarded reply, too.
 *
 * @code
 * NetworkReplyTimeout::set(reply, 10000);
 * @endcode
 *
 * The guard is a child of its reply and is deleted with it. To be used on the reply's thread.
 */
class HXCOMMON_EXPORT NetworkReplyTimeout : public QObject {
    Q_OBJECT

public:
    /**
     * Guards @p reply, which becomes the parent; a reply that has finished already gets no timer.
     * @param reply not null
     * @param timeout milliseconds; a negative number counts as 0
     */
    NetworkReplyTimeout(QNetworkReply *reply, int timeout);

    /// A new guard of @p reply with @p timeout milliseconds. A null reply logs the warning "Reply is
    /// nullptr" (default category) and returns null.
    static NetworkReplyTimeout *set(QNetworkReply *reply, int timeout);

protected:
    /// Ends the reply when the time is over.
    void timerEvent(QTimerEvent *event) override;

private:
    QBasicTimer m_timer;
};

#endif
