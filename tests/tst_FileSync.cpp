// Jobs whose ssh is a stand-in: what reaches the child, and what the job reports.

#include "Cases.h"
#include "LogCapture.h"
#include "SyncJob.h"

#include <QMetaMethod>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

// Writes its arguments to $RECORD; under the name ssh it then does what $SSH_DOES says.
const char recorder[] = R"(printf '%s\0' "$@" > "$RECORD"
case $0 in *ssh) eval "$SSH_DOES" ;; esac
)";

#define HOSTILE "a  b'c\"d\\;touch marker;$(touch marker)`touch marker`&|$PATH*ü€\n%1%2"

const struct {
    const char *name, *user, *host, *command;
    const char *arguments[3]; // up to a null
} nameCases[] = {
    {"hostile", HOSTILE, HOSTILE, HOSTILE, {HOSTILE, HOSTILE}},
    {"dashes", "u", "-oProxyCommand=x", "c", {"-oX"}},
    {"here", "u", "", "recorder", {HOSTILE, "", "-x"}},
};

const struct {
    const char *name; // the script
    int status;
    const char *logged;
} reportCases[] = {
    {"exit 23", 23, "Failed( 23 ): \"\""},
    {"exit 300", 44, "Failed( 44 ):"},
    {"echo 'write: No space left on device (28)' >&2; exit 1", -2, "Failed( -2 ): \"write: No space"},
    {"printf 'a\\0No space left on device (28)' >&2; exit 11", -2, "Failed( -2 ):"},
    {"echo 'no space left on device (28)' >&2; exit 1", 1, "no space"},
    {"echo 'No space left on device (28)'; exit 1", 1, "Failed( 1 ): \"\""},
    {"echo 'No space left on device (28)' >&2; exit 0", 0, "exitCode: 0"},
    {"kill -9 $$", -1, "Failed( QProcess::Crashed ) "},
    {"cat", 0, "\"sh -c cat\""}, // does not wait for input
    {"test \"$(pwd -P)\" = / && echo 45%", 0, "exitCode: 0"}, // the output is not connected
};

const struct {
    const char *name, *command, *host, *directory;
} failedStartCases[] = {
    {"no name", "", "", ""},
    {"missing", "sh", "", ""}, // with this PATH
    {"bad directory", "/bin/sh", "", "/missing"},
    {"no ssh", "c", "h", ""},
};

constexpr int sourceSize = 20000;

const struct {
    const char *name;
    const char *sshDoes; // empty: a copy without a remote job
    const char *source, *target;
    const char *left; // in the target: "new", "old" or nothing
    int status;
    int sizeLimit; // on files, in bytes; 0 for none
} copyCases[] = {
    {"remote", "exit 0", "source", "target", "new", 0, 0},
    {"remote failed", "exit 23", "source", "target", "old", 23, 0},
    {"remote crashed", "kill -9 $$", "source", "target", "old", -1, 0},
    {"new target", "", "./x/../source", "new//./x/../file", "new", 0, 0},
    {"no source", "", "missing", "target", "", -1, 0}, // the old target is gone
    {"no directory", "", "source", "missing/target", "", -1, 0},
    {"same file", "", "source", "./source", "new", -1, 0},
    {"source is a link to it", "", "link", "source", "new", -1, 0},
    {"source is a FIFO", "", "fifo", "target", "", -1, 0},
    {"disk full at the end", "", "source", "target", "", -1, sourceSize - 1},
};

const struct {
    const char *name; // the output
    int progress; // -1 for none
} progressCases[] = {
    {"1 10%% 1MB/s\\n2 20%%\\r 37%% left\\n", 7},
    {"8%%\\0 99%%", 8}, // up to the zero byte
    {"%% 45 %%", -1},
};

const struct {
    const char *name;
    const char *entries; // "d/" a directory, "n>t" a link, "n|" a FIFO, else a file
    bool failed;
} directoryCases[] = {
    {"missing", "other/", false},
    {"tree", "top/ top/a top/d/ top/d/b top/d/e/ top/d/e/c top/empty/", false},
    {"hidden file below", "top/ top/d/ top/d/.hidden top/e/ top/e/a", true},
    {"broken link", "top/ top/l>missing", true},
    {"special file", "top/ top/f|", true},
    {"links", "top/ top/l>kept top/m>kept/file", false},
    {"link as the top", "top>kept", false},
};

