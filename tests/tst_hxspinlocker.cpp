#include <hxspinlocker.h>

#include "LogCapture.h"

#include <QThread>
#include <QtTest>

#include <atomic>
#include <thread>
#include <vector>

class tst_hxspinlocker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void nests();
    void nestsWithScopes();
    void excludes();
    void surplusUnlockIsNotRepaired();
    void traces();
};

void tst_hxspinlocker::cleanup()
{
    QLoggingCategory::setFilterRules(QString());
}

void tst_hxspinlocker::nests()
{
    HXAtomicLock lock;
    QVERIFY(!lock.isLocked());
    lock.lock("f", "i");
    lock.lock("f", "i");
    lock.unlock("f", "i");
    bool seenByOther = true;
    std::thread([&] { seenByOther = lock.isLocked(); }).join();
    QVERIFY(lock.isLocked() && !seenByOther);
    lock.unlock("f", "i");
    QVERIFY(!lock.isLocked());
}

void tst_hxspinlocker::nestsWithScopes()
{
    HXAtomicLock lock;
    {
        HXSpinLocker locker(&lock, "f", "");
        locker.lock();
    }
    QVERIFY(lock.isLocked()); // one level is left
    {
        HXSpinLocker locker(&lock, "inner", "");
        locker.unlock();
        locker.unlock();
    }
    QVERIFY(lock.isLocked()); // a scope releases once
    lock.unlock("f", "");
    QVERIFY(!lock.isLocked());
}

void tst_hxspinlocker::excludes()
{
    for (const auto &[rules, rounds] : {std::pair("", 20000), std::pair("Olvex.HXSpinLocker.*=true", 200)}) {
        QLoggingCategory::setFilterRules(QString::fromLatin1(rules));
        const LogCapture capture;
        HXAtomicLock lock;
        int counter = 0; // not atomic: the lock is what protects it
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, count = rounds] {
                for (int i = 0; i < count; ++i) {
                    const HXSpinLocker outer(&lock, "outer", "");
                    const HXSpinLocker inner(&lock, nullptr, nullptr);
                    ++counter;
                }
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        QCOMPARE(counter, 4 * rounds);
        QVERIFY(!lock.isLocked());
        QCOMPARE(capture.texts().isEmpty(), *rules == '\0'); // silent by default
    }
}

// Deliberate misuse: nothing repairs the count, and the next holder never gets to free the lock.
void tst_hxspinlocker::surplusUnlockIsNotRepaired()
{
    HXAtomicLock lock;
    lock.unlock("f", "");
    lock.lock("f", "");
    QVERIFY(!lock.isLocked());
}

void tst_hxspinlocker::traces()
{
    QLoggingCategory::setFilterRules(
        QStringLiteral("Olvex.HXSpinLocker.Reference.info=true\nOlvex.HXSpinLocker.Lock=true"));
    const LogCapture capture;
    HXAtomicLock lock;
    // No QThread: the thread sanitizer does not see its wait().
    std::thread([&] {
        QThread::currentThread()->setObjectName(QStringLiteral("holder"));
        lock.lock("hold", "holding");
        std::thread waiter([&] {
            lock.lock("want", "wanting");
            lock.unlock("want", "wanting");
        });
        while (!capture.contains(QStringLiteral("requested by")))
            QThread::yieldCurrentThread();
        lock.unlock("hold", "holding");
        waiter.join();
        lock.lock("f", "first");
        lock.lock(nullptr, "second");
        lock.unlock(nullptr, "second");
        lock.unlock("f", "first");
    }).join();
    for (const char *line :
         {"ref: 0, holder, hold, holding", "ref: 1, holder, , second", "unref: 2, holder, , second",
          "unref: 1, holder, f, first", "want Locked by holder (holding) requested by  (wanting)",
          " Lock Released by holder (holding)", " Lock obtained by  (wanting)"})
        QVERIFY2(capture.contains(QString::fromLatin1(line)), line);
}

QTEST_APPLESS_MAIN(tst_hxspinlocker)
#include "tst_hxspinlocker.moc"
