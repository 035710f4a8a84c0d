#ifndef ECGCONFIG_H
#define ECGCONFIG_H

#include "HXCommonExport.h"
#include "RC_GUI.h"

#include <QMap>
#include <QObject>
#include <QString>
#include <QVariant>

/**
 * One ECG rhythm that a manikin can be set to: its id and the parameters that say how its heart rate may be
 * chosen, how high the blood pressure may be, and which extrasystoles may be added to it.
 *
 * Screens and scripts get the configurations from ECGLibraries::getECGConfig(), build their controls from
 * them and correct requested heart rates with validateHeartRate(). They stay owned by their library.
 *
 * @code
 * ECGConfig *config = ECGLibraries::Instance().getECGConfig(QStringLiteral("infant"), 7);
 * if (config)
 *     heartRate = config->validateHeartRate(heartRate); // sinus rhythm: 20 to 240 beats/min
 * @endcode
 *
 * The parameters are a dictionary. A key that has no meaning for a rhythm is not set. Rates are in beats/min,
 * pressures in mmHg; amplitudes have the unit of the user interface.
 *
 * | key | value | meaning |
 * |---|---|---|
 * | "RhythmTypeName" | string | symbolic name of the rhythm; two rhythms may share one |
 * | "RateType" | int | how the rate is chosen, an RC_GUI::RateTypes_t |
 * | "DefaultRate" | int | rate proposed when the rhythm is selected |
 * | "RateMin", "RateMax" | int | bounds of the rate (RateRange) |
 * | "FixedRate" | int | the only rate (RateFixed) |
 * | "Rates" | list of int | the rates to choose from (RateDiscrete) |
 * | "Ratios" | list of int | RC_GUI::AVBlockRatios_t to choose from (RateAVBlockRatio) |
 * | "RatioTexts" | list of string | display text of each ratio, such as "3:2" |
 * | "RatioHR" | list of int | heart rate of each ratio |
 * | "DefaultRatio" | int | ratio proposed when the rhythm is selected |
 * | "DefaultAmplitude" | int | amplitude proposed when the rhythm is selected (RateNone) |
 * | "AmplitudeMin", "AmplitudeMax" | int | bounds of the amplitude |
 * | "ExtraSystoles" | list of int | RC_GUI::ExtraSystole::Types_t that may be added |
 * | "MaxBPSys" | int | highest systolic pressure allowed with the rhythm |
 * | "MaxBPDia" | int | highest diastolic pressure allowed with the rhythm |
 *
 * An integer that is not configured reads as -1; a configured 0 reads as 0.
 *
 * Filled once by its library, then only read, from the main thread. There are no signals: every property is
 * constant.
 */
class HXCOMMON_EXPORT ECGConfig : public QObject {
    Q_OBJECT
    /// The rhythm id.
    Q_PROPERTY(int rhythm READ getRhythm CONSTANT)
    /// Symbolic name of the rhythm; empty if not set.
    Q_PROPERTY(QString rhythmTypeName READ getRhythmTypeName CONSTANT)
    /// How the rate is chosen, an RC_GUI::RateTypes_t; -1 if not set.
    Q_PROPERTY(int rate_type READ getRateType CONSTANT)
    /// Lower bound of the rate in beats/min; -1 if not set.
    Q_PROPERTY(int heartrate_min READ getHeartRateMin CONSTANT)
    /// Upper bound of the rate in beats/min; -1 if not set.
    Q_PROPERTY(int heartrate_max READ getHeartRateMax CONSTANT)
    /// Proposed rate in beats/min; -1 if not set.
    Q_PROPERTY(int heartrate_default READ getDefaultHeartRate CONSTANT)
    /// The only rate in beats/min; -1 if not set.
    Q_PROPERTY(int heartrate_fixed READ getFixedHeartRate CONSTANT)
    /// Highest systolic pressure in mmHg; -1 if not set.
    Q_PROPERTY(int systolic_max READ getSystolicBloodPressureMax CONSTANT)
    /// Highest diastolic pressure in mmHg; -1 if not set.
    Q_PROPERTY(int diastolic_max READ getDiastolicBloodPressureMax CONSTANT)

public:
    /// A configuration with rhythm id 0 and no parameters.
    explicit ECGConfig(QObject *parent = nullptr);

