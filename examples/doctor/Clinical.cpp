#include "CommandLine.h"
#include "Report.h"
#include "Tasks.h"

#include <ECGLibrary.h>
#include <Product.h>

#include <QMetaEnum>

namespace {

QStringList ages()
{
    return {text("adult"), text("child"), text("infant"), text("baby")};
}

int refuseAge(const QString &age)
{
    return fail(2, text("There is no age \"%1\": choose one of %2.").arg(age, ages().join(text(", "))));
}

// ---- cells; an invalid one shows that there is none ----

QVariant number(int value)
{
    return value == -1 ? QVariant() : value;
}

QVariant list(const ECGConfig *config, const char *key)
{
    const QVariantList values = config->getParam(text(key)).toList();
    return values.isEmpty() ? QVariant() : values;
}

QVariantMap bounds(const ECGConfig *config, const char *min, const char *max)
{
    return {{text("min"), config->getParamValueAsInt(text(min))},
            {text("max"), config->getParamValueAsInt(text(max))}};
}

QString rateTypeName(const ECGConfig *config)
{
    static const char *const names[] = {"range", "fixed", "rates", "ratios", "amplitude"};
    return text(names[config->getRateType()]);
}

QVariant ratioText(const ECGConfig *config, int ratio)
{
    const int index = config->getParam(text("Ratios")).toList().indexOf(ratio);
    const QString name = config->getParam(text("RatioTexts")).toStringList().value(index);
    return name.isEmpty() ? QVariant() : name;
}

QVariant choice(const ECGConfig *config)
{
    switch (config->getRateType()) {
    case RC_GUI::RateRange:
        return bounds(config, "RateMin", "RateMax");
    case RC_GUI::RateFixed:
        return number(config->getFixedHeartRate());
    case RC_GUI::RateDiscrete:
        return list(config, "Rates");
    case RC_GUI::RateAVBlockRatio:
        return list(config, "RatioHR");
    case RC_GUI::RateNone:
        return bounds(config, "AmplitudeMin", "AmplitudeMax");
    }
    return QVariant();
}

QVariant defaultChoice(const ECGConfig *config)
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
    Table table{text("rhythms"),
                text("Rhythms (%1), rates in beats/min, highest pressures in mmHg").arg(age),
                {text("id"), text("rhythm"), text("by"), text("values"), text("ratios"), text("default"),
                 text("extras|extrasystoles"), text("sys|systolic"), text("dia|diastolic")},
                {}};
    const QList<int> ids = ECGLibrary::getDefaultECGLibrary()->configs().keys();
    for (const int id : ids) {
        const ECGConfig *const config = ECGLibraries::Instance().getECGConfig(age, id);
        table.rows.append({config->getRhythm(), config->getRhythmTypeName(), rateTypeName(config),
                           choice(config), list(config, "RatioTexts"), defaultChoice(config),
                           list(config, "ExtraSystoles"), config->getSystolicBloodPressureMax(),
                           config->getDiastolicBloodPressureMax()});
    }
    return table;
}

Table answerTable(const QString &age, ECGConfig *config, int rate)
{
    return {text("rhythm"),
            text("Rhythm %1 %2 (%3) at %4 beats/min")
                .arg(QString::number(config->getRhythm()), config->getRhythmTypeName(), age,
                     QString::number(rate)),
            {text("item"), text("value")},
            {{text("id"), config->getRhythm()},
             {text("rhythm"), config->getRhythmTypeName()},
             {text("age"), age},
             {text("by"), rateTypeName(config)},
             {text("values"), choice(config)},
             {text("ratios"), list(config, "RatioTexts")},
             {text("heart rate"), config->validateHeartRate(rate)},
             {text("ratio"), ratioText(config, config->getRatioForHeartRate(rate))},
             {text("can have extrasystoles"), config->canHaveExtrasystoles()},
             {text("extrasystoles"), list(config, "ExtraSystoles")},
             {text("systolic"), config->getSystolicBloodPressureMax()},
             {text("diastolic"), config->getDiastolicBloodPressureMax()}}};
}

Table productTable()
{
    using namespace BM_HXCommon::Product;
    const auto products = QMetaEnum::fromType<manufacturerProductId_t>();
    const QString unknown = text(manikinTypeAsString(-1));
    Table table{text("manikins"),
                text("Manikins"),
                {text("type"), text("name"), text("product id"), text("product")},
                {}};
    for (int type = 0; type <= 255; ++type) {
        const QString name = text(manikinTypeAsString(type));
        const auto product = ManikinProductTypeMap.constFind(type);
        if (product != ManikinProductTypeMap.constEnd())
            table.rows.append({type, name, *product, text(products.valueToKey(*product))});
        else if (name != unknown)
            table.rows.append({type, name, QVariant(), QVariant()});
    }
    return table;
}

} // namespace

int runRhythms(const CommandLine &line)
{
    const QString age = line.value("--rhythms", text("adult"));
    return ages().contains(age) ? print(rhythmTable(age), line.has("--json")) : refuseAge(age);
}

int runRhythm(const CommandLine &line)
{
    const QString age = line.value("--age", text("adult"));
    if (!ages().contains(age))
        return refuseAge(age);

    const QString id = line.value("--rhythm");
    bool isNumber = false;
    ECGConfig *const config = ECGLibraries::Instance().getECGConfig(age, id.toInt(&isNumber));
    if (!isNumber || !config)
        return fail(2, text("There is no rhythm \"%1\": --rhythms lists the ids.").arg(id));
    const int rate = line.has("--rate") ? line.value("--rate").toInt()
                                        : config->validateHeartRate(config->getDefaultHeartRate());
    return print(answerTable(age, config, rate), line.has("--json"));
}

int runProducts(const CommandLine &line)
{
    return print(productTable(), line.has("--json"));
}
