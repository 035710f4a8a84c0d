// What an executable that starts up through AppConfig does as a process: printouts, files, exit codes,
// signals.

#include "Cases.h"
#include "ChildProcess.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <csignal>
#include <string>

#ifdef Q_OS_WIN
#    include <windows.h>
#endif

namespace {

bool isWine()
{
#ifdef Q_OS_WIN
    return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
#else
    return false;
#endif
}

const QString probe = QStringLiteral(APPCONFIG_PROBE_PATH);

const std::string banner = "probe\n(c) Brantel Medical\n";
const std::string head = banner + "Version: 1.2.3.4\n";
const std::string systemVersionLine = "System version: 1.2.3.4\n";
const std::string helpHead = "\nCommandline options:\n\n";
const std::string builtInHelp = R"( --disablestamps Disables timestamp in print output
 --disablecrashdump Disables crash dump handler
 --debugLevel <level> Sets level of debug output
 --nodebug Disables all debug output
 --logoutput <path> Set debug to log to file
 --null Sends all debug and std out to null device
 --tmppath <path> Sets tmp path for application
 --confpath <path> Sets configuration path (/etc) for application
 --sharepath <path> Sets root share path for application
 --factorydatapath <path> Sets factory data path for application
 --varpath <path> Sets var (variable data) path for application
 --varetcpath <path> Sets variable user configuration data path for application
 --varlogpath <path> Sets variable user log data path for application
 --pluginpath <path> Sets where plukruf can find its plugins
 --binpath <path> Sets binary path for application
 --version Prints version information about application
 --help Shows this help
 --hxcomtrace Enables traces for HXCom
 --systemversion Prints system version
 --redirectoutput <path> Redirect all std output and debug output to a given path
 --qmlpath <path> Sets path qml root path for application (used for debugging)
 --dravikpath <path> Sets Dravik path for application
 --persistentpath <path> Sets persistent storage path for application
)";
const std::string ownHelp = " --do <word> Says what to do\n --plain Help not available\n\n";

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class tst_AppConfigProcess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { m_sandbox.reset(new QTemporaryDir); }
    void behaves_data();
    void behaves();
    void setsNothingUpForHelp();
    void resolvesPaths();
    void migratesSettings_data();
    void migratesSettings();
    void survivesDamage_data();
    void survivesDamage();
    void survivesOddArguments();
    void logsToFile_data();
    void logsToFile();
    void logsEveryLineOfManyThreads();
    void logsOnceAfterSecondInitialize();
    void redirects();
    void endsOnSignal_data();
    void endsOnSignal();

private:
    ChildResult run(const QStringList &arguments) const;
    ChildResult run(const char *arguments) const { return run(words(arguments)); }
    void write(const char *path, const QByteArray &contents, int ageInSeconds = 0) const;
    QByteArray read(const char *path) const;

    QScopedPointer<QTemporaryDir> m_sandbox;
};

// Leaves out what the configuration object says of its own construction and destruction.
ChildResult tst_AppConfigProcess::run(const QStringList &arguments) const
{
    static const QRegularExpression life(QStringLiteral("^.*AppConfig(: | \\| )(Begin|End)?\n"),
                                         QRegularExpression::MultilineOption);
    ChildResult result = runChild(probe, arguments, m_sandbox->path());
    result.err = QString::fromLocal8Bit(result.err).remove(life).toLocal8Bit();
    return result;
}

void tst_AppConfigProcess::write(const char *path, const QByteArray &contents, int ageInSeconds) const
{
    QFile file(m_sandbox->filePath(QString::fromLatin1(path)));
    QVERIFY(QDir().mkpath(QFileInfo(file).path()));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write(contents) == contents.size() && file.flush());
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-ageInSeconds),
                             QFileDevice::FileModificationTime));
}

QByteArray tst_AppConfigProcess::read(const char *path) const
{
    QFile file(m_sandbox->filePath(QString::fromLatin1(path)));
    return file.open(QIODevice::ReadOnly) ? file.readAll().replace("\r\n", "\n") : QByteArray("<no file>");
}

