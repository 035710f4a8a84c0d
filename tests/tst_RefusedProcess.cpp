// Jobs for whose process there are not enough descriptors. Qt 5.15 goes on with the id -1 when only the last
// one is missing, and a signal to that id ends every process of the user: this program keeps such signals
// back, twice, and leaks a job that does not report.

#include <FileSync.h>

#include "LogCapture.h"

#include <QtTest>

#include <dlfcn.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

int heldBack = 0;

// Has the system refuse signals to ids below 1, for good.
bool refuseBroadSignals()
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_kill, 0, 3),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[0])),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 2, 0),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, 0x80000000, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
    };
    const sock_fprog program{std::size(filter), filter};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0 && syscall(SYS_kill, -1, 0) == -1;
}

// Lets so many more descriptors be opened.
void allowDescriptors(rlim_t count)
{
    const int next = dup(STDERR_FILENO);
    close(next);
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = std::min(rlim_t(next) + count, limit.rlim_max);
    setrlimit(RLIMIT_NOFILE, &limit);
}

} // namespace

// Stands in for that of the C library, in this program and its libraries.
extern "C" int kill(pid_t id, int number) noexcept
{
    heldBack += id < 1;
    return id < 1 ? 0 : int(syscall(SYS_kill, id, number));
}

class tst_RefusedProcess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void isReportedAndNotSignalled()
    {
        if (dlsym(RTLD_DEFAULT, "kill") != reinterpret_cast<void *>(&kill) || !refuseBroadSignals())
            QSKIP("This system does not keep the signals back");
        const LogCapture capture;
        QVector<int> reports;
        for (rlim_t descriptors = 0; !reports.contains(0) && descriptors < 20; ++descriptors) {
            auto *const job = new FileSync(nullptr);
            connect(job, &FileSync::completed, [&reports, job](int status) {
                reports << status;
                QTest::qWait(1);
                delete job;
            });
            allowDescriptors(descriptors);
            job->executeCommand(QStringLiteral("true"), {}, QString(), QString());
            allowDescriptors(1000);
            QTRY_COMPARE(reports.size(), int(descriptors) + 1);
            QTest::qWait(1); // in which the process is deleted
            QCOMPARE(heldBack, 0);
        }
        QCOMPARE(reports.count(-1), reports.size() - 1);
        QVERIFY(capture.contains(QStringLiteral("refuses another process")));
    }
};

QTEST_GUILESS_MAIN(tst_RefusedProcess)
#include "tst_RefusedProcess.moc"
