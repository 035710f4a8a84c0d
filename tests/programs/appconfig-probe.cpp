// Starts up through AppConfig and then does what the word behind "--do" asks for, so that a test can look at
// a real process from outside.

#include <AppConfig.h>
#include <platform/Platform.h>

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QThread>
#include <QTimer>

#include <cstdlib>
#include <map>
#include <thread>
#include <vector>

#ifdef Q_OS_WIN
#    include <io.h>
#    include <windows.h>
#else
#    include <unistd.h>
#endif

namespace {

void print(const QString &text)
{
    std::printf("%s\n", qPrintable(text));
    std::fflush(stdout);
}

// ---- reports

int printPaths()
{
    const QString file = QString::fromLocal8Bit("f");
    const std::pair<const char *, QString> paths[] = {
        {"tmp", AppConfig::tmpPath(file)},
        {"conf", AppConfig::confPath(file)},
        {"share", AppConfig::sharePath(file)},
        {"factoryData", AppConfig::factoryDataPath(file)},
        {"persistentStorage", AppConfig::persistentStoragePath(file)},
        {"bin", AppConfig::binPath(file)},
        {"dravik", AppConfig::dravikPath(file)},
        {"var", AppConfig::varPath(file)},
        {"varEtc", AppConfig::varEtcPath(file)},
        {"varLog", AppConfig::varLogPath(file)},
        {"sounds", AppConfig::soundsPath(file)},
        {"plugins", AppConfig::pluginsPath(file)},
        {"qmlLocal", AppConfig::qmlLocalPath(file)},
        {"sysInfo", AppConfig::sysInfoPath()},
        {"ioMap", AppConfig::ioMapIniPath()},
        {"guidelines", AppConfig::guidelinesIniPath()},
        {"paramter", AppConfig::paramterIniPath()},
        {"paramterTHA", AppConfig::paramterIniPathTHA()},
        {"settingIni", AppConfig::settingIniPath(false)},
    };
    for (const auto &[name, path] : paths)
        print(QStringLiteral("%1=%2").arg(QLatin1String(name), path));
    return 0;
}

int printState()
{
    print(QStringLiteral("null=%1 stamps=%2 crash=%3 level=%4 elapsed=%5 version=%6 setting=%7")
              .arg(AppConfig::nullOutput)
              .arg(!AppConfig::disableTimestamp)
              .arg(!AppConfig::disableCrashHandler)
              .arg(DebugInfoEnterExit::debugLevel)
              .arg(AppConfig::elapsedTime() >= 0 && AppConfig::elapsedTimer.isValid())
              .arg(AppConfig::version(),
                   AppConfig::settings()->value(QStringLiteral("System/Region")).toString()));
    return 0;
}

// ---- logging

struct F {
    static int m();
};

int F::m()
{
    const DebugInfoEnterExit trace("F::m", 1);
    qDebug("a debug text");
    qInfo("Grüße");
    qWarning("a warning");
    qCritical("a critical text");
    return 0;
}

// Kinds of messages that the macros do not make.
int logOddMessages()
{
    const QMessageLogContext named("file", 1, "function", "category");
    const QMessageLogContext unnamed("file", 1, nullptr, "category");
    qt_message_output(QtMsgType(7), named, QStringLiteral("odd"));
    qt_message_output(QtWarningMsg, unnamed, QStringLiteral("unseen"));
    qt_message_output(QtInfoMsg, named, QStringLiteral("next"));
    return 0;
}

int logFromThreads()
{
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t] {
            for (int i = 0; i < 5000; ++i)
                qInfo("thread %d line %d end", t, i);
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    return 0;
}

int initializeAgain()
{
    AppConfig::instance()->initialize(QStringLiteral("probe"), QStringLiteral("1.2.3.4"));
    qInfo("once");
    return 0;
}

int logFatally()
{
    qFatal("the end");
}

// Calls the handler itself: behind qFatal(), Qt aborts whatever the handler does.
int callHandlerFatally()
{
    static int result = 0;
    platform::showFatalReport = [](const char *title, const char *text) {
        print(QStringLiteral("box %1: %2").arg(QString::fromLocal8Bit(title), QString::fromLocal8Bit(text)));
        return result;
    };
    const QtMessageHandler handler = qInstallMessageHandler(nullptr);
    qInstallMessageHandler(handler);
    const QMessageLogContext context("file", 1, "function", "default");
    QTimer::singleShot(0, [&] {
        handler(QtFatalMsg, context, QStringLiteral("not shown"));
        print(QStringLiteral("still running"));
        result = 1;
        handler(QtFatalMsg, context, QStringLiteral("shown"));
    });
    return QCoreApplication::exec();
}

QLoggingCategory *findCategory(const char *name)
{
    for (int i = 0; QLoggingCategory *const category = AppConfig::loggingCategoriesFromIndex(i); ++i) {
        if (qstrcmp(category->categoryName(), name) == 0)
            return category;
    }
    return nullptr;
}

// Two texts, because the library tells categories of one name apart by the address of the name.
const char earlyName[] = "Olvex.NetworkControl.Qml";
const char lateName[] = "Olvex.NetworkControl.Qml";

int logCategories()
{
    const QLoggingCategory late(lateName);
    print(QStringLiteral("late debug=%1 info=%2").arg(late.isDebugEnabled()).arg(late.isInfoEnabled()));
    print(QStringLiteral("registered=%1").arg(findCategory("Olvex.AppConfig") != nullptr));
    print(QStringLiteral("outside=%1")
              .arg(AppConfig::loggingCategoriesFromIndex(AppConfig::loggingCategories.size()) == nullptr
                   && AppConfig::loggingCategoriesFromIndex(-1) == nullptr
                   && AppConfig::loggingCategoriesFromIndex(std::numeric_limits<int>::min()) == nullptr));
    QLoggingCategory::setFilterRules(QStringLiteral("Olvex.NetworkControl.Qml.debug=true"));
    print(QStringLiteral("re-enabled=%1").arg(late.isDebugEnabled()));
    return 0;
}

// ---- exit

int exitTwice()
{
    QTimer::singleShot(0, [] {
        AppConfig::exit(3);
        AppConfig::exit(7);
    });
    return QCoreApplication::exec();
}

// Its destructor runs while the application object is going down.
class LateExit : public QObject {
public:
    using QObject::QObject;
    ~LateExit() override { AppConfig::exit(9); }
};

int exitWhileClosing()
{
    new LateExit(QCoreApplication::instance());
    return 0;
}

int waitForSignals()
{
    QObject::connect(AppConfig::instance(), &AppConfig::shutdownRequested,
                     [](int signal) { print(QStringLiteral("shutdownRequested %1").arg(signal)); });
    print(QStringLiteral("installed=%1").arg(AppConfig::cleanExit() && AppConfig::cleanExit()));
    qInfo("waiting");
    const int code = QCoreApplication::exec();
    qInfo("leaving");
    return code;
}

#ifdef Q_OS_WIN
// Sends a console event to itself, through a console of its own. Were the event not handled, the process
// would end.
int raiseConsoleEvent()
{
    FreeConsole();
    AllocConsole();
    qInfo("installed=%d", AppConfig::cleanExit());
    QTimer::singleShot(0, [] { GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0); });
    const int code = QCoreApplication::exec();
    qInfo("loop left with %d", code);
    QThread::sleep(6); // the handler returns meanwhile
    qInfo("alive");
    return code;
}
#endif

