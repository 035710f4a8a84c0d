#include "AppConfig.h"

#include "AppConfig_p.h"
#include "platform/Platform.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstring>

[[gnu::init_priority(101)]] const QList<AppConfig::cmdArg_t> AppConfig::cmdArgs = {
    {"--disablestamps", 0, "Disables timestamp in print output"},
    {"--disablecrashdump", 0, "Disables crash dump handler"},
    {"--debugLevel", 1, "<level> Sets level of debug output"},
    {"--nodebug", 0, "Disables all debug output"},
    {"--logoutput", 1, "<path> Set debug to log to file"},
    {"--null", 0, "Sends all debug and std out to null device"},
    {"--tmppath", 1, "<path> Sets tmp path for application"},
    {"--confpath", 1, "<path> Sets configuration path (/etc) for application"},
    {"--sharepath", 1, "<path> Sets root share path for application"},
    {"--factorydatapath", 1, "<path> Sets factory data path for application"},
    {"--varpath", 1, "<path> Sets var (variable data) path for application"},
    {"--varetcpath", 1, "<path> Sets variable user configuration data path for application"},
    {"--varlogpath", 1, "<path> Sets variable user log data path for application"},
    {"--pluginpath", 1, "<path> Sets where plukruf can find its plugins"},
    {"--binpath", 1, "<path> Sets binary path for application"},
    {"--version", 0, "Prints version information about application"},
    {"--help", 0, "Shows this help"},
    {"--hxcomtrace", 0, "Enables traces for HXCom"},
    {"--systemversion", 0, "Prints system version"},
    {"--redirectoutput", 1, "<path> Redirect all std output and debug output to a given path"},
    {"--qmlpath", 1, "<path> Sets path qml root path for application (used for debugging)"},
    {"--dravikpath", 1, "<path> Sets Dravik path for application"},
    {"--persistentpath", 1, "<path> Sets persistent storage path for application"},
};

namespace {

void printBanner()
{
    std::printf("%s\n(c) Brantel Medical\n", qPrintable(QCoreApplication::applicationName()));
}

void printSystemVersion()
{
    std::printf("System version: %s\n", qPrintable(AppConfig::systemVersion()));
}

void printOption(const AppConfig::cmdArg_t &argument)
{
    std::printf(" %s %s\n", argument.name, argument.help ? argument.help : "Help not available");
}

} // namespace

void AppConfig::addArgument(const char *name, qint32 valueCount, const char *help)
{
    m_arguments.append({name, valueCount, help});
}

AppConfig::cmdArgInfo_t AppConfig::getArgInfo(QString name) const
{
    return findArgument(name, QCoreApplication::arguments());
}

// Takes the argument list because QCoreApplication::arguments() makes it anew on every call.
AppConfig::cmdArgInfo_t AppConfig::findArgument(QString name, const QStringList &arguments) const
{
    fixArg(name);
    cmdArgInfo_t info{arguments.indexOf(name), -1};
    if (info.index == -1)
        return info;

    const QByteArray localName = name.toLocal8Bit();
    const auto isNamed = [&localName](const cmdArg_t &argument) { return localName == argument.name; };
    for (const QList<cmdArg_t> &list : {cmdArgs, m_arguments}) {
        const auto found = std::find_if(list.cbegin(), list.cend(), isNamed);
        if (found == list.cend())
            continue;
        getArgValueCnt(*found, info);
        break;
    }
    return info;
}

void AppConfig::getArgValueCnt(const cmdArg_t &argument, cmdArgInfo_t &info) const
{
    info.valueCount = argument.valueCount;
    if (argument.valueCount != -1)
        return;
    // Deliberate: an option with a variable number of values has none. The count starts at the option itself,
    // where the leading "--" of the next option should end it.
    const QString text = QCoreApplication::arguments().value(info.index);
    info.valueCount = text.isEmpty() ? 1 : 0;
}

void AppConfig::fixArg(QString &name) const
{
    if (!name.startsWith(QLatin1String("--")))
        name.prepend(QLatin1String("--"));
}

