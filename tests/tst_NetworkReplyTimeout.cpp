#include <NetworkReplyTimeout.h>

#include "LogCapture.h"

#include <QAbstractEventDispatcher>
#include <QNetworkReply>
#include <QtTest>

namespace {

// A reply without a network behind it, which counts how it is ended.
class FakeReply : public QNetworkReply {
public:
    FakeReply(bool readable, bool finishedAlready)
    {
        if (readable)
            open(QIODevice::ReadOnly);
        setFinished(finishedAlready);
    }

    void abort() override
    {
        ++aborts;
        // What may happen when the owner hears of the end.
        delete findChild<NetworkReplyTimeout *>();
    }
    void close() override { ++closes; }

    using QNetworkReply::setFinished;

    int aborts = 0;
    int closes = 0;

protected:
    qint64 readData(char *, qint64) override { return -1; }
};

QList<QAbstractEventDispatcher::TimerInfo> timersOf(QObject *object)
{
    return QAbstractEventDispatcher::instance()->registeredTimers(object);
}

} // namespace

class tst_NetworkReplyTimeout : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refusesNull();
    void armsForRunningRepliesOnly();
    void endsTheReplyOnce();
    void ignoresOtherTimers();
    void quittingAborts();
};

void tst_NetworkReplyTimeout::refusesNull()
{
    const LogCapture capture;
    QVERIFY(!NetworkReplyTimeout::set(nullptr, 10));
    QCOMPARE(capture.lines(), QStringList(QStringLiteral("default.warning: Reply is nullptr")));
}

void tst_NetworkReplyTimeout::armsForRunningRepliesOnly()
{
    const struct {
        bool finished;
        int timeout;
        QVector<int> intervals;
    } cases[] = {{false, 1234, {1234}}, {false, 0, {0}}, {false, -5, {0}}, {true, 1234, {}}};
    for (const auto &c : cases) {
        FakeReply reply(true, c.finished);
        NetworkReplyTimeout *const guard = NetworkReplyTimeout::set(&reply, c.timeout);
        QCOMPARE(guard->parent(), &reply);
        QVector<int> intervals;
        for (const auto &timer : timersOf(guard))
            intervals << timer.interval;
        QCOMPARE(intervals, c.intervals);
    }
}

void tst_NetworkReplyTimeout::endsTheReplyOnce()
{
    const struct {
        bool readable;
        bool finishes; // meanwhile
        int aborts; // else it is closed
    } cases[] = {{true, false, 1}, {false, false, 0}, {true, true, 0}};
    for (const auto &c : cases) {
        FakeReply reply(c.readable, false);
        const QPointer<NetworkReplyTimeout> guard = NetworkReplyTimeout::set(&reply, 1);
        reply.setFinished(c.finishes);
        QTRY_COMPARE(reply.aborts + reply.closes, 1);
        QCOMPARE(reply.aborts, c.aborts);
        QVERIFY(!guard || timersOf(guard).isEmpty());
    }
}

void tst_NetworkReplyTimeout::ignoresOtherTimers()
{
    FakeReply reply(true, false);
    NetworkReplyTimeout *const guard = NetworkReplyTimeout::set(&reply, 60000);
    QTimerEvent other(timersOf(guard).first().timerId + 1);
    QCoreApplication::sendEvent(guard, &other);
    QCOMPARE(reply.aborts + reply.closes, 0);
}

void tst_NetworkReplyTimeout::quittingAborts()
{
    FakeReply guarded(true, false);
    FakeReply finished(true, true);
    FakeReply bare(true, false);
    NetworkReplyTimeout::set(&guarded, 60000);
    NetworkReplyTimeout::set(&finished, 60000);
    QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
    QCoreApplication::exec();
    QCOMPARE(guarded.aborts, 1);
    QCOMPARE(finished.aborts, 1); // the reply itself makes nothing of it
    QCOMPARE(bare.aborts, 0);
}

QTEST_GUILESS_MAIN(tst_NetworkReplyTimeout)
#include "tst_NetworkReplyTimeout.moc"
