// olvex-sync: runs one synchronisation job for a maintenance engineer and shows what it prints.

#include <AppConfig.h>
#include <FileSync.h>

#include <QCoreApplication>
#include <QLoggingCategory>
#include <QMetaEnum>
#include <QTimer>

#include <cstdio>

#ifdef Q_OS_WIN
#    include <fcntl.h>
#    include <io.h>
#endif

namespace {

constexpr int wrongCommandLine = 64;
constexpr int limitReached = 124;
constexpr int signalBase = 128;

int signalStatus = 0; // of the signal that has ended the program

struct Option {
    const char *name;
    const char *help;
};

constexpr Option options[] = {
    {"--command", "<text> Runs this program, or this text on the host"},
    {"--arguments", "<text> Its arguments, separated by blanks; double quotes keep a word together"},
    {"--directory", "<path> Starts a local program in this directory"},
    {"--host", "<name> Runs the command on this host"},
    {"--user", "<name> Account on the host"},
    {"--from", "<path> Copies this local file, after a command on a host has succeeded"},
    {"--to", "<path> The copy; an old one is removed first"},
    {"--limit", "<seconds> Stops the job after this time"},
};

constexpr char whatItRuns[] = R"(What it runs:

 --command C                            the program C, here
 --command C --host H --user U          ssh U@H C, with the key certificates/U_rsa of the share path
 --command C --host H --user U --from F --to T
                                        the same, and if that exits with 0, copies the local file F to T
 --from F --to T                        nothing; only copies the local file F to T

--arguments follow the command. Without --directory, programs start in the root of the file system.
The exact line is logged when it starts.

Exit status: that of the command, 255 for a job that could not run or copy, 254 for a full disk,
64 for a wrong command line, 124 when the limit was reached, 128 + n after signal n.
)";

QString value(const char *option)
{
    return AppConfig::instance()->argumentValue(QString::fromLatin1(option), QString());
}

struct Job {
    QString command = value("--command");
    QString arguments = value("--arguments");
    QString directory = value("--directory");
    QString host = value("--host");
    QString user = value("--user");
    QString from = value("--from");
    QString to = value("--to");
    int limit = AppConfig::instance()->argumentValue(QStringLiteral("--limit"), 0);

    const char *problem() const
    {
        if (from.isEmpty() != to.isEmpty())
            return "--from and --to go together";
        if (command.isEmpty() && from.isEmpty())
            return "Nothing to do: give --command or --from and --to, or see --help";
        if (host.isEmpty() != user.isEmpty())
            return "--host and --user go together";
        if (!command.isEmpty() && !from.isEmpty() && host.isEmpty())
            return "A copy follows only a command on a --host";
        if (limit < 0 || limit > 24 * 3600)
            return "--limit goes up to a day";
        return nullptr;
    }

    void start(FileSync &sync) const
    {
        if (command.isEmpty())
            sync.syncFile(from, to, host, false);
        else if (!from.isEmpty())
            sync.syncFile(command + QLatin1Char(' ') + arguments, from, to, host, true);
        else if (!host.isEmpty())
            sync.executeCommand(command, {arguments}, host, QString());
        else
            sync.executeCommand(command, QProcess::splitCommand(arguments), host, directory);
    }
};

// The output is shown as it comes: rsync and its like draw their own progress on a terminal.
void showOutputOf(FileSync &sync)
{
#ifdef Q_OS_WIN
    _setmode(_fileno(stdout), _O_BINARY); // line ends are the child's own
#endif
    auto *const process = sync.findChild<QProcess *>();
    QObject::connect(process, &QProcess::readyReadStandardOutput, process, [process] {
        const QByteArray output = process->readAllStandardOutput();
        std::fwrite(output.constData(), 1, std::size_t(output.size()), stdout);
        std::fflush(stdout);
    });
}

void finish(int status)
{
    const char *const name = QMetaEnum::fromType<FileSync::fileSyncStatus>().valueToKey(status);
    std::printf("%s (%d)\n", name ? name : "Failed", status);
    AppConfig::exit(status & 0xff);
}

void stop(FileSync *sync)
{
    std::puts("Stopped at the limit");
    sync->deleteLater();
    AppConfig::exit(limitReached);
}

} // namespace

int main(int argc, char **argv)
{
    QLoggingCategory::setFilterRules(QStringLiteral("Olvex.AppConfig=false"));
    const QCoreApplication application(argc, argv);
    AppConfig *const config = AppConfig::instance();
    for (const Option &option : options)
        config->addArgument(option.name, 1, option.help);
    if (config->initialize(QStringLiteral("olvex-sync"), QString())) {
        if (AppConfig::argumentExits(QStringLiteral("--help")))
            std::fputs(whatItRuns, stdout);
        return 0;
    }

    const Job job;
    if (const char *const problem = job.problem()) {
        std::fprintf(stderr, "%s\n", problem);
        return wrongCommandLine;
    }

    QObject::connect(config, &AppConfig::shutdownRequested, config,
                     [](int signal) { signalStatus = signalBase + signal; });
    AppConfig::cleanExit();

    FileSync::setRemoteUser(job.user);
    auto *const sync = new FileSync(config->application()); // dies with the application at the latest
    QObject::connect(sync, &FileSync::completed, sync, &finish);
    showOutputOf(*sync);
    QTimer limit;
    QObject::connect(&limit, &QTimer::timeout, sync, [sync] { stop(sync); });
    if (job.limit > 0)
        limit.start(job.limit * 1000);
    // Inside the event loop, where a start that fails at once can end it.
    QTimer starter;
    starter.setSingleShot(true);
    QObject::connect(&starter, &QTimer::timeout, sync, [&job, sync] { job.start(*sync); });
    starter.start(0);

    const int status = QCoreApplication::exec();
    return signalStatus != 0 ? signalStatus : status;
}
