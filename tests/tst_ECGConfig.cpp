#include <ECGLibrary.h>

#include "Cases.h"

#include <QJSEngine>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QQmlEngine>

#include <limits>
#include <memory>

class tst_ECGConfig : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void listsItsInterfaceInOrder();
    void answersHeartRates_data();
    void answersHeartRates();
    void allowsExtrasystoles();
    void copiesIndependently();
    void answersScripts();
};

namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

const struct {
    const char *name;
    const char *params;
    int heartRate;
    int validated;
    int ratio;
} heartRates[] = {
    {"no rate type", "{}", lowest, lowest, -1},
    {"rate type -1", R"({"RateType": -1})", 80, 80, -1},
    {"lowest rate type", R"({"RateType": -2147483648})", highest, highest, -1},

    {"below range", R"({"RateType": 0, "RateMin": 20, "RateMax": 200})", 10, 20, -1},
    {"above range", R"({"RateType": 0, "RateMin": 20, "RateMax": 200})", 250, 200, -1},
    {"lowest", R"({"RateType": 0, "RateMin": 20, "RateMax": 200})", lowest, 20, -1},
    {"highest", R"({"RateType": 0, "RateMin": 20, "RateMax": 200})", highest, 200, -1},
    {"reversed range", R"({"RateType": 0, "RateMin": 200, "RateMax": 20})", 80, 20, -1},
    {"no bounds", R"({"RateType": 0})", 80, -1, -1},

    {"fixed", R"({"RateType": 1, "FixedRate": 180})", 80, 180, -1},
    {"fixed as word", R"({"RateType": 1, "FixedRate": "fast"})", 80, -1, -1},

    {"nearer to first", R"({"RateType": 2, "Rates": [75, 100, 150]})", 87, 75, -1},
    {"nearer to second", R"({"RateType": 2, "Rates": [75, 100, 150]})", 88, 100, -1},
    {"tie", R"({"RateType": 2, "Rates": [75, 100, 150]})", 125, 100, -1},
    {"unsorted tie", R"({"RateType": 2, "Rates": [150, 100]})", 125, 150, -1},
    {"rates as texts", R"({"RateType": 2, "Rates": ["75", "100"]})", 90, 100, -1},
    {"no rates", R"({"RateType": 2, "Rates": []})", 80, 0, -1},
    {"rates no list", R"({"RateType": 2, "Rates": 75})", 80, 0, -1},
    // Squares from 1000000000 on never win, those beyond 32 bits wrap.
    {"31622 above", R"({"RateType": 2, "Rates": [75, 100, 150]})", 31772, 150, -1},
    {"31623 above", R"({"RateType": 2, "Rates": [75, 100, 150]})", 31773, 75, -1},
    {"negative square", R"({"RateType": 2, "Rates": [40, 55, 60]})", 46400, 55, -1},
    {"farthest", R"({"RateType": 2, "Rates": [75, 100, -2147483648]})", highest, lowest, -1},

    {"ratio", R"({"RateType": 3, "Ratios": [2, 1, 0], "RatioHR": [50, 60, 65]})", 62, 60, 1},
    {"ratio tie", R"({"RateType": 3, "Ratios": [2, 1, 0], "RatioHR": [50, 60, 65]})", 55, 50, 2},
    {"short RatioHR", R"({"RateType": 3, "Ratios": [2, 1, 7], "RatioHR": [50, 60]})", 3, 0, 7},
    {"long RatioHR", R"({"RateType": 3, "Ratios": [2], "RatioHR": [50, 60]})", 60, 50, 2},
    {"no ratios", R"({"RateType": 3, "Ratios": [], "RatioHR": []})", highest, 0, 0},

    {"no rate", R"({"RateType": 4})", 80, 0, -1},
};

const struct {
    const char *expression;
    const char *result;
} scripts[] = {
    {"c.getParam('RatioTexts').join(' ')", "3:2 4:3"},
    {"c.getParam('RatioHR')[1] + 1", "61"},
    {"c.validateHeartRate(NaN)", "50"},
    {"answers(c)", "1,block,3,60,50,65,-1,300,200,"},
    {"c.getRatioForHeartRate(58)", "1"},
    {"c.canHaveExtrasystoles()", "true"},
    {"[0, 3, 2, 'x'].map(function(t) { return c.isExtraSystoleAllowed(t) })", "true,true,false,true"},
    {"c.isExtraSystoleAllowed()", "Error: Insufficient arguments"},
    {"properties(c)", "166,block,3,50,65,60,-1,300,200"},
    {"answers(empty)", "-1,,-1,-1,-1,-1,-1,-1,-1,"},
    {"properties(empty)", "0,,-1,-1,-1,-1,-1,-1,-1"},
    {"'use strict'; c.rhythm = 7", "TypeError: Cannot assign to read-only property \"rhythm\""},
};

std::unique_ptr<ECGConfig> configWith(const char *json)
{
    auto config = std::make_unique<ECGConfig>(nullptr);
    const QVariantMap params = QJsonDocument::fromJson(json).object().toVariantMap();
    for (auto param = params.begin(); param != params.end(); ++param)
        config->append(param.key(), param.value());
    return config;
}

} // namespace

