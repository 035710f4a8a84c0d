#include <hxspinlocker.h>

#include "LogCapture.h"

#include <QThread>
#include <QtTest>

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
    }

    // Deliberate misuse: nothing repairs the count, and the next holder never gets to free the lock.
    void surplusUnlockIsNotRepaired()
    {
        HXAtomicLock lock;
        lock.unlock("f", "");
        lock.lock("f", "");
        QVERIFY(!lock.isLocked());
    }

    void excludes()
    {
        for (const auto &[rules, rounds] :
             {std::pair("", 20000), std::pair("Olvex.HXSpinLocker.*=true", 200)}) {
            QLoggingCategory::setFilterRules(QString::fromLatin1(rules));
            const LogCapture capture;
            HXAtomicLock lock;
            int counter = 0; // not atomic: the lock is what protects it
            const auto countUp = [&, count = rounds] {
                for (int i = 0; i < count; ++i) {
                    const HXSpinLocker outer(&lock, "outer", "");
                    const HXSpinLocker inner(&lock, nullptr, nullptr);
                    ++counter;
                }
            };
            std::thread threads[4];
            for (std::thread &thread : threads)
                thread = std::thread(countUp);
            for (std::thread &thread : threads)
                thread.join();
            QCOMPARE(counter, 4 * rounds);
            QVERIFY(!lock.isLocked());
            QCOMPARE(capture.texts().isEmpty(), *rules == '\0'); // silent by default
        }
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
        const QString expected = QStringLiteral(R"(ref: 0, holder, hold, holding
ref: 1, , want, wanting
want Locked by holder (holding) requested by  (wanting)
ref: 1, holder, , second
unref: 2, holder, , second
unref: 1, holder, hold, holding
hold Lock Released by holder (second)
want Lock obtained by  (wanting)
unref: 1, , want, wanting
want Lock Released by  (wanting))");
        QCOMPARE(capture.texts().join(QLatin1Char('\n')), expected);
    }
};

QTEST_APPLESS_MAIN(tst_hxspinlocker)
#include "tst_hxspinlocker.moc"
