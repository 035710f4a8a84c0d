// The clinical model: look-ups, heart-rate validation and the building of the libraries, each beside a peer.
// The column "allocations" counts the heap blocks that one iteration asks for (with the GNU C library only).

#include <ECGLibrary.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <map>
#include <string>
#include <utility>

namespace {

std::atomic<long> allocations{0};

} // namespace

#ifdef __GLIBC__
extern "C" {
void *__libc_malloc(std::size_t size); // NOLINT(bugprone-reserved-identifier)

void *malloc(std::size_t size)
{
    allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(size);
}
}
#endif

namespace {

// Counts the allocations of a loop: started right before it, reported after it.
class AllocationCount {
public:
    void report(benchmark::State &state) const
    {
        state.counters["allocations"] =
            benchmark::Counter(double(allocations - m_start), benchmark::Counter::kAvgIterations);
    }

private:
    long m_start = allocations;
};

template <typename Function> void measure(benchmark::State &state, Function function)
{
    function(); // what is only done once stays out of the count
    const AllocationCount count;
    for (auto _ : state)
        benchmark::DoNotOptimize(function());
    count.report(state);
}

// ---- look-up ----

void getECGConfig(benchmark::State &state, const char *age, int rhythm)
{
    const ECGLibraries &libraries = ECGLibraries::Instance();
    const QString ageText = QString::fromLatin1(age);
    measure(state, [&] { return libraries.getECGConfig(ageText, rhythm); });
}
BENCHMARK_CAPTURE(getECGConfig, adult, "adult", 7);
BENCHMARK_CAPTURE(getECGConfig, child, "child", 213);
BENCHMARK_CAPTURE(getECGConfig, infant, "infant", 138);
BENCHMARK_CAPTURE(getECGConfig, absent, "baby", 999);

// One standard map from age and rhythm, without the mark for the script engine.
void peerStandardMap(benchmark::State &state)
{
    std::map<std::pair<std::string, int>, ECGConfig *> configs;
    for (const char *age : {"adult", "child", "infant", "baby"}) {
        for (ECGConfig *config : ECGLibrary::getDefaultECGLibrary()->configs())
            configs.emplace(std::pair(age, config->getRhythm()), config);
    }
    const std::pair<std::string, int> key("infant", 138);
    measure(state, [&] { return configs.find(key)->second; });
}
BENCHMARK(peerStandardMap);

// ---- validation ----

void validateHeartRate(benchmark::State &state, int rhythm)
{
    ECGConfig *const config = ECGLibraries::Instance().getECGConfig(QString(), rhythm);
    int heartRate = 0;
    measure(state, [&] { return config->validateHeartRate(heartRate++ & 255); });
}
BENCHMARK_CAPTURE(validateHeartRate, range, 7);
BENCHMARK_CAPTURE(validateHeartRate, fixed, 175);
BENCHMARK_CAPTURE(validateHeartRate, discrete, 103);
BENCHMARK_CAPTURE(validateHeartRate, ratios, 166);
BENCHMARK_CAPTURE(validateHeartRate, amplitude, 146);

// Two numbers of a structure instead of a dictionary.
void peerClamp(benchmark::State &state)
{
    int bounds[] = {20, 200};
    int heartRate = 0;
    measure(state, [&] {
        benchmark::DoNotOptimize(bounds);
        return std::clamp(heartRate++ & 255, bounds[0], bounds[1]);
    });
}
BENCHMARK(peerClamp);

// ---- building ----

void buildLibraries(benchmark::State &state)
{
    ECGLibraries::Instance(); // deletes the last libraries at exit
    measure(state, [] {
        ECGLibrary::cleanup();
        ECGLibrary::m_DefaultECGLibrary = ECGLibrary::m_ChildECGLibrary = nullptr;
        ECGLibrary::m_InfantECGLibrary = ECGLibrary::m_BabyECGLibrary = nullptr;
        ECGLibrary::getChildECGLibrary();
        ECGLibrary::getInfantECGLibrary();
        return ECGLibrary::getBabyECGLibrary();
    });
}
BENCHMARK(buildLibraries)->Unit(benchmark::kMicrosecond);

// The four libraries as a JSON document with the five commonest parameters, parsed and converted.
void peerJsonTables(benchmark::State &state)
{
    QJsonArray rows;
    for (int age = 0; age < 4; ++age) {
        for (const ECGConfig *config : ECGLibrary::getDefaultECGLibrary()->configs())
            rows.append(QJsonObject{{QStringLiteral("RhythmTypeName"), config->getRhythmTypeName()},
                                    {QStringLiteral("RateMin"), config->getHeartRateMin()},
                                    {QStringLiteral("RateMax"), config->getHeartRateMax()},
                                    {QStringLiteral("MaxBPSys"), config->getSystolicBloodPressureMax()},
                                    {QStringLiteral("MaxBPDia"), config->getDiastolicBloodPressureMax()}});
    }
    const QByteArray document = QJsonDocument(rows).toJson();
    measure(state, [&] { return QJsonDocument::fromJson(document).toVariant(); });
}
BENCHMARK(peerJsonTables)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
