#include "ECGLibraryBuilder.h"

#include "ECGLibrary.h"
#include "ECGRhythmTable.h"

#include <QQmlEngine>

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

ECGLibrary *buildAdapted(Limits AgeAdaptation::*age)
{
    ECGLibrary *library = ECGLibraryBuilder::buildChild();
    for (const AgeAdaptation &adaptation : ageAdaptations)
        for (const int rhythm : adaptation.rhythms)
            if (ECGConfig *config = library->getECGConfig(rhythm))
                setLimits(config, adaptation.*age);
    return library;
}

} // namespace

ECGLibrary *ECGLibraryBuilder::buildDefault()
{
    ECGLibrary *library = makeLibrary();
    for (const Rhythm &rhythm : rhythms)
        library->insert(makeConfig(rhythm));
    return library;
}

ECGLibrary *ECGLibraryBuilder::buildChild()
{
    ECGLibrary *library = makeLibrary();
    for (const ECGConfig *config : ECGLibrary::getDefaultECGLibrary()->configs())
        library->insert(new ECGConfig(*config, nullptr));
    return library;
}

ECGLibrary *ECGLibraryBuilder::buildInfant()
{
    return buildAdapted(&AgeAdaptation::infant);
}

ECGLibrary *ECGLibraryBuilder::buildBaby()
{
    return buildAdapted(&AgeAdaptation::baby);
}
