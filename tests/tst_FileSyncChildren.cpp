// What becomes of the child processes of jobs: host changes, kills, the end of the job.

#include <FileSync_p.h>

#include "Cases.h"
#include "SyncJob.h"

#include <QRandomGenerator>
#include <QTimer>

#include <array>
#include <cerrno>

#include <sys/wait.h>

namespace {

// Hangs on the host m-1; elsewhere it keeps its arguments.
const char fetch[] = R"(case $1 in
m-1:*) echo ready; exec sleep 600 ;;
*) printf '%s\n' "$@" >record ;;
esac
)";

const char stubborn[] = "trap '' TERM; echo ready; while :; do sleep 0.05; done";

const struct {
    const char *name, *newHost;
    bool restarts;
} hostCases[] = {
    {"hostile", "-$(reboot) %1\\1", true},
    {"same", "m-1", false},
    {"empty", "", false},
};

const struct {
    const char *name;
    void (*end)(FileSync *job);
    bool isReported;
} endCases[] = {
    {"destruction", [](FileSync *job) { delete job; }, false},
    {"host change",
     [](FileSync *job) {
         job->onHostChanged(text("other"));
         QVERIFY(waitForOutput(*job)); // the restarted child is as stubborn
         job->deleteLater();
     },
     false},
    {"error",
     [](FileSync *job) {
         QMetaObject::invokeMethod(job, "onError", Q_ARG(QProcess::ProcessError, QProcess::ReadError));
     },
     true},
};

int openDescriptors()
{
    return QDir(text("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
}

} // namespace

class tst_FileSyncChildren : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void changesHost_data() { addCases(hostCases); }
    void changesHost();
    void changesHostWithoutARunningCommand();
    void leavesNoChild_data() { addCases(endCases); }
    void leavesNoChild();
    void runsManyAtOnce();

private:
    SyncSandbox m_sandbox;
};

void tst_FileSyncChildren::initTestCase()
{
    QVERIFY(writeProgram(text("bin/ssh"), "shift 9; eval \"exec $*\"")); // becomes the remote command
    QVERIFY(writeProgram(text("bin/fetch"), fetch));
    filesync::terminateTimeout = 200;
}

void tst_FileSyncChildren::changesHost()
{
    const auto &change = currentCase(hostCases);
    QFile::remove(text("record"));
    const QList<int> reports = runJob([&](FileSync &job) {
        job.executeCommand(text("fetch"), {text("m-1:/a"), text("m-1,m-1"), text("M-1")}, text("m-1"),
                           m_sandbox.root());
        QVERIFY(waitForOutput(job));
        const qint64 pid = processOf(job)->processId();
        job.onHostChanged(text(change.newHost));
        QCOMPARE(isAlive(pid), !change.restarts);
        if (!change.restarts)
            job.deleteLater();
    });
    QCOMPARE(reports, change.restarts ? QList<int>{0} : QList<int>());
    QCOMPARE(readFile(text("record")),
             change.restarts ? text("%1:/a\n%1,%1\nM-1\n").arg(text(change.newHost)).toUtf8() : QByteArray());
}

void tst_FileSyncChildren::changesHostWithoutARunningCommand()
{
    const QList<int> reports = runJob([](FileSync &job) {
        job.onHostChanged(text("early"));
        QCOMPARE(processOf(job)->state(), QProcess::NotRunning);
        job.syncFile(text("true"), text("bin/ssh"), text("copy"), text("h"), false);
        const auto changeLate = [&job] { // when only the report of the copy is left to come
            job.onHostChanged(text("late"));
            QCOMPARE(processOf(job)->state(), QProcess::NotRunning);
        };
        connect(processOf(job), qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &job, changeLate);
    });
    QCOMPARE(reports, QList<int>{0});
    QVERIFY(QFile::exists(text("copy")));
}

void tst_FileSyncChildren::leavesNoChild()
{
    const auto &ending = currentCase(endCases);
    qint64 pid = 0;
    const QList<int> reports = runJob([&pid, &ending](FileSync &job) {
        job.executeCommand(text("sh"), {text("-c"), text(stubborn)}, QString(), QString());
        QVERIFY(waitForOutput(job));
        pid = processOf(job)->processId();
        ending.end(&job);
    });
    QVERIFY(pid != 0 && !isAlive(pid));
    QCOMPARE(reports, ending.isReported ? QList<int>{-1} : QList<int>());
}

void tst_FileSyncChildren::runsManyAtOnce()
{
    constexpr int jobCount = 100;
    constexpr std::array<int, 4> signals = {SIGKILL, SIGTERM, SIGHUP, SIGUSR1};
    QCOMPARE(runJob(text("true"), {}), QList<int>{0}); // opens the descriptors that Qt keeps
    const int descriptors = openDescriptors();
    QRandomGenerator random(20210910);
    QVector<QList<int>> reports(jobCount);
    QVector<QList<int>> expected(jobCount, {-1});
    QVector<QPointer<FileSync>> jobs;
    for (int i = 0; i < jobCount; ++i) {
        auto *const job = new FileSync(nullptr);
        jobs << job;
        connect(job, &FileSync::completed, job, [report = &reports[i]](int status) { *report << status; });
        if (i % 4 == 0) {
            job->executeCommand(text("sh"), {text("-c"), text("exit %1").arg(i)}, QString(), QString());
            expected[i] = {i};
        } else if (i % 4 == 1) {
            job->executeCommand(m_sandbox.path("missing"), {}, QString(), QString());
        } else {
            // Not before the start: the child would still run this program's signal handlers.
            QProcess *const process = processOf(*job);
            auto *const timer = new QTimer(process);
            timer->setSingleShot(true); // a second kill would have no process id and hit this program's group
            timer->setInterval(int(random.bounded(100)));
            connect(process, &QProcess::started, timer, qOverload<>(&QTimer::start));
            connect(timer, &QTimer::timeout, process, [process, signal = signals.at(random.bounded(4U))] {
                QVERIFY(process->processId() > 0);
                ::kill(pid_t(process->processId()), signal);
            });
            job->executeCommand(text("sleep"), {text("600")}, QString(), QString());
        }
    }
    const auto isGone = [](const QPointer<FileSync> &job) { return job.isNull(); };
    QTRY_VERIFY_WITH_TIMEOUT(std::all_of(jobs.cbegin(), jobs.cend(), isGone), 20000);
    QCOMPARE(reports, expected);
    QCOMPARE(::waitpid(-1, nullptr, WNOHANG), pid_t(-1)); // no child, not even a zombie
    QCOMPARE(errno, ECHILD);
    QCOMPARE(openDescriptors(), descriptors);
}

QTEST_GUILESS_MAIN(tst_FileSyncChildren)
#include "tst_FileSyncChildren.moc"