namespace {

// What a run prints, returns and, with "--logoutput my.log", writes. Standard error and log are patterns that
// must match somewhere; an empty one stands for nothing printed, and for a log that is not looked at.
const struct {
    const char *name;
    const char *arguments;
    std::string out;
    const char *err;
    const char *log;
    int exitCode;
} behaviours[] = {
    {"help", "--help", head + systemVersionLine + helpHead + builtInHelp + ownHelp, "", "", 0},
    {"own options only", "--help --plain", head + systemVersionLine + helpHead + ownHelp, "", "", 0},
    {"version", "--version", head, "", "", 0},
    {"system version", "--systemversion", banner + systemVersionLine, "", "", 0},
    {"both versions", "--systemversion --version", head + banner + systemVersionLine, "", "", 0},
    {"version and help", "--help --version",
     head + head + systemVersionLine + helpHead + builtInHelp + ownHelp, "", "", 0},

    {"no options", "--do state --varetcpath etc --confpath x",
     "null=0 stamps=1 crash=1 level=-1 elapsed=1 version=1.2.3.4 setting=\n", "Using old", "", 0},
    {"flags", "--do state --null --disablestamps --disablecrashdump --debugLevel 3",
     "null=1 stamps=0 crash=0 level=3 elapsed=1 version=1.2.3.4 setting=\n", "", "", 0},
    {"no number", "--do state --debugLevel --null",
     "null=1 stamps=1 crash=1 level=0 elapsed=1 version=1.2.3.4 setting=\n", "", "", 0},

    {"forwarded", "--do log", "", "^\\d{1,2}:\\d\\d:\\d\\d\\.\\d{3} \\| Warning \\| .*F::m \\| a warning$",
     "", 0},
    {"forwarded unstamped", "--do log --disablestamps", "", "^Critical \\| .*F::m \\| a critical text$", "",
     0},
    {"not forwarded", "--do log --null", "", "", "", 0},
    {"no debug", "--do log --nodebug", "", "", "", 0},
    {"odd messages", "--do odd --null --disablestamps --logoutput my.log", "", "",
     "\n \\| U \\| function: odd\n \\| W \\|  \\| I \\| function: next\n", 0},
    {"own end", "--null --disablestamps --logoutput my.log", "", "", "::~AppConfig\\(\\): Begin\n$", 0},
    {"categories", "--do categories --null",
     "early debug=0\nlate debug=0 info=1\nregistered=1\noutside=1\nre-enabled=1\n", "", "", 0},

    {"last exit wins", "--do exit-twice --null --logoutput my.log", "", "",
     ": Application exit called with 7\n", 7},
    {"exit while closing down", "--do exit-late --null --logoutput my.log", "", "",
     ": Application exit called, but application is already closing down\n", 0},
    {"report before a fatal exit", "--do handler --null",
     "box Olvex Fatal error: not shown\nstill running\nbox Olvex Fatal error: shown\n", "", "", 255},
    {"output lost by a failed redirection", "--do descriptor --redirectoutput none/out.txt", "", "", "", 0},
#ifdef Q_OS_WIN
    // Wine delivers this console event only; the handler makes no difference between them.
    {"console event", "--do console --null --logoutput my.log", "", "",
     ": installed=1\n(.*\n)*.*: cleanWindowsExit 0\n.*exit\\(.*: Application exit called with 0\n(.*\n)*.*: "
     "loop left with "
     "0\n.*: alive\n",
     0},
#else
    // The request to exit with -1 is in vain: Qt aborts.
    {"fatal", "--do fatal --null --logoutput my.log", "", "Olvex Fatal error: the end\n",
     " \\| F \\| .*: the end\n$", SIGABRT},
    {"flood of signals", "--do flood --null", "errno=42\nreceived=1\n", "", "", 0},
#endif
};

} // namespace

void tst_AppConfigProcess::behaves_data()
{
    addCases(behaviours);
}

void tst_AppConfigProcess::behaves()
{
    const auto &c = currentCase(behaviours);
    const ChildResult result = run(c.arguments);
    const auto matches = [](const char *pattern, const QByteArray &text) {
        const QRegularExpression expression(QString::fromLatin1(pattern),
                                            QRegularExpression::MultilineOption);
        return expression.match(QString::fromUtf8(text)).hasMatch();
    };
    QCOMPARE(result.out, QByteArray::fromStdString(c.out));
    QVERIFY2(*c.err ? matches(c.err, result.err) : result.err.isEmpty(), result.err.constData());
    QVERIFY2(matches(c.log, read("my.log")), read("my.log").constData());
    QCOMPARE(result.exitCode & 0xFF, c.exitCode);
}

void tst_AppConfigProcess::setsNothingUpForHelp()
{
    run("--help");
    QVERIFY(QDir(m_sandbox->path()).isEmpty());
}

