#include <hxspinlocker.h>

#include "LogCapture.h"

#include <QThread>
#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

namespace {

// Runs a function on a thread with an object name. No QThread: the thread sanitizer does not see its wait().
template <typename Function> void runNamed(const char *name, Function function)
{
    std::thread([&] {
        QThread::currentThread()->setObjectName(QString::fromLatin1(name));
        function();
    }).join();
}

} // namespace

class tst_hxspinlocker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void nests();
    void answersForTheCallerOnly();
    void scopeReleasesOnce();
    void secondLockOfAScopeNests();
    void excludes_data();
    void excludes();
    void surplusUnlockIsNotRepaired();
    void tracesReferences();
    void tracesContention();
    void silentByDefault();
};

void tst_hxspinlocker::init()
{
    QLoggingCategory::setFilterRules(QString());
}

void tst_hxspinlocker::cleanup()
{
    QLoggingCategory::setFilterRules(QString());
}

void tst_hxspinlocker::nests()
{
    HXAtomicLock lock;
    QVERIFY(!lock.isLocked());
    for (int i = 0; i < 3; ++i)
        lock.lock("f", "i");
    lock.unlock("f", "i");
    lock.unlock("f", "i");
    QVERIFY(lock.isLocked());
    lock.unlock("f", "i");
    QVERIFY(!lock.isLocked());
    bool taken = false;
    std::thread([&] {
        lock.lock("other", "");
        taken = lock.isLocked();
        lock.unlock("other", "");
    }).join();
    QVERIFY(taken);
}

void tst_hxspinlocker::answersForTheCallerOnly()
{
    HXAtomicLock lock;
    const HXSpinLocker locker(&lock, Q_FUNC_INFO, "");
    bool seenByOther = true;
    std::thread([&] { seenByOther = lock.isLocked(); }).join();
    QVERIFY(lock.isLocked());
    QVERIFY(!seenByOther);
}

void tst_hxspinlocker::scopeReleasesOnce()
{
    HXAtomicLock lock;
    lock.lock("outer", "");
    {
        HXSpinLocker locker(&lock, "inner", "");
        locker.unlock();
        locker.unlock();
    }
    QVERIFY(lock.isLocked());
    lock.unlock("outer", "");
    QVERIFY(!lock.isLocked());
}

void tst_hxspinlocker::secondLockOfAScopeNests()
{
    HXAtomicLock lock;
    {
        HXSpinLocker locker(&lock, "f", "");
        locker.lock();
    }
    QVERIFY(lock.isLocked()); // one level is left
    lock.unlock("f", "");
    QVERIFY(!lock.isLocked());
}

void tst_hxspinlocker::excludes_data()
{
    QTest::addColumn<QString>("rules");
    QTest::newRow("untraced") << QString();
    QTest::newRow("traced") << QStringLiteral("Olvex.HXSpinLocker.*=true");
}

void tst_hxspinlocker::excludes()
{
    QFETCH(QString, rules);
    QLoggingCategory::setFilterRules(rules);
    const LogCapture capture;
    constexpr int threadCount = 4;
    const int rounds = rules.isEmpty() ? 20000 : 200;

    HXAtomicLock lock;
    int counter = 0; // not atomic: the lock is what protects it
    std::vector<std::thread> threads;
    for (int t = 0; t < threadCount; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < rounds; ++i) {
                const HXSpinLocker outer(&lock, "outer", "");
                const HXSpinLocker inner(&lock, nullptr, nullptr);
                ++counter;
            }
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(counter, threadCount * rounds);
    QVERIFY(!lock.isLocked());
}

// Deliberate misuse: nothing repairs the count, and the next holder never gets to free the lock.
void tst_hxspinlocker::surplusUnlockIsNotRepaired()
{
    HXAtomicLock lock;
    lock.unlock("f", "");
    lock.lock("f", "");
    QVERIFY(!lock.isLocked());
}

void tst_hxspinlocker::tracesReferences()
{
    QLoggingCategory::setFilterRules(QStringLiteral("Olvex.HXSpinLocker.Reference.info=true"));
    const LogCapture capture;
    HXAtomicLock lock;
    runNamed("worker", [&] {
        lock.lock("f", "first");
        lock.lock(nullptr, "second");
        lock.unlock(nullptr, "second");
        lock.unlock("f", "first");
    });
    QCOMPARE(
        capture.texts(),
        (QStringList{QStringLiteral("ref: 0, worker, f, first"), QStringLiteral("ref: 1, worker, , second"),
                     QStringLiteral("unref: 2, worker, , second"),
                     QStringLiteral("unref: 1, worker, f, first")}));
}

void tst_hxspinlocker::tracesContention()
{
    QLoggingCategory::setFilterRules(QStringLiteral("Olvex.HXSpinLocker.Lock=true"));
    const LogCapture capture;
    HXAtomicLock lock;
    runNamed("holder", [&] {
        lock.lock("hold", "holding");
        std::thread waiter([&] {
            lock.lock("want", "wanting");
            lock.unlock("want", "wanting");
        });
        while (!capture.contains(QStringLiteral("requested by")))
            QThread::yieldCurrentThread();
        lock.unlock("hold", "holding");
        waiter.join();
    });
    QVERIFY(capture.contains(QStringLiteral("want Locked by holder (holding) requested by  (wanting)")));
    QVERIFY(capture.contains(QStringLiteral(" Lock Released by holder (holding)")));
    QVERIFY(capture.contains(QStringLiteral(" Lock obtained by  (wanting)")));
}

void tst_hxspinlocker::silentByDefault()
{
    const LogCapture capture;
    HXAtomicLock lock;
    lock.lock("f", "");
    std::thread waiter([&] {
        lock.lock("g", "");
        lock.unlock("g", "");
    });
    QThread::msleep(5); // gives the waiter a chance to wait; nothing depends on it
    lock.unlock("f", "");
    waiter.join();
    QCOMPARE(capture.texts(), QStringList());
}

QTEST_APPLESS_MAIN(tst_hxspinlocker)
#include "tst_hxspinlocker.moc"
