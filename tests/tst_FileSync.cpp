// Jobs whose ssh is a stand-in: what reaches the child, and what becomes of the job.

#include "LogCapture.h"
#include "SyncJob.h"

#include <QMetaMethod>
#include <QtTest>

#include <csignal>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

// Writes its arguments to $RECORD; under the name ssh it then does what $SSH_DOES says.
const char recorder[] = R"(printf '%s\0' "$@" > "$RECORD"
case $0 in *ssh) eval "$SSH_DOES" ;; esac
)";

QStringList shell(const QString &script)
{
    return {text("-c"), script};
}

void limitFileSize(rlim_t bytes)
{
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes == 0 ? limit.rlim_max : bytes;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace

class tst_FileSync : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void passesNames_data();
    void passesNames();
    void refusesOptionsForSsh();
    void reports_data();
    void reports();
    void reportsFailedStarts_data();
    void reportsFailedStarts();
    void reportsOnce();
    void needsAHost();
    void copies_data();
    void copies();
    void readsProgress_data();
    void readsProgress();
    void removesDirectories_data();
    void removesDirectories();
    void listsItsMethodsInOrder();

private:
    QString path(const char *name) const { return m_sandbox.path(name); }
    QStringList record() const;

    SyncSandbox m_sandbox;
};

QStringList tst_FileSync::record() const
{
    QStringList arguments;
    for (const QByteArray &argument : readFile(path("record")).split('\0'))
        arguments << QString::fromUtf8(argument);
    arguments.removeLast(); // what is behind the last zero byte
    return arguments;
}

void tst_FileSync::initTestCase()
{
    QVERIFY(writeProgram(path("bin/ssh"), recorder) && writeProgram(path("bin/recorder"), recorder));
    qputenv("RECORD", path("record").toLocal8Bit());
    std::signal(SIGXFSZ, SIG_IGN);
}

void tst_FileSync::init()
{
    QFile::remove(path("record"));
    qputenv("SSH_DOES", "exit 0");
    FileSync::setRemoteUser(text("olvex"));
}

void tst_FileSync::passesNames_data()
{
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QStringList>("arguments");
    const QString hostile = text("a  b'c\"d\\;touch marker;$(touch marker)`touch marker`&|$PATH*ü€\n%1%2")
                                .replace(text("marker"), path("marker"));
    QTest::newRow("plain") << text("u") << text("h") << text("c") << QStringList{text("a"), text("b")};
    QTest::newRow("bare") << QString() << text("h") << QString() << QStringList();
    QTest::newRow("hostile") << hostile << hostile << hostile << QStringList{hostile, hostile};
    QTest::newRow("dashes") << text("u") << text("-oProxyCommand=x") << text("c") << QStringList{text("-oX")};
    QTest::newRow("here") << text("u") << QString() << text("recorder")
                          << QStringList{hostile, QString(), text("--"), text("-x")};
}

void tst_FileSync::passesNames()
{
    QFETCH(QString, user);
    QFETCH(QString, host);
    QFETCH(QString, command);
    QFETCH(QStringList, arguments);
    FileSync::setRemoteUser(user);
    QCOMPARE(runJob(command, arguments, host), QList<int>{0});
    const QStringList options =
        text("-o IPQos=0x00 -o ServerAliveInterval=5 -o StrictHostKeyChecking=no -i").split(QLatin1Char(' '));
    const QStringList viaSsh = options
        + QStringList{path("certificates/") + user + text("_rsa"), user + text("@") + host, command,
                      arguments.join(QLatin1Char(' '))};
    QCOMPARE(record(), host.isEmpty() ? arguments : viaSsh);
    QVERIFY(!QFile::exists(path("marker")));
}