void limitFileSize(int bytes)
{
    rlimit limit{};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = bytes == 0 ? limit.rlim_max : rlim_t(bytes);
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

bool makeEntry(const QDir &dir, const QString &entry)
{
    const QString name = dir.filePath(entry.section(QLatin1Char('>'), 0, 0));
    if (entry.endsWith(QLatin1Char('/')))
        return dir.mkpath(name);
    if (entry.endsWith(QLatin1Char('|')))
        return ::mkfifo(qPrintable(name), 0600) == 0;
    if (entry.contains(QLatin1Char('>')))
        return QFile::link(dir.filePath(entry.section(QLatin1Char('>'), 1)), name);
    return writeFile(name, "x");
}

} // namespace

class tst_FileSync : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void passesNames_data() { addCases(nameCases); }
    void passesNames();
    void refusesOptionsForSsh();
    void reports_data() { addCases(reportCases); }
    void reports();
    void reportsFailedStarts_data() { addCases(failedStartCases); }
    void reportsFailedStarts();
    void reportsOnce();
    void needsAHost();
    void copies_data() { addCases(copyCases); }
    void copies();
    void readsProgress_data() { addCases(progressCases); }
    void readsProgress();
    void removesDirectories_data() { addCases(directoryCases); }
    void removesDirectories();
    void listsItsMethodsInOrder();

private:
    QString path(const char *name) const { return m_sandbox.path(name); }

    SyncSandbox m_sandbox;
};

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

