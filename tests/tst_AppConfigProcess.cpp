// What an executable that starts up through AppConfig does as a process: printouts, files, exit codes,
// signals.

#include "ChildProcess.h"

#include <QDateTime>
#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

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

const char *const banner = "probe\n(c) Brantel Medical\n";
const char *const versionLine = "Version: 1.2.3.4\n";
const char *const systemVersionLine = "System version: 1.2.3.4\n";
const char *const builtInHelp = R"( --disablestamps Disables timestamp in print output
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
const char *const ownHelp = " --do <word> Says what to do\n --plain Help not available\n\n";

QStringList words(const char *text)
{
    return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class tst_AppConfigProcess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void printsAndLeaves_data();
    void printsAndLeaves();
    void readsOptions_data();
    void readsOptions();
    void resolvesPaths();
    void pathsFollowOptions();
    void migratesSettings_data();
    void migratesSettings();
    void survivesDamage_data();
    void survivesDamage();
    void survivesOddArguments();
    void logsToFile_data();
    void logsToFile();
    void logsItsOwnEnd();
    void logsOddMessages();
    void logsEveryLineOfManyThreads();
    void logsOnceAfterSecondInitialize();
    void forwardsUnlessNull_data();
    void forwardsUnlessNull();
    void redirects();
    void failedRedirectionLosesOutput();
    void listsCategories();
    void exits_data();
    void exits();
    void reportsFatalMessages();
    void asksBeforeFatalExit();
    void endsOnSignal_data();
    void endsOnSignal();
    void survivesFloodOfSignals();

private:
    ChildResult run(const char *arguments) const { return run(words(arguments)); }
    ChildResult run(const QStringList &arguments) const;
    QString inSandbox(const char *path) const { return m_sandbox->filePath(QString::fromLatin1(path)); }
    void write(const char *path, const QByteArray &contents, int ageInSeconds = 0) const;
    QByteArray read(const char *path) const;
    QStringList entries() const
    {
        return QDir(m_sandbox->path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);
    }

    QScopedPointer<QTemporaryDir> m_sandbox;
};

void tst_AppConfigProcess::init()
{
    m_sandbox.reset(new QTemporaryDir);
    QVERIFY(m_sandbox->isValid());
}

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
    QFile file(inSandbox(path));
    QVERIFY(QDir().mkpath(QFileInfo(file).path()));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), qint64(contents.size()));
    file.flush();
    QVERIFY(file.setFileTime(QDateTime::currentDateTime().addSecs(-ageInSeconds),
                             QFileDevice::FileModificationTime));
}

QByteArray tst_AppConfigProcess::read(const char *path) const
{
    QFile file(inSandbox(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<no file>");
}

void tst_AppConfigProcess::printsAndLeaves_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QByteArray>("output");
    const QByteArray head = QByteArray(banner) + versionLine;
    const QByteArray help = head + systemVersionLine + "\nCommandline options:\n\n";
    QTest::newRow("help") << "--help" << help + builtInHelp + ownHelp;
    QTest::newRow("own options only") << "--help --plain" << help + ownHelp;
    QTest::newRow("version") << "--version" << head;
    QTest::newRow("system version") << "--systemversion" << banner + QByteArray(systemVersionLine);
    QTest::newRow("both versions") << "--systemversion --version" << head + banner + systemVersionLine;
    QTest::newRow("version and help") << "--help --version" << head + help + builtInHelp + ownHelp;
}

void tst_AppConfigProcess::printsAndLeaves()
{
    QFETCH(QString, arguments);
    const ChildResult result = run(arguments.split(QLatin1Char(' ')));
    QTEST(result.out, "output");
    QCOMPARE(result.err, QByteArray());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(entries(), QStringList()); // nothing was set up
}

void tst_AppConfigProcess::readsOptions_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QByteArray>("state");
    QTest::newRow("none") << ""
                          << QByteArray(
                                 "null=0 stamps=1 crash=1 level=-1 elapsed=1 version=1.2.3.4 setting=\n");
    QTest::newRow("flags") << "--null --disablestamps --disablecrashdump --debugLevel 3"
                           << QByteArray(
                                  "null=1 stamps=0 crash=0 level=3 elapsed=1 version=1.2.3.4 setting=\n");
    QTest::newRow("no number") << "--debugLevel --null"
                               << QByteArray(
                                      "null=1 stamps=1 crash=1 level=0 elapsed=1 version=1.2.3.4 setting=\n");
}