QString AppConfig::argumentValue(const QString &name, const QString &defaultValue) const
{
    const QStringList arguments = QCoreApplication::arguments();
    const cmdArgInfo_t info = findArgument(name, arguments);
    const QString value = info.valueCount < 1 ? QString() : arguments.value(info.index + 1);
    return value.isEmpty() ? defaultValue : value;
}

qint32 AppConfig::argumentValue(const QString &name, qint32 defaultValue) const
{
    bool converts = false;
    const qint32 value = argumentValue(name, QString()).toInt(&converts);
    return converts ? value : defaultValue;
}

QStringList AppConfig::argumentValues(const QString &name) const
{
    const QStringList arguments = QCoreApplication::arguments();
    const cmdArgInfo_t info = findArgument(name, arguments);
    QStringList values;
    for (qint32 i = 1; i <= info.valueCount; ++i)
        values << arguments.value(info.index + i);
    return values;
}

bool AppConfig::argumentExits(const QString &name)
{
    return instance()->getArgInfo(name).index != -1;
}

bool AppConfig::isGiven(const char *name) const
{
    return getArgInfo(QString::fromLatin1(name)).valueCount != -1;
}

bool AppConfig::parseApplicationArgs()
{
    readDirectoryOptions();
    nullOutput = isGiven("--null");
    openLogFile();
    redirectOutput();
    disableCrashHandler = isGiven("--disablecrashdump");
    if (printRequestedInformation())
        return true;

    {
        const HXSpinLocker locker(&elapsedTimerLock, "", "");
        elapsedTimer.start();
    }
    if (isGiven("--debugLevel"))
        DebugInfoEnterExit::debugLevel = argumentValue(QStringLiteral("--debugLevel"), 0);
    if (isGiven("--nodebug"))
        redirectStdFilesToNull();
    else
        installMessageHandler();
    return false;
}

void AppConfig::openLogFile()
{
    logOutputFile.close();
    logOutputFile.setFileName(argumentValue(QStringLiteral("--logoutput"), QString()));
    if (logOutputFile.fileName().isEmpty())
        return;
    if (!platform::openForAppending(logOutputFile))
        std::fprintf(stderr, "Unable to open %s for writting\n", qPrintable(logOutputFile.fileName()));
}

void AppConfig::redirectOutput()
{
    const QByteArray path = argumentValue(QStringLiteral("--redirectoutput"), QString()).toUtf8();
    if (path.isEmpty())
        return;
    freopenstd(path.constData(), "a", stdout);
    freopenstd(path.constData(), "a", stderr);
}

bool AppConfig::printRequestedInformation()
{
    const bool versionGiven = isGiven("--version");
    const bool systemVersionGiven = isGiven("--systemversion");
    const bool helpGiven = isGiven("--help");
    if (versionGiven)
        printVersion();
    if (systemVersionGiven) {
        printBanner();
        printSystemVersion();
    }
    if (helpGiven)
        printHelp();
    return versionGiven || systemVersionGiven || helpGiven;
}

void AppConfig::printVersion() const
{
    printBanner();
    std::printf("Version: %s\n", qPrintable(m_version));
}

void AppConfig::printHelp() const
{
    printVersion();
    printSystemVersion();
    std::printf("\nCommandline options:\n\n");
    if (showBuiltinHelp)
        std::for_each(cmdArgs.cbegin(), cmdArgs.cend(), printOption);
    std::for_each(m_arguments.cbegin(), m_arguments.cend(), printOption);
    std::printf("\n");
}

void AppConfig::installMessageHandler()
{
    QString pattern = QStringLiteral("%{if-warning}Warning | %{endif}%{if-critical}Critical | %{endif}"
                                     "%{if-fatal}Fatal | %{endif}%{function} | %{message}");
    if (isGiven("--disablestamps"))
        disableTimestamp = true;
    else
        pattern.prepend(QLatin1String("%{time h:mm:ss.zzz} | "));
    qSetMessagePattern(pattern);
    installLogHandler();
}
