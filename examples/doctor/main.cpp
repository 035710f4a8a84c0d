// olvex-doctor: tells a field engineer what an Olvex executable finds when it starts on this machine.
//
// Exit status: 0 nothing is wrong, 1 something is (or the task asked for failed), 2 the command line is
// wrong, 3 another instance is running.

#include "CheckCommand.h"
#include "ClinicalCommands.h"
#include "Examination.h"
#include "LinkCommands.h"

#include <AppConfig.h>
#include <RunGuard.h>

#include <QCoreApplication>
#include <QLoggingCategory>

#include <algorithm>
#include <cstdio>
#include <iterator>

namespace {

int printReport()
{
    const Report report = examine();
    const QByteArray text =
        AppConfig::argumentExits(QStringLiteral("--json")) ? report.toJson() : report.toText().toLocal8Bit();
    std::fputs(text.constData(), stdout);
    return report.problems.isEmpty() ? 0 : 1;
}

// --single-instance: what an executable does that must run only once.
int runSingleInstance()
{
    RunGuard guard(QStringLiteral("olvex-doctor"));
    if (!guard.tryToRun()) {
        std::fputs("Another instance is running.\n", stderr);
        return 3;
    }
    AppConfig::cleanExit();
    std::puts("This is the only instance; it runs until Ctrl+C.");
    std::fflush(stdout);
    return QCoreApplication::exec();
}

// An option of the doctor, and its task if it asks for another one than the report.
struct Option {
    const char *name;
    int valueCount;
    const char *help;
    int (*run)();
};

constexpr Option options[] = {
    {"--json", 0, "Prints the report as JSON", nullptr},
    {"--check", 0, "[service...] Probes all services, or those named, with --selftest on loopback", runCheck},
    {"--selftest", 0, "Serves what --check probes", nullptr},
    {"--environment", 1, "<name> Shows and checks the services of another environment", nullptr},
    {"--region", 1, "<name> Shows and checks the services of another region", nullptr},
    {"--rhythms", 1, "[age] Prints the ECG rhythms of an adult, child, infant or baby", runRhythms},
    {"--rhythm", 1, "<id> Prints how a rhythm answers a heart rate, with --rate and --age", runRhythm},
    {"--rate", 1, "<beats/min> Heart rate for --rhythm", nullptr},
    {"--age", 1, "<age> Age for --rhythm, adult unless given", nullptr},
    {"--products", 0, "Prints the manikin types and their products", runProducts},
    {"--decode", 1, "[file] Lists the frames of a captured device stream, by default from standard input",
     runDecode},
    {"--encode", 1, "<hex> Prints the device frame of a message", runEncode},
    {"--single-instance", 0, "Runs until Ctrl+C unless another instance does", runSingleInstance},
};

bool isAskedFor(const Option &option)
{
    return option.run && AppConfig::argumentExits(QString::fromLatin1(option.name));
}

} // namespace

int main(int argc, char **argv)
{
    // The library's trace of its own life would stand around every report; QT_LOGGING_RULES brings it back.
    QLoggingCategory::setFilterRules(
        QStringLiteral("Olvex.AppConfig.debug=false\nOlvex.ConnectivityChecker.info=false"));
    const QCoreApplication application(argc, argv);
    for (const Option &option : options)
        AppConfig::instance()->addArgument(option.name, option.valueCount, option.help);
    if (AppConfig::instance()->initialize(QStringLiteral("olvex-doctor"), QString()))
        return 0;
    chooseDeployment();

    const Option *const task = std::find_if(std::begin(options), std::end(options), isAskedFor);
    return task == std::end(options) ? printReport() : task->run();
}
