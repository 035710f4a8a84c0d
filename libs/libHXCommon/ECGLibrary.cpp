#include "ECGLibrary.h"

#include "ECGRhythmTable.h"

#include <QDebug>
#include <QQmlEngine>
#include <QSet>

using namespace ECGRhythmTable;

namespace {

// Appends the rate type and the rate parameters of a rhythm.
struct RateAppender {
    ECGConfig *config;

    void operator()(const Range &range) const
    {
        config->append(QStringLiteral("RateType"), RC_GUI::RateRange);
        config->append(QStringLiteral("DefaultRate"), range.defaultRate);
        config->append(QStringLiteral("RateMin"), range.min);
        config->append(QStringLiteral("RateMax"), range.max);
    }

    void operator()(const Fixed &fixed) const
    {
        config->append(QStringLiteral("RateType"), RC_GUI::RateFixed);
        config->append(QStringLiteral("FixedRate"), fixed.rate);
    }

    void operator()(const Discrete &discrete) const
    {
        config->append(QStringLiteral("RateType"), RC_GUI::RateDiscrete);
        config->append(QStringLiteral("DefaultRate"), discrete.defaultRate);
        config->append(QStringLiteral("Rates"), QVariantList(discrete.rates.begin(), discrete.rates.end()));
    }

    void operator()(const Ratios &ratios) const
    {
        QVariantList values;
        QStringList texts;
        QVariantList heartRates;
        for (const Ratio &ratio : ratios.ratios) {
            values << ratio.value;
            texts << QString::fromLatin1(ratio.text);
            heartRates << ratio.heartRate;
        }
        config->append(QStringLiteral("RateType"), RC_GUI::RateAVBlockRatio);
        config->append(QStringLiteral("DefaultRatio"), ratios.defaultRatio);
        config->append(QStringLiteral("Ratios"), values);
        config->append(QStringLiteral("RatioTexts"), texts);
        config->append(QStringLiteral("RatioHR"), heartRates);
    }

    void operator()(const Amplitude &amplitude) const
    {
        config->append(QStringLiteral("RateType"), RC_GUI::RateNone);
        config->append(QStringLiteral("DefaultAmplitude"), amplitude.defaultAmplitude);
        config->append(QStringLiteral("AmplitudeMin"), amplitude.min);
        config->append(QStringLiteral("AmplitudeMax"), amplitude.max);
    }
};

ECGConfig *makeConfig(const Rhythm &rhythm)
{
    auto *config = new ECGConfig(nullptr);
    config->setRhythm(rhythm.id);
    config->append(QStringLiteral("RhythmTypeName"), QString::fromLatin1(rhythm.name));
    std::visit(RateAppender{config}, rhythm.rate);
    if (rhythm.extraSystoles.size() != 0)
        config->append(QStringLiteral("ExtraSystoles"),
                       QVariantList(rhythm.extraSystoles.begin(), rhythm.extraSystoles.end()));
    config->append(QStringLiteral("MaxBPSys"), rhythm.systolicMax);
    config->append(QStringLiteral("MaxBPDia"), rhythm.diastolicMax);
    return config;
}

ECGLibrary *makeLibrary()
{
    auto *library = new ECGLibrary(nullptr);
    QQmlEngine::setObjectOwnership(library, QQmlEngine::CppOwnership); // a script engine must not delete it
    return library;
}

void setLimits(ECGConfig *config, const Limits &limits)
{
    if (limits.min)
        config->append(QStringLiteral("RateMin"), *limits.min);
    if (limits.max)
        config->append(QStringLiteral("RateMax"), *limits.max);
}

ECGLibrary *makeDefaultLibrary()
{
    ECGLibrary *library = makeLibrary();
    for (const Rhythm &rhythm : rhythms)
        library->insert(makeConfig(rhythm));
    return library;
}

ECGLibrary *copyOf(const ECGLibrary &original)
{
    ECGLibrary *library = makeLibrary();
    for (const ECGConfig *config : original.configs())
        library->insert(new ECGConfig(*config, nullptr));
    return library;
}

ECGLibrary *adaptedCopyOf(const ECGLibrary &original, Limits AgeAdaptation::*age)
{
    ECGLibrary *library = copyOf(original);
    for (const AgeAdaptation &adaptation : ageAdaptations)
        for (const int rhythm : adaptation.rhythms)
            if (ECGConfig *config = library->getECGConfig(rhythm))
                setLimits(config, adaptation.*age);
    return library;
}

} // namespace

