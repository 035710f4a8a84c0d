// Prints the rhythms of all ages: all of the adults', and those of the other ages that differ from them. On
// standard error it tells in which order the libraries are deleted at exit.

#include <ECGLibrary.h>

#include <QTextStream>

#include <cstdio>
#include <cstdlib>

namespace {

QString parameters(const ECGConfig *config)
{
    QString text = QString::number(config->getRhythm());
    for (const char *name : {"RhythmTypeName", "RateType", "DefaultRate", "RateMin", "RateMax", "FixedRate",
                             "Rates", "DefaultRatio", "Ratios", "RatioTexts", "RatioHR", "DefaultAmplitude",
                             "AmplitudeMin", "AmplitudeMax", "ExtraSystoles", "MaxBPSys", "MaxBPDia"}) {
        const QString key = QString::fromLatin1(name);
        const QVariant value = config->getParam(key);
        const bool isList = value.canConvert<QStringList>();
        if (value.isValid())
            text += QStringLiteral(" %1=%2").arg(
                key, isList ? value.toStringList().join(QLatin1Char(',')) : value.toString());
    }
    return text;
}

void print(QTextStream &out, const char *age, const ECGLibrary *library)
{
    QObject::connect(library, &QObject::destroyed, [age] { std::fprintf(stderr, "deleted: %s\n", age); });
    const ECGLibrary *const adults = ECGLibrary::m_DefaultECGLibrary;
    out << age << ": " << library->configs().size() << " rhythms\n";
    for (const ECGConfig *config : library->configs()) {
        const QString text = parameters(config);
        if (library == adults || text != parameters(adults->getECGConfig(config->getRhythm())))
            out << text << '\n';
    }
}

} // namespace

int main()
{
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // Windows: this process has no console
    std::atexit([] {
        std::fprintf(stderr, "pointers: %s\n", ECGLibrary::m_DefaultECGLibrary ? "left dangling" : "reset");
    });
    ECGLibraries::Instance();
    QTextStream out(stdout);
    print(out, "adult", ECGLibrary::m_DefaultECGLibrary);
    print(out, "child", ECGLibrary::m_ChildECGLibrary);
    print(out, "infant", ECGLibrary::m_InfantECGLibrary);
    print(out, "baby", ECGLibrary::m_BabyECGLibrary);
}
