#include "PausingTimer.h"

#include <QTimer>

PausingTimer::PausingTimer(QObject *parent) : QObject(parent), m_timer(new QTimer(this))
{
    // A coarse timer is off by up to 5 % at every pause, and the errors add up.
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &PausingTimer::onTimeout);
}

void PausingTimer::setInterval(int msec)
{
    m_interval = msec;
    if (m_remaining != -1)
        m_remaining = msec;
    if (m_timer->isActive())
        m_timer->start(msec);
}

void PausingTimer::start(int msec)
{
    m_interval = msec;
    start();
}

void PausingTimer::start()
{
    m_remaining = m_interval;
    m_timer->start(m_interval);
}

void PausingTimer::pause()
{
    if (!m_timer->isActive())
        return;
    m_remaining = m_timer->remainingTime();
    m_timer->stop();
}

void PausingTimer::resume()
{
    if (m_remaining == -1 || m_timer->isActive())
        return;
    m_timer->start(m_remaining);
}

void PausingTimer::stop()
{
    m_remaining = -1;
    m_timer->stop();
}

void PausingTimer::onTimeout()
{
    if (m_timer->isSingleShot()) {
        m_remaining = -1;
    } else {
        m_remaining = m_interval;
        if (m_timer->interval() != m_interval)
            m_timer->setInterval(m_interval);
    }
    Q_EMIT timeout();
}
