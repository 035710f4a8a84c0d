// soak [--minutes N]: drives the parts of the library together for N minutes (1) and looks for what only time
// shows: memory, descriptors or child processes that add up; messages, frames, timeouts, checks or reports
// that get lost. Prints a line per minute and a report; exit status 1 if a number is wrong. For Linux.
//
// The loads run a few seconds first. What the process holds is compared between that pause and the end, when
// nothing is under way.

#include "SoakLoads.h"

#include <AppConfig.h>
#include <NetworkManager.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QTemporaryDir>

#include <algorithm>
#include <cstdio>

#include <malloc.h>
#include <unistd.h>

namespace {

constexpr int warmUp = 15; // s
// Without the C library's caches of freed blocks every byte is accounted for.
constexpr char tunables[] = "glibc.malloc.tcache_count=0";
constexpr int patience = 60; // s, for the loads to become idle

// ---- what the process holds

QList<QByteArray> wordsOf(const QString &path)
{
    QFile file(path);
    file.open(QIODevice::ReadOnly);
    return file.readAll().split(' ');
}

qint64 residentMemory()
{
    return wordsOf(QStringLiteral("/proc/self/statm")).value(1).toLongLong() * ::sysconf(_SC_PAGESIZE);
}

qint64 heapInUse()
{
    const auto info = mallinfo2();
    return qint64(info.uordblks) + qint64(info.hblkhd);
}

qint64 openDescriptors()
{
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::AllEntries | QDir::System).size();
}

// Running ones and zombies.
qint64 childProcesses()
{
    const QByteArray self = QByteArray::number(QCoreApplication::applicationPid());
    const QStringList processes = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")});
    return std::count_if(processes.begin(), processes.end(), [&self](const QString &process) {
        return wordsOf(QStringLiteral("/proc/%1/stat").arg(process)).value(3) == self;
    });
}

struct Measure {
    const char *name;
    qint64 (*now)();
    qint64 slack; // what it may grow by
};

const Measure measures[] = {
    {"resident memory, bytes", residentMemory, 4 << 20}, // the C library keeps memory in reserve
    {"heap in use, bytes", heapInUse, 256 << 10}, // caches fill up
    {"open descriptors", openDescriptors, 0},
    {"child processes", childProcesses, 0},
};

// ---- the run

void wait(int seconds)
{
    QEventLoop loop;
    QTimer::singleShot(1000 * seconds, &loop, SLOT(quit()));
    loop.exec();
}

void printProgress(int minute, const SoakLoads &loads)
{
    std::printf("minute %d: resident %lld KiB, %lld descriptors", minute, residentMemory() / 1024,
                openDescriptors());
    for (const auto &load : loads)
        std::printf(", %s %lld", load->counts().front().name, load->counts().front().value.load());
    std::printf("\n");
    std::fflush(stdout);
}

// Lets the loads work, and then waits until nothing is under way any more.
void work(const SoakLoads &loads, int minutes, int seconds)
{
    for (const auto &load : loads)
        load->start();
    wait(seconds);
    for (int minute = 1; minute <= minutes; ++minute) {
        wait(60);
        printProgress(minute, loads);
    }
    for (const auto &load : loads)
        load->stop();
    const auto isIdle = [](const auto &load) { return load->isIdle(); };
    for (int i = 0; i < patience && !std::all_of(loads.begin(), loads.end(), isIdle); ++i)
        wait(1);
    NetworkManager::instance()->accessManager()->clearConnectionCache();
    wait(2);
}

const char *verdict(bool good, bool *allGood)
{
    *allGood = *allGood && good;
    return good ? "" : "  WRONG";
}

bool printCounts(const SoakLoads &loads)
{
    bool good = true;
    for (const auto &load : loads) {
        for (const SoakCount &count : load->counts()) {
            const qint64 value = count.value;
            std::printf("%-34s %10lld%s\n", count.name, value,
                        verdict(value >= 0 && value <= count.most, &good));
        }
    }
    return good;
}

bool printUsage(const std::vector<qint64> &start)
{
    bool good = true;
    std::printf("\n%-34s %10s %10s %10s %10s\n", "", "start", "end", "growth", "allowed");
    for (std::size_t i = 0; i < start.size(); ++i) {
        const Measure &measure = measures[i];
        const qint64 end = measure.now();
        const qint64 growth = end - start[i];
        std::printf("%-34s %10lld %10lld %10lld %10lld%s\n", measure.name, start[i], end, growth,
                    measure.slack, verdict(growth <= measure.slack, &good));
    }
    return good;
}

// Whether all numbers are good.
bool soak(const SoakLoads &loads, int minutes)
{
    work(loads, 0, warmUp);
    std::vector<qint64> start;
    for (const Measure &measure : measures)
        start.push_back(measure.now());

    work(loads, minutes, 0);
    const bool nothingLost = printCounts(loads);
    return printUsage(start) && nothingLost;
}

} // namespace

int main(int argc, char **argv)
{
    if (qgetenv("GLIBC_TUNABLES") != tunables && qputenv("GLIBC_TUNABLES", tunables))
        ::execv("/proc/self/exe", argv);
    const QTemporaryDir directory;
    qputenv("APPDATA", directory.path().toLocal8Bit());
    QByteArray options[] = {"--null", "--logoutput", directory.filePath(QStringLiteral("log")).toLocal8Bit()};
    std::vector<char *> arguments(argv, argv + argc);
    for (QByteArray &option : options)
        arguments.push_back(option.data());
    int count = int(arguments.size());
    arguments.push_back(nullptr);

    const QCoreApplication application(count, arguments.data());
    AppConfig *const config = AppConfig::instance();
    config->addArgument("--minutes", 1, "<number> Minutes to run, 1 without this option");
    if (config->initialize(QStringLiteral("soak"), QString()))
        return 0;
    SoakLoads loads;
    addLocalLoads(directory.path(), &loads);
    addOutsideLoads(directory.path(), &loads);
    const bool good = soak(loads, config->argumentValue(QStringLiteral("--minutes"), 1));
    loads.clear();
    return good ? 0 : 1;
}