void tst_AppConfigProcess::resolvesPaths()
{
    // %1 is the working directory, %2 the per-user base, %3 the temporary directory.
    const QString expected = QStringLiteral(R"(tmp=%3/f
conf=%1/x/f
share=%1/f
factoryData=%1/data/f
persistentStorage=%2c:/ccnet/builds/olvex-release/installer/data/persistent/f
bin=%1/f
dravik=%1/var/dravik/f
var=%2var/f
varEtc=%2var/etc/f
varLog=%2var/log/f
sounds=%1/sounds/f
plugins=%1/plugins/f
qmlLocal=f
sysInfo=%1/ox-sysinfo
ioMap=/etc/iomap.conf
guidelines=%2var/etc/Guidelines.ini
paramter=%1/x/Parameters.ini
paramterTHA=%1/x/Parameters_THA.ini
settingIni=%2var/etc/Settings_probe.ini
)");
    const QString here = m_sandbox->path();
    const QString base = here + QStringLiteral("/appdata/Brantel Medical/Olvex/");
    const char *const options =
        "--do paths --datapath no --factorydatapath no --confpath x --confpath y --tmppath";
    QCOMPARE(QString::fromLocal8Bit(run(options).out), expected.arg(here, base, QDir::tempPath()));
    for (const char *made : {"var", "var/etc", "var/log"})
        QVERIFY2(QDir(base + QString::fromLatin1(made)).exists(), made);
    QVERIFY(!QDir(here + QStringLiteral("/data")).exists());

    QVERIFY(QDir(here).mkdir(QStringLiteral("ui")));
    const QByteArray own = run("--do paths --pluginpath p --qmlpath ui").out;
    QVERIFY(own.contains("\nplugins=p/f\n"));
    QVERIFY(own.contains("\nqmlLocal=" + here.toLocal8Bit() + "/ui/f\n"));
}

namespace {

const QByteArray ownSettings("[System]\nRegion=own\n");
const QByteArray oldSettings("[System]\nRegion=the old one\n");

const struct {
    const char *name;
    QByteArray own;
    int ownAge; // the old file is 50 s old
    QByteArray old;
    const char *inForce;
    bool logged;
} migrations[] = {
    {"older own", ownSettings, 100, oldSettings, "the old one", true},
    {"newer own", ownSettings, 0, oldSettings, "own", false},
    {"only old", {}, 0, oldSettings, "the old one", true},
    {"only own", ownSettings, 0, {}, "own", false},
    {"neither", {}, 0, {}, "", true},
};

} // namespace

void tst_AppConfigProcess::migratesSettings_data()
{
    addCases(migrations);
}

void tst_AppConfigProcess::migratesSettings()
{
    const auto &c = currentCase(migrations);
    if (!c.own.isEmpty())
        write("etc/Settings_probe.ini", c.own, c.ownAge);
    if (!c.old.isEmpty())
        write("etc/Settings.ini", c.old, 50);
    const ChildResult result = run("--do state --varetcpath etc");
    QVERIFY(result.out.endsWith(QByteArray("setting=") + c.inForce + '\n'));
    const QRegularExpression line(
        QStringLiteral("Using old Settings\\.ini file,.*\"Settings_probe\\.ini\".*Last "
                       "modified:.*-.*\"Settings_probe\\.ini\".*last modified:"));
    QCOMPARE(line.match(QString::fromLocal8Bit(result.err)).hasMatch(), c.logged);
    QVERIFY(!result.err.contains("\"Settings.ini\""));
    QCOMPARE(read("etc/Settings.ini"), c.old.isEmpty() ? QByteArray("<no file>") : c.old);
}

namespace {

const struct {
    const char *name;
    const char *options;
    const char *error;
} damages[] = {
    {"log file in a missing directory", "--logoutput none/x.log", "Unable to open none/x.log for writting\n"},
    {"log file is a directory", "--logoutput .", "Unable to open . for writting\n"},
    {"log directory is a file", "--varlogpath rubbish/log", ""},
    {"settings directory is a file", "--varetcpath rubbish/etc", ""},
    {"rubbish settings", "--varetcpath etc", ""},
    {"value option last", "--logoutput", ""},
};

} // namespace

void tst_AppConfigProcess::survivesDamage_data()
{
    addCases(damages);
}

void tst_AppConfigProcess::survivesDamage()
{
    const auto &c = currentCase(damages);
    const QByteArray rubbish("\xff\x00[\xfe=\n[[[\x01=\x02\\x]\n%\xf0", 18);
    for (const char *path : {"rubbish", "etc/Settings_probe.ini", "etc/Settings.ini"})
        write(path, rubbish);
    const ChildResult result = run(words("--do state") + words(c.options));
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.out.endsWith("setting=\n"));
    QVERIFY2(result.err.startsWith(c.error), result.err.constData());
    QCOMPARE(read("etc/Settings.ini"), rubbish);
}

