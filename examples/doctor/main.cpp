// olvex-doctor: tells a field engineer what an Olvex executable finds when it starts on this machine.

#include "CommandLine.h"
#include "ServiceTable.h"
#include "Settings.h"
#include "Start.h"
#include "Tasks.h"

#include <AppConfig.h>
#include <OXUrls.h>
#include <RunGuard.h>

#include <QCoreApplication>

#include <cstdio>

namespace {

const Program program{
    "olvex-doctor",
    "tells what an Olvex executable finds when it starts, and what is wrong",
    "[TASK] [OPTION...]",
    {
        {"--application", Option::Text,
         "<name> Looks at the settings of this application; otherwise at those of the only one there is",
         "report --check --export"},
        {"--environment", Option::Text, "<name> Looks at the services of another environment",
         "report --check --export"},
        {"--region", Option::Text, "<name> Looks at the services of another region",
         "report --check --export"},
        {"--export", Option::Text,
         "<file> Writes report, settings, service table and the ends of the log files to a new file",
         Option::task},
        {"--check", Option::List, "<service> Probes all services, or those named", Option::task},
        {"--selftest", Option::Flag, "Probes services that the doctor itself serves", "--check"},
        {"--timeout", Option::Number, "<seconds> How long an answer may take, otherwise 10", "--check"},
        {"--watch", Option::Number,
         "<seconds> Probes again and again after this time, and prints each change, until Ctrl+C", "--check"},
        {"--rhythms", Option::Optional, "<age> Prints the ECG rhythms of an adult, child, infant or baby",
         Option::task},
        {"--rhythm", Option::Text, "<id> Prints how a rhythm answers a heart rate", Option::task},
        {"--rate", Option::Number, "<beats/min> The heart rate, otherwise the rhythm's own", "--rhythm"},
        {"--age", Option::Text, "<age> The age, otherwise adult", "--rhythm"},
        {"--products", Option::Flag, "Prints the manikin types and their products", Option::task},
        {"--decode", Option::Optional,
         "<file> Lists the frames of a captured device stream; without a file, or with -, of standard input",
         Option::task},
        {"--hex", Option::Flag,
         "The capture is text in hexadecimal, also with offsets as hexdump prints them", "--decode"},
        {"--encode", Option::Text, "<hex> Prints the device frame of a message", Option::task},
        {"--single-instance", Option::Flag, "Runs until Ctrl+C unless another instance does", Option::task},
        {"--json", Option::Flag, "Prints any answer as JSON"},
    },
    "Without a task it prints its report. It changes nothing on the machine.\n",
    "olvex-doctor --application OlvexPlayer --confpath /opt/olvex/data/etc\n"
    "olvex-doctor --check --environment staging --timeout 3\n"
    "olvex-doctor --export report.txt\n",
    "0  nothing is wrong\n"
    "1  something is, or the task failed\n"
    "2  the command line is wrong; nothing was done\n"
    "3  another instance is running\n",
    2};

const struct {
    const char *option;
    int (*run)(const CommandLine &line);
} tasks[] = {
    {"", runReport},           {"--export", runReport}, {"--check", runCheck},
    {"--rhythms", runRhythms}, {"--rhythm", runRhythm}, {"--products", runProducts},
    {"--decode", runDecode},   {"--encode", runEncode}, {"--single-instance", runSingleInstance},
};

// Puts the deployment in force that is asked for, else that of the settings. An unknown one is refused when
// it was asked for.
QString chooseDeployment(const CommandLine &line)
{
    const SettingsFile settings = settingsInForce(line.value("--application", onlyApplication()));
    OXUrls::instance()->setEnvironment(line.value("--environment", settings.environment()));
    OXUrls::instance()->setRegion(line.value("--region", settings.region()));

    QVector<Problem> problems;
    const ServiceTable services(problems);
    const auto refusal = [&](const char *option, const char *sentence, const QStringList &known) {
        if (!line.has(option) || !problems.isEmpty() || known.contains(line.value(option)))
            return QString();
        return text(sentence).arg(line.value(option),
                                  known.isEmpty() ? text("the service table names none")
                                                  : text("choose from ") + known.join(text(", ")));
    };
    const QString sentence =
        refusal("--environment", "There is no environment \"%1\": %2.", services.environments.keys());
    return sentence.isEmpty() ? refusal("--region", "There is no region \"%1\": %2.", services.regions())
                              : sentence;
}

} // namespace

int runSingleInstance(const CommandLine &)
{
    RunGuard guard(QStringLiteral("olvex-doctor"));
    if (!guard.tryToRun())
        return fail(3, text("Another instance is running."));
    AppConfig::cleanExit();
    print(text("This is the only instance; it runs until Ctrl+C.\n"));
    std::fflush(stdout);
    return QCoreApplication::exec();
}

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const CommandLine line(program, QCoreApplication::arguments());
    if (line.isAnswered())
        return finish(line.status());
    if (startWithoutTrace(line, argc, argv, program.name, {text("--logoutput")}))
        return finish(0);
    const QString refusal = chooseDeployment(line);
    if (!refusal.isEmpty())
        return fail(program.refusal, refusal);

    const auto chosen = std::find_if(std::begin(tasks), std::end(tasks), [&line](const auto &candidate) {
        return line.task() == text(candidate.option);
    });
    return finish(chosen->run(line));
}
