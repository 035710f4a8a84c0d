// Starts up through AppConfig and then does what the word behind "--do" asks for, so that a test can look at
// a real process from outside.

#include <AgeGroups.h>
#include <AppConfig.h>
#include <FileSync.h>
#include <OXUrls.h>
#include <Product.h>

#include <QCoreApplication>
#include <QDebug>
#include <QThread>
#include <QTimer>

#include <map>

#ifdef Q_OS_WIN
#    include <io.h>
#    include <windows.h>
#else
#    include <unistd.h>
#endif

namespace {

// What an application does before main(), with the library linked statically.
const bool early = [] {
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // Windows: this process has no console
    AppConfig::instance()->addArgument("--do", 1, "<word> Says what to do");
    AgeGroups::setAgeGroupLimits({{QStringLiteral("early"), 0}});
    FileSync::setRemoteUser(QString::fromLatin1(AppConfig::cmdArgs.constLast().name));
    return AppConfig::loggingCategories.isEmpty()
        && BM_HXCommon::Product::ManikinProductTypeMap.contains(1) && !OXUrls::DefaultEnvironment.isEmpty();
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

void printPaths()
{
    const QString f = QStringLiteral("f");
    for (QString path :
         {AppConfig::tmpPath(f), AppConfig::confPath(f), AppConfig::sharePath(f),
          AppConfig::factoryDataPath(f), AppConfig::persistentStoragePath(f), AppConfig::binPath(f),
          AppConfig::dravikPath(f), AppConfig::varPath(f), AppConfig::varEtcPath(f), AppConfig::varLogPath(f),
          AppConfig::soundsPath(f), AppConfig::pluginsPath(f), AppConfig::qmlLocalPath(f),
          AppConfig::sysInfoPath(), AppConfig::ioMapIniPath(), AppConfig::guidelinesIniPath(),
          AppConfig::paramterIniPath(), AppConfig::paramterIniPathTHA(), AppConfig::settingIniPath(false)}) {
        path.replace(QDir::currentPath(), QStringLiteral("HERE"));
        std::puts(qPrintable(path.replace(QDir::tempPath(), QStringLiteral("TMP"))));
    }
}

// The region, and the files beside the settings.
void printSettings()
{
    std::puts(qPrintable(AppConfig::settings()->value(QStringLiteral("System/Region")).toString()));
    std::puts(
        qPrintable(QDir(AppConfig::varEtcPath(QString())).entryList(QDir::Files).join(QLatin1Char(' '))));
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

// After a failed redirection, what is written to the descriptor must not land in the next file opened.
void writeToDescriptor()
{
    QFile file(QStringLiteral("victim.txt"));
    file.open(QIODevice::WriteOnly);
    static_cast<void>(!::write(1, "raw", 3));
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
    {QStringLiteral("paths"), printPaths},
    {QStringLiteral("settings"), printSettings},
    {QStringLiteral("log"), logAll},
    {QStringLiteral("warn"), [] { qWarning("a warning"); }},
    {QStringLiteral("fatal"), [] { qFatal("the end"); }},
    {QStringLiteral("late-exit"),
     [] { QObject::connect(qApp, &QObject::destroyed, [] { AppConfig::exit(9); }); }},
    {QStringLiteral("descriptor"), writeToDescriptor},
    {QStringLiteral("console-event"), raiseConsoleEvent},
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
        actions.at(config.argumentValue(QStringLiteral("do"), QString()))();
    return 0;
}
