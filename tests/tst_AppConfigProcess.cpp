// What an executable that starts up through AppConfig does as a process: printouts, exit codes, its life.

#include "Cases.h"
#include "ChildProcess.h"

#include <QTemporaryDir>

#include <csignal>

class tst_AppConfigProcess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void behaves_data();
    void behaves();
    void printsHelp();
};

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll().replace("\r\n", "\n") : QByteArray("no file");
}

ChildResult runProbe(const char *arguments, const QTemporaryDir &sandbox)
{
    return runChild(QStringLiteral(APPCONFIG_PROBE_PATH),
                    QString::fromLatin1(arguments).split(QLatin1Char(' ')), sandbox.path());
}

// What the configuration object says of its own life, without and with the message pattern in force.
const char life[] = "Olvex.AppConfig: \nOlvex.AppConfig: Begin\nOlvex.AppConfig: End\n";
const char silentLife[] = "Olvex.AppConfig: \nAppConfig::~AppConfig | End\n";
const char stampedLife[] = "Olvex.AppConfig: \n*:??:??.??? | AppConfig::~AppConfig | End\n";

// A run, what it prints and what the file my.log holds then.
const struct {
    const char *name; // the arguments
    int exitCode;
    const char *out;
    const char *err;
    const char *log = "earlier\n";
} runs[] = {
    {"--systemversion --null", 0, "probe\n(c) Brantel Medical\nSystem version: 1.2.3.4\n", life},
    {"--help --systemversion --version --plain", 0,
     "probe\n(c) Brantel Medical\nVersion: 1.2.3.4\nprobe\n(c) Brantel Medical\nSystem version: 1.2.3.4\n"
     "probe\n(c) Brantel Medical\nVersion: 1.2.3.4\nSystem version: 1.2.3.4\n\nCommandline options:\n\n"
     " --do <word> Says what to do\n --plain Help not available\n\n",
     life},
    {"--version --redirectoutput my.log", 0, "", "Olvex.AppConfig: \n", "earlier\n*\nVersion: 1.2.3.4\n"},

    {"--do warn", 0, "", "*\n*:??:??.??? | Warning | * | a warning\n | *~AppConfig | Begin\n | *"},
    {"--do warn --disablestamps", 0, "", "*\nWarning | * | a warning\nAppConfig::~*"},
    {"--do warn --disablestamps --null", 0, "", silentLife},
    {"--do warn --nodebug", 0, "", "Olvex.AppConfig: \n"},
    {"--null --logoutput my.log", 0, "", stampedLife, "earlier\n*::~AppConfig(): Begin\n"},
    {"--null --disablestamps --logoutput none/x.log", 0, "",
     "Olvex.AppConfig: \nUnable to open none/x.log for writting\nAppConfig::~AppConfig | End\n"},
    {"--null --disablestamps --logoutput .", 0, "",
     "Olvex.AppConfig: \nUnable to open . for writting\nAppConfig::~AppConfig | End\n"},

    {"--do late-exit --null --logoutput my.log", 0, "", stampedLife,
     "earlier\n*: Application exit called, but application is already closing down\n*"},
    {"--do descriptor --logoutput my.log --redirectoutput none/x", 0, "", "Olvex.AppConfig: \n",
     "earlier\n*victim has 0 bytes\n*"},
#ifdef Q_OS_WIN
    // Wine delivers this console event only; the handler makes no difference between them.
    {"--do console-event --null --logoutput my.log", 0, "", stampedLife,
     "earlier\n*: installed=1\n*: cleanWindowsExit 0\n*exit(*: Application exit called with 0\n"
     "*: loop left with 0\n*: alive\n*"},
#else
    // The request to exit with -1 is in vain: Qt aborts.
    {"--do fatal --null --logoutput my.log", SIGABRT, "", "*\nOlvex Fatal error: the end\n*called with -1\n",
     "earlier\n* | F | *: the end\n"},
#endif
};

} // namespace

void tst_AppConfigProcess::behaves_data()
{
    addCases(runs);
}

void tst_AppConfigProcess::behaves()
{
    const auto &c = currentCase(runs);
    const QTemporaryDir sandbox;
    QFile log(sandbox.filePath(QStringLiteral("my.log")));
    QVERIFY(log.open(QIODevice::WriteOnly) && log.write("earlier\n") && log.flush());
    const ChildResult result = runProbe(c.name, sandbox);
    QCOMPARE(result.out, QByteArray(c.out));
    QVERIFY2(looksLike(result.err, c.err), result.err.constData());
    QVERIFY2(looksLike(contents(log.fileName()), c.log), contents(log.fileName()));
    QCOMPARE(result.exitCode & 0xFF, c.exitCode);
}

void tst_AppConfigProcess::printsHelp()
{
    const QTemporaryDir sandbox;
    const ChildResult result = runProbe("--help", sandbox);
    QCOMPARE(result.out, contents(QFINDTESTDATA("data/probe-help.txt")));
    QVERIFY(QDir(sandbox.path()).isEmpty()); // nothing is set up
}

QTEST_GUILESS_MAIN(tst_AppConfigProcess)
#include "tst_AppConfigProcess.moc"
