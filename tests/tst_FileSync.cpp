// Jobs: what reaches the child and becomes of it, what the job reports and leaves. A stand-in plays ssh and
// the commands, except in runsRealPrograms().

#include <AppConfig.h>
#include <FileSync.h>
#include <FileSync_p.h>

#include "Cases.h"
#include "LogCapture.h"

#include <cstring>
#include <functional>

namespace {

using Reports = QVector<int>;

constexpr bool isWindows = QOperatingSystemVersion::currentType() == QOperatingSystemVersion::Windows;

#define HOSTILE "a  b'c\"d\\;touch marker;$(touch marker)`touch marker`&|$PATH*ü€\n%1%2"

const struct {
    const char *name, *user, *host, *command;
    const char *arguments; // separated by tabulators
} nameCases[] = {
    {"hostile", HOSTILE, HOSTILE, HOSTILE, HOSTILE "\t" HOSTILE},
    {"dashes", "u", "-oProxyCommand=x", "c", "-oX"},
    {"no arguments", "u", "h", "c", ""},
    {"here", "u", "", SYNC_STAND_IN_PATH, HOSTILE "\t\t-x"},
};

constexpr int none = -2; // in place of a report
const char noStart[] = "Failed( QProcess::FailedToStart ) ";

const struct {
    const char *name; // the argument: the steps of the child
    int status;
    const char *logged, *command = SYNC_STAND_IN_PATH, *directory = "", *host = "", *user = "u";
} reportCases[] = {
    {"err=write: No space left on device (28)|exit=1", -2, "Failed( -2 ): \"write: No space"},
    {"err=a^00No space left on device (28)|exit=11", -2, "Failed( -2 ):"},
    {"err=no space left on device (28)|exit=1", 1, "no space"},
    {"out=No space left on device (28)|exit=1", 1, "Failed( 1 ): \"\""},
    {"err=No space left on device (28)", 0, "exitCode: 0"},
    {"root|stdin|out=45%", 0, SYNC_STAND_IN_PATH " root|stdin"}, // neither input nor output is connected
    {"out=1 10% 1MB/s^0a2 20%^0d 37% left^0a", 0, "Progress: 7"},
    {"out=8%^00 99%", 0, "Progress: 8"}, // up to the zero byte
    {"out=% 45 %", 0, "\"% 45 %\""},
    {"no name", -1, noStart, ""},
    {"no directory", -1, noStart, SYNC_STAND_IN_PATH, "/missing"},
    {"command is an option", -1, "Refused", "-oProxyCommand=x", "", "h"},
    {"user is an option", -1, "Refused", "c", "", "h", "-oProxyCommand=x"},
};

// Where there is a command, ssh plays it. The entries are added to two files, source and target, of which one
// or none is left in the target.
const struct {
    const char *name, *command, *entries, *source, *target, *left;
    int status;
} copyCases[] = {
    {"remote", "exit=0", "", "source", "target", "source", 0},
    {"remote failed", "exit=23", "", "source", "target", "target", 23},
    {"remote, no source", "exit=0", "", "missing", "target", "", -1}, // the old target is gone
    {"new target", "", "d/", "./x/../source", "d//./x/../file", "source", 0},
    {"no source", "", "", "missing", "target", "", -1},
    {"no directory", "", "", "source", "missing/target", "", -1},
    {"source is a FIFO", "", "f|", "f", "target", "", -1},
    {"same file", "", "", "source", "./source", "source", -1},
    {"source is a link to it", "", "l>source", "l", "source", "source", -1},
};

const struct {
    const char *name, *entries;
    bool failed;
} directoryCases[] = {
    {"missing", "", false},
    {"tree", "top/ top/a top/d/ top/d/b top/d/e/ top/d/e/c top/empty/", false},
    {"hidden file", "top/ top/d/ top/d/.hidden top/e/ top/e/a", true},
    {"broken link", "top/ top/l>missing", true},
    {"special file", "top/ top/f|", true},
    {"links", "top/ top/l>kept top/m>kept/file", false},
    {"link as the top", "top>kept", false},
};

const struct {
    const char *name, *steps; // of a child on the host m-1
    const char *newHost; // null: an error instead
    int report;
} endCases[] = {
    {"another host", "out=ready|hang=m-1", "-$(reboot) %1\\1", 0},
    {"another host, deaf child", "deaf|out=ready|hang=m-1", "m-2", 0},
    {"same host", "out=ready|hang=m-1", "m-1", none},
    {"empty host", "deaf|out=ready|hang=m-1", "", none},
    {"error", "deaf|out=ready|hang=m-1", nullptr, -1},
};

const struct {
    const char *name, *command;
    int status;
    const char *host = "m-1", *user = nullptr; // the one whose key the server accepts
} realCases[] = {
    {"ssh", "test a\\ b = 'a b' && exit 24", FileSync::PartialTransferDueToVanishedSourceFiles},
    {"ssh, full disk", "echo 'No space left on device (28)' >&2; exit 11", FileSync::NoSpaceLeftOnDevice},
    {"ssh, refused key", "true", 255, "m-1", "intruder"},
    {"ssh, hostile host", "true", 255, "-oProxyCommand=touch marker;$(touch marker)"},
    {"rsync", "rsync source target", FileSync::Success, ""},
    {"rsync, missing source", "rsync missing target", FileSync::PartialTransferDueToError, ""},
    {"rsync, full disk",
     "own=-m$([ $(id -u) = 0 ] || echo r); unshare $own true || exit 77; unshare $own sh -c '"
     "mount -t tmpfs -o size=64k tmpfs disk || exit 77; rsync source disk'",
     FileSync::NoSpaceLeftOnDevice, ""},
};

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// The content of a file, null if there is none.
QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

#define SKIP_IF_IMPOSSIBLE(entries)                                                                          \
    if (isWindows && std::strpbrk(entries, ">|."))                                                           \
    QSKIP("Windows has no such links, FIFOs or hidden names")

// Makes entries of the working directory: "d/" a directory, "l>t" a link, "f|" a FIFO, else a file that holds
// its name.
void makeEntries(const char *entries)
{
    const QStringList all = text(entries).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &entry : all) {
        const QString name = entry.section(QLatin1Char('>'), 0, 0);
        QFile file(name);
        if (entry.endsWith(QLatin1Char('/')))
            QVERIFY(QDir().mkdir(name));
        else if (entry.endsWith(QLatin1Char('|')))
            QCOMPARE(QProcess::execute(text("mkfifo"), {entry.chopped(1)}), 0);
        else if (name != entry)
            QVERIFY(QFile::link(QDir().absoluteFilePath(entry.section(QLatin1Char('>'), 1)), name));
        else
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(name.toUtf8()) > 0);
    }
}

