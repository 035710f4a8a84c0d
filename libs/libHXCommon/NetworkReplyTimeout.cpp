#include "NetworkReplyTimeout.h"

#include <QCoreApplication>
#include <QDebug>
#include <QNetworkReply>
#include <QTimerEvent>

NetworkReplyTimeout::NetworkReplyTimeout(QNetworkReply *reply, int timeout) : QObject(reply)
{
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, reply, &QNetworkReply::abort);
    if (reply->isRunning())
        m_timer.start(qMax(0, timeout), this);
}

NetworkReplyTimeout *NetworkReplyTimeout::set(QNetworkReply *reply, int timeout)
{
    if (!reply) {
        qWarning() << "Reply is nullptr";
        return nullptr;
    }
    return new NetworkReplyTimeout(reply, timeout);
}

void NetworkReplyTimeout::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer.timerId())
        return;
    m_timer.stop(); // first: whoever hears of the end may delete the reply, and this guard with it

    auto *const reply = static_cast<QNetworkReply *>(parent());
    if (reply->isReadable() && reply->isRunning())
        reply->abort();
    else
        reply->close();
}