ECGLibrary *ECGLibrary::m_DefaultECGLibrary = nullptr;
ECGLibrary *ECGLibrary::m_ChildECGLibrary = nullptr;
ECGLibrary *ECGLibrary::m_InfantECGLibrary = nullptr;
ECGLibrary *ECGLibrary::m_BabyECGLibrary = nullptr;

ECGLibrary::ECGLibrary(QObject *parent) : QObject(parent) { }

ECGLibrary::~ECGLibrary()
{
    // As a set: a config whose id was changed and that was inserted again is in the map twice.
    qDeleteAll(QSet<ECGConfig *>(m_configs.cbegin(), m_configs.cend()));
}

void ECGLibrary::insert(ECGConfig *config)
{
    if (!config) {
        qWarning("ECGLibrary::insert: there is no configuration to insert");
        return;
    }
    // Scripts reach configs through the library, too; their garbage collector must never delete one.
    QQmlEngine::setObjectOwnership(config, QQmlEngine::CppOwnership);
    // Deliberate: a replaced config is not deleted; it goes back to whoever still holds it.
    m_configs.insert(config->getRhythm(), config);
}

ECGConfig *ECGLibrary::getECGConfig(int a_RhythmType) const
{
    return m_configs.value(a_RhythmType);
}

ECGLibrary *ECGLibrary::getDefaultECGLibrary()
{
    if (!m_DefaultECGLibrary)
        m_DefaultECGLibrary = makeDefaultLibrary();
    return m_DefaultECGLibrary;
}

ECGLibrary *ECGLibrary::getChildECGLibrary()
{
    if (!m_ChildECGLibrary)
        m_ChildECGLibrary = copyOf(*getDefaultECGLibrary());
    return m_ChildECGLibrary;
}

ECGLibrary *ECGLibrary::getInfantECGLibrary()
{
    if (!m_InfantECGLibrary)
        m_InfantECGLibrary = adaptedCopyOf(*getDefaultECGLibrary(), &AgeAdaptation::infant);
    return m_InfantECGLibrary;
}

ECGLibrary *ECGLibrary::getBabyECGLibrary()
{
    if (!m_BabyECGLibrary)
        m_BabyECGLibrary = adaptedCopyOf(*getDefaultECGLibrary(), &AgeAdaptation::baby);
    return m_BabyECGLibrary;
}

void ECGLibrary::cleanup()
{
    // Deliberate: the pointers are not reset. Nothing may ask for a library after this.
    delete m_DefaultECGLibrary;
    delete m_ChildECGLibrary;
    delete m_BabyECGLibrary;
    delete m_InfantECGLibrary;
}

ECGLibraries &ECGLibraries::Instance()
{
    static ECGLibraries libraries;
    return libraries;
}

ECGLibraries::ECGLibraries()
{
    QQmlEngine::setObjectOwnership(this, QQmlEngine::CppOwnership);
    ECGLibrary::getDefaultECGLibrary();
    ECGLibrary::getChildECGLibrary();
    ECGLibrary::getBabyECGLibrary();
    ECGLibrary::getInfantECGLibrary();
}

ECGLibraries::~ECGLibraries()
{
    qDebug("ECGLibraries cleanup");
    ECGLibrary::cleanup();
}

ECGConfig *ECGLibraries::getECGConfig(const QString &a_ManikinAge, int a_RhythmType) const
{
    // Deliberate: case-sensitive, any other text is an adult, and an age's library never falls back to the
    // adults'.
    ECGLibrary *library = nullptr;
    if (a_ManikinAge == QLatin1String("child"))
        library = ECGLibrary::getChildECGLibrary();
    else if (a_ManikinAge == QLatin1String("baby"))
        library = ECGLibrary::getBabyECGLibrary();
    else if (a_ManikinAge == QLatin1String("infant"))
        library = ECGLibrary::getInfantECGLibrary();
    else
        library = ECGLibrary::getDefaultECGLibrary();

    ECGConfig *config = library->getECGConfig(a_RhythmType);
    QQmlEngine::setObjectOwnership(config, QQmlEngine::CppOwnership); // null is allowed
    return config;
}
