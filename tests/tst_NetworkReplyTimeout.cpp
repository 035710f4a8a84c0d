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
    void armsForRunningRepliesOnly_data();
    void armsForRunningRepliesOnly();
    void endsTheReplyOnce_data();
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

void tst_NetworkReplyTimeout::armsForRunningRepliesOnly_data()
{
    QTest::addColumn<bool>("finished");
    QTest::addColumn<int>("timeout");
    QTest::addColumn<QVector<int>>("intervals");
    QTest::newRow("running") << false << 1234 << QVector<int>{1234};
    QTest::newRow("no time at all") << false << 0 << QVector<int>{0};
    QTest::newRow("negative") << false << -5 << QVector<int>{0};
    QTest::newRow("finished") << true << 1234 << QVector<int>{};
}

void tst_NetworkReplyTimeout::armsForRunningRepliesOnly()
{
    QFETCH(bool, finished);
    QFETCH(int, timeout);
    FakeReply reply(true, finished);
    NetworkReplyTimeout *const guard = NetworkReplyTimeout::set(&reply, timeout);
    QCOMPARE(guard->parent(), &reply);
    QVector<int> intervals;
    for (const auto &timer : timersOf(guard))
        intervals << timer.interval;
    QTEST(intervals, "intervals");
}

void tst_NetworkReplyTimeout::endsTheReplyOnce_data()
{
    QTest::addColumn<bool>("readable");
    QTest::addColumn<bool>("finishes");
    QTest::addColumn<int>("aborts");
    QTest::newRow("running") << true << false << 1;
    QTest::newRow("unreadable") << false << false << 0;
    QTest::newRow("finished meanwhile") << true << true << 0;
}

void tst_NetworkReplyTimeout::endsTheReplyOnce()
{
    QFETCH(bool, readable);
    QFETCH(bool, finishes);
    QFETCH(int, aborts);
    FakeReply reply(readable, false);
    const QPointer<NetworkReplyTimeout> guard = NetworkReplyTimeout::set(&reply, 1);
    reply.setFinished(finishes);
    QTRY_COMPARE(reply.aborts + reply.closes, 1);
    QCOMPARE(reply.aborts, aborts);
    if (guard)
        QVERIFY(timersOf(guard).isEmpty());
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
