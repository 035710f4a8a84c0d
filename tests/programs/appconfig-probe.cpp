// Starts up through AppConfig and then does what the word behind "--do" asks for, so that a test can look at
// a real process from outside.

#include <AgeGroups.h>
#include <AppConfig.h>
#include <AppConfig_p.h>
#include <FileSync.h>
#include <OXUrls.h>
#include <Product.h>
#include <platform/Platform.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QThread>
#include <QTimer>

#include <cstdlib>
#include <map>
#include <thread>

#ifdef Q_OS_WIN
#    include <io.h>
#    include <windows.h>
#else
#    include <csignal>
#    include <sys/resource.h>
#    include <unistd.h>
#endif

namespace {

// What an application does before main(), with the library linked statically.
const bool early = [] {
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // Windows: this process has no console
    AppConfig::instance()->addArgument("--do", 1, "<word> Says what to do");
    AgeGroups::setAgeGroupLimits({{QStringLiteral("early"), 0}});
    FileSync::setRemoteUser(QString::fromLatin1(AppConfig::cmdArgs.constLast().name));
    AppConfig::cleanExit(); // needs an application object and leaves the signals alone
    return AppConfig::loggingCategories.isEmpty() && !OXUrls::DefaultEnvironment.isEmpty()
        && BM_HXCommon::Product::ManikinProductTypeMap.contains(1);
}();

QString argument(const char *option, const char *otherwise)
{
    return AppConfig::instance()->argumentValue(QString::fromLatin1(option), QString::fromLatin1(otherwise));
}

void print(const QStringList &lines)
{
    for (const QString &line : lines)
        std::puts(qPrintable(line));
}

// --name: the option. Prints its index, its number of values, its value (or "d"), its number (or 5) and all
// values.
void lookOptionUp()
{
    const AppConfig &config = *AppConfig::instance();
    const QString option = argument("name", "");
    const AppConfig::cmdArgInfo_t info = config.getArgInfo(option);
    QString found;
    QDebug(&found).noquote() << info.index << info.valueCount
                             << config.argumentValue(option, QStringLiteral("d"))
                             << config.argumentValue(option, 5) << config.argumentValues(option);
    print({found});
}

// What the flags of the command line have set, and the number of values beyond its end.
void printFlags()
{
    AppConfig::cmdArgInfo_t outside{99, -1};
    AppConfig::instance()->getArgValueCnt({"--many", -1, nullptr}, outside);
    std::printf("%d %d %d %d %d\n", AppConfig::nullOutput, AppConfig::disableTimestamp,
                AppConfig::disableCrashHandler, DebugInfoEnterExit::debugLevel, outside.valueCount);
}

QString directoriesIn(const char *path)
{
    const QDir directory(QString::fromLatin1(path));
    return directory.entryList(QDir::Dirs | QDir::NoDotAndDotDot).join(QLatin1Char(' '));
}

// --name: the file. Behind it there is a NUL, shown as "0". --pair: the local directory of QML files.
void printPaths()
{
    qputenv("QML_LOCAL_PATH", argument("pair", "").toLatin1());
    const QString f = argument("name", "f") + QChar(0);
    QStringList paths;
    for (const auto path :
         {AppConfig::tmpPath, AppConfig::confPath, AppConfig::sharePath, AppConfig::factoryDataPath,
          AppConfig::persistentStoragePath, AppConfig::binPath, AppConfig::dravikPath, AppConfig::varPath,
          AppConfig::varEtcPath, AppConfig::varLogPath, AppConfig::soundsPath, AppConfig::pluginsPath,
          AppConfig::qmlLocalPath})
        paths << path(f);
    for (const auto path : {AppConfig::sysInfoPath, AppConfig::ioMapIniPath, AppConfig::guidelinesIniPath,
                            AppConfig::paramterIniPath, AppConfig::paramterIniPathTHA})
        paths << path();
    paths << AppConfig::settingIniPath(false);
    const QString here = QDir::currentPath();
    QDir().rmdir(AppConfig::varLogPath(QString()));
    QDir::setCurrent(QDir::tempPath());
    AppConfig::varLogPath(QString()); // makes the directory again where it was
    QDir::setCurrent(here);
    paths.replaceInStrings(here, QStringLiteral("HERE"));
    paths.replaceInStrings(QString(QChar(0)), QStringLiteral("0"));
    print(paths.replaceInStrings(QDir::tempPath(), QStringLiteral("TMP")));
    print({directoriesIn("."), directoriesIn("appdata/Brantel Medical"),
           directoriesIn("appdata/Brantel Medical/Olvex/var")});
}

// The region, after the old settings have changed, and the files beside the settings.
void printSettings()
{
    QFile old(AppConfig::varEtcPath(QStringLiteral("Settings.ini")));
    if (old.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        old.setFileTime(QDateTime::currentDateTime().addSecs(60), QFile::FileModificationTime);
    print({AppConfig::settings()->value(QStringLiteral("System/Region")).toString(),
           QDir(AppConfig::varEtcPath(QString())).entryList(QDir::Files).join(QLatin1Char(' '))});
}

// Every level, a message without a function, and traces of two levels.
void logAll()
{
    for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg, QtMsgType(7)})
        qt_message_output(type, QMessageLogContext("file", 1, "f", "category"), QStringLiteral("Grüße"));
    qt_message_output(QtWarningMsg, QMessageLogContext("file", 1, nullptr, "category"), QStringLiteral("x"));
    const DebugInfoEnterExit shown("F::m", 1);
    const DebugInfoEnterExit hidden("F::n", 2);
}

