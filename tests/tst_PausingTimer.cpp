#include <PausingTimer.h>

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTimer>
#include <QtTest>

namespace {

using Steps = void (*)(PausingTimer &);

constexpr int tolerance = 100; // ms, for a machine that is busy with other things

} // namespace

Q_DECLARE_METATYPE(Steps)

class tst_PausingTimer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void followsItsSteps_data();
    void followsItsSteps();
    void runsOutTheRemainderFirst();
    void losesNoTimeInManyPauses();
    void resumesAnOverdueTimerAtOnce();
    void repeats();
    void obeysASingleShotTimer();
    void listsItsMethodsInOrder();
};

void tst_PausingTimer::followsItsSteps_data()
{
    QTest::addColumn<Steps>("steps");
    QTest::addColumn<int>("period"); // that the inner timer runs with; -1: it does not run
    const auto row = [](const char *name, int period, Steps steps) {
        QTest::newRow(name) << steps << period;
    };

    row("new", -1, [](PausingTimer &) {});
    row("resume", -1, [](PausingTimer &t) { t.resume(); });
    row("pause, resume", -1, [](PausingTimer &t) { t.pause(), t.resume(); });
    row("start with a period", 60000, [](PausingTimer &t) { t.start(60000); });
    row("start without a period", 0, [](PausingTimer &t) { t.start(); });
    row("set a period", -1, [](PausingTimer &t) { t.setInterval(60000); });
    row("set a period, resume", -1, [](PausingTimer &t) { t.setInterval(60000), t.resume(); });
    row("set a period, start", 60000, [](PausingTimer &t) { t.setInterval(60000), t.start(); });
    row("start again", 60000, [](PausingTimer &t) { t.start(60000), t.stop(), t.start(); });
    row("start anew", 50000, [](PausingTimer &t) { t.start(60000), t.start(50000); });
    row("pause", -1, [](PausingTimer &t) { t.start(60000), t.pause(); });
    row("pause, start", 60000, [](PausingTimer &t) { t.start(60000), t.pause(), t.start(); });
    row("stop", -1, [](PausingTimer &t) { t.start(60000), t.stop(); });
    row("stop, resume", -1, [](PausingTimer &t) { t.start(60000), t.stop(), t.resume(); });
    row("pause, stop, resume", -1, [](PausingTimer &t) { t.start(60000), t.pause(), t.stop(), t.resume(); });
    row("change the period", 50000, [](PausingTimer &t) { t.start(60000), t.setInterval(50000); });
    row("pause, change the period", -1,
        [](PausingTimer &t) { t.start(60000), t.pause(), t.setInterval(50000); });
    row("pause, change the period, resume", 50000,
        [](PausingTimer &t) { t.start(60000), t.pause(), t.setInterval(50000), t.resume(); });
    row("stop, change the period, resume", -1,
        [](PausingTimer &t) { t.start(60000), t.stop(), t.setInterval(50000), t.resume(); });
}

void tst_PausingTimer::followsItsSteps()
{
    QFETCH(Steps, steps);
    QFETCH(int, period);
    PausingTimer timer;
    const QTimer *const inner = timer.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    steps(timer);
    QCOMPARE(inner->isActive(), period != -1);
    if (period != -1)
        QCOMPARE(inner->interval(), period);
}

void tst_PausingTimer::runsOutTheRemainderFirst()
{
    constexpr int period = 400;
    PausingTimer timer;
    const QTimer *const inner = timer.findChild<QTimer *>();
    QSignalSpy timeouts(&timer, &PausingTimer::timeout);

    timer.start(period);
    QTest::qWait(100); // time has to pass here; how much does not matter
    const int left = inner->remainingTime();
    timer.pause();
    timer.pause(); // does not overwrite the remainder
    QElapsedTimer resumed;
    resumed.start();
    timer.resume();
    timer.resume(); // does not start again
    const int remainder = inner->interval();
    QVERIFY2(remainder < period && remainder <= left && remainder > left - tolerance,
             qPrintable(QString::number(remainder)));

    QVERIFY(timeouts.wait());
    QVERIFY(resumed.elapsed() >= remainder - 1);
    QCOMPARE(inner->interval(), period);
    QVERIFY(timeouts.wait());
    QVERIFY(resumed.elapsed() >= remainder + period - 2);
}

void tst_PausingTimer::losesNoTimeInManyPauses()
{
    constexpr int period = 60000;
    PausingTimer timer;
    qint64 running = 0;
    timer.start(period);
    timer.pause();
    for (int i = 0; i < 20; ++i) {
        QElapsedTimer stopwatch;
        stopwatch.start();
        timer.resume();
        QTest::qWait(20);
        timer.pause();
        running += stopwatch.elapsed();
    }
    timer.resume();
    const qint64 error = timer.findChild<QTimer *>()->interval() - (period - running);
    QVERIFY2(qAbs(error) < tolerance, qPrintable(QString::number(error)));
}

void tst_PausingTimer::resumesAnOverdueTimerAtOnce()
{
    PausingTimer timer;
    const QTimer *const inner = timer.findChild<QTimer *>();
    QSignalSpy timeouts(&timer, &PausingTimer::timeout);
    timer.start(10);
    while (inner->remainingTime() > 0) { } // without an event loop the timeout cannot be delivered
    timer.pause();
    timer.resume();
    QCOMPARE(inner->interval(), 0);
    QVERIFY(timeouts.wait());
    QCOMPARE(inner->interval(), 10);
}

void tst_PausingTimer::repeats()
{
    PausingTimer timer;
    QSignalSpy timeouts(&timer, &PausingTimer::timeout);
    timer.start(5);
    QTRY_VERIFY(timeouts.size() >= 3);
    timer.stop();
    timeouts.clear();
    QVERIFY(!timeouts.wait(50));
}

void tst_PausingTimer::obeysASingleShotTimer()
{
    PausingTimer timer;
    QTimer *const inner = timer.findChild<QTimer *>();
    inner->setSingleShot(true);
    QSignalSpy timeouts(&timer, &PausingTimer::timeout);
    timer.start(5);
    QVERIFY(timeouts.wait());
    timer.resume();
    QVERIFY(!inner->isActive());
}

void tst_PausingTimer::listsItsMethodsInOrder()
{
    const QMetaObject &type = PausingTimer::staticMetaObject;
    QByteArrayList methods;
    for (int i = type.methodOffset(); i < type.methodCount(); ++i)
        methods << type.method(i).methodSignature();
    QCOMPARE(methods,
             (QByteArrayList{"timeout()", "start(int)", "start()", "pause()", "resume()", "stop()",
                             "onTimeout()"}));
}

QTEST_GUILESS_MAIN(tst_PausingTimer)
#include "tst_PausingTimer.moc"
