#include <RunGuard.h>

#include <QDir>
#include <QProcess>
#include <QSharedMemory>
#include <QSystemSemaphore>
#include <QtTest>

#include <memory>
#include <vector>

namespace {

// The system names of the guard "x".
const QString memLockKeyOfX = QStringLiteral("3221a8dce72df9a3004ec3dd72416a0139ed60f6");
const QString sharedMemKeyOfX = QStringLiteral("bca29f6f2f4e501c38563a9232f5e32fcbeb225c");

// A process that tries to become the running instance when it is told to.
class Contender {
public:
    explicit Contender(const QString &name = QStringLiteral("x"))
    {
        m_process.start(QStringLiteral(GUARD_CONTENDER_PATH), {name});
    }

    ~Contender() { leave(); }

    void go() { m_process.write("go\n"); }

    bool isSilentFor(int milliseconds) { return !m_process.waitForReadyRead(milliseconds); }

    QByteArray verdict()
    {
        while (!m_process.canReadLine() && m_process.waitForReadyRead()) { }
        return m_process.readLine().trimmed();
    }

    QByteArray compete()
    {
        go();
        return verdict();
    }

    void leave()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }

    void kill()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

private:
    QProcess m_process;
};

// How many of the processes that start at once are running, and how many were refused.
std::pair<int, int> race(int contenders)
{
    std::vector<std::unique_ptr<Contender>> processes;
    for (int i = 0; i < contenders; ++i)
        processes.push_back(std::make_unique<Contender>());
    for (const auto &process : processes)
        process->go();
    std::pair<int, int> result;
    for (const auto &process : processes) {
        const QByteArray verdict = process->verdict();
        result.first += verdict == "running";
        result.second += verdict == "refused";
    }
    for (const auto &process : processes)
        process->leave();
    return result;
}

} // namespace

class tst_RunGuard : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void letsOneRun_data();
    void letsOneRun();
    void namesTheSegment();
    void takesTurnsByTheSemaphore();
    void letsOneOfManyProcessesRun();
    void survivesKilledProcesses();
};

// No test leaves a segment or a semaphore behind: each has its key file as long as it exists.
void tst_RunGuard::cleanup()
{
    QCOMPARE(QDir::temp().entryList({QStringLiteral("qipc_*")}), QStringList());
}

void tst_RunGuard::letsOneRun_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain") << QStringLiteral("Olvex instructor");
    QTest::newRow("empty") << QString();
    QTest::newRow("path") << QStringLiteral("../../\\:*?\"<>|%1");
    QTest::newRow("non-ASCII") << QString::fromUtf8("größe 日本 𠮷\n");
    QTest::newRow("zero") << QString(3, QChar(0));
    QTest::newRow("long") << QString(100000, QLatin1Char('a'));
}

void tst_RunGuard::letsOneRun()
{
    QFETCH(QString, name);
    auto first = std::make_unique<RunGuard>(name);
    RunGuard second(name);
    QVERIFY(first->tryToRun());
    QVERIFY(!first->tryToRun());
    QVERIFY(!second.tryToRun());
    QVERIFY(RunGuard(name + QLatin1Char('a')).tryToRun());
    first.reset();
    QVERIFY(second.tryToRun());
}

void tst_RunGuard::namesTheSegment()
{
    RunGuard guard(QStringLiteral("x"));
    QSharedMemory segment(sharedMemKeyOfX);
    QVERIFY(!segment.attach());
    QVERIFY(guard.tryToRun());
    QVERIFY(segment.attach());
    QVERIFY(segment.size() >= 8); // Windows counts whole pages
}

void tst_RunGuard::takesTurnsByTheSemaphore()
{
    QSystemSemaphore semaphore(memLockKeyOfX, 1);
    QVERIFY(semaphore.acquire());
    Contender contender;
    contender.go();
    QVERIFY(contender.isSilentFor(300));
    QVERIFY(semaphore.release());
    QCOMPARE(contender.verdict(), QByteArray("running"));
    contender.leave();
    QVERIFY(semaphore.acquire()); // the guard gave it back
}

void tst_RunGuard::letsOneOfManyProcessesRun()
{
    // More rounds for a long test: HXCOMMON_RACE_ROUNDS=50.
    const int rounds = std::max(3, qEnvironmentVariableIntValue("HXCOMMON_RACE_ROUNDS"));
    for (int round = 0; round < rounds; ++round)
        QCOMPARE(race(100), std::make_pair(1, 99));
}

void tst_RunGuard::survivesKilledProcesses()
{
    // What the killed ones leave behind is removed at the end: this mode makes their owner of us.
    const QSystemSemaphore guardLock(memLockKeyOfX, 1, QSystemSemaphore::Create);
    const QSystemSemaphore segmentLock(sharedMemKeyOfX, 1, QSystemSemaphore::Create);

    Contender killed;
    QCOMPARE(killed.compete(), QByteArray("running"));
    killed.kill();
    Contender next;
    QCOMPARE(next.compete(), QByteArray("running"));
    QCOMPARE(Contender().compete(), QByteArray("refused"));
    next.kill();
    QCOMPARE(race(10), std::make_pair(1, 9));
}

QTEST_GUILESS_MAIN(tst_RunGuard)
#include "tst_RunGuard.moc"