void tst_FileSync::passesNames()
{
    const auto &names = currentCase(nameCases);
    QStringList arguments;
    for (const char *const *argument = names.arguments; argument != std::end(names.arguments) && *argument;
         ++argument)
        arguments << text(*argument);
    FileSync::setRemoteUser(text(names.user));
    QCOMPARE(runJob(text(names.command), arguments, text(names.host), m_sandbox.root()), QList<int>{0});

    if (*names.host) {
        const QString options = text("-o IPQos=0x00 -o ServerAliveInterval=5 -o StrictHostKeyChecking=no -i");
        arguments = options.split(QLatin1Char(' '))
            + QStringList{path("certificates/") + text(names.user) + text("_rsa"),
                          text(names.user) + text("@") + text(names.host), text(names.command),
                          arguments.join(QLatin1Char(' '))};
    }
    QByteArray expected;
    for (const QString &argument : qAsConst(arguments))
        expected += argument.toUtf8() + '\0';
    QCOMPARE(readFile(path("record")), expected);
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

void tst_FileSync::reports()
{
    const auto &expected = currentCase(reportCases);
    const LogCapture capture;
    QList<int> progress;
    const QList<int> reports = runJob([&](FileSync &job) {
        connect(&job, &FileSync::transferProgress, [&progress](int digit) { progress << digit; });
        job.executeCommand(text("sh"), {text("-c"), text(expected.name)}, QString(), QString());
    });
    QCOMPARE(reports, QList<int>{expected.status});
    QVERIFY2(capture.contains(text(expected.logged)), qPrintable(capture.lines().join(QLatin1Char('\n'))));
    QCOMPARE(progress, QList<int>());
}

void tst_FileSync::reportsFailedStarts()
{
    const auto &start = currentCase(failedStartCases);
    const LogCapture capture;
    const QByteArray usual = qgetenv("PATH");
    qputenv("PATH", "/missing");
    const QList<int> reports = runJob([&](FileSync &job) {
        // An event loop in the receiver must not delete the job under its own signal.
        connect(&job, &FileSync::completed, &job, [] { QTest::qWait(1); });
        job.executeCommand(text(start.command), {}, text(start.host), text(start.directory));
    });
    qputenv("PATH", usual);
    QCOMPARE(reports, QList<int>{-1});
    QVERIFY(capture.contains(text("Failed( QProcess::FailedToStart ) ")));
}

// Whatever still reaches a job while it reports.
void tst_FileSync::reportsOnce()
{
    const QList<int> reports = runJob([this](FileSync &job) {
        connect(&job, &FileSync::completed, this, [&job, this] {
            QMetaObject::invokeMethod(&job, "onError", Q_ARG(QProcess::ProcessError, QProcess::Crashed));
            QMetaObject::invokeMethod(&job, "onFinished", Q_ARG(int, 1),
                                      Q_ARG(QProcess::ExitStatus, QProcess::NormalExit));
            QMetaObject::invokeMethod(&job, "onFileSyncReadyRead");
            QMetaObject::invokeMethod(&job, "onCopyComplete");
            job.onHostChanged(text("other"));
            job.executeCommand(text("recorder"), {}, QString(), QString());
            job.syncFile(text("recorder"), path("bin/ssh"), path("copy"), text("h"), false);
        });
        job.executeCommand(text("sh"), {text("-c"), text("exit 3")}, QString(), QString());
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

void tst_FileSync::copies()
{
    const auto &copy = currentCase(copyCases);
    const QMap<QByteArray, QByteArray> contents{{"new", QByteArray(sourceSize, 'n')}, {"old", "old"}};
    const QTemporaryDir dir;
    QVERIFY(QDir::setCurrent(dir.path()) && QDir().mkdir(text("new")));
    QVERIFY(writeFile(text("source"), contents["new"]) && writeFile(text("target"), contents["old"]));
    QVERIFY(QFile::link(dir.filePath(text("source")), text("link")) && ::mkfifo("fifo", 0600) == 0);
    qputenv("SSH_DOES", copy.sshDoes);
    const LogCapture capture;

    limitFileSize(copy.sizeLimit);
    const QList<int> reports = runJob([&copy](FileSync &job) {
        if (*copy.sshDoes)
            job.syncFile(text("c"), text(copy.source), text(copy.target), text("h"), true);
        else
            job.syncFile(text(copy.source), text(copy.target), QString(), false);
    });
    limitFileSize(0);

    QCOMPARE(reports, QList<int>{copy.status});
    QCOMPARE(readFile(QDir::cleanPath(text(copy.target))), contents.value(copy.left));
    QStringList entries =
        QDir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    entries.removeOne(text("target"));
    QCOMPARE(entries, (QStringList{text("fifo"), text("link"), text("new"), text("source")}));
    QCOMPARE(capture.lines().contains(text("Olvex.FileSync.warning: FileSync Failed(-1)\n")),
             copy.status == -1 && !text(copy.sshDoes).startsWith(text("kill")));
}

void tst_FileSync::readsProgress()
{
    const auto &expected = currentCase(progressCases);
    FileSync job(nullptr);
    QList<int> reports;
    connect(&job, &FileSync::transferProgress, [&reports](int progress) { reports << progress; });
    connect(processOf(job), SIGNAL(readyReadStandardOutput()), &job, SLOT(onFileSyncReadyRead()));
    const QString script = text("printf '%1'; exec sleep 600").arg(text(expected.name));
    job.executeCommand(text("sh"), {text("-c"), script}, QString(), QString());
    QVERIFY(waitForOutput(job));
    QCOMPARE(reports, expected.progress == -1 ? QList<int>() : QList<int>{expected.progress});
}

void tst_FileSync::removesDirectories()
{
    const auto &tree = currentCase(directoryCases);
    const QTemporaryDir dir;
    const QStringList entries = text("kept/ kept/file %1").arg(text(tree.entries)).split(QLatin1Char(' '));
    for (const QString &entry : entries)
        QVERIFY(makeEntry(QDir(dir.path()), entry));
    const QFileInfo top(dir.filePath(text("top")));
    QCOMPARE(FileSync::removeDirectory(QDir(top.filePath())), tree.failed);
    QCOMPARE(top.exists() || top.isSymLink(), tree.failed);
    QVERIFY(QFile::exists(dir.filePath(text("kept/file"))));
}

void tst_FileSync::listsItsMethodsInOrder()
{
    QByteArray methods;
    const QMetaObject &meta = FileSync::staticMetaObject;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        methods += meta.method(i).methodSignature() + ' ';
    QCOMPARE(methods,
             QByteArray("completed(int) transferProgress(int) onHostChanged(QString) "
                        "onFinished(int,QProcess::ExitStatus) onError(QProcess::ProcessError) "
                        "onFileSyncReadyRead() onCopyComplete() "));
}

QTEST_GUILESS_MAIN(tst_FileSync)
#include "tst_FileSync.moc"
