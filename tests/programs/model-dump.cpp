// Prints the rhythm libraries, the vocabulary and the product tables, one fact a line, fields separated by
// tabs. On standard error it tells when each library is deleted.
#include "VocabularyList.h"

#include <ECGLibrary.h>

#include <QCoreApplication>
#include <QMetaEnum>
#include <QTextStream>

#include <cstdio>

namespace {

QString text(const QVariant &value)
{
    return value.canConvert<QStringList>() ? value.toStringList().join(QLatin1Char(' ')) : value.toString();
}

void dumpLibrary(QTextStream &out, const char *age, const ECGLibrary *library)
{
    QObject::connect(library, &QObject::destroyed, [age] { std::fprintf(stderr, "deleted: %s\n", age); });
    for (const ECGConfig *config : library->configs()) {
        for (const char *key :
             {"RhythmTypeName", "RateType", "DefaultRate", "RateMin", "RateMax", "FixedRate", "Rates",
              "MaxBPSys", "MaxBPDia", "ExtraSystoles", "Ratios", "RatioTexts", "RatioHR", "DefaultRatio",
              "DefaultAmplitude", "AmplitudeMin", "AmplitudeMax"}) {
            const QVariant value = config->getParam(QString::fromLatin1(key));
            if (value.isValid())
                out << "rhythm\t" << age << '\t' << config->getRhythm() << '\t' << key << '\t' << text(value)
                    << '\n';
        }
    }
}

void dumpEnumerations(QTextStream &out, const QMetaObject &type)
{
    for (int e = 0; e < type.enumeratorCount(); ++e) {
        const QMetaEnum enumeration = type.enumerator(e);
        for (int i = 0; i < enumeration.keyCount(); ++i)
            out << "enum\t" << type.className() << '\t' << enumeration.enumName() << '\t' << i << '\t'
                << enumeration.key(i) << '\t' << enumeration.value(i) << '\n';
    }
}

void dumpProducts(QTextStream &out)
{
    const QMap<int, int> &products = BM_HXCommon::Product::ManikinProductTypeMap;
    for (auto product = products.begin(); product != products.end(); ++product)
        out << "product\t" << product.key() << '\t' << product.value() << '\n';
    for (int type = -1; type <= 256; ++type)
        out << "name\t" << type << '\t' << manikinTypeAsString(type) << '\n';
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_FORCE_STDERR_LOGGING", "1"); // Windows: this process has no console
    const QCoreApplication application(argc, argv);
    QTextStream out(stdout);
    ECGLibraries::Instance();
    dumpLibrary(out, "default", ECGLibrary::m_DefaultECGLibrary);
    dumpLibrary(out, "child", ECGLibrary::m_ChildECGLibrary);
    dumpLibrary(out, "infant", ECGLibrary::m_InfantECGLibrary);
    dumpLibrary(out, "baby", ECGLibrary::m_BabyECGLibrary);
    for (const QMetaObject *type : vocabulary)
        dumpEnumerations(out, *type);
    dumpProducts(out);
}
