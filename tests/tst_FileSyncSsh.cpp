// Jobs that reach a real secure-shell server on loopback, through the real client.

#include "Cases.h"
#include "LocalSshd.h"
#include "SyncJob.h"

#include <pwd.h>

namespace {

const struct {
    const char *name;
    const char *user; // null for the one whose key the server accepts
    const char *host, *command, *arguments;
    int status;
} cases[] = {
    {"success", nullptr, "m-1", "test", "a\\ b = 'a b'", 0},
    {"exit code", nullptr, "m-1", "exit", "24", 24},
    {"no such command", nullptr, "m-1", "no-such-command", "", 127},
    {"full disk", nullptr, "m-1", "echo", "'No space left on device (28)' >&2; exit 11", -2},
    {"refused key", "intruder", "m-1", "true", "", 255},
    {"no key", "nobody-has-a-key", "m-1", "true", "", 255},
    {"unreachable host", nullptr, "unreachable", "true", "", 255},
    {"hostile host", nullptr, "-oProxyCommand=touch marker;$(touch marker)", "true", "", 255},
};

// For Host blocks the first value of a setting counts.
const char clientConfig[] = R"(Host unreachable
  Port %1
Host asks
  BatchMode no
Host *
  HostName 127.0.0.1
  Port %2
  BatchMode yes
  IdentitiesOnly yes
  IdentityAgent none
  UserKnownHostsFile "%3/known_hosts"
)";

} // namespace

class tst_FileSyncSsh : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { FileSync::setRemoteUser(m_user); }
    void reports_data() { addCases(cases); }
    void reports();
    void copiesAfterTheJob();
    void waitsForAPassword();
    void changesHost();

private:
    SyncSandbox m_sandbox;
    const QString m_user = QString::fromLocal8Bit(::getpwuid(::geteuid())->pw_name);
    LocalSshd m_server{m_sandbox.root()};
};

void tst_FileSyncSsh::initTestCase()
{
    const QString client = QStandardPaths::findExecutable(text("ssh"));
    if (LocalSshd::program().isEmpty() || client.isEmpty())
        QSKIP("sshd or ssh is not installed");
    const QString key = m_sandbox.path("certificates/%1_rsa");
    QVERIFY(QDir().mkdir(text("certificates")) && LocalSshd::makeKey(key.arg(m_user)));
    QVERIFY(QFile::copy(key.arg(m_user) + text(".pub"), text("authorized_keys")));
    QVERIFY(LocalSshd::makeKey(key.arg(text("intruder"))));
    QVERIFY(m_server.start());

    const QString config =
        text(clientConfig).arg(LocalSshd::freePort()).arg(m_server.port()).arg(m_sandbox.root());
    const QString wrapper = text("exec %1 -F '%2' \"$@\"\n").arg(client, m_sandbox.path("ssh_config"));
    QVERIFY(writeFile(text("ssh_config"), config.toLocal8Bit()));
    QVERIFY(writeProgram(text("bin/ssh"), wrapper.toLocal8Bit()));
}

void tst_FileSyncSsh::reports()
{
    const auto &job = currentCase(cases);
    FileSync::setRemoteUser(job.user ? text(job.user) : m_user);
    QCOMPARE(runJob(text(job.command), {text(job.arguments)}, text(job.host), m_sandbox.root()),
             QList<int>{job.status});
    QVERIFY(!QFile::exists(text("marker")));
}

void tst_FileSyncSsh::copiesAfterTheJob()
{
    const QString source = m_sandbox.path("fetched");
    const QString target = m_sandbox.path("target");
    QVERIFY(writeFile(target, "old"));
    for (const int status : {23, 0}) {
        const QString command = text("printf new >'%1'; exit %2").arg(source).arg(status);
        QCOMPARE(runJob([&](FileSync &job) { job.syncFile(command, source, target, text("m-1"), true); }),
                 QList<int>{status});
        QCOMPARE(readFile(target), QByteArray(status == 0 ? "new" : "old"));
    }
}

// Nobody can type it; the caller bounds the job.
void tst_FileSyncSsh::waitsForAPassword()
{
    QVERIFY(writeProgram(text("bin/askpass"),
                         "echo >\"${0%/*}/asked\"\n"
                         "while kill -0 $PPID 2>/dev/null; do sleep 0.05; done\n"));
    qputenv("SSH_ASKPASS", m_sandbox.path("bin/askpass").toLocal8Bit());
    qputenv("SSH_ASKPASS_REQUIRE", "force");
    FileSync::setRemoteUser(text("intruder"));
    qint64 pid = 0;
    const QList<int> reports = runJob([&](FileSync &job) {
        job.executeCommand(text("true"), {}, text("asks"), QString());
        pid = processOf(job)->processId();
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(text("bin/asked")), 20000);
        QCOMPARE(processOf(job)->state(), QProcess::Running);
        job.deleteLater();
    });
    QCOMPARE(reports, QList<int>());
    QVERIFY(!isAlive(pid));
}

// From a command that hangs on the first host to rsync over ssh from the second one.
void tst_FileSyncSsh::changesHost()
{
    if (QStandardPaths::findExecutable(text("rsync")).isEmpty())
        QSKIP("rsync is not installed");
    QVERIFY(writeProgram(text("bin/fetch"), R"(case $1 in
*@m-1:*) while echo running; do sleep 0.05; done ;;
*) exec rsync -a -e "ssh -i '$3'" "$1" "$2" ;;
esac
)"));
    QVERIFY(writeFile(text("log"), "content"));
    const QString target = m_sandbox.path("fetched log");
    const QList<int> reports = runJob([&](FileSync &job) {
        job.executeCommand(m_sandbox.path("bin/fetch"),
                           {m_user + text("@m-1:") + m_sandbox.path("log"), target,
                            m_sandbox.path("certificates/") + m_user + text("_rsa")},
                           text("m-1"), QString());
        QVERIFY(waitForOutput(job));
        const qint64 pid = processOf(job)->processId();
        job.onHostChanged(text("m-2"));
        QVERIFY(!isAlive(pid));
    });
    QCOMPARE(reports, QList<int>{0});
    QCOMPARE(readFile(target), QByteArray("content"));
}

QTEST_GUILESS_MAIN(tst_FileSyncSsh)
#include "tst_FileSyncSsh.moc"