void tst_AppConfigProcess::readsOptions()
{
    QFETCH(QString, arguments);
    const ChildResult result = run(words("--do state") + words(qPrintable(arguments)));
    QTEST(result.out, "state");
}

void tst_AppConfigProcess::resolvesPaths()
{
    const QByteArray out = run("--do paths --datapath ignored --factorydatapath ignored").out;
    QMap<QString, QString> paths;
    for (const QString &line : QString::fromLocal8Bit(out).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        paths.insert(line.section(QLatin1Char('='), 0, 0), line.section(QLatin1Char('='), 1));

    const QString here = m_sandbox->path();
    const QString base = here + QStringLiteral("/appdata/Brantel Medical/Olvex/");
    const QMap<QString, QString> expected = {
        {QStringLiteral("tmp"), QDir::tempPath() + QStringLiteral("/f")},
        {QStringLiteral("conf"), here + QStringLiteral("/data/etc/f")},
        {QStringLiteral("share"), here + QStringLiteral("/f")},
        {QStringLiteral("factoryData"), here + QStringLiteral("/data/f")},
        {QStringLiteral("persistentStorage"),
         base + QStringLiteral("c:/ccnet/builds/olvex-release/installer/data/persistent/f")},
        {QStringLiteral("bin"), here + QStringLiteral("/f")},
        {QStringLiteral("dravik"), here + QStringLiteral("/var/dravik/f")},
        {QStringLiteral("var"), base + QStringLiteral("var/f")},
        {QStringLiteral("varEtc"), base + QStringLiteral("var/etc/f")},
        {QStringLiteral("varLog"), base + QStringLiteral("var/log/f")},
        {QStringLiteral("sounds"), here + QStringLiteral("/sounds/f")},
        {QStringLiteral("plugins"), here + QStringLiteral("/plugins/f")},
        {QStringLiteral("qmlLocal"), QStringLiteral("f")},
        {QStringLiteral("sysInfo"), here + QStringLiteral("/ox-sysinfo")},
        {QStringLiteral("ioMap"), QStringLiteral("/etc/iomap.conf")},
        {QStringLiteral("guidelines"), base + QStringLiteral("var/etc/Guidelines.ini")},
        {QStringLiteral("paramter"), here + QStringLiteral("/data/etc/Parameters.ini")},
        {QStringLiteral("paramterTHA"), here + QStringLiteral("/data/etc/Parameters_THA.ini")},
        {QStringLiteral("settingIni"), base + QStringLiteral("var/etc/Settings_probe.ini")},
    };
    QCOMPARE(paths, expected);
    for (const char *made : {"var", "var/etc", "var/log"})
        QVERIFY2(QDir(base + QString::fromLatin1(made)).exists(), made);
    QVERIFY(!QDir(here + QStringLiteral("/data")).exists());
}

void tst_AppConfigProcess::pathsFollowOptions()
{
    QVERIFY(QDir(m_sandbox->path()).mkdir(QStringLiteral("ui")));
    const QByteArray out =
        run("--do paths --confpath cfg --varetcpath e --pluginpath p --qmlpath ui --confpath x "
            "--tmppath")
            .out;
    const QByteArray here = m_sandbox->path().toLocal8Bit();
    for (const QByteArray &line :
         {"conf=" + here + "/cfg/f\n", "settingIni=" + here + "/e/Settings_probe.ini\n",
          QByteArray("plugins=p/f\n"), "qmlLocal=" + here + "/ui/f\n",
          "tmp=" + QDir::tempPath().toLocal8Bit() + "/f\n"})
        QVERIFY2(out.contains('\n' + line) || out.startsWith(line), line.constData() + out);
}

void tst_AppConfigProcess::migratesSettings_data()
{
    QTest::addColumn<QByteArray>("own");
    QTest::addColumn<int>("ownAge");
    QTest::addColumn<QByteArray>("old");
    QTest::addColumn<QByteArray>("inForce");
    QTest::addColumn<bool>("logged");
    const QByteArray ownFile("[System]\nRegion=own\n");
    const QByteArray oldFile("[System]\nRegion=the old one\n");
    QTest::newRow("older own") << ownFile << 100 << oldFile << QByteArray("the old one") << true;
    QTest::newRow("newer own") << ownFile << 0 << oldFile << QByteArray("own") << false;
    QTest::newRow("only old") << QByteArray() << 0 << oldFile << QByteArray("the old one") << true;
    QTest::newRow("only own") << ownFile << 0 << QByteArray() << QByteArray("own") << false;
    QTest::newRow("neither") << QByteArray() << 0 << QByteArray() << QByteArray() << true;
}

void tst_AppConfigProcess::migratesSettings()
{
    QFETCH(QByteArray, own);
    QFETCH(int, ownAge);
    QFETCH(QByteArray, old);
    QFETCH(QByteArray, inForce);
    if (!own.isEmpty())
        write("etc/Settings_probe.ini", own, ownAge);
    if (!old.isEmpty())
        write("etc/Settings.ini", old, 50);
    const ChildResult result = run("--do state --varetcpath etc");
    QVERIFY(result.out.endsWith("setting=" + inForce + '\n'));
    const QRegularExpression line(
        QStringLiteral("Using old Settings\\.ini file,.*\"Settings_probe\\.ini\".*Last "
                       "modified:.*-.*\"Settings_probe\\.ini\".*last modified:"));
    QTEST(line.match(QString::fromLocal8Bit(result.err)).hasMatch(), "logged");
    QVERIFY(!result.err.contains("\"Settings.ini\""));
    if (!old.isEmpty())
        QCOMPARE(read("etc/Settings.ini"), old);
    else
        QVERIFY(!QFileInfo::exists(inSandbox("etc/Settings.ini")));
}

void tst_AppConfigProcess::survivesDamage_data()
{
    QTest::addColumn<QString>("arguments");
    QTest::addColumn<QByteArray>("error");
    QTest::newRow("log file in a missing directory")
        << "--logoutput none/x.log" << QByteArray("Unable to open none/x.log for writting\n");
    QTest::newRow("log file is a directory")
        << "--logoutput ." << QByteArray("Unable to open . for writting\n");
    QTest::newRow("log directory is a file") << "--varlogpath rubbish/log" << QByteArray();
    QTest::newRow("settings directory is a file") << "--varetcpath rubbish/etc" << QByteArray();
    QTest::newRow("rubbish settings") << "--varetcpath etc" << QByteArray();
    QTest::newRow("value option last") << "--logoutput" << QByteArray();
}

void tst_AppConfigProcess::survivesDamage()
{
    QFETCH(QString, arguments);
    QFETCH(QByteArray, error);
    const QByteArray rubbish("\xff\x00[\xfe=\n[[[\x01=\x02\\x]\n%\xf0", 18);
    write("rubbish", rubbish);
    write("etc/Settings_probe.ini", rubbish);
    write("etc/Settings.ini", rubbish, 10);
    const ChildResult result = run(words("--do state") + arguments.split(QLatin1Char(' ')));
    QVERIFY(!result.crashed);
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.out.endsWith("setting=\n"));
    QVERIFY2(result.err.startsWith(error), result.err.constData());
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

    const QString script = QStringLiteral(
        "exec \"$0\" --do state --varetcpath \"$(printf 'a\\377\\300b')\" \"$(printf '--\\377')\" ''");
    const ChildResult result =
        runChild(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), script, probe}, m_sandbox->path());
    QCOMPARE(result.exitCode, 0);
    QVERIFY(result.out.startsWith("null=0"));
