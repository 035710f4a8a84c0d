// Jobs that run the real rsync, and the command-line program around a job.

#include "SyncJob.h"

#include <QFileSystemWatcher>
#include <QtTest>

#include <unistd.h>

class tst_FileSyncTools : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void rsync_data();
    void rsync();
    void rsyncOfVanishingFiles();
    void fullDisk_data();
    void fullDisk();
    void commandLine_data();
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

void tst_FileSyncTools::rsync_data()
{
    QTest::addColumn<QStringList>("sources");
    QTest::addColumn<int>("status");
    QTest::newRow("success") << QStringList{m_sandbox.path("source/")} << int(FileSync::Success);
    QTest::newRow("missing source") << QStringList{m_sandbox.path("source/last"), m_sandbox.path("missing")}
                                    << int(FileSync::PartialTransferDueToError);
    QTest::newRow("bad option") << QStringList{text("--no-such-option")} << int(FileSync::SyntaxError);
}

void tst_FileSyncTools::rsync()
{
    QFETCH(QStringList, sources);
    QFETCH(int, status);
    const QString target = m_sandbox.path("it's a $(new) täŕget; -n");
    QDir(target).removeRecursively();
    QCOMPARE(runJob(text("rsync"), QStringList{text("-r")} + sources + QStringList{target + text("/")}),
             QList<int>{status});
    QCOMPARE(readFile(target + text("/last")),
             status == FileSync::SyntaxError ? QByteArray() : QByteArray("l"));
}

// The last file goes while the first one is on its way.
void tst_FileSyncTools::rsyncOfVanishingFiles()
{
    const QString target = m_sandbox.path("vanishing");
    QVERIFY(QDir().mkdir(target));
    const QFileSystemWatcher watcher({target});
    connect(&watcher, &QFileSystemWatcher::directoryChanged,
            [this] { QFile::remove(m_sandbox.path("source/last")); });
    QCOMPARE(runJob(text("rsync"), {text("-r"), text("--bwlimit=400"), m_sandbox.path("source/"), target}),
             QList<int>{FileSync::PartialTransferDueToVanishedSourceFiles});
    QVERIFY(QFile::exists(target + text("/big")) && !QFile::exists(target + text("/last")));
}

// In a mount namespace of its own, where $1 is a disk of 64 KB.
void tst_FileSyncTools::fullDisk_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("status");
    QTest::newRow("rsync") << text("rsync \"$2\" \"$1\"") << int(FileSync::NoSpaceLeftOnDevice);
    QTest::newRow("local copy") << text(OLVEX_SYNC_PATH " --from \"$2\" --to \"$1/copy\" >&2;"
                                                        " test $? = 255 -a -z \"$(ls -A \"$1\")\"")
                                << int(FileSync::Success);
}

void tst_FileSyncTools::fullDisk()
{
    QFETCH(QString, script);
    QFETCH(int, status);
    const QString mount = text("mount -t tmpfs -o size=64k tmpfs \"$1\" || exit 77; ");
    const QList<int> reports =
        runJob(text("unshare"),
               {text(::geteuid() == 0 ? "-m" : "-rm"), text("sh"), text("-c"), mount + script, text("sh"),
                m_sandbox.path("disk"), m_sandbox.path("source/big")});
    if (reports == QList<int>{77} || reports == QList<int>{1})
        QSKIP("This machine allows no private mounts");
    QCOMPARE(reports, QList<int>{status});
}

void tst_FileSyncTools::commandLine_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("printed");
    const auto row = [](const char *name, const QStringList &arguments, int exitCode, const char *printed) {
        QTest::newRow(name) << arguments << exitCode << text(printed);
    };
    const QString command = text("--command");
    const QString from = text("--from");
    row("help", {text("--help")}, 0, "\nWhat it runs:\n");
    row("nothing", {}, 64, "");
    row("half a copy", {from, text("a")}, 64, "");
    row("local", {command, text("sh"), text("--arguments"), text("-c \"echo 45%; exit 23\"")}, 23,
        "45%\nPartialTransferDueToError (23)\n");
    row("missing", {command, m_sandbox.path("missing")}, 255, "UnknownError (-1)\n");
    row("copy", {from, text("source/big"), text("--to"), text("copy")}, 0, "Success (0)\n");
    row("remote", {command, text("c"), text("--host"), text("h"), text("--user"), text("u")}, 7, "u@h c\n");
    row("limit", {command, text("sleep"), text("--arguments"), text("600"), text("--limit"), text("1")}, 124,
        "Stopped after 1 s\n");
}

void tst_FileSyncTools::commandLine()
{
    QVERIFY(writeProgram(m_sandbox.path("bin/ssh"), "echo \"$9\" \"${10}\"; exit 7"));
    QFETCH(QStringList, arguments);
    QProcess program;
    program.start(text(OLVEX_SYNC_PATH), arguments);
    QVERIFY(program.waitForFinished());
    QTEST(program.exitCode(), "exitCode");
    QFETCH(QString, printed);
    const QString output = QString::fromUtf8(program.readAllStandardOutput());
    QVERIFY2(output.contains(printed), qPrintable(output));
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