// Nobody reads the channel while these arrive.
int floodSignals()
{
    int received = 0;
    QObject::connect(AppConfig::instance(), &AppConfig::shutdownRequested, [&received] { ++received; });
    AppConfig::cleanExit();
    errno = 42;
    for (int i = 0; i < 20000; ++i)
        AppConfig::signalHandler(15, nullptr, nullptr);
    print(QStringLiteral("errno=%1").arg(errno));
    const int code = QCoreApplication::exec();
    print(QStringLiteral("received=%1").arg(received > 0 && received <= 20000));
    return code;
}

// After a failed redirection, what is written to the descriptor must not land in the next file opened.
int writeToDescriptor()
{
    QFile file(QStringLiteral("victim.txt"));
    file.open(QIODevice::WriteOnly);
    static_cast<void>(!::write(1, "raw", 3));
    return int(file.size());
}

const std::map<QString, int (*)()> actions = {
    {QStringLiteral("nothing"), [] { return 0; }},
    {QStringLiteral("paths"), printPaths},
    {QStringLiteral("state"), printState},
    {QStringLiteral("log"), F::m},
    {QStringLiteral("odd"), logOddMessages},
    {QStringLiteral("threads"), logFromThreads},
    {QStringLiteral("again"), initializeAgain},
    {QStringLiteral("fatal"), logFatally},
    {QStringLiteral("handler"), callHandlerFatally},
    {QStringLiteral("categories"), logCategories},
    {QStringLiteral("exit-twice"), exitTwice},
    {QStringLiteral("exit-late"), exitWhileClosing},
    {QStringLiteral("signals"), waitForSignals},
    {QStringLiteral("flood"), floodSignals},
    {QStringLiteral("descriptor"), writeToDescriptor},
#ifdef Q_OS_WIN
    {QStringLiteral("console"), raiseConsoleEvent},
#endif
};

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // Windows: this process has no console
    const QCoreApplication application(argc, argv);
    const QLoggingCategory early(earlyName);
    AppConfig &config = *AppConfig::instance();
    config.addArgument("--do", 1, "<word> Says what to do");
    config.addArgument("--plain", 0, nullptr);
    config.showBuiltinHelp = !AppConfig::argumentExits(QStringLiteral("plain"));
    if (config.initialize(QStringLiteral("probe"), QStringLiteral("1.2.3.4")))
        return 0;
    const QString action = config.argumentValue(QStringLiteral("do"), QStringLiteral("nothing"));
    if (action == QLatin1String("categories"))
        print(QStringLiteral("early debug=%1").arg(early.isDebugEnabled()));
    return actions.at(action)();
}
