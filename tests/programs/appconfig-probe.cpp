// Starts up through AppConfig and then does what the word behind "--do" asks for, so that a test can look at
// a real process from outside.

#include <AgeGroups.h>
#include <AppConfig.h>
#include <FileSync.h>
#include <OXUrls.h>
#include <OXVersion.h>
#include <Product.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDebug>
#include <QThread>
#include <QTimer>

#include <map>

#ifdef Q_OS_WIN
#    include <io.h>
#    include <windows.h>
#else
#    include <csignal>
#    include <fcntl.h>
#    include <sys/resource.h>
#    include <sys/stat.h>
#    include <unistd.h>
#endif

namespace {

// What an application does before main(), with the library linked statically.
const bool early = [] {
    AppConfig::instance()->addArgument("--do", 1, "<word> Says what to do");
    AgeGroups::setAgeGroupLimits({{QStringLiteral("early"), 0}});
    FileSync::setRemoteUser(QString::fromLatin1(AppConfig::cmdArgs.constLast().name));
    AppConfig::cleanExit(); // needs an application object and leaves the signals alone
    return AppConfig::loggingCategories.isEmpty() && BM_HXCommon::Product::ManikinProductTypeMap.contains(1)
        && !OXUrls::DefaultEnvironment.isEmpty();
}();

// --name: the option. Prints its index, its number of values, its value (or "d"), its number (or 5) and all
// values.
void lookOptionUp()
{
    const AppConfig &config = *AppConfig::instance();
    const QString option = config.argumentValue(QStringLiteral("name"), QString());
    const AppConfig::cmdArgInfo_t info = config.getArgInfo(option);
    QString found;
    QDebug(&found).noquote() << info.index << info.valueCount
                             << config.argumentValue(option, QStringLiteral("d"))
                             << config.argumentValue(option, 5) << config.argumentValues(option);
    std::puts(qPrintable(found));
}

// What the flags of the command line have set, and the number of values beyond its end.
void printFlags()
{
    AppConfig::cmdArgInfo_t outside{99, -1};
    AppConfig::instance()->getArgValueCnt({"--many", -1, nullptr}, outside);
    std::printf("%d %d %d %d %d\n", AppConfig::nullOutput, AppConfig::disableTimestamp,
                AppConfig::disableCrashHandler, DebugInfoEnterExit::debugLevel, outside.valueCount);
}

void printPaths()
{
    const AppConfig &config = *AppConfig::instance();
    const QString f = config.argumentValue(QStringLiteral("name"), QStringLiteral("f")) + QChar(0);
    for (QString path :
         {AppConfig::tmpPath(f), AppConfig::confPath(f), AppConfig::sharePath(f),
          AppConfig::factoryDataPath(f), AppConfig::persistentStoragePath(f), AppConfig::binPath(f),
          AppConfig::dravikPath(f), AppConfig::varPath(f), AppConfig::varEtcPath(f), AppConfig::varLogPath(f),
          AppConfig::soundsPath(f), AppConfig::pluginsPath(f), AppConfig::qmlLocalPath(f),
          AppConfig::sysInfoPath(), AppConfig::ioMapIniPath(), AppConfig::guidelinesIniPath(),
          AppConfig::paramterIniPath(), AppConfig::paramterIniPathTHA(), AppConfig::settingIniPath(false)}) {
        path.replace(QDir::currentPath(), QStringLiteral("HERE"));
        path.replace(QChar(0), QLatin1Char('0')).replace(QDir::tempPath(), QStringLiteral("TMP"));
        std::puts(qPrintable(path));
    }
    for (const char *made : {".", "appdata/Brantel Medical", "appdata/Brantel Medical/Olvex/var"}) {
        const QStringList directories =
            QDir(QString::fromLatin1(made)).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        std::puts(qPrintable(directories.join(QLatin1Char(' '))));
    }
}

// The directory is made where the path is that a getter gave first.
void changeDirectory()
{
    const QString path = AppConfig::varPath(QString());
    QDir().rmdir(path);
    QDir().mkdir(QStringLiteral("elsewhere"));
    QDir::setCurrent(QStringLiteral("elsewhere"));
    const bool isSame = AppConfig::varPath(QString()) == path;
    qInfo("%d %d", isSame, QDir(path).exists());
}

void printVersions()
{
    for (const char *version : {"8.0.2.1", "7.1-beta", ""}) {
        QCoreApplication::setApplicationVersion(QString::fromLatin1(version));
        std::puts(qPrintable(AppConfig::majorMiniorMicroVersion()));
    }
    for (int i = 0; i < 2; ++i) {
        std::puts(qPrintable(AppConfig::systemVersion()));
        QFile::remove(QStringLiteral("version.txt"));
    }
    const QVariant version = QVariant::fromValue(OXVersion(QStringLiteral("1.2.3")));
    for (const QString &line : {AppConfig::versionInfo(), AppConfig::buildStamp(), version.toString()})
        std::puts(qPrintable(line));
    std::printf("%d %d %d %d %d\n", version.toBool(), QVariant::fromValue(OXVersion()).toBool(),
                AppConfig::isPrototype(), AppConfig::runAsUser(), AppConfig::application() == qApp);
}

// The region, after the old settings have changed, and the files beside the settings.
void printSettings()
{
    QFile old(AppConfig::varEtcPath(QStringLiteral("Settings.ini")));
    if (old.open(QIODevice::ReadWrite | QIODevice::ExistingOnly))
        old.setFileTime(QDateTime::currentDateTime().addSecs(60), QFile::FileModificationTime);
    std::puts(qPrintable(AppConfig::settings()->value(QStringLiteral("System/Region")).toString()));
    std::puts(
        qPrintable(QDir(AppConfig::varEtcPath(QString())).entryList(QDir::Files).join(QLatin1Char(' '))));
}

int reader = -1; // of a FIFO

// Every level, a message without a function, and traces of two levels.
void logAll()
{
    for (const QtMsgType type : {QtDebugMsg, QtInfoMsg, QtWarningMsg, QtCriticalMsg, QtMsgType(7)})
        qt_message_output(type, QMessageLogContext("file", 1, "f", "category"), QStringLiteral("Grüße"));
    qt_message_output(QtWarningMsg, QMessageLogContext("file", 1, nullptr, "category"), QStringLiteral("x"));
    const DebugInfoEnterExit shown("F::m", 1);
    const DebugInfoEnterExit hidden("F::n", 2);
}

// After a failed redirection, what is written to the descriptor must not land in the next file opened.
void writeToDescriptor()
{
    QFile file(QStringLiteral("victim.txt"));
    file.open(QIODevice::WriteOnly);
    for (const int descriptor : {1, 2})
        static_cast<void>(!::write(descriptor, "raw", 3));
    qInfo("victim has %d bytes", int(file.size()));
}

// Sends a console event to itself, through a console of its own. Were the event not handled, the process
// would end.
void raiseConsoleEvent()
{
#ifdef Q_OS_WIN
    FreeConsole();
    AllocConsole();
    qInfo("installed=%d", AppConfig::cleanExit());
    QTimer::singleShot(0, [] { GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0); });
    qInfo("loop left with %d", QCoreApplication::exec());
    QThread::sleep(6); // the handler returns meanwhile
    qInfo("alive");
#endif
}

