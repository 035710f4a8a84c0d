#include <RunGuard.h>

#include "ChildProcess.h"
#include "LogCapture.h"

#include <QDir>
#include <QProcess>
#include <QSharedMemory>
#include <QSystemSemaphore>
#include <QtTest>

#include <memory>
#include <vector>

#ifdef Q_OS_UNIX
#    include <fcntl.h>
#    include <sys/file.h>
#    include <sys/sem.h>
#    include <unistd.h>
#endif

namespace {

// The system names of the guard "x".
const QString memLockKeyOfX = QStringLiteral("3221a8dce72df9a3004ec3dd72416a0139ed60f6");
const QString sharedMemKeyOfX = QStringLiteral("bca29f6f2f4e501c38563a9232f5e32fcbeb225c");

// A process that makes the guard "x", tries to become the running instance when it is told to, and stays
// until it is left.
class Contender : public QProcess {
public:
    Contender()
    {
        startChild(*this, QStringLiteral(GUARD_CONTENDER_PATH), {QStringLiteral("x")}, QDir::currentPath());
    }
    ~Contender() override
    {
        closeWriteChannel();
        waitForFinished();
    }

    void go() { write("go\n"); }

    QByteArray answer()
    {
        while (!canReadLine() && waitForReadyRead()) { }
        return readLine().trimmed();
    }

    QByteArray verdict()
    {
        go();
        return answer() == "made" ? answer() : QByteArray();
    }
};

} // namespace

class tst_RunGuard : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // No test leaves a segment or a semaphore behind: each has its key file as long as it exists.
    void cleanup() { QCOMPARE(QDir::temp().entryList({QStringLiteral("qipc_*")}), QStringList()); }

    void letsOneRun()
    {
        for (const QString &name :
             {QStringLiteral("größe 日本 𠮷\n"), QString(), QString(100000, QLatin1Char('a'))}) {
            auto first = std::make_unique<RunGuard>(name);
            RunGuard second(name);
            QVERIFY2(first->tryToRun(), qPrintable(name));
            QVERIFY(!first->tryToRun() && !second.tryToRun());
            QVERIFY(RunGuard(name + QLatin1Char('a')).tryToRun());
            first.reset();
            QVERIFY(second.tryToRun());
        }
    }

    void claimsTheSegmentUnderTheSemaphore()
    {
        const RunGuard first(QStringLiteral("x")); // makes the semaphore
        QSystemSemaphore semaphore(memLockKeyOfX, 1);
        QSharedMemory segment(sharedMemKeyOfX);
        QVERIFY(semaphore.acquire());
        {
            Contender contender;
            contender.go();
            QCOMPARE(contender.answer(), QByteArray("made"));
            QVERIFY(!contender.waitForReadyRead(300));
            QVERIFY(!segment.attach());
            QVERIFY(semaphore.release());
            QCOMPARE(contender.answer(), QByteArray("running"));
            QVERIFY(segment.attach());
            QVERIFY(segment.size() >= 8); // Windows counts whole pages
        }
        QVERIFY(semaphore.acquire()); // the guard gave it back
    }

#ifdef Q_OS_UNIX
    void takesTurns()
    {
        const QString path =
            QDir::temp().filePath(QStringLiteral("RunGuard_d37fa907dc9d41172d3550c34c865cbab8301dbd"));
        const int turn = ::open(qPrintable(path), O_RDONLY | O_CREAT | O_CLOEXEC, 0600);
        QVERIFY(::flock(turn, LOCK_EX) == 0);
        Contender contender;
        QVERIFY(!contender.waitForReadyRead(300));
        const LogCapture log;
        QVERIFY(RunGuard(QStringLiteral("y")).tryToRun()); // another name does not wait
        QCOMPARE(log.lines(), QStringList());
        ::flock(turn, LOCK_UN);
        QCOMPARE(contender.answer(), QByteArray("made"));
        QVERIFY(::flock(turn, LOCK_EX) == 0);
        contender.go();
        QVERIFY(!contender.waitForReadyRead(300));
        ::close(turn);
        QCOMPARE(contender.answer(), QByteArray("running"));
    }

    // Left at 0 by a process that was killed while it made them.
    void replacesOrphanedSemaphores()
    {
        QStringList paths;
        for (const QString &key : {memLockKeyOfX, sharedMemKeyOfX}) {
            paths << QSharedMemory(key).nativeKey().replace(QLatin1String("sharedmemory"),
                                                            QLatin1String("systemsem"));
            QVERIFY(QFile(paths.last()).open(QIODevice::WriteOnly));
            QVERIFY(::semget(::ftok(qPrintable(paths.last()), 'Q'), 1, 0600 | IPC_CREAT | IPC_EXCL) != -1);
        }
        QCOMPARE(Contender().verdict(), QByteArray("running"));
        for (const QString &path : qAsConst(paths))
            QFile::remove(path);
    }
#endif

    void survivesKilledProcesses()
    {
        // What the killed ones leave behind is removed at the end: this mode makes their owner of us.
        const QSystemSemaphore guardLock(memLockKeyOfX, 1, QSystemSemaphore::Create);
        const QSystemSemaphore segmentLock(sharedMemKeyOfX, 1, QSystemSemaphore::Create);
        for (int i = 0; i < 2; ++i) {
            Contender killed;
            QCOMPARE(killed.verdict(), QByteArray("running"));
            QCOMPARE(Contender().verdict(), QByteArray("refused"));
            killed.kill();
        }
        std::vector<Contender> contenders(10);
        QByteArrayList verdicts;
        for (Contender &contender : contenders)
            contender.go();
        for (Contender &contender : contenders)
            verdicts << contender.verdict();
        QVERIFY(verdicts.count("running") == 1 && verdicts.count("refused") == 9);
    }
};

QTEST_GUILESS_MAIN(tst_RunGuard)
#include "tst_RunGuard.moc"