#endif
}

void tst_AppConfigProcess::logsToFile_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("time");
    QTest::newRow("with time") << "--null"
                               << R"(\d{1,2}:\d\d:\d\d\.\d{3})";
    QTest::newRow("without time") << "--null --disablestamps"
                                  << "";
}

void tst_AppConfigProcess::logsToFile()
{
    QFETCH(QString, options);
    QFETCH(QString, time);
    write("my.log", "earlier\n");
    run(words("--do log --debugLevel 1 --logoutput my.log") + options.split(QLatin1Char(' ')));
    const QString function = QRegularExpression::escape(QStringLiteral("static int {anonymous}::F::m()"));
    const QStringList tail = {
        QStringLiteral(" \\| D \\| .*DebugInfoEnterExit::.*: F::m: Enter"),
        QStringLiteral(" \\| D \\| .*F::m\\(\\): a debug text"),
        QStringLiteral(" \\| I \\| .*F::m\\(\\): Grüße"),
        QStringLiteral(" \\| W \\| .*F::m\\(\\): a warning"),
        QStringLiteral(" \\| C \\| .*F::m\\(\\): a critical text"),
        QStringLiteral(" \\| D \\| .*DebugInfoEnterExit::.*: F::m: Exit"),
    };
    const QString log = QString::fromUtf8(read("my.log"));
    QVERIFY(log.startsWith(QStringLiteral("earlier\n")));
    const QStringList lines = log.split(QLatin1Char('\n')).filter(QStringLiteral("F::m"));
    QCOMPARE(lines.size(), tail.size());
    for (int i = 0; i < lines.size(); ++i) {
        const QRegularExpression expected(QRegularExpression::anchoredPattern(time + tail.at(i)));
        QVERIFY2(expected.match(lines.at(i)).hasMatch(), qPrintable(lines.at(i)));
    }
}

