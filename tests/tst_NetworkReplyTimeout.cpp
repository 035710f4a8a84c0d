#include <NetworkReplyTimeout.h>

#include "LogCapture.h"

#include <QAbstractEventDispatcher>
#include <QNetworkReply>
#include <QtTest>

namespace {

// A reply without a network behind it, which counts how it is ended.
class FakeReply : public QNetworkReply {
public:
    explicit FakeReply(bool finishedAlready = false, OpenMode mode = ReadOnly)
    {
        setOpenMode(mode);
        setFinished(finishedAlready);
    }

    void abort() override
    {
        ++aborts;
        delete findChild<NetworkReplyTimeout *>(); // as the owner may, when it hears of the end
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
        FakeReply reply(c.finished);
        NetworkReplyTimeout *const guard = NetworkReplyTimeout::set(&reply, c.timeout);
        QCOMPARE(guard->parent(), &reply);
        QTimerEvent other(-1);
        QCoreApplication::sendEvent(guard, &other); // another's timer ends nothing
        QVector<int> intervals;
        for (const auto &timer : timersOf(guard))
            intervals << timer.interval;
        QCOMPARE(intervals, c.intervals);
        QCOMPARE(reply.aborts + reply.closes, 0);
    }
}

void tst_NetworkReplyTimeout::endsTheReplyOnce()
{
    const struct {
        QIODevice::OpenMode mode;
        bool finishes; // meanwhile
        int aborts; // else it is closed
    } cases[] = {
        {QIODevice::ReadOnly, false, 1}, {QIODevice::NotOpen, false, 0}, {QIODevice::ReadOnly, true, 0}};
    for (const auto &c : cases) {
        FakeReply reply(false, c.mode);
        const QPointer<NetworkReplyTimeout> guard = NetworkReplyTimeout::set(&reply, 1);
        reply.setFinished(c.finishes);
        QTRY_COMPARE(reply.aborts + reply.closes, 1);
        QCOMPARE(reply.aborts, c.aborts);
        QVERIFY(!guard || timersOf(guard).isEmpty());
    }
}

void tst_NetworkReplyTimeout::quittingAborts()
{
    FakeReply guarded;
    FakeReply finished(true);
    FakeReply bare;
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