void tst_AppConfigProcess::survivesOddArguments()
{
#ifdef Q_OS_WIN
    QSKIP("arguments are Unicode on this system, and their number has another limit");
#else
    QStringList many = words("--do state");
    for (int i = 0; i < 60000; ++i)
        many << QStringLiteral("x");
    QVERIFY(run(many).out.startsWith("null=0"));

    const QString script =
        QStringLiteral(R"x(exec "$0" --do state --varetcpath "$(printf 'a\377\300b')" '')x");
    const ChildResult result =
        runChild(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script, probe}, m_sandbox->path());
    QVERIFY(result.out.startsWith("null=0"));
    QCOMPARE(result.exitCode, 0);
#endif
}

void tst_AppConfigProcess::logsToFile_data()
{
    QTest::addColumn<QString>("time");
    QTest::newRow("--null") << R"(\d{1,2}:\d\d:\d\d\.\d{3})";
    QTest::newRow("--disablestamps") << "";
}

void tst_AppConfigProcess::logsToFile()
{
    QFETCH(QString, time);
    write("my.log", "earlier\n");
    run(words("--do log --debugLevel 1 --logoutput my.log") + words(QTest::currentDataTag()));
    const QString log = QString::fromUtf8(read("my.log"));
    QVERIFY(log.startsWith(QStringLiteral("earlier\n")));
    QString expected = QStringLiteral("\n%1 \\| D \\| .*DebugInfoEnterExit::.*: F::m: Enter");
    for (const char *line :
         {"D \\| .*F::m\\(\\): a debug text", "I \\| .*F::m\\(\\): Grüße", "W \\| .*F::m\\(\\): a warning",
          "C \\| .*F::m\\(\\): a critical text", "D \\| .*DebugInfoEnterExit::.*: F::m: Exit\n"})
        expected += QStringLiteral("\n%1 \\| ") + QString::fromUtf8(line);
    QVERIFY2(QRegularExpression(expected.arg(time)).match(log).hasMatch(), qPrintable(log));
}

void tst_AppConfigProcess::logsEveryLineOfManyThreads()
{
    if (isWine())
        QSKIP("Wine finds the end of a file and writes there in two steps; Windows does so in one");
    QCOMPARE(run("--do threads --null --disablestamps --logoutput my.log").exitCode, 0);
    const QRegularExpression whole(
        QStringLiteral("^ \\| I \\| .*logFromThreads.*: thread (\\d) line (\\d+) end$"));
    QVector<int> next(8, 0); // each thread's lines come in its order
    for (const QByteArray &line : read("my.log").split('\n')) {
        const QRegularExpressionMatch match = whole.match(QString::fromUtf8(line));
        QVERIFY2(match.hasMatch() || !line.contains("thread"), line.constData());
        if (match.hasMatch())
            QCOMPARE(match.captured(2).toInt(), next[match.captured(1).toInt()]++);
    }
    QCOMPARE(next, QVector<int>(8, 5000));
}

void tst_AppConfigProcess::logsOnceAfterSecondInitialize()
{
    const ChildResult result = run("--do again --logoutput my.log --disablestamps");
    QCOMPARE(read("my.log").count(": once\n"), 1);
    QCOMPARE(result.err.count(" | once\n"), 1);
}

void tst_AppConfigProcess::redirects()
{
    write("out.txt", "earlier\n");
    const ChildResult result = run("--do state --version --redirectoutput out.txt");
    QCOMPARE(result.out + result.err, QByteArray());
    QVERIFY(read("out.txt").startsWith("earlier\n"));
    QVERIFY(read("out.txt").contains(head.c_str()));
}

void tst_AppConfigProcess::endsOnSignal_data()
{
    QTest::addColumn<int>("number");
#ifndef Q_OS_WIN
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
#endif
}

void tst_AppConfigProcess::endsOnSignal()
{
#ifdef Q_OS_WIN
    QSKIP("this system has no POSIX signals");
#else
    QFETCH(int, number);
    QProcess process;
    startChild(process, probe, words("--do signals --null --logoutput my.log"), m_sandbox->path());
    QTRY_VERIFY(read("my.log").contains(": waiting\n"));
    QCOMPARE(::kill(pid_t(process.processId()), number), 0);
    const ChildResult result = finishChild(process);
    QCOMPARE(result.out, QStringLiteral("installed=1\nshutdownRequested %1\n").arg(number).toLocal8Bit());
    QVERIFY(read("my.log").contains(": leaving\n"));
    QVERIFY(result.exitCode == 0 && !result.crashed);
#endif
}

QTEST_GUILESS_MAIN(tst_AppConfigProcess)
#include "tst_AppConfigProcess.moc"
