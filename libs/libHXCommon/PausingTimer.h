#ifndef PAUSINGTIMER_H
#define PAUSINGTIMER_H

#include "HXCommonExport.h"

#include <QObject>

class QTimer;

/**
 * A repeating timer that can be paused and resumed.
 *
 * A paused timer remembers the time that was left. When it is resumed it first runs out that remainder and
 * then goes on with its full period.
 *
 * @code
 * auto *timer = new PausingTimer(this);
 * connect(timer, &PausingTimer::timeout, this, &Session::nextStep);
 * timer->start(1000);
 * // 300 ms later
 * timer->pause();
 * // any time later
 * timer->resume(); // timeout() after 700 ms, then every 1000 ms
 * @endcode
 *
 * All times are in milliseconds, with the accuracy of a precise QTimer. The timer needs the event loop of its
 * thread; like every QTimer it is used from that thread only. A period of 0 times out once per round of the
 * event loop; a negative one is refused by QTimer with a warning.
 *
 * The wrapped QTimer is the only child object. Code that makes it single-shot gets one timeout() per start,
 * after which resume() does nothing.
 */
class HXCOMMON_EXPORT PausingTimer : public QObject {
    Q_OBJECT

public:
    /// A stopped timer with the period 0.
    explicit PausingTimer(QObject *parent = nullptr);

    /**
     * Changes the period to @p msec.
     *
     * A running timer starts its period again from zero. A paused timer runs one full new period when it is
     * resumed. A stopped timer stays stopped.
     */
    void setInterval(int msec);

Q_SIGNALS:
    /// A period has run out.
    void timeout();

public Q_SLOTS:
    /// Starts the timer, again if it runs, with the period @p msec.
    void start(int msec);

    /// Starts the timer, again if it runs, with the period it has; 0 if none was ever set.
    void start();

    /// Halts a running timer and keeps the time that is left; does nothing to any other.
    void pause();

    /// Goes on with the time that was left; does nothing to a timer that runs or was stopped.
    void resume();

    /// Stops the timer and forgets the time that was left.
    void stop();

private Q_SLOTS:
    void onTimeout();

private:
    QTimer *m_timer;
    int m_remaining = -1; // what resume() runs out; -1: nothing to resume
    int m_interval = 0;
};

#endif