QProcess *processOf(const FileSync &job)
{
    return job.findChild<QProcess *>();
}

// Runs one job until it has deleted itself, and returns all that it has reported.
Reports runJob(const std::function<void(FileSync &)> &start)
{
    Reports reports;
    auto *const job = new FileSync(nullptr);
    QObject::connect(job, &FileSync::completed, [&reports](int status) { reports << status; });
    QSignalSpy gone(job, &QObject::destroyed);
    start(*job);
    if (gone.isEmpty() && !gone.wait(20000))
        delete job;
    return reports;
}

Reports runJob(const QString &command, const QStringList &arguments, const QString &host = QString(),
               const QString &directory = QString())
{
    return runJob([&](FileSync &job) { job.executeCommand(command, arguments, host, directory); });
}

} // namespace

class tst_FileSync : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // Every case has the working directory to itself; it is the share root, too.
    void init()
    {
        filesync::terminateTimeout = 200;
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); // for names in any locale
        QDir::setCurrent(m_directory.filePath(text("..")));
        m_directory.removeRecursively();
        QVERIFY(m_directory.mkdir(m_directory.path()) && QDir::setCurrent(m_directory.path()));
        qputenv("RECORD", m_directory.filePath(text("record")).toLocal8Bit());
        const QString program = QFileInfo(m_program).path() + QDir::listSeparator();
        qputenv("PATH", program.toLocal8Bit() + m_path);
        AppConfig::instance()->setupConfigPaths();
        AppConfig::sharePath(QString()); // settles it
        FileSync::setRemoteUser(text("u"));
    }

    void passesNames_data() { addCases(nameCases); }
    void passesNames()
    {
        const auto &names = currentCase(nameCases);
        const QStringList arguments =
            *names.arguments ? text(names.arguments).split(QLatin1Char('\t')) : QStringList();
        FileSync::setRemoteUser(text(names.user));
        QCOMPARE(runJob(text(names.command), arguments, text(names.host), QDir::currentPath()), Reports{0});

        const QString options = text("-o IPQos=0x00 -o ServerAliveInterval=5 -o StrictHostKeyChecking=no -i");
        const QStringList remote = options.split(QLatin1Char(' '))
            + QStringList{m_directory.filePath(text("certificates/")) + text(names.user) + text("_rsa"),
                          text(names.user) + text("@") + text(names.host), text(names.command),
                          arguments.join(QLatin1Char(' '))};
        QCOMPARE(readFile(text("record")), (*names.host ? remote : arguments).join(QChar(0)).toUtf8() + '\0');
        QVERIFY(!QFile::exists(text("marker")));
    }

    void reports_data() { addCases(reportCases); }
    void reports()
    {
        const auto &expected = currentCase(reportCases);
        const LogCapture capture;
        QStringList progress;
        FileSync::setRemoteUser(text(expected.user));
        const Reports reports = runJob([&](FileSync &job) {
            connect(&job, &FileSync::transferProgress,
                    [&progress](int digit) { progress << text("Progress: %1").arg(digit); });
            if (text(expected.name).startsWith(text("out="))) // other output is not read
                connect(processOf(job), SIGNAL(readyReadStandardOutput()), &job, SLOT(onFileSyncReadyRead()));
            // An event loop in the receiver must not delete the job under its own signal.
            connect(&job, &FileSync::completed, &job, [] { QTest::qWait(1); });
            job.executeCommand(text(expected.command), {text(expected.name)}, text(expected.host),
                               text(expected.directory));
        });
        QCOMPARE(reports, Reports{expected.status});
        QVERIFY(capture.contains(text(expected.logged)));
        QCOMPARE(progress, QStringList{text(expected.logged)}.filter(text("Progress: ")));
        QCOMPARE(QFile::exists(text("record")), expected.status != -1);
    }

    // Whatever still reaches a job while it reports.
    void reportsOnce()
    {
        const Reports reports = runJob([this](FileSync &job) {
            connect(&job, &FileSync::completed, this, [&job, this] {
                QVERIFY(QFile::remove(text("record")));
                QMetaObject::invokeMethod(&job, "onError", Q_ARG(QProcess::ProcessError, QProcess::Crashed));
                QMetaObject::invokeMethod(&job, "onFinished", Q_ARG(int, 1),
                                          Q_ARG(QProcess::ExitStatus, QProcess::NormalExit));
                QMetaObject::invokeMethod(&job, "onFileSyncReadyRead");
                QMetaObject::invokeMethod(&job, "onCopyComplete");
                job.onHostChanged(text("other"));
                job.executeCommand(m_program, {}, QString(), QString());
                job.syncFile(text("c"), m_program, text("copy"), text("h"), false);
            });
            job.executeCommand(m_program, {text("exit=3")}, QString(), QString());
        });
        QCOMPARE(reports, Reports{3});
        QVERIFY(!QFile::exists(text("record")));
    }

    void copies_data() { addCases(copyCases); }
    void copies()
    {
        const auto &copy = currentCase(copyCases);
        SKIP_IF_IMPOSSIBLE(copy.entries);
        makeEntries("source target");
        makeEntries(copy.entries);
        const LogCapture capture;
        const Reports reports = runJob([&copy](FileSync &job) {
            job.syncFile(text("c"), text("source"), text("copy"), QString(), true); // does nothing
            job.onHostChanged(text("early")); // nor do these, for want of a running command
            connect(processOf(job), qOverload<int, QProcess::ExitStatus>(&QProcess::finished), &job,
                    [&job] { job.onHostChanged(text("late")); });
            if (*copy.command)
                job.syncFile(text(copy.command), text(copy.source), text(copy.target), text("h"), true);
            else
                job.syncFile(text(copy.source), text(copy.target), QString(), false);
        });
        QCOMPARE(reports, Reports{copy.status});
        QCOMPARE(readFile(QDir::cleanPath(text(copy.target))), QByteArray(copy.left));
        QVERIFY(!QFile::exists(text("copy")));
        QCOMPARE(capture.lines().contains(text("Olvex.FileSync.warning: FileSync Failed(-1)\n")),
                 copy.status == -1);
    }

    void removesDirectories_data() { addCases(directoryCases); }
    void removesDirectories()
    {
        const auto &tree = currentCase(directoryCases);
        SKIP_IF_IMPOSSIBLE(tree.entries);
        makeEntries("kept/ kept/file");
        makeEntries(tree.entries);
        QCOMPARE(FileSync::removeDirectory(QDir(text("top"))), tree.failed);
        QCOMPARE(QDir().entryList({text("top")}, QDir::AllEntries | QDir::System).size(), int(tree.failed));
        QVERIFY(QFile::exists(text("kept/file")));
    }

    void endsChildren_data() { addCases(endCases); }
    void endsChildren()
    {
        const auto &end = currentCase(endCases);
        const bool restarts = end.report == 0;
        QStringList arguments{text("m-1,M-1|"), text(end.steps)};
        int ended = 0;
        const Reports reports = runJob([&](FileSync &job) {
            QProcess *const process = processOf(job);
            connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), process,
                    [&ended] { ++ended; });
            job.executeCommand(m_program, arguments, text("m-1"), QString());
            QVERIFY(QSignalSpy(process, &QProcess::readyReadStandardOutput).wait(20000));
            job.onHostChanged(text(end.newHost));
            if (!end.newHost)
                QMetaObject::invokeMethod(&job, "onError",
                                          Q_ARG(QProcess::ProcessError, QProcess::ReadError));
            QCOMPARE(ended, restarts ? 1 : 0);
            if (end.report == none)
                job.deleteLater();
        });
        QCOMPARE(reports, end.report == none ? Reports{} : Reports{end.report});
        QCOMPARE(ended, restarts ? 2 : 1);
        arguments.replaceInStrings(text("m-1"), text(end.newHost));
        QCOMPARE(readFile(text("record")) == arguments.join(QChar(0)).toUtf8() + '\0', restarts);
    }

    void runsManyAtOnce()
    {
        constexpr int count = 60;
        const auto openFiles = [] { return QDir(text("/proc/self/fd")).entryList(QDir::System).size(); };
        QCOMPARE(runJob(m_program, {}), Reports{0}); // opens the descriptors that Qt keeps
        const int open = openFiles();
        QVector<Reports> reports(count), expected(count, {-1});
        QObject jobs;
        for (int i = 0; i < count; ++i) {
            auto *const job = new FileSync(&jobs);
            connect(job, &FileSync::completed, [&reports, i](int status) { reports[i] << status; });
            const QString steps = i % 3 == 0 ? text("exit=%1").arg(i) : text("hang=m-1");
            job->executeCommand(i % 3 == 1 ? text("missing") : m_program, {steps}, QString(), QString());
            if (i % 3 == 0)
                expected[i] = {i};
            if (i % 3 == 2)
                QTimer::singleShot(i, processOf(*job), &QProcess::kill);
        }
        QTRY_VERIFY_WITH_TIMEOUT(jobs.children().isEmpty(), 20000);
        QCOMPARE(reports, expected);
        QVERIFY(isWindows || openFiles() == open);
    }

    void runsRealPrograms_data()
    {
        if (isWindows)
            QSKIP("Windows has no sh, sshd or rsync");
        addCases(realCases);
    }
    void runsRealPrograms()
    {
        const auto &real = currentCase(realCases);
        const int setUp = QProcess::execute(text("sh"), {QFINDTESTDATA("support/local-ssh.sh")});
        if (setUp == -2 || setUp == 77)
            QSKIP("sh, ssh, sshd, rsync or unshare is not installed");
        QCOMPARE(setUp, 0);
        qputenv("PATH", m_directory.filePath(text("bin:")).toLocal8Bit() + m_path);
        FileSync::setRemoteUser(real.user ? text(real.user) : QFileInfo(text("source")).owner());
        const Reports reports = *real.host
            ? runJob(text(real.command), {}, text(real.host))
            : runJob(text("sh"), {text("-c"), text(real.command)}, QString(), QDir::currentPath());
        if (reports == Reports{77})
            QSKIP("This machine allows no private mounts");
        QCOMPARE(reports, Reports{real.status});
        QVERIFY(!QFile::exists(text("marker")));
    }

private:
    const QString m_program = text(SYNC_STAND_IN_PATH);
    const QByteArray m_path = qgetenv("PATH");
    QDir m_directory{QDir::current().filePath(text("work"))};
};

QTEST_GUILESS_MAIN(tst_FileSync)
#include "tst_FileSync.moc"
