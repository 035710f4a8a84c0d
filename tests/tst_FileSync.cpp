// Jobs: what reaches the child and becomes of it, what the job reports and leaves. A stand-in plays ssh and
// the commands.

#include <AppConfig.h>
#include <FileSync.h>
#include <FileSync_p.h>

#include "Cases.h"
#include "ChildProcess.h"
#include "LogCapture.h"

#include <cstring>
#include <functional>

namespace {

using Reports = QVector<int>;

constexpr bool isWindows = QOperatingSystemVersion::currentType() == QOperatingSystemVersion::Windows;

#define HOSTILE "a  b'c\"d\\;touch marker;$(touch marker)`touch marker`&|$PATH*ü€\n%1%2"

constexpr int none = -2; // in place of a report
const char noStart[] = "Failed( QProcess::FailedToStart ) ";

const struct {
    const char *name; // the arguments, separated by tabulators: the steps of the child
    int status;
    const char *logged, *command = SYNC_STAND_IN_PATH, *directory = "", *host = "", *user = "u";
} reportCases[] = {
    {"err=write: No space left on device (28)|exit=1", -2, "Failed( -2 ): \"write: No space"},
    {"err=a^00No space left on device (28)|exit=11", -2, "Failed( -2 ):"},
    {"err=no space left on device (28)|exit=1", 1, "no space"},
    {"out=No space left on device (28)|exit=1", 1, "Failed( 1 ): \"\""},
    {"err=No space left on device (28)", 0, "exitCode: 0"},
    {"fill=65520|err=No space left on device (28)|fill=70000|exit=1", -2, "70012 bytes"},
    {"root|stdin|out=45%", 0, SYNC_STAND_IN_PATH " root|stdin"}, // neither input nor output is connected
    {"out=1 10% 1MB/s^0a2 20%^0d 37% left^0a", 0, "Progress: 7"},
    {"out=8%^00 99%", 0, "Progress: 8"}, // up to the zero byte
    {"out=% 45 %", 0, "\"% 45 %\""},
    {"no name", -1, noStart, ""},
    {"no directory", -1, noStart, SYNC_STAND_IN_PATH, "/missing"},
    {"command is an option", -1, "Refused", "-oProxyCommand=x", "", "h"},
    {"user is an option", -1, "Refused", "c", "", "h", "-oProxyCommand=x"},
    {HOSTILE "\t" HOSTILE, 0, "exitCode: 0", HOSTILE, ".", HOSTILE, HOSTILE},
    {"-oX", 0, "exitCode: 0", "c", "", "-oProxyCommand=x"},
    {HOSTILE "\t\t-x", 0, "exitCode: 0", SYNC_STAND_IN_PATH, "."},
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
    {"links", "top/ top/l>kept top/m>kept/swap/file", false},
    {"link as the top", "top>kept", false},
    {"link in the place of a directory", "top/ top/l>kept top/d/ top/d/swap/ top/d/swap/file", true},
};

const struct {
    const char *name, *steps; // of a child on the host m-1
    const char *newHost; // null: an error instead
    int report, signal;
} endCases[] = {
    {"another host", "out=ready|hang=m-1", "-$(reboot) %1\\1", 0, 15},
    {"another host, deaf child", "deaf|out=ready|hang=m-1", "m-2", 0, 9},
    {"same host", "out=ready|hang=m-1", "m-1", none, 9},
    {"empty host", "deaf|out=ready|hang=m-1", "", none, 9},
    {"error", "out=ready|hang=m-1", nullptr, -1, 15},
};

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
        if (entry.endsWith(QLatin1Char('/')))
            QVERIFY(QDir().mkdir(name));
        else if (entry.endsWith(QLatin1Char('|')))
            QCOMPARE(runChild(text("mkfifo"), {entry.chopped(1)}, QDir::currentPath()).exitCode, 0);
        else if (name != entry)
            QVERIFY(QFile::link(QDir().absoluteFilePath(entry.section(QLatin1Char('>'), 1)), name));
        else
            QVERIFY(write(name, name.toUtf8()));
    }
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

    void reports_data() { addCases(reportCases); }
    void reports()
    {
        const auto &expected = currentCase(reportCases);
        const LogCapture capture;
        QStringList progress;
        const QStringList arguments = text(expected.name).split(QLatin1Char('\t'));
        const QString user = text(expected.user), host = text(expected.host),
                      command = text(expected.command);
        FileSync::setRemoteUser(user);
        const Reports reports = runJob([&](FileSync &job) {
            connect(&job, &FileSync::transferProgress,
                    [&progress](int digit) { progress << text("Progress: %1").arg(digit); });
            if (text(expected.name).startsWith(text("out="))) // other output is not read
                connect(job.findChild<QProcess *>(), SIGNAL(readyReadStandardOutput()), &job,
                        SLOT(onFileSyncReadyRead()));
            // Whatever still reaches a job while it reports; then it is deleted.
            connect(&job, &FileSync::completed, &job, [&job, this] {
                QMetaObject::invokeMethod(&job, "onError", Q_ARG(QProcess::ProcessError, QProcess::Crashed));
                QMetaObject::invokeMethod(&job, "onFinished", Q_ARG(int, 1),
                                          Q_ARG(QProcess::ExitStatus, QProcess::NormalExit));
                QMetaObject::invokeMethod(&job, "onFileSyncReadyRead");
                QMetaObject::invokeMethod(&job, "onCopyComplete");
                job.onHostChanged(text("other"));
                job.executeCommand(m_program, {}, QString(), QString());
                QTest::qWait(1);
                delete &job;
            });
            job.executeCommand(command, arguments, host, text(expected.directory));
        });
        QCOMPARE(reports, Reports{expected.status});
        QVERIFY(capture.contains(text(expected.logged)) && !capture.contains(text("Unknown error")));
        QVERIFY(capture.contains(text("only once")));
        QCOMPARE(progress, QStringList{text(expected.logged)}.filter(text("Progress: ")));

        QStringList remote = text("-o IPQos=0x00 -o ServerAliveInterval=5 -o StrictHostKeyChecking=no -i")
                                 .split(QLatin1Char(' '));
        remote << m_directory.filePath(text("certificates/")) + user + text("_rsa") << user + text("@") + host
               << command << arguments.join(QLatin1Char(' '));
        const QByteArray record = (host.isEmpty() ? arguments : remote).join(QChar(0)).toUtf8() + '\0';
        QCOMPARE(contents(text("record")), expected.status == -1 ? QByteArray() : record);
        QVERIFY(!QFile::exists(text("marker")));
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
            connect(job.findChild<QProcess *>(), qOverload<int, QProcess::ExitStatus>(&QProcess::finished),
                    &job, [&job] { job.onHostChanged(text("late")); });
            if (*copy.command)
                job.syncFile(text(copy.command), text(copy.source), text(copy.target), text("h"), true);
            else
                job.syncFile(text(copy.source), text(copy.target), QString(), false);
        });
        QCOMPARE(reports, Reports{copy.status});
        QCOMPARE(contents(QDir::cleanPath(text(copy.target))), QByteArray(copy.left));
        QVERIFY(!QFile::exists(text("copy")));
        QCOMPARE(capture.lines().contains(text("Olvex.FileSync.warning: FileSync Failed(-1)\n")),
                 copy.status == -1);
    }

    void removesDirectories_data() { addCases(directoryCases); }
    void removesDirectories()
    {
        const auto &tree = currentCase(directoryCases);
        SKIP_IF_IMPOSSIBLE(tree.entries);
        makeEntries("kept/ kept/swap/ kept/swap/file");
        makeEntries(tree.entries);
        // A link takes the place of a directory while its subdirectory "swap" is entered.
        const auto previous = qInstallMessageHandler([](auto, const auto &, const QString &message) {
            if (message.contains(text("/swap\"")))
                QVERIFY(QDir().rename(text("top/d"), text("d"))
                        && QFile::link(text("../kept"), text("top/d")));
        });
        const bool failed = FileSync::removeDirectory(QDir(text("top")));
        qInstallMessageHandler(previous);
        QCOMPARE(failed, tree.failed);
        QCOMPARE(QDir().entryList({text("top")}, QDir::AllEntries | QDir::System).size(), int(tree.failed));
        QVERIFY(QFile::exists(text("kept/swap/file")) && !QFile::exists(text("d/swap")));
    }

    void endsChildren_data() { addCases(endCases); }
    void endsChildren()
    {
        const auto &end = currentCase(endCases);
        const bool restarts = end.report == 0;
        QStringList arguments{text("m-1,M-1|"), text(end.steps)};
        Reports ended; // the signals, 0 in the end
        const LogCapture capture;
        const Reports reports = runJob([&](FileSync &job) {
            QProcess *const process = job.findChild<QProcess *>();
            connect(process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), process,
                    [&ended](int status) { ended << status; });
            connect(process, &QProcess::errorOccurred, &job, [&job] { job.onHostChanged(text("m-3")); });
            job.executeCommand(m_program, arguments, text("m-1"), QString());
            QVERIFY(QSignalSpy(process, &QProcess::readyReadStandardOutput).wait(20000));
            job.onHostChanged(text(end.newHost));
            if (!end.newHost)
                QMetaObject::invokeMethod(&job, "onError",
                                          Q_ARG(QProcess::ProcessError, QProcess::ReadError));
            QCOMPARE(ended.size(), restarts ? 1 : 0);
            if (end.report == none)
                job.deleteLater();
        });
        QCOMPARE(reports, end.report == none ? Reports{} : Reports{end.report});
        QCOMPARE(ended.size(), restarts ? 2 : 1);
        QVERIFY(isWindows || ended[0] == end.signal);
        QVERIFY(!capture.contains(text("m-3")));
        arguments.replaceInStrings(text("m-1"), text(end.newHost));
        QCOMPARE(contents(text("record")) == arguments.join(QChar(0)).toUtf8() + '\0', restarts);
    }

private:
    const QString m_program = text(SYNC_STAND_IN_PATH);
    const QByteArray m_path = qgetenv("PATH");
    QDir m_directory{QDir::current().filePath(text("work"))};
};

QTEST_GUILESS_MAIN(tst_FileSync)
#include "tst_FileSync.moc"