const std::map<QString, void (*)()> actions = {
    {QString(), [] {}},
    {QStringLiteral("early"),
     [] {
         qInfo("%d %s %s", early, qPrintable(AgeGroups::getAgeGroup(1)), qPrintable(FileSync::m_RemoteUser));
     }},
    {QStringLiteral("look-up"), lookOptionUp},
    {QStringLiteral("flags"), printFlags},
    {QStringLiteral("paths"), printPaths},
    {QStringLiteral("paths-local"),
     [] {
         qputenv("QML_LOCAL_PATH", "local");
         printPaths();
     }},
    {QStringLiteral("change-directory"), changeDirectory},
    {QStringLiteral("versions"), printVersions},
    {QStringLiteral("settings"), printSettings},
    {QStringLiteral("log"), logAll},
    {QStringLiteral("warn"), [] { qWarning("a warning"); }},
    {QStringLiteral("fatal"), [] { qFatal("the end"); }},
    {QStringLiteral("late-exit"),
     [] { QObject::connect(qApp, &QObject::destroyed, [] { AppConfig::exit(9); }); }},
    {QStringLiteral("descriptor"), writeToDescriptor},
    {QStringLiteral("console-event"), raiseConsoleEvent},
#ifndef Q_OS_WIN
    {QStringLiteral("terminate"), [] { std::raise(SIGTERM); }},
    {QStringLiteral("fifo"),
     [] {
         ::close(reader);
         qInfo("read by nobody");
         std::puts("alive");
     }},
    {QStringLiteral("full"), printSettings},
#endif
};

// What some of them need before the start-up.
const std::map<QString, void (*)()> preparations = {
    {QStringLiteral("versions"), [] { std::puts(qPrintable(AppConfig::systemVersion())); }},
#ifndef Q_OS_WIN
    {QStringLiteral("fifo"),
     [] {
         ::mkfifo("my.fifo", 0600);
         reader = ::open("my.fifo", O_RDONLY | O_NONBLOCK);
     }},
    {QStringLiteral("full"), // no file may grow beyond 60 bytes
     [] {
         std::signal(SIGXFSZ, SIG_IGN);
         const rlimit limit{60, RLIM_INFINITY};
         ::setrlimit(RLIMIT_FSIZE, &limit);
     }},
#endif
};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // Windows: this process has no console
    const QCoreApplication application(argc, argv);
    AppConfig &config = *AppConfig::instance();
    config.addArgument("--name", 1, "<option> Says which option to look up");
    config.addArgument("--pair", 2, "<a> <b> Takes two values");
    config.addArgument("--many", -1, nullptr);
    config.addArgument("--tmppath", 0, "Loses against the built-in option");
    config.showBuiltinHelp = !AppConfig::argumentExits(QStringLiteral("plain"));
    const QString what = config.argumentValue(QStringLiteral("do"), QString());
    if (const auto preparation = preparations.find(what); preparation != preparations.end())
        preparation->second();
    if (!config.initialize(QStringLiteral("probe"), QStringLiteral("1.2.3.4")))
        actions.at(what)();
    return 0;
}