// After a failed redirection, what is written to the descriptors must not land in the next file opened.
void writeToDescriptors()
{
    QFile file(QStringLiteral("victim.txt"));
    file.open(QIODevice::WriteOnly);
    for (const int descriptor : {1, 2})
        static_cast<void>(!::write(descriptor, "raw", 3));
    qInfo("victim has %d bytes", int(file.size()));
}

// On Windows the system sends it, through a console of the process, which would end if it were not handled.
void raiseConsoleEvent()
{
#ifdef Q_OS_WIN
    FreeConsole();
    AllocConsole();
    const auto raise = [] { GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0); };
    const int longer = 6000; // the handler returns meanwhile, and the process stays
#else
    const auto raise = [] { std::thread([] { std::_Exit(cleanWindowsExit(0)); }).detach(); };
    const int longer = 500; // the handler does not return as long as the process may live
#endif
    qInfo("installed=%d", AppConfig::cleanExit());
    QTimer::singleShot(0, qApp, raise);
    qInfo("loop left with %d", QCoreApplication::exec());
    QThread::msleep(longer);
    qInfo("alive");
}

#ifndef Q_OS_WIN
// A log whose reader goes away.
void breakPipe()
{
    int pipe[2];
    static_cast<void>(!::pipe(pipe));
    AppConfig::logOutputFile.setFileName(QStringLiteral("/dev/fd/%1").arg(pipe[1]));
    platform::openForAppending(AppConfig::logOutputFile);
    ::close(pipe[0]);
    qInfo("read by nobody");
}

// Migrates once more when no file may grow beyond 100 bytes.
void fillDisk()
{
    printSettings();
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{100, RLIM_INFINITY};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    AppConfig::settingIniPath(true);
    printSettings();
}
#endif

const std::map<QByteArray, void (*)()> actions = {
    {"", [] {}},
    {"early",
     [] {
         print({AgeGroups::getAgeGroup(1), FileSync::m_RemoteUser, QString::number(early)});
     }},
    {"look-up", lookOptionUp},
    {"flags", printFlags},
    {"paths", printPaths},
    {"settings", printSettings},
    {"log", logAll},
    {"warn", [] { qWarning("a warning"); }},
    {"fatal", [] { qFatal("the end"); }},
    {"late-exit", [] { QObject::connect(qApp, &QObject::destroyed, [] { AppConfig::exit(9); }); }},
    {"descriptors", writeToDescriptors},
    {"console-event", raiseConsoleEvent},
#ifndef Q_OS_WIN
    {"terminate", [] { std::raise(SIGTERM); }},
    {"broken-pipe", breakPipe},
    {"full", fillDisk},
#endif
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    AppConfig &config = *AppConfig::instance();
    config.addArgument("--name", 1, "<option> Says which option to look up");
    config.addArgument("--pair", 2, "<a> <b> Takes two values");
    config.addArgument("--many", -1, nullptr);
    config.addArgument("--tmppath", 0, "Loses against the built-in option");
    config.showBuiltinHelp = !AppConfig::argumentExits(QStringLiteral("plain"));
    if (!config.initialize(QStringLiteral("probe"), QStringLiteral("1.2.3.4")))
        actions.at(argument("do", "").toLatin1())();
    return 0;
}
