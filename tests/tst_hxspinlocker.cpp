#include <hxspinlocker.h>

#include "LogCapture.h"

#include <QThread>
#include <QtTest>

#include <future>
#include <thread>

class tst_hxspinlocker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { QLoggingCategory::setFilterRules(QString()); }

    void nests()
    {
        HXAtomicLock lock;
        lock.lock("f", "i");
        {
            HXSpinLocker locker(&lock, "f", "i");
            locker.lock();
        }
        {
            HXSpinLocker locker(&lock, "f", "i");
            locker.unlock();
            locker.unlock(); // a scope releases once
        }
        bool seenByOther = true;
        std::thread([&] { seenByOther = lock.isLocked(); }).join();
        QVERIFY(!seenByOther);
        lock.unlock("f", "i");
        QVERIFY(lock.isLocked()); // the level that the first scope left
        lock.unlock("f", "i");
        QVERIFY(!lock.isLocked());
        lock.unlock("f", ""); // misuse that nothing repairs: the next holder never gets to free the lock
        lock.lock("f", "");
        QVERIFY(!lock.isLocked());
    }

    void excludes()
    {
        const LogCapture capture;
        HXAtomicLock lock;
        int counter = 0; // not atomic: the lock is what protects it
        const auto countUp = [&](int rounds) {
            std::future<void> threads[4]; // their ends are awaited
            for (std::future<void> &thread : threads)
                thread = std::async(std::launch::async, [&lock, &counter, rounds] {
                    for (int i = 0; i < rounds; ++i) {
                        const HXSpinLocker outer(&lock, "outer", "");
                        const HXSpinLocker inner(&lock, nullptr, nullptr);
                        ++counter;
                    }
                });
        };
        countUp(20000);
        QCOMPARE(capture.lines(), QStringList()); // silent by default
        QLoggingCategory::setFilterRules(QStringLiteral("Olvex.HXSpinLocker.*=true"));
        countUp(200);
        QCOMPARE(counter, 4 * 20200);
        QVERIFY(!lock.isLocked());
    }

    void traces()
    {
        QLoggingCategory::setFilterRules(
            QStringLiteral("Olvex.HXSpinLocker.Reference.info=true\nOlvex.HXSpinLocker.Lock=true"));
        const LogCapture capture;
        HXAtomicLock lock;
        // No QThread: the thread sanitizer does not see its wait().
        std::thread([&] {
            QThread::currentThread()->setObjectName(QStringLiteral("holder"));
            lock.lock("hold", "holding");
            std::thread waiter([&] { const HXSpinLocker locker(&lock, "want", "wanting"); });
            while (!capture.contains(QStringLiteral("requested by")))
                QThread::yieldCurrentThread();
            lock.lock(nullptr, "second");
            lock.unlock(nullptr, "second");
            lock.unlock("hold", "holding");
            waiter.join();
        }).join();
        const QString expected =
            QStringLiteral(R"(Olvex.HXSpinLocker.Reference.info: ref: 0, holder, hold, holding
Olvex.HXSpinLocker.Reference.info: ref: 1, , want, wanting
Olvex.HXSpinLocker.Lock.info: want Locked by holder (holding) requested by  (wanting)
Olvex.HXSpinLocker.Reference.info: ref: 1, holder, , second
Olvex.HXSpinLocker.Reference.info: unref: 2, holder, , second
Olvex.HXSpinLocker.Reference.info: unref: 1, holder, hold, holding
Olvex.HXSpinLocker.Lock.debug: hold Lock Released by holder (second)
Olvex.HXSpinLocker.Lock.debug: want Lock obtained by  (wanting)
Olvex.HXSpinLocker.Reference.info: unref: 1, , want, wanting
Olvex.HXSpinLocker.Lock.debug: want Lock Released by  (wanting))");
        QCOMPARE(capture.lines().join(QLatin1Char('\n')), expected);
    }
};

QTEST_APPLESS_MAIN(tst_hxspinlocker)
#include "tst_hxspinlocker.moc"