void tst_FileSync::refusesOptionsForSsh()
{
    const QString option = text("-oProxyCommand=touch marker;");
    const LogCapture capture;
    QCOMPARE(runJob(option, {}, text("h")), QList<int>{-1});
    FileSync::setRemoteUser(option);
    QCOMPARE(runJob(text("c"), {}, text("h")), QList<int>{-1});
    QVERIFY(!QFile::exists(path("record")));
    QCOMPARE(capture.texts().filter(text("Refused")).size(), 2);
}

void tst_FileSync::reports_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("logged");
    const auto row = [](const char *script, int status, const char *logged) {
        QTest::newRow(script) << status << text(logged);
    };
    row("exit 0", 0, "exitCode: 0");
    row("exit 23", 23, "Failed( 23 ): \"\"");
    row("exit 300", 44, "Failed( 44 ):");
    row("echo 'write: No space left on device (28)' >&2; exit 1", -2, "Failed( -2 ): \"write: No space");
    row("printf 'a\\0No space left on device (28)' >&2; exit 11", -2, "Failed( -2 ):");
    row("echo 'no space left on device (28)' >&2; exit 1", 1, "no space");
    row("echo 'No space left on device (28)'; exit 1", 1, "Failed( 1 ): \"\"");
    row("echo 'No space left on device (28)' >&2; exit 0", 0, "exitCode: 0");
    row("kill -9 $$", -1, "Failed( QProcess::Crashed ) ");
    row("kill -TERM $$", -1, "Failed( QProcess::Crashed ) ");
    row("cat", 0, "\"sh -c cat\""); // does not wait for input
    row("test \"$(pwd -P)\" = / && echo 45%", 0, "exitCode: 0"); // the output is not connected
}

void tst_FileSync::reports()
{
    const LogCapture capture;
    QList<int> progress;
    const QList<int> reports = runJob([&progress](FileSync &job) {
        connect(&job, &FileSync::transferProgress, [&progress](int digit) { progress << digit; });
        job.executeCommand(text("sh"), shell(text(QTest::currentDataTag())), QString(), QString());
    });
    QFETCH(int, status);
    QFETCH(QString, logged);
    QCOMPARE(reports, QList<int>{status});
    QVERIFY2(capture.contains(logged), qPrintable(capture.lines().join(QLatin1Char('\n'))));
    QCOMPARE(progress, QList<int>());
}

void tst_FileSync::reportsFailedStarts_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("host");
    QTest::addColumn<QString>("directory");
    QTest::newRow("no name") << QString() << QString() << QString();
    QTest::newRow("missing") << path("missing") << QString() << QString();
    QTest::newRow("directory") << path("bin") << QString() << QString();
    QTest::newRow("bad directory") << path("bin/recorder") << QString() << path("missing");
    QTest::newRow("no ssh") << text("c") << text("h") << QString();
}

void tst_FileSync::reportsFailedStarts()
{
    QFETCH(QString, command);
    QFETCH(QString, host);
    QFETCH(QString, directory);
    const LogCapture capture;
    const QByteArray usual = qgetenv("PATH");
    qputenv("PATH", "/missing");
    const QList<int> reports = runJob([&](FileSync &job) {
        // An event loop in the receiver must not delete the job under its own signal.
        connect(&job, &FileSync::completed, [] { QTest::qWait(1); });
        job.executeCommand(command, {}, host, directory);
    });
    qputenv("PATH", usual);
    QCOMPARE(reports, QList<int>{-1});
    QVERIFY(capture.contains(text("Failed( QProcess::FailedToStart ) ")));
}

// Whatever still reaches a job while it reports.
void tst_FileSync::reportsOnce()
{
    const QList<int> reports = runJob([this](FileSync &job) {
        connect(&job, &FileSync::completed, [&job, this] {
            QMetaObject::invokeMethod(&job, "onError", Q_ARG(QProcess::ProcessError, QProcess::Crashed));
            QMetaObject::invokeMethod(&job, "onFinished", Q_ARG(int, 1),
                                      Q_ARG(QProcess::ExitStatus, QProcess::NormalExit));
            QMetaObject::invokeMethod(&job, "onFileSyncReadyRead");
            QMetaObject::invokeMethod(&job, "onCopyComplete");
            job.onHostChanged(text("other"));
            job.executeCommand(text("recorder"), {}, QString(), QString());
            job.syncFile(text("recorder"), path("bin/ssh"), path("copy"), text("h"), false);
        });
        job.executeCommand(text("sh"), shell(text("exit 3")), QString(), QString());
    });
    QCOMPARE(reports, QList<int>{3});
    QVERIFY(!QFile::exists(path("record")));
}