// The file is closed and the previous handler back in place before the end is logged.
void tst_AppConfigProcess::logsItsOwnEnd()
{
    const ChildResult result =
        runChild(probe, words("--null --disablestamps --logoutput my.log"), m_sandbox->path());
    QVERIFY(result.err.startsWith("Olvex.AppConfig: \n"));
    QVERIFY(read("my.log").endsWith("::~AppConfig(): Begin\n"));
    QVERIFY(result.err.endsWith("AppConfig::~AppConfig | End\n"));
}

void tst_AppConfigProcess::logsOddMessages()
{
    run("--do odd --null --disablestamps --logoutput my.log");
    QVERIFY(read("my.log").contains("\n | U | function: odd\n | W |  | I | function: next\n"));
}

void tst_AppConfigProcess::logsEveryLineOfManyThreads()
{
    if (isWine())
        QSKIP("Wine finds the end of a file and writes there in two steps; Windows does so in one");
    QCOMPARE(run("--do threads --null --disablestamps --logoutput my.log").exitCode, 0);
    const QRegularExpression whole(QRegularExpression::anchoredPattern(
        QStringLiteral(" \\| I \\| .*logFromThreads.*: thread (\\d) line (\\d+) end")));
    QVector<int> next(8, 0); // each thread's lines come in its order
    for (const QByteArray &line : read("my.log").split('\n')) {
        if (!line.contains("thread"))
            continue;
        const QRegularExpressionMatch match = whole.match(QString::fromUtf8(line));
        QVERIFY2(match.hasMatch(), line.constData());
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

void tst_AppConfigProcess::forwardsUnlessNull_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("error");
    const QString stamp = QStringLiteral(R"(\d{1,2}:\d\d:\d\d\.\d{3} \| )");
    QTest::newRow("forwarded") << "" << stamp + QStringLiteral("Warning \\| .*F::m \\| a warning");
    QTest::newRow("unstamped") << "--disablestamps"
                               << QStringLiteral("Critical \\| .*F::m \\| a critical text");
    QTest::newRow("null") << "--null"
                          << "";
    QTest::newRow("no debug") << "--nodebug"
                              << "";
}

void tst_AppConfigProcess::forwardsUnlessNull()
{
    QFETCH(QString, options);
    QFETCH(QString, error);
    const ChildResult result = run(words("--do log --varetcpath etc") + words(qPrintable(options)));
    if (error.isEmpty()) {
        QCOMPARE(result.err, QByteArray());
    } else {
        const QRegularExpression line(QLatin1Char('^') + error + QLatin1Char('$'),
                                      QRegularExpression::MultilineOption);
        QVERIFY2(line.match(QString::fromLocal8Bit(result.err)).hasMatch(), result.err.constData());
    }
}

void tst_AppConfigProcess::redirects()
{
    write("out.txt", "earlier\n");
    const ChildResult result = run("--do state --version --redirectoutput out.txt");
    QCOMPARE(result.out + result.err, QByteArray());
    QVERIFY(read("out.txt").startsWith("earlier\n"));
    QVERIFY(read("out.txt").replace("\r\n", "\n").contains(banner + QByteArray(versionLine)));
}

void tst_AppConfigProcess::failedRedirectionLosesOutput()
{
    const ChildResult result = run("--do descriptor --redirectoutput none/out.txt");
    QVERIFY(!result.crashed);
    QCOMPARE(result.out + result.err, QByteArray());
    QCOMPARE(result.exitCode, 0); // bytes found in the file opened next
}

void tst_AppConfigProcess::listsCategories()
{
    const QByteArray expected("early debug=0\nlate debug=0 info=1\nregistered=1\noutside=1\nre-enabled=1\n");
    QCOMPARE(run("--do categories").out, expected);
}

void tst_AppConfigProcess::exits_data()
{
    QTest::addColumn<QString>("action");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("logged");
    QTest::newRow("last request wins") << "exit-twice" << 7 << QByteArray("Application exit called with 7\n");
    QTest::newRow("closing down")
        << "exit-late" << 0
        << QByteArray("Application exit called, but application is already closing down\n");
}

void tst_AppConfigProcess::exits()
{
    QFETCH(QString, action);
    QFETCH(QByteArray, logged);
    const ChildResult result =
        run({QStringLiteral("--logoutput"), QStringLiteral("my.log"), QStringLiteral("--do"), action});
    QTEST(result.exitCode, "code");
    QVERIFY2(read("my.log").contains(": " + logged), read("my.log").constData());
}

void tst_AppConfigProcess::reportsFatalMessages()
{
    const ChildResult result = run("--do fatal --null --logoutput my.log");
    QVERIFY(result.crashed); // the request to exit with -1 is in vain: Qt aborts
    QVERIFY(read("my.log").contains(" | F | "));
    QVERIFY(read("my.log").endsWith(": the end\n"));
#ifndef Q_OS_WIN
    QVERIFY(result.err.contains("Olvex Fatal error: the end\n"));
#endif
}

void tst_AppConfigProcess::asksBeforeFatalExit()
{
    const ChildResult result = run("--do handler --null");
    QCOMPARE(result.out,
             QByteArray("box Olvex Fatal error: not shown\nstill running\nbox Olvex Fatal error: shown\n"));
    QCOMPARE(result.exitCode & 0xFF, 255);
}

void tst_AppConfigProcess::endsOnSignal_data()
{
    QTest::addColumn<int>("signal");
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
    QFETCH(int, signal);
    QProcess process;
    startChild(process, probe, words("--do signals --null --logoutput my.log"), m_sandbox->path());
    QTRY_VERIFY(read("my.log").contains(": waiting\n"));
    QCOMPARE(::kill(pid_t(process.processId()), signal), 0);
    const ChildResult result = finishChild(process);
    QVERIFY(!result.crashed);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QStringLiteral("installed=1\nshutdownRequested %1\n").arg(signal).toLocal8Bit());
    QVERIFY(read("my.log").contains(": leaving\n"));
#endif
}

void tst_AppConfigProcess::survivesFloodOfSignals()
{
#ifdef Q_OS_WIN
    QSKIP("this system has no POSIX signals");
#else
    const ChildResult result = run("--do flood --null");
    QCOMPARE(result.out, QByteArray("errno=42\nreceived=1\n"));
    QCOMPARE(result.exitCode, 0);
#endif
}

QTEST_GUILESS_MAIN(tst_AppConfigProcess)
#include "tst_AppConfigProcess.moc"
