// Jobs that run the real rsync, and the command-line program around a job.

#include "Cases.h"
#include "SyncJob.h"

#include <QFileSystemWatcher>

#include <unistd.h>

namespace {

const struct {
    const char *name, *sources;
    int status;
} rsyncCases[] = {
    {"success", "source/", FileSync::Success},
    {"missing source", "source/last missing", FileSync::PartialTransferDueToError},
    {"bad option", "--no-such-option", FileSync::SyntaxError},
};

// In a mount namespace of its own, where $1 is a disk of 64 KB and $2 a larger file.
const struct {
    const char *name, *script;
    int status;
} diskCases[] = {
    {"rsync", "rsync \"$2\" \"$1\"", FileSync::NoSpaceLeftOnDevice},
    {"local copy",
     OLVEX_SYNC_PATH " --from \"$2\" --to \"$1/copy\" >&2; test $? = 255 -a -z \"$(ls -A \"$1\")\"",
     FileSync::Success},
};

const struct {
    const char *name, *arguments;
    int exitCode;
    const char *printed;
} lineCases[] = {
    {"help", "--help", 0, "\nWhat it runs:\n"},
    {"nothing", "", 64, ""},
    {"half a copy", "--from a", 64, ""},
    {"local", R"(--command sh --arguments "-c """echo 45%; exit 23"""")", 23,
     "45%\nPartialTransferDueToError (23)\n"},
    {"missing", "--command /missing", 255, "UnknownError (-1)\n"},
    {"copy", "--from source/big --to copy", 0, "Success (0)\n"},
    {"remote", "--command c --host h --user u", 7, "u@h c\nFailed (7)\n"},
    {"limit", "--command sleep --arguments 600 --limit 1", 124, "Stopped at the limit\n"},
};

} // namespace

class tst_FileSyncTools : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void rsync_data() { addCases(rsyncCases); }
    void rsync();
    void rsyncOfVanishingFiles();
    void fullDisk_data() { addCases(diskCases); }
    void fullDisk();
    void commandLine_data() { addCases(lineCases); }
    void commandLine();
    void stopsOnSignals();

private:
    SyncSandbox m_sandbox;
};

void tst_FileSyncTools::initTestCase()
{
    if (QStandardPaths::findExecutable(text("rsync")).isEmpty())
        QSKIP("rsync is not installed");
    QVERIFY(QDir().mkdir(text("source")) && QDir().mkdir(text("disk")));
    QVERIFY(writeFile(text("source/big"), QByteArray(400000, 'b')) && writeFile(text("source/last"), "l"));
}

void tst_FileSyncTools::rsync()
{
    const auto &job = currentCase(rsyncCases);
    const QString target = m_sandbox.path("it's a $(new) täŕget; -n");
    QDir(target).removeRecursively();
    QStringList arguments{text("-r")};
    const QStringList sources = text(job.sources).split(QLatin1Char(' '));
    for (const QString &source : sources)
        arguments << (source.startsWith(QLatin1Char('-')) ? source : m_sandbox.path(qPrintable(source)));
    QCOMPARE(runJob(text("rsync"), arguments << target + text("/")), QList<int>{job.status});
    QCOMPARE(QFile::exists(target + text("/last")), job.status != FileSync::SyntaxError);
}

// The last file goes while the first one is on its way.
void tst_FileSyncTools::rsyncOfVanishingFiles()
{
    const QString target = m_sandbox.path("vanishing");
    QVERIFY(QDir().mkdir(target));
    const QFileSystemWatcher watcher({target});
    connect(&watcher, &QFileSystemWatcher::directoryChanged, this,
            [this] { QFile::remove(m_sandbox.path("source/last")); });
    QCOMPARE(runJob(text("rsync"), {text("-r"), text("--bwlimit=400"), m_sandbox.path("source/"), target}),
             QList<int>{FileSync::PartialTransferDueToVanishedSourceFiles});
    QVERIFY(QFile::exists(target + text("/big")) && !QFile::exists(target + text("/last")));
}

void tst_FileSyncTools::fullDisk()
{
    const auto &job = currentCase(diskCases);
    const QString script = text("mount -t tmpfs -o size=64k tmpfs \"$1\" || exit 77; ") + text(job.script);
    const QList<int> reports = runJob(text("unshare"),
                                      {text(::geteuid() == 0 ? "-m" : "-rm"), text("sh"), text("-c"), script,
                                       text("sh"), m_sandbox.path("disk"), m_sandbox.path("source/big")});
    if (reports == QList<int>{77} || reports == QList<int>{1})
        QSKIP("This machine allows no private mounts");
    QCOMPARE(reports, QList<int>{job.status});
}

void tst_FileSyncTools::commandLine()
{
    const auto &line = currentCase(lineCases);
    QVERIFY(writeProgram(m_sandbox.path("bin/ssh"), "echo \"$9\" \"${10}\"; exit 7"));
    QProcess program;
    program.start(text(OLVEX_SYNC_PATH), QProcess::splitCommand(text(line.arguments)));
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitCode(), line.exitCode);
    const QByteArray output = program.readAllStandardOutput();
    QVERIFY2(output.contains(line.printed), output.constData());
}

void tst_FileSyncTools::stopsOnSignals()
{
    QProcess program;
    program.start(
        text(OLVEX_SYNC_PATH),
        {text("--command"), text("sh"), text("--arguments"), text("-c \"echo $$; exec sleep 600\"")});
    QVERIFY(program.waitForReadyRead());
    const int pid = program.readAllStandardOutput().trimmed().toInt();
    program.terminate();
    QVERIFY(program.waitForFinished());
    QCOMPARE(program.exitCode(), 128 + SIGTERM);
    QVERIFY(pid > 0 && !isAlive(pid));
}

QTEST_GUILESS_MAIN(tst_FileSyncTools)
#include "tst_FileSyncTools.moc"