void tst_ECGConfig::listsItsInterfaceInOrder()
{
    const QMetaObject &meta = ECGConfig::staticMetaObject;
    QByteArrayList methods, properties;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        methods << meta.method(i).typeName() + QByteArray(" ") + meta.method(i).methodSignature();
    QCOMPARE(methods.join("; "),
             QByteArray("QVariant getParam(QString); int getParamValueAsInt(QString); "
                        "QString getRhythmTypeName(); RC_GUI::RateTypes_t getRateType(); "
                        "int getDefaultHeartRate(); int getHeartRateMin(); int getHeartRateMax(); "
                        "int getFixedHeartRate(); int getSystolicBloodPressureMax(); "
                        "int getDiastolicBloodPressureMax(); int validateHeartRate(int); "
                        "RC_GUI::AVBlockRatios_t getRatioForHeartRate(int); bool canHaveExtrasystoles(); "
                        "bool isExtraSystoleAllowed(RC_GUI::ExtraSystoleTypes_t)"));

    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty p = meta.property(i);
        properties << p.typeName() + QByteArray(" ") + p.name();
        QVERIFY(p.isReadable() && p.isConstant() && !p.isWritable() && !p.hasNotifySignal());
    }
    QCOMPARE(properties.join("; "),
             QByteArray("int rhythm; QString rhythmTypeName; int rate_type; int heartrate_min; "
                        "int heartrate_max; int heartrate_default; int heartrate_fixed; int systolic_max; "
                        "int diastolic_max"));
}

void tst_ECGConfig::answersHeartRates_data()
{
    addCases(heartRates);
}

void tst_ECGConfig::answersHeartRates()
{
    const auto &c = currentCase(heartRates);
    const auto config = configWith(c.params);
    QCOMPARE(config->validateHeartRate(c.heartRate), c.validated);
    QCOMPARE(int(config->getRatioForHeartRate(c.heartRate)), c.ratio);
}

void tst_ECGConfig::allowsExtrasystoles()
{
    const auto allows = [](const char *json, int type) {
        return configWith(json)->isExtraSystoleAllowed(RC_GUI::ExtraSystoleTypes_t(type));
    };
    const char *const some = R"({"ExtraSystoles": [2, 4]})";
    QVERIFY(allows("{}", 0) && !allows("{}", 2));
    QVERIFY(allows(some, 0) && allows(some, 4) && !allows(some, 3) && !allows(some, lowest));
    QVERIFY(configWith(R"({"ExtraSystoles": [0]})")->canHaveExtrasystoles());
    QVERIFY(!configWith(R"({"ExtraSystoles": []})")->canHaveExtrasystoles());
}

void tst_ECGConfig::copiesIndependently()
{
    const auto original = configWith(R"({"RateMin": 20, "RateMax": 200})");
    original->setRhythm(7);
    QObject parent;
    ECGConfig copy(*original, &parent);
    QCOMPARE(copy.getRhythm(), 7);
    QCOMPARE(copy.parent(), &parent);
    copy.append(QStringLiteral("RateMax"), 240);
    QCOMPARE(copy.getHeartRateMax(), 240);
    QCOMPARE(copy.getHeartRateMin(), 20);
    QCOMPARE(original->getHeartRateMax(), 200);
}

void tst_ECGConfig::answersScripts()
{
    const auto config = configWith(
        R"({"RhythmTypeName": "block", "RateType": 3, "DefaultRate": 60, "RateMin": 50, "RateMax": 65,
            "DefaultRatio": 1, "Ratios": [2, 1], "RatioTexts": ["3:2", "4:3"], "RatioHR": [50, 60],
            "ExtraSystoles": [0, 3], "MaxBPSys": 300, "MaxBPDia": 200})");
    config->setRhythm(166);
    ECGConfig empty;
    QJSEngine engine;
    const auto offer = [&engine](const char *name, ECGConfig *object) {
        QQmlEngine::setObjectOwnership(object, QQmlEngine::CppOwnership);
        engine.globalObject().setProperty(QString::fromLatin1(name), engine.newQObject(object));
    };
    offer("c", config.get());
    offer("empty", &empty);
    engine.evaluate(
        QStringLiteral("function properties(o) { return [o.rhythm, o.rhythmTypeName, o.rate_type, "
                       "o.heartrate_min, o.heartrate_max, o.heartrate_default, o.heartrate_fixed, "
                       "o.systolic_max, o.diastolic_max] }"
                       "function answers(o) { return [o.getParamValueAsInt('DefaultRatio'), "
                       "o.getRhythmTypeName(), o.getRateType(), o.getDefaultHeartRate(), "
                       "o.getHeartRateMin(), o.getHeartRateMax(), o.getFixedHeartRate(), "
                       "o.getSystolicBloodPressureMax(), o.getDiastolicBloodPressureMax(), "
                       "o.getParam('Rates')] }"));
    for (const auto &script : scripts)
        QCOMPARE(engine.evaluate(QString::fromLatin1(script.expression)).toString(),
                 QString::fromLatin1(script.result));
}

QTEST_GUILESS_MAIN(tst_ECGConfig)
#include "tst_ECGConfig.moc"
