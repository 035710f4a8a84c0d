#include <PausingTimer.h>

#include "Cases.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTimer>

namespace {

constexpr int tolerance = 100; // ms, for a machine that is busy with other things

// s60000: start with that period; i50000: set it; s: start; p: pause; r: resume; x: stop
const struct {
    const char *name;
    int period; // that the inner timer runs with; -1: it does not run
} stepCases[] = {
    {"p r", -1},
    {"s", 0},
    {"i60000 r", -1},
    {"i60000 s", 60000},
    {"s60000 x s", 60000},
    {"s60000 s50000", 50000},
    {"s60000 p", -1},
    {"s60000 p s", 60000},
    {"s60000 p x r", -1},
    {"s60000 i50000", 50000},
    {"s60000 p i50000", -1},
    {"s60000 p i50000 r", 50000},
    {"s60000 x i50000 r", -1},
};

void step(PausingTimer &timer, const QString &step)
{
    const int period = step.midRef(1).toInt();
    switch (step.at(0).toLatin1()) {
    case 's':
        return step.size() > 1 ? timer.start(period) : timer.start();
    case 'i':
        return timer.setInterval(period);
    case 'p':
        return timer.pause();
    case 'r':
        return timer.resume();
    default:
        return timer.stop();
    }
}

} // namespace

class tst_PausingTimer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void followsItsSteps_data() { addCases(stepCases); }
    void followsItsSteps();
    void runsOutTheRemainderFirst();
    void losesNoTimeInManyPauses();
    void resumesAnOverdueTimerAtOnce();
    void stopsForGood();
    void listsItsMethodsInOrder();
};

void tst_PausingTimer::followsItsSteps()
{
    const auto &expected = currentCase(stepCases);
    PausingTimer timer;
    const QTimer *const inner = timer.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    QVERIFY(!inner->isActive());
    const QStringList steps = QString::fromLatin1(expected.name).split(QLatin1Char(' '));
    for (const QString &name : steps)
        step(timer, name);
    QCOMPARE(inner->isActive() ? inner->interval() : -1, expected.period);
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

void tst_PausingTimer::stopsForGood()
{
    PausingTimer timer;
    QTimer *const inner = timer.findChild<QTimer *>();
    QSignalSpy timeouts(&timer, &PausingTimer::timeout);
    timer.start(5);
    QTRY_VERIFY(timeouts.size() >= 3);
    inner->setSingleShot(true); // the next timeout is the last one
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
