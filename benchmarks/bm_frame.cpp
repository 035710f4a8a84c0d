// The application frame: start-up, option queries and the log file, each beside a peer.
//
// Every run has its own time zone setting: with TZ unset each local QDateTime looks at the time zone file,
// which is the usual case on a tablet.

#include <AppConfig.h>

#include <QCoreApplication>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QNetworkConfigurationManager>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

QT_WARNING_DISABLE_DEPRECATED // the network-configuration classes, which the library uses, too

namespace {

Q_LOGGING_CATEGORY(category, "Olvex.Benchmark")

QString directory;

void initialize(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(AppConfig::instance()->initialize(QStringLiteral("bench"), QString()));
}
BENCHMARK(initialize)->Unit(benchmark::kMicrosecond);

// The same with Qt alone: a directory made, a log file and the settings opened, the service table read,
// the network configurations asked for.
void peerQtStart(benchmark::State &state)
{
    QNetworkConfigurationManager network;
    for (auto _ : state) {
        QDir().mkpath(directory + QLatin1String("/made"));
        QFile log(directory + QLatin1String("/qt.log"));
        log.open(QIODevice::WriteOnly | QIODevice::Append);
        const QSettings settings(directory + QLatin1String("/Settings_bench.ini"), QSettings::IniFormat);
        benchmark::DoNotOptimize(settings.value(QStringLiteral("System/Environment")));
        QFile table(QStringLiteral(SAMPLE_DATA "/etc/OlvexUrls.json"));
        table.open(QIODevice::ReadOnly | QIODevice::Text);
        benchmark::DoNotOptimize(QJsonDocument::fromJson(table.readAll()).toVariant().toMap());
        network.updateConfigurations();
    }
}
BENCHMARK(peerQtStart)->Unit(benchmark::kMicrosecond);

void optionQuery(benchmark::State &state)
{
    const QString name = QStringLiteral("--persistentpath");
    for (auto _ : state)
        benchmark::DoNotOptimize(AppConfig::instance()->argumentValue(name, QString()));
}
BENCHMARK(optionQuery);

void peerArguments(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(QCoreApplication::arguments());
}
BENCHMARK(peerArguments);

void logLine(benchmark::State &state)
{
    int i = 0;
    for (auto _ : state)
        qCInfo(category, "received frame %d of 1000, state %s", ++i, "running");
}
BENCHMARK(logLine);

void peerSpdlog(benchmark::State &state)
{
    const auto logger = spdlog::basic_logger_mt("bench", qPrintable(directory + QLatin1String("/spd.log")));
    logger->flush_on(spdlog::level::trace);
    logger->set_pattern("%H:%M:%S.%e | %L | %!: %v");
    int i = 0;
    for (auto _ : state)
        SPDLOG_LOGGER_INFO(logger, "received frame {} of 1000, state {}", ++i, "running");
    spdlog::drop_all();
}
BENCHMARK(peerSpdlog);

} // namespace

int main(int argc, char **argv)
{
    qunsetenv("TZ");
    benchmark::Initialize(&argc, argv);
    const QTemporaryDir temporary;
    directory = temporary.path();
    qputenv("APPDATA", directory.toLocal8Bit());

    // Thirty arguments, the option that is asked for near the end.
    QList<QByteArray> texts = {"bench",        "--null",
                               "--logoutput",  directory.toLocal8Bit() + "/bench.log",
                               "--varetcpath", directory.toLocal8Bit()};
    while (texts.size() < 28)
        texts << "argument" + QByteArray::number(texts.size());
    texts << "--persistentpath"
          << "/persistent";
    std::vector<char *> pointers;
    for (QByteArray &text : texts)
        pointers.push_back(text.data());
    int count = int(pointers.size());
    pointers.push_back(nullptr);

    const QCoreApplication application(count, pointers.data());
    AppConfig::instance()->initialize(QStringLiteral("bench"), QString());
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
