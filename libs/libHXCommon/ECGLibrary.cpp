#include "ECGLibrary.h"

#include "ECGLibraryBuilder.h"

#include <QDebug>
#include <QQmlEngine>
#include <QSet>

#include <algorithm>

namespace {

// Scripts can call a method only if its types are known by the names that its signature spells.
[[maybe_unused]] const bool metaTypesRegistered = [] {
    qRegisterMetaType<ECGConfig *>();
    qRegisterMetaType<RC_GUI::RateTypes_t>();
    qRegisterMetaType<RC_GUI::AVBlockRatios_t>();
    qRegisterMetaType<RC_GUI::ExtraSystole::Types_t>();
    qRegisterMetaType<RC_GUI::ExtraSystoleTypes_t>("RC_GUI::ExtraSystoleTypes_t");
    return true;
}();

// Deliberate: 32-bit arithmetic that wraps. A heart rate more than 46340 away gets some other square and may
// win or lose by it.
qint32 squaredDifference(int a, int b)
{
    const quint32 difference = quint32(a) - quint32(b);
    return qint32(difference * difference);
}

int valueAt(const QVariantList &values, int index)
{
    return values.value(index).toInt();
}

// The first of the indices 0..count-1 whose value is nearest to the heart rate, 0 if there is none.
int nearestIndex(const QVariantList &values, int count, int heartRate)
{
    int nearest = 0;
    qint32 best = 1000000000;
    for (int i = 0; i < count; ++i) {
        const qint32 square = squaredDifference(heartRate, valueAt(values, i));
        if (square < best) {
            best = square;
            nearest = i;
        }
    }
    return nearest;
}

} // namespace

ECGConfig::ECGConfig(QObject *parent) : QObject(parent) { }

ECGConfig::ECGConfig(const ECGConfig &other, QObject *parent)
    : QObject(parent), m_rhythm(other.m_rhythm), m_params(other.m_params)
{
}

void ECGConfig::append(const QString &key, const QVariant &value)
{
    m_params.insert(key, value);
}

QVariant ECGConfig::getParam(const QString &a_ParamName) const
{
    return m_params.value(a_ParamName);
}

int ECGConfig::getParamValueAsInt(const QString &a_ParamName) const
{
    bool isNumber = false;
    const int value = getParam(a_ParamName).toInt(&isNumber);
    return isNumber ? value : -1;
}

QVariantList ECGConfig::list(const QString &key) const
{
    return getParam(key).value<QVariantList>(); // unlike toList(), takes a QList<int>, too
}

QString ECGConfig::getRhythmTypeName() const
{
    return getParam(QStringLiteral("RhythmTypeName")).toString();
}

RC_GUI::RateTypes_t ECGConfig::getRateType() const
{
    return RC_GUI::RateTypes_t(getParamValueAsInt(QStringLiteral("RateType")));
}

int ECGConfig::getDefaultHeartRate() const
{
    return getParamValueAsInt(QStringLiteral("DefaultRate"));
}

int ECGConfig::getHeartRateMin() const
{
    return getParamValueAsInt(QStringLiteral("RateMin"));
}

int ECGConfig::getHeartRateMax() const
{
    return getParamValueAsInt(QStringLiteral("RateMax"));
}

int ECGConfig::getFixedHeartRate() const
{
    return getParamValueAsInt(QStringLiteral("FixedRate"));
}

int ECGConfig::getSystolicBloodPressureMax() const
{
    return getParamValueAsInt(QStringLiteral("MaxBPSys"));
}

int ECGConfig::getDiastolicBloodPressureMax() const
{
    return getParamValueAsInt(QStringLiteral("MaxBPDia"));
}

int ECGConfig::validateHeartRate(int a_HeartRate)
{
    switch (getRateType()) {
    case RC_GUI::RateRange:
        // Deliberate: no std::clamp. The upper bound is applied last and wins when the bounds are reversed.
        return std::min(getHeartRateMax(), std::max(a_HeartRate, getHeartRateMin()));
    case RC_GUI::RateFixed:
        return getFixedHeartRate();
    case RC_GUI::RateDiscrete: {
        const QVariantList rates = list(QStringLiteral("Rates"));
        return valueAt(rates, nearestIndex(rates, rates.size(), a_HeartRate));
    }
    case RC_GUI::RateAVBlockRatio:
        return valueAt(list(QStringLiteral("RatioHR")), nearestRatio(a_HeartRate));
    case RC_GUI::RateNone:
        return 0;
    }
    return a_HeartRate;
}

RC_GUI::AVBlockRatios_t ECGConfig::getRatioForHeartRate(int a_HeartRate) const
{
    if (getRateType() != RC_GUI::RateAVBlockRatio)
        return RC_GUI::AVBlockRatios_t(-1);
    return RC_GUI::AVBlockRatios_t(valueAt(list(QStringLiteral("Ratios")), nearestRatio(a_HeartRate)));
}

int ECGConfig::nearestRatio(int heartRate) const
{
    // Deliberate: the count comes from "Ratios", the values from "RatioHR". A missing value reads as 0.
    return nearestIndex(list(QStringLiteral("RatioHR")), list(QStringLiteral("Ratios")).size(), heartRate);
}

bool ECGConfig::canHaveExtrasystoles() const
{
    return !list(QStringLiteral("ExtraSystoles")).isEmpty();
}

bool ECGConfig::isExtraSystoleAllowed(RC_GUI::ExtraSystoleTypes_t a_ExtraSystoleType) const
{
    if (a_ExtraSystoleType == RC_GUI::ExtraSystole::NoExtraSystole)
        return true;
    const QVariantList allowed = list(QStringLiteral("ExtraSystoles"));
    return std::any_of(allowed.begin(), allowed.end(), [a_ExtraSystoleType](const QVariant &type) {
        return type.toInt() == a_ExtraSystoleType;
    });
}

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
        m_DefaultECGLibrary = ECGLibraryBuilder::buildDefault();
    return m_DefaultECGLibrary;
}

ECGLibrary *ECGLibrary::getChildECGLibrary()
{
    if (!m_ChildECGLibrary)
        m_ChildECGLibrary = ECGLibraryBuilder::buildChild();
    return m_ChildECGLibrary;
}

ECGLibrary *ECGLibrary::getInfantECGLibrary()
{
    if (!m_InfantECGLibrary)
        m_InfantECGLibrary = ECGLibraryBuilder::buildInfant();
    return m_InfantECGLibrary;
}

ECGLibrary *ECGLibrary::getBabyECGLibrary()
{
    if (!m_BabyECGLibrary)
        m_BabyECGLibrary = ECGLibraryBuilder::buildBaby();
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
