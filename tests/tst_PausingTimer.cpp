#include <PausingTimer.h>

#include "Cases.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QTimer>

namespace {

// 60000: start with that period; =50000: set the period; a slot; overdue: wait, without an event loop, until
// it is (on Windows after a timeout only: timers start with the event loop); timeout: wait for one; last: let
// the next timeout be the last
const struct {
    const char *name;
    int period; // that the inner timer runs with; -1: it does not run
} stepCases[] = {
    {"pause resume =60000 resume", -1},
    {"start", 0},
    {"=60000 start", 60000},
    {"60000 50000", 50000},
    {"60000 pause start", 60000},
    {"60000 pause stop resume", -1},
    {"60000 =50000", 50000},
    {"60000 pause =50000", -1},
    {"60000 pause =50000 resume", 50000},
    {"10 timeout overdue pause resume", 0},
    {"10 timeout overdue pause resume timeout", 10},
    {"5 timeout last timeout resume", -1},
};

void step(PausingTimer &timer, QTimer &inner, const QString &step)
{
    if (step.at(0).isDigit())
        timer.start(step.toInt());
    else if (step.startsWith(QLatin1Char('=')))
        timer.setInterval(step.midRef(1).toInt());
    else if (step == QLatin1String("overdue"))
        while (inner.remainingTime() > 0) { }
    else if (step == QLatin1String("timeout"))
        QVERIFY(QSignalSpy(&timer, &PausingTimer::timeout).wait());
    else if (step == QLatin1String("last"))
        inner.setSingleShot(true);
    else
        QVERIFY(QMetaObject::invokeMethod(&timer, qPrintable(step)));
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
        const QStringList steps = QString::fromLatin1(expected.name).split(QLatin1Char(' '));
        for (const QString &name : steps)
            step(timer, *inner, name);
        QCOMPARE(inner->isActive() ? inner->interval() : -1, expected.period);
    }

    void keepsTheRemainder()
    {
        PausingTimer timer;
        const QTimer *const inner = timer.findChild<QTimer *>();
        QCOMPARE(inner->timerType(), Qt::PreciseTimer); // a coarse one errs by up to 5 % at every pause
        timer.start(60000);
        QTRY_VERIFY(inner->remainingTime() < 59990);
        timer.resume(); // does not start again

        QElapsedTimer clock;
        clock.start();
        const int left = inner->remainingTime();
        timer.pause();
        const qint64 passed = clock.elapsed() + 1;
        QTest::qWait(20); // does not count
        timer.pause(); // does not overwrite the remainder
        timer.resume();
        const int remainder = inner->interval();
        QVERIFY2(left < 59990 && remainder <= left && remainder >= left - passed,
                 qPrintable(QString::number(remainder)));
    }
};

QTEST_GUILESS_MAIN(tst_PausingTimer)
#include "tst_PausingTimer.moc"
