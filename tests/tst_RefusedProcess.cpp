// A job for which the system has no process left. Qt 5.15 goes on with the id -1 then, and a signal to that
// id ends every process of the user: this program keeps such signals back, twice, and leaks a job that does
// not report.

#include <FileSync.h>

#include <QtTest>

#include <dlfcn.h>
#include <linux/filter.h>
#include <linux/sched.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

int heldBack = 0;

// Has the system refuse, for good, processes as Qt starts them and signals to ids below 1.
bool refuseProcessesAndBroadSignals()
{
    sock_filter filter[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_kill, 3, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_clone, 0, 6),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[0])),
        BPF_JUMP(BPF_JMP | BPF_JSET | BPF_K, CLONE_PIDFD, 3, 4),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[0])),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, 0, 3, 0),
        BPF_JUMP(BPF_JMP | BPF_JGE | BPF_K, 0x80000000, 2, 1),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EAGAIN),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EPERM),
    };
    const sock_fprog program{std::size(filter), filter};
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0
        && prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0 && syscall(SYS_kill, -1, 0) == -1;
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
        if (dlsym(RTLD_DEFAULT, "kill") != reinterpret_cast<void *>(&kill)
            || !refuseProcessesAndBroadSignals())
            QSKIP("This system does not keep the signals back");
        QVector<int> reports;
        auto *const job = new FileSync(nullptr);
        connect(job, &FileSync::completed, [&reports, job](int status) {
            reports << status;
            QTest::qWait(1);
            delete job;
        });
        job->executeCommand(QStringLiteral("true"), {}, QString(), QString());
        QCOMPARE(reports, QVector<int>{-1});
        QTest::qWait(1); // in which the process is deleted
        QCOMPARE(heldBack, 0);
    }
};

QTEST_GUILESS_MAIN(tst_RefusedProcess)
#include "tst_RefusedProcess.moc"