    /// A configuration with the rhythm id and the parameters of @p other. Later changes to one do not reach
    /// the other.
    ECGConfig(const ECGConfig &other, QObject *parent);

    /// The rhythm id.
    int getRhythm() const { return m_rhythm; }

    /// Sets the rhythm id. A library files a configuration under the id that it has when it is inserted.
    void setRhythm(int rhythm) { m_rhythm = rhythm; }

    /// Sets the parameter @p key to @p value, replacing the value it may have.
    void append(const QString &key, const QVariant &value);

    /// The value of a parameter; an invalid variant (undefined in a script) if it is not set.
    Q_INVOKABLE QVariant getParam(const QString &a_ParamName) const;

    /// The value of a parameter as an integer; -1 if it is not set or does not convert.
    Q_INVOKABLE int getParamValueAsInt(const QString &a_ParamName) const;

    /// "RhythmTypeName"; empty if not set.
    Q_INVOKABLE QString getRhythmTypeName() const;

    /// "RateType"; -1 if not set.
    Q_INVOKABLE RC_GUI::RateTypes_t getRateType() const;

    /// "DefaultRate" in beats/min; -1 if not set.
    Q_INVOKABLE int getDefaultHeartRate() const;

    /// "RateMin" in beats/min; -1 if not set.
    Q_INVOKABLE int getHeartRateMin() const;

    /// "RateMax" in beats/min; -1 if not set.
    Q_INVOKABLE int getHeartRateMax() const;

    /// "FixedRate" in beats/min; -1 if not set.
    Q_INVOKABLE int getFixedHeartRate() const;

    /// "MaxBPSys" in mmHg; -1 if not set.
    Q_INVOKABLE int getSystolicBloodPressureMax() const;

    /// "MaxBPDia" in mmHg; -1 if not set.
    Q_INVOKABLE int getDiastolicBloodPressureMax() const;

    /**
     * The heart rate that the rhythm takes when @p a_HeartRate is asked for.
     *
     * | rate type | result |
     * |---|---|
     * | RC_GUI::RateRange | the rate, raised to "RateMin", then lowered to "RateMax" |
     * | RC_GUI::RateFixed | "FixedRate" |
     * | RC_GUI::RateDiscrete | the nearest of "Rates" |
     * | RC_GUI::RateAVBlockRatio | the rate of the nearest ratio, from "RatioHR" |
     * | RC_GUI::RateNone | 0 |
     * | any other, or not set | the rate as it is |
     *
     * Of two equally near entries the earlier wins; from an empty list comes 0. "Ratios" says how many
     * entries of "RatioHR" count; entries that "RatioHR" lacks read as 0. Nearness is the squared difference
     * in 32 bits: it holds for differences up to 31622, beyond them the result is some entry of the list.
     */
    Q_INVOKABLE int validateHeartRate(int a_HeartRate);

    /// The value from "Ratios" whose heart rate is nearest to @p a_HeartRate, by the rules of
    /// validateHeartRate(); -1 if the rate type is not RC_GUI::RateAVBlockRatio.
    Q_INVOKABLE RC_GUI::AVBlockRatios_t getRatioForHeartRate(int a_HeartRate) const;

    /// Whether the rhythm lists any extrasystole type.
    Q_INVOKABLE bool canHaveExtrasystoles() const;

    /// Whether the rhythm lists @p a_ExtraSystoleType; always true for RC_GUI::ExtraSystole::NoExtraSystole.
    Q_INVOKABLE bool isExtraSystoleAllowed(RC_GUI::ExtraSystoleTypes_t a_ExtraSystoleType) const;

private:
    QVariantList list(const QString &key) const;
    int nearestRatio(int heartRate) const;

    int m_rhythm = 0;
    QMap<QString, QVariant> m_params;
};

#endif
