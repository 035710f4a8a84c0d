// The runtime utilities: the lock alone and contended, a property object written and read, the guard of an
// executable, each beside a peer.

#include <InitProperties.h>
#include <RunGuard.h>
#include <hxspinlocker.h>

#include <QCoreApplication>
#include <QLockFile>
#include <QMutex>
#include <QSettings>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>
#include <mutex>

namespace {

QString directory;

// ---- lock

struct SpinLocker {
    HXAtomicLock lock;
    template <typename Section> void hold(Section section)
    {
        const HXSpinLocker locker(&lock, Q_FUNC_INFO, "");
        section();
    }
};

struct QtRecursiveMutex {
    QRecursiveMutex mutex;
    template <typename Section> void hold(Section section)
    {
        const QMutexLocker locker(&mutex);
        section();
    }
};

struct StdRecursiveMutex {
    std::recursive_mutex mutex;
    template <typename Section> void hold(Section section)
    {
        const std::lock_guard<std::recursive_mutex> guard(mutex);
        section();
    }
};

template <typename Lock> void lockOnce(benchmark::State &state)
{
    static Lock lock;
    static int shared = 0;
    for (auto _ : state)
        lock.hold([] { benchmark::DoNotOptimize(++shared); });
}
BENCHMARK_TEMPLATE(lockOnce, SpinLocker)->ThreadRange(1, 4)->UseRealTime();
BENCHMARK_TEMPLATE(lockOnce, QtRecursiveMutex)->ThreadRange(1, 4)->UseRealTime();
BENCHMARK_TEMPLATE(lockOnce, StdRecursiveMutex)->ThreadRange(1, 4)->UseRealTime();

template <typename Lock> void lockNested(benchmark::State &state)
{
    Lock lock;
    int value = 0;
    for (auto _ : state)
        lock.hold([&] { lock.hold([&] { benchmark::DoNotOptimize(++value); }); });
}
BENCHMARK_TEMPLATE(lockNested, SpinLocker);
BENCHMARK_TEMPLATE(lockNested, QtRecursiveMutex);
BENCHMARK_TEMPLATE(lockNested, StdRecursiveMutex);

// ---- persistence

class Patient : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name MEMBER m_name)
    Q_PROPERTY(int age MEMBER m_age)
    Q_PROPERTY(double weight MEMBER m_weight)
    Q_PROPERTY(bool intubated MEMBER m_intubated)

    QString m_name = QStringLiteral("M\u00fcller, \"Anna\"");
    int m_age = 42;
    double m_weight = 61.5;
    bool m_intubated = true;
};

QString file(const char *name)
{
    return directory + QLatin1Char('/') + QLatin1String(name);
}

void writeProperties(benchmark::State &state)
{
    const Patient patient;
    for (auto _ : state)
        InitProperties::write(&patient, file("properties.ini"), QStringLiteral("Patient"));
}
BENCHMARK(writeProperties)->Unit(benchmark::kMicrosecond);

// The same values with QSettings alone.
void peerQSettingsWrite(benchmark::State &state)
{
    for (auto _ : state) {
        QSettings settings(file("peer.ini"), QSettings::IniFormat);
        settings.setIniCodec("UTF-8");
        settings.beginGroup(QStringLiteral("Patient"));
        settings.setValue(QStringLiteral("name"), QStringLiteral("M\u00fcller, \"Anna\""));
        settings.setValue(QStringLiteral("age"), QStringLiteral("42"));
        settings.setValue(QStringLiteral("weight"), QStringLiteral("61.5"));
        settings.setValue(QStringLiteral("intubated"), QStringLiteral("true"));
        settings.endGroup();
        settings.sync();
    }
}
BENCHMARK(peerQSettingsWrite)->Unit(benchmark::kMicrosecond);

void readProperties(benchmark::State &state)
{
    Patient patient;
    InitProperties::write(&patient, file("properties.ini"), QStringLiteral("Patient"));
    for (auto _ : state)
        InitProperties::read(&patient, file("properties.ini"), QStringLiteral("Patient"));
}
BENCHMARK(readProperties)->Unit(benchmark::kMicrosecond);

void peerQSettingsRead(benchmark::State &state)
{
    InitProperties::write(std::make_unique<Patient>().get(), file("peer.ini"), QStringLiteral("Patient"));
    for (auto _ : state) {
        const QSettings settings(file("peer.ini"), QSettings::IniFormat);
        for (const char *key : {"Patient/name", "Patient/age", "Patient/weight", "Patient/intubated"})
            benchmark::DoNotOptimize(settings.value(QLatin1String(key)));
    }
}
BENCHMARK(peerQSettingsRead)->Unit(benchmark::kMicrosecond);

// ---- guard

// What an executable pays at its start and its end.
void runGuard(benchmark::State &state)
{
    for (auto _ : state) {
        RunGuard guard(directory);
        if (!guard.tryToRun())
            state.SkipWithError("another instance is running");
    }
}
BENCHMARK(runGuard)->Unit(benchmark::kMicrosecond);

void runGuardRefused(benchmark::State &state)
{
    RunGuard running(directory);
    running.tryToRun();
    RunGuard refused(directory);
    for (auto _ : state)
        benchmark::DoNotOptimize(refused.tryToRun());
}
BENCHMARK(runGuardRefused)->Unit(benchmark::kMicrosecond);

void peerQLockFile(benchmark::State &state)
{
    for (auto _ : state) {
        QLockFile guard(file("peer.lock"));
        if (!guard.tryLock(0))
            state.SkipWithError("another instance is running");
    }
}
BENCHMARK(peerQLockFile)->Unit(benchmark::kMicrosecond);

} // namespace

int main(int argc, char **argv)
{
    benchmark::Initialize(&argc, argv);
    const QCoreApplication application(argc, argv);
    const QTemporaryDir temporary;
    directory = temporary.path();
    qputenv("TMPDIR", directory.toLocal8Bit());
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}

#include "bm_utilities.moc"
