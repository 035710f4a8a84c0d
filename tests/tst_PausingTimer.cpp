#include <PausingTimer.h>

#include "Cases.h"

#include <QElapsedTimer>
#include <QMetaMethod>
#include <QSignalSpy>
#include <QTimer>

namespace {

// s60000: start with that period; s: start; i50000: set the period; p: pause; r: resume; x: stop;
// o: wait, without an event loop, until it is overdue; w: wait for a timeout; l: make the next one the last
const struct {
    const char *name;
    int period; // that the inner timer runs with; -1: it does not run
} stepCases[] = {
    {"p r", -1},
    {"s", 0},
    {"i60000 r", -1},
    {"i60000 s", 60000},
    {"s60000 s50000", 50000},
    {"s60000 p s", 60000},
    {"s60000 p x r", -1},
    {"s60000 i50000", 50000},
    {"s60000 p i50000", -1},
    {"s60000 p i50000 r", 50000},
    {"s10 o p r", 0},
    {"s10 o p r w", 10},
    {"s5 w l w r", -1},
};

void step(PausingTimer &timer, QTimer &inner, const QString &step)
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
    case 'x':
        return timer.stop();
    case 'o':
        while (inner.remainingTime() > 0) { }
        return;
    case 'w':
        QVERIFY(QSignalSpy(&timer, &PausingTimer::timeout).wait());
        return;
    default:
        return inner.setSingleShot(true);
    }
}

} // namespace

class tst_PausingTimer : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void followsItsSteps_data() { addCases(stepCases); }

    void followsItsSteps()
    {
        const auto &expected = currentCase(stepCases);
        PausingTimer timer;
        QTimer *const inner = timer.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(!inner->isActive());
        const QStringList steps = QString::fromLatin1(expected.name).split(QLatin1Char(' '));
        for (const QString &name : steps)
            step(timer, *inner, name);
        QCOMPARE(inner->isActive() ? inner->interval() : -1, expected.period);
    }

    void runsOutTheRemainderFirst()
    {
        constexpr int period = 200;
        PausingTimer timer;
        const QTimer *const inner = timer.findChild<QTimer *>();
        QSignalSpy timeouts(&timer, &PausingTimer::timeout);
        QCOMPARE(inner->timerType(), Qt::PreciseTimer); // a coarse one errs by up to 5 % at every pause
        timer.start(period);
        QTRY_VERIFY(inner->remainingTime() < period);

        QElapsedTimer clock;
        clock.start();
        const int left = inner->remainingTime();
        timer.pause();
        const qint64 passed = clock.elapsed() + 1;
        QTest::qWait(20); // does not count
        timer.pause(); // does not overwrite the remainder
        clock.start();
        timer.resume();
        timer.resume(); // does not start again
        const int remainder = inner->interval();
        QVERIFY2(remainder <= left && remainder >= left - passed, qPrintable(QString::number(remainder)));

        QVERIFY(timeouts.wait());
        QVERIFY(clock.elapsed() >= remainder - 1);
        QCOMPARE(inner->interval(), period);
        QVERIFY(timeouts.wait());
        QVERIFY(clock.elapsed() >= remainder + period - 2);
    }

    void listsItsMethodsInOrder()
    {
        const QMetaObject &type = PausingTimer::staticMetaObject;
        QByteArrayList methods;
        for (int i = type.methodOffset(); i < type.methodCount(); ++i)
            methods << type.method(i).methodSignature();
        QCOMPARE(methods.join(' '),
                 QByteArray("timeout() start(int) start() pause() resume() stop() onTimeout()"));
    }
};

QTEST_GUILESS_MAIN(tst_PausingTimer)
#include "tst_PausingTimer.moc"