void tst_FileSync::needsAHost()
{
    FileSync job(nullptr);
    const QSignalSpy completed(&job, &FileSync::completed);
    job.syncFile(text("recorder"), path("bin/ssh"), path("copy"), QString(), true);
    QCOMPARE(processOf(job)->state(), QProcess::NotRunning);
    QCOMPARE(runJob(text("recorder"), {}), QList<int>{0}); // any other job has time to report
    QVERIFY(completed.isEmpty() && !QFile::exists(path("copy")));
}

void tst_FileSync::copies_data()
{
    QTest::addColumn<QString>("sshDoes"); // empty: a copy without a remote job
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::addColumn<int>("status");
    QTest::addColumn<QByteArray>("left"); // in the target, null for none
    QTest::addColumn<int>("sizeLimit");
    const QByteArray copy(20000, 'n');
    const auto row = [](const char *name, const char *sshDoes, const char *source, const char *target,
                        int status, const QByteArray &left, int sizeLimit = 0) {
        QTest::newRow(name) << text(sshDoes) << text(source) << text(target) << status << left << sizeLimit;
    };
    row("remote", "exit 0", "source", "target", 0, copy);
    row("remote failed", "exit 23", "source", "target", 23, "old");
    row("remote crashed", "kill -9 $$", "source", "target", -1, "old");
    row("remote, no source", "exit 0", "missing", "target", -1, {});
    row("local", "", "source", "target", 0, copy);
    row("new target", "", "./x/../source", "new//./x/../file", 0, copy);
    row("no source", "", "missing", "target", -1, {}); // the old target is gone
    row("no directory", "", "source", "missing/target", -1, {});
    row("same file", "", "source", "./source", -1, copy);
    row("source is a link to it", "", "link", "source", -1, copy);
    row("source is a directory", "", "new", "target", -1, {});
    row("source is a FIFO", "", "fifo", "target", -1, {});
    row("disk full at once", "", "source", "target", -1, {}, 1);
    row("disk full at the end", "", "source", "target", -1, {}, 19999);
}

void tst_FileSync::copies()
{
    QFETCH(QString, sshDoes);
    QFETCH(QString, source);
    QFETCH(QString, target);
    QFETCH(int, status);
    QFETCH(int, sizeLimit);
    const QTemporaryDir dir;
    QVERIFY(QDir::setCurrent(dir.path()) && QDir().mkdir(text("new")));
    QVERIFY(writeFile(text("source"), QByteArray(20000, 'n')) && writeFile(text("target"), "old"));
    QVERIFY(QFile::link(dir.filePath(text("source")), text("link")) && ::mkfifo("fifo", 0600) == 0);
    qputenv("SSH_DOES", sshDoes.toLocal8Bit());
    const LogCapture capture;

    limitFileSize(rlim_t(sizeLimit));
    const QList<int> reports = runJob([&](FileSync &job) {
        if (sshDoes.isEmpty())
            job.syncFile(source, target, QString(), false);
        else
            job.syncFile(text("c"), source, target, text("h"), true);
    });
    limitFileSize(0);

    QCOMPARE(reports, QList<int>{status});
    QTEST(readFile(QDir::cleanPath(target)), "left");
    QStringList entries =
        QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    entries.removeOne(text("target"));
    QCOMPARE(entries, (QStringList{text("fifo"), text("link"), text("new"), text("source")}));
    QCOMPARE(capture.lines().contains(text("Olvex.FileSync.warning: FileSync Failed(-1)\n")),
             status == -1 && !sshDoes.startsWith(text("kill")));
}

