#include "ClinicalCommands.h"

#include "OptionValue.h"
#include "Report.h"

#include <ECGLibrary.h>
#include <Product.h>

#include <QMetaEnum>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

constexpr char notSet[] = "-";

// ---- options ----

QStringList ages()
{
    return {text("adult"), text("child"), text("infant"), text("baby")};
}

int refuseAge(const QString &age)
{
    return refuse(text("There is no age \"%1\": choose one of %2.").arg(age, ages().join(text(", "))));
}

// ---- texts ----

QString number(int value)
{
    return value == -1 ? text(notSet) : QString::number(value);
}

QString list(const ECGConfig *config, const char *key)
{
    const QStringList values = config->getParam(text(key)).toStringList();
    return values.isEmpty() ? text(notSet) : values.join(text(", "));
}

QString bounds(const ECGConfig *config, const char *min, const char *max)
{
    return text("%1..%2")
        .arg(config->getParamValueAsInt(text(min)))
        .arg(config->getParamValueAsInt(text(max)));
}

QString rateTypeName(const ECGConfig *config)
{
    static const char *const names[] = {"range", "fixed", "rates", "ratios", "amplitude"};
    return text(names[config->getRateType()]);
}

QString ratioText(const ECGConfig *config, int ratio)
{
    const int index = config->getParam(text("Ratios")).toList().indexOf(ratio);
    return config->getParam(text("RatioTexts")).toStringList().value(index, text(notSet));
}

QString choice(const ECGConfig *config)
{
    switch (config->getRateType()) {
    case RC_GUI::RateRange:
        return bounds(config, "RateMin", "RateMax");
    case RC_GUI::RateFixed:
        return number(config->getFixedHeartRate());
    case RC_GUI::RateDiscrete:
        return list(config, "Rates");
    case RC_GUI::RateAVBlockRatio:
        return text("%1 (%2)").arg(list(config, "RatioHR"), list(config, "RatioTexts"));
    case RC_GUI::RateNone:
        return bounds(config, "AmplitudeMin", "AmplitudeMax");
    }
    return text(notSet);
}

QString defaultChoice(const ECGConfig *config)
{
    if (config->getRateType() == RC_GUI::RateAVBlockRatio)
        return ratioText(config, config->getParamValueAsInt(text("DefaultRatio")));
    if (config->getRateType() == RC_GUI::RateNone)
        return number(config->getParamValueAsInt(text("DefaultAmplitude")));
    return number(config->getDefaultHeartRate());
}

// ---- tables ----

Table rhythmTable(const QString &age)
{
    Table table{text("Rhythms (%1), rates in beats/min, pressures in mmHg").arg(age),
                {text("id"), text("rhythm"), text("chosen by"), text("values"), text("default"),
                 text("extrasystoles"), text("systolic max"), text("diastolic max")},
                {}};
    const QList<int> ids = ECGLibrary::getDefaultECGLibrary()->configs().keys();
    for (const int id : ids) {
        const ECGConfig *const config = ECGLibraries::Instance().getECGConfig(age, id);
        table.rows.append({config->getRhythm(), config->getRhythmTypeName(), rateTypeName(config),
                           choice(config), defaultChoice(config), list(config, "ExtraSystoles"),
                           config->getSystolicBloodPressureMax(), config->getDiastolicBloodPressureMax()});
    }
    return table;
}

Table answerTable(const QString &age, ECGConfig *config, int rate)
{
    return {text("Rhythm %1 %2 (%3) at %4 beats/min")
                .arg(QString::number(config->getRhythm()), config->getRhythmTypeName(), age,
                     QString::number(rate)),
            {text("item"), text("value")},
            {{text("chosen by"), rateTypeName(config)},
             {text("values"), choice(config)},
             {text("heart rate"), config->validateHeartRate(rate)},
             {text("ratio"), ratioText(config, config->getRatioForHeartRate(rate))},
             {text("can have extrasystoles"), config->canHaveExtrasystoles()},
             {text("extrasystoles"), list(config, "ExtraSystoles")},
             {text("systolic max"), config->getSystolicBloodPressureMax()},
             {text("diastolic max"), config->getDiastolicBloodPressureMax()}}};
}

Table productTable()
{
    using namespace BM_HXCommon::Product;
    const auto products = QMetaEnum::fromType<manufacturerProductId_t>();
    const QString unknown = text(manikinTypeAsString(-1));
    Table table{text("Manikins"), {text("type"), text("name"), text("product id"), text("product")}, {}};
    for (int type = 0; type <= 255; ++type) {
        const QString name = text(manikinTypeAsString(type));
        const auto product = ManikinProductTypeMap.constFind(type);
        if (product != ManikinProductTypeMap.constEnd())
            table.rows.append({type, name, *product, text(products.valueToKey(*product))});
        else if (name != unknown)
            table.rows.append({type, name, text(notSet), text(notSet)});
    }
    return table;
}

} // namespace

int runRhythms()
{
    const QString age = optionValue("--rhythms", text("adult"));
    return ages().contains(age) ? print(rhythmTable(age)) : refuseAge(age);
}

int runRhythm()
{
    const QString age = optionValue("--age", text("adult"));
    if (!ages().contains(age))
        return refuseAge(age);

    const QString id = optionValue("--rhythm");
    bool isNumber = false;
    ECGConfig *const config = ECGLibraries::Instance().getECGConfig(age, id.toInt(&isNumber));
    if (!isNumber || !config)
        return refuse(text("There is no rhythm \"%1\": --rhythms lists the ids.").arg(id));

    const QString rate = optionValue("--rate");
    const int heartRate = rate.toInt(&isNumber);
    if (!isNumber)
        return refuse(text("\"%1\" is no heart rate: --rate takes a whole number.").arg(rate));
    return print(answerTable(age, config, heartRate));
}

int runProducts()
{
    return print(productTable());
}
