// olvex-sync: runs one synchronisation job for a maintenance engineer and shows what it prints.

#include "CommandLine.h"
#include "Job.h"
#include "Outcome.h"
#include "Start.h"
#include "Terminal.h"

#include <AppConfig.h>
#include <FileSync.h>

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int wrongCommandLine = 64;

const Program program{
    "olvex-sync",
    "runs one synchronisation job and shows what it prints",
    "--command TEXT [--host NAME --user NAME] [--from FILE --to FILE]",
    {
        {"--command", Option::Text, "<text> Runs this program, or this text on the host"},
        {"--arguments", Option::FreeText,
         "<text> Its arguments, separated by blanks; double quotes keep a word together", "--command"},
        {"--directory", Option::Text,
         "<path> Starts a local program in this directory, otherwise in the root of the file system",
         "--command"},
        {"--host", Option::Text, "<name> Runs the command on this host, through ssh", "--user"},
        {"--user", Option::Text,
         "<name> Account on the host; its key is certificates/<name>_rsa of the share path", "--host"},
        {"--from", Option::Text, "<file> Copies this local file, after a command on a host has succeeded",
         "--to"},
        {"--to", Option::Text, "<file> The copy; an old one is removed first", "--from"},
        {"--limit", Option::Number, "<seconds> Stops the command after this time; a copy cannot be stopped",
         "--command"},
        {"--dry-run", Option::Flag, "Prints what would run, and runs nothing"},
        {"--quiet", Option::Flag, "Says nothing of a job that has succeeded"},
    },
    R"(What it runs:

  --command C                     the program C, here
  --command C --host H --user U   ssh U@H C
     the same --from F --to T     that, and if it exits with 0, copies the local
                                  file F to T
  --from F --to T                 nothing; only copies the local file F to T

The command's output and errors come as it prints them; the outcome follows on
standard error.
)",
    R"(olvex-sync --command "df -h" --host manikin-7 --user olvex --limit 20
olvex-sync --command rsync --arguments "-a /srv/logs /media/stick"
olvex-sync --dry-run --command uptime --host manikin-7 --user olvex
)",
    R"(n        that of the command
64       the command line is wrong; nothing was run
124      the limit was reached
128 + n  ended by signal n
254      the command found a full disk
255      the command could not run, the copy failed, or ssh did
)",
    wrongCommandLine};

int signalNumber = 0; // of the signal that has ended the program

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const CommandLine line(program, QCoreApplication::arguments());
    if (line.isAnswered())
        return finish(line.status());
    if (startWithoutTrace(line, argc, argv, program.name))
        return finish(0);

    const Job job(line);
    const QString problem = job.problem();
    if (!problem.isEmpty())
        return fail(wrongCommandLine, problem);
    if (line.has("--dry-run")) {
        print(job.shown());
        return finish(0);
    }

    AppConfig *const config = AppConfig::instance();
    QObject::connect(config, &AppConfig::shutdownRequested, config,
                     [](int signal) { signalNumber = signal; });
    AppConfig::cleanExit();

    FileSync::setRemoteUser(job.user);
    auto *const sync = new FileSync(AppConfig::application()); // dies with the application at the latest
    Outcome outcome(job, *sync);
    QTimer limit;
    QObject::connect(&limit, &QTimer::timeout, sync, [&outcome] { outcome.stopAtLimit(); });
    if (job.limit > 0)
        limit.start(job.limit * 1000);
    // Inside the event loop, where a start that fails at once can end it.
    QTimer starter;
    starter.setSingleShot(true);
    QObject::connect(&starter, &QTimer::timeout, sync, [&job, sync] { job.start(*sync); });
    starter.start(0);

    const int status = QCoreApplication::exec();
    if (signalNumber != 0)
        return fail(128 + signalNumber, QStringLiteral("Stopped by signal %1.").arg(signalNumber));
    if (status != 0 || !line.has("--quiet"))
        fail(status, outcome.words());
    return finish(status);
}