void tst_FileSync::readsProgress_data()
{
    QTest::addColumn<QString>("output");
    QTest::addColumn<QList<int>>("progress");
    QTest::newRow("last digit") << text("45%%") << QList<int>{5};
    QTest::newRow("last of many, over lines")
        << text("1 10%% 1MB/s\\n2 20%%\\r 37%% left\\n") << QList<int>{7};
    QTest::newRow("up to a zero byte") << text("8%%\\0 99%%") << QList<int>{8};
    QTest::newRow("no number") << text("%% 45 %%") << QList<int>();
}

void tst_FileSync::readsProgress()
{
    QFETCH(QString, output);
    FileSync job(nullptr);
    QList<int> reports;
    connect(&job, &FileSync::transferProgress, [&reports](int progress) { reports << progress; });
    connect(processOf(job), SIGNAL(readyReadStandardOutput()), &job, SLOT(onFileSyncReadyRead()));
    job.executeCommand(text("sh"), shell(text("printf '%1'; exec sleep 600").arg(output)), QString(),
                       QString());
    QVERIFY(waitForOutput(job));
    QTEST(reports, "progress");
}

void tst_FileSync::removesDirectories_data()
{
    QTest::addColumn<QString>("entries"); // "d/" a directory, "n>t" a link, "n|" a FIFO, else a file
    QTest::addColumn<bool>("failed");
    QTest::newRow("missing") << text("other/") << false;
    QTest::newRow("tree") << text("top/ top/a top/d/ top/d/b top/d/e/ top/d/e/c top/empty/") << false;
    QTest::newRow("hidden file") << text("top/ top/.hidden top/a") << true;
    QTest::newRow("hidden file below") << text("top/ top/d/ top/d/.hidden top/e/ top/e/a") << true;
    QTest::newRow("broken link") << text("top/ top/l>missing") << true;
    QTest::newRow("special file") << text("top/ top/f|") << true;
    QTest::newRow("links") << text("top/ top/l>kept top/m>kept/file") << false;
    QTest::newRow("link as the top") << text("top>kept") << false;
}

void tst_FileSync::removesDirectories()
{
    QFETCH(QString, entries);
    QFETCH(bool, failed);
    const QTemporaryDir dir;
    const QString top = dir.filePath(text("top"));
    for (const QString &entry : (text("kept/ kept/file ") + entries).split(QLatin1Char(' '))) {
        const QString name = dir.filePath(entry.section(QLatin1Char('>'), 0, 0));
        const QString target = dir.filePath(entry.section(QLatin1Char('>'), 1));
        QVERIFY(entry.endsWith(QLatin1Char('/'))       ? QDir().mkpath(name)
                    : entry.endsWith(QLatin1Char('|')) ? ::mkfifo(qPrintable(name), 0600) == 0
                    : entry.contains(QLatin1Char('>')) ? QFile::link(target, name)
                                                       : writeFile(name, "x"));
    }
    QCOMPARE(FileSync::removeDirectory(QDir(top)), failed);
    QCOMPARE(QFileInfo::exists(top) || QFileInfo(top).isSymLink(), failed);
    QVERIFY(QFile::exists(dir.filePath(text("kept/file"))));
}

void tst_FileSync::listsItsMethodsInOrder()
{
    QList<QByteArray> methods;
    const QMetaObject &meta = FileSync::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        methods << meta.method(i).methodSignature();
    QCOMPARE(methods,
             (QList<QByteArray>{"completed(int)", "transferProgress(int)", "onHostChanged(QString)",
                                "onFinished(int,QProcess::ExitStatus)", "onError(QProcess::ProcessError)",
                                "onFileSyncReadyRead()", "onCopyComplete()"}));
}

QTEST_GUILESS_MAIN(tst_FileSync)
#include "tst_FileSync.moc"
