#include "ECGConfig.h"

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
