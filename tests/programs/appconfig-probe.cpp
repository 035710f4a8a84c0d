// Starts up through AppConfig and then does what the word behind "--do" asks for, so that a test can look at
// a real process from outside.

#include <AppConfig.h>

#include <QCoreApplication>
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
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // Windows: this process has no console
    const QCoreApplication application(argc, argv);
    AppConfig &config = *AppConfig::instance();
    config.addArgument("--do", 1, "<word> Says what to do");
    config.addArgument("--plain", 0, nullptr);
    config.showBuiltinHelp = !AppConfig::argumentExits(QStringLiteral("plain"));
    if (!config.initialize(QStringLiteral("probe"), QStringLiteral("1.2.3.4")))
        actions.at(config.argumentValue(QStringLiteral("do"), QString()))();
    return 0;
}
