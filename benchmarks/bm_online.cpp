// Service addresses: the registry beside QUrl alone.
//
// What is compared: a look-up finds the entry of a target in a region, takes its base address, appends a path
// and, in the second pair, sets the entry's query. The peer builds the same URL with QUrl's setters from
// values that it has at hand as strings: scheme, host, path, query items. Both results are compared before
// the runs. The registry runs against the sample document and with logging as shipped (off).
//
// Each instance() leaves one connection behind. So every run starts with a new registry and makes a fixed
// number of calls; bytes_per_call is the growth of the heap in use over the run.

#include <OXUrls.h>

#include <QFile>

#include <benchmark/benchmark.h>

#ifdef __GLIBC__
#    include <malloc.h>
#endif

namespace {

constexpr benchmark::IterationCount calls = 100000;
constexpr int repetitions = 15;

const QString target = QStringLiteral("account");
const QString path = QStringLiteral("v1/login");

const QString scheme = QStringLiteral("https");
const QString host = QStringLiteral("account.eu.example.com");
const QString wholePath = QStringLiteral("/api/v1/login");
const QString items[][2] = {{QStringLiteral("client"), QStringLiteral("olvex-tablet")},
                            {QStringLiteral("protocol"), QStringLiteral("3")}};

double heapInUse()
{
#ifdef __GLIBC__
    return double(mallinfo2().uordblks);
#else
    return 0;
#endif
}

void renewRegistry()
{
    delete OXUrls::instance();
    OXUrls::instance()->initialize(QStringLiteral(SAMPLE_DATA "/etc/OlvexUrls.json"),
                                   QStringLiteral("production"), QStringLiteral("eu"));
}

QUrl builtBySetters(bool withQuery)
{
    QUrl url;
    url.setScheme(scheme);
    url.setHost(host);
    url.setPath(wholePath, QUrl::DecodedMode);
    if (withQuery) {
        QUrlQuery query;
        for (const auto &item : items)
            query.addQueryItem(item[0], item[1]);
        url.setQuery(query);
    }
    return url;
}

void lookUp(benchmark::State &state, bool withQuery)
{
    renewRegistry();
    if (OXUrls::url(target, path, withQuery) != builtBySetters(withQuery)) {
        state.SkipWithError("the two ways give different URLs");
        return;
    }
    const double before = heapInUse();
    for (auto _ : state)
        benchmark::DoNotOptimize(OXUrls::url(target, path, withQuery));
    state.counters["bytes_per_call"] = (heapInUse() - before) / double(calls);
}

void peerSetters(benchmark::State &state, bool withQuery)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(builtBySetters(withQuery));
}

void instance(benchmark::State &state)
{
    renewRegistry();
    const double before = heapInUse();
    for (auto _ : state)
        benchmark::DoNotOptimize(OXUrls::instance());
    state.counters["bytes_per_call"] = (heapInUse() - before) / double(calls);
}

// What all connections together cost when the registry goes.
void destroyAfterCalls(benchmark::State &state)
{
    for (auto _ : state) {
        state.PauseTiming();
        renewRegistry();
        for (benchmark::IterationCount i = 0; i < calls; ++i)
            OXUrls::instance();
        OXUrls *const registry = OXUrls::instance();
        state.ResumeTiming();
        delete registry;
    }
}

} // namespace

BENCHMARK_CAPTURE(lookUp, region, false)->Iterations(calls)->Repetitions(repetitions);
BENCHMARK_CAPTURE(peerSetters, region, false)->Iterations(calls)->Repetitions(repetitions);
BENCHMARK_CAPTURE(lookUp, region_query, true)->Iterations(calls)->Repetitions(repetitions);
BENCHMARK_CAPTURE(peerSetters, region_query, true)->Iterations(calls)->Repetitions(repetitions);
BENCHMARK(instance)->Iterations(calls)->Repetitions(repetitions);
BENCHMARK(destroyAfterCalls)->Unit(benchmark::kMillisecond)->Iterations(3);

BENCHMARK_MAIN();
