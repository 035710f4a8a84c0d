#include <ECGLibrary.h>

#include <QJSEngine>
#include <QMetaMethod>
#include <QMetaProperty>
#include <QQmlEngine>
#include <QtTest>

#include <limits>
#include <memory>

using Params = QVariantMap;

namespace {

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();

std::unique_ptr<ECGConfig> configWith(const Params &params)
{
    auto config = std::make_unique<ECGConfig>(nullptr);
    for (auto param = params.begin(); param != params.end(); ++param)
        config->append(param.key(), param.value());
    return config;
}

Params rateType(int type, Params params = {})
{
    params.insert(QStringLiteral("RateType"), type);
    return params;
}

Params range(int min, int max)
{
    return rateType(0, {{QStringLiteral("RateMin"), min}, {QStringLiteral("RateMax"), max}});
}

Params fixed(const QVariant &rate)
{
    return rateType(1, {{QStringLiteral("FixedRate"), rate}});
}

Params discrete(const QVariantList &rates)
{
    return rateType(2, {{QStringLiteral("Rates"), rates}});
}

Params ratios(const QVariantList &values, const QVariantList &heartRates)
{
    return rateType(3, {{QStringLiteral("Ratios"), values}, {QStringLiteral("RatioHR"), heartRates}});
}

} // namespace

class tst_ECGConfig : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void listsItsInterfaceInOrder();
    void validatesHeartRates_data();
    void validatesHeartRates();
    void findsRatios_data();
    void findsRatios();
    void allowsExtrasystoles_data();
    void allowsExtrasystoles();
    void copiesIndependently();
    void answersScripts_data();
    void answersScripts();
};

void tst_ECGConfig::listsItsInterfaceInOrder()
{
    const QMetaObject &meta = ECGConfig::staticMetaObject;
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        methods << QString::fromLatin1(meta.method(i).typeName()) + QLatin1Char(' ')
                + QString::fromLatin1(meta.method(i).methodSignature());
    QCOMPARE(methods.join(QLatin1String("; ")),
             QStringLiteral("QVariant getParam(QString); int getParamValueAsInt(QString); "
                            "QString getRhythmTypeName(); RC_GUI::RateTypes_t getRateType(); "
                            "int getDefaultHeartRate(); int getHeartRateMin(); int getHeartRateMax(); "
                            "int getFixedHeartRate(); int getSystolicBloodPressureMax(); "
                            "int getDiastolicBloodPressureMax(); int validateHeartRate(int); "
                            "RC_GUI::AVBlockRatios_t getRatioForHeartRate(int); bool canHaveExtrasystoles(); "
                            "bool isExtraSystoleAllowed(RC_GUI::ExtraSystoleTypes_t)"));

    QStringList properties;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
        const QMetaProperty property = meta.property(i);
        properties << QString::fromLatin1(property.typeName()) + QLatin1Char(' ')
                + QString::fromLatin1(property.name());
        QVERIFY2(property.isReadable() && property.isConstant() && property.isScriptable()
                     && property.isStored(),
                 property.name());
        QVERIFY2(!property.isWritable() && !property.hasNotifySignal(), property.name());
    }
    QCOMPARE(
        properties.join(QLatin1String("; ")),
        QStringLiteral("int rhythm; QString rhythmTypeName; int rate_type; int heartrate_min; "
                       "int heartrate_max; int heartrate_default; int heartrate_fixed; int systolic_max; "
                       "int diastolic_max"));
}

void tst_ECGConfig::validatesHeartRates_data()
{
    QTest::addColumn<Params>("params");
    QTest::addColumn<int>("heartRate");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const Params &params, int heartRate, int expected) {
        QTest::addRow("%s: %d", name, heartRate) << params << heartRate << expected;
    };
    row("no rate type", {}, lowest, lowest);
    row("rate type -1", rateType(-1), 80, 80);
    row("rate type 5", rateType(5), 80, 80);
    row("rate type lowest", rateType(lowest), highest, highest);

    row("range", range(20, 200), 10, 20);
    row("range", range(20, 200), 250, 200);
    row("range", range(20, 200), 80, 80);
    row("range", range(20, 200), lowest, 20);
    row("range", range(20, 200), highest, 200);
    row("reversed range", range(200, 20), 80, 20);
    row("range without bounds", rateType(0), 80, -1);

    row("fixed", fixed(180), 80, 180);
    row("fixed at 0", fixed(0), 80, 0);
    row("fixed, numeric text", fixed(QStringLiteral("75")), 80, 75);
    row("fixed, other text", fixed(QStringLiteral("fast")), 80, -1);
    row("fixed, list", fixed(QVariantList{75}), 80, -1);
    row("fixed, invalid", fixed(QVariant()), 80, -1);

    row("discrete", discrete({75, 100, 150}), 87, 75);
    row("discrete", discrete({75, 100, 150}), 88, 100);
    row("tie", discrete({75, 100, 150}), 125, 100);
    row("unsorted tie", discrete({150, 100}), 125, 150);
    row("discrete texts", discrete({QStringLiteral("75"), QStringLiteral("100")}), 90, 100);
    row("QList<int>", rateType(2, {{QStringLiteral("Rates"), QVariant::fromValue(QList<int>{75, 100})}}), 90,
        100);
    row("empty", discrete({}), 80, 0);
    row("no list", rateType(2, {{QStringLiteral("Rates"), 75}}), 80, 0);
    // Squares from 1000000000 on never win, those beyond 32 bits wrap.
    row("31622 above", discrete({75, 100, 150}), 31772, 150);
    row("31623 above", discrete({75, 100, 150}), 31773, 75);
    row("negative square", discrete({40, 55, 60}), 46400, 55);
    row("farthest", discrete({75, 100, lowest}), highest, lowest);

    row("ratio", ratios({2, 1, 0}, {50, 60, 65}), 62, 60);
    row("short RatioHR", ratios({2, 1, 0}, {50}), 20, 0);
    row("long RatioHR", ratios({2}, {50, 60, 65}), 65, 50);
    row("no ratios", ratios({}, {}), 65, 0);

    row("no rate", rateType(4), 80, 0);
}

void tst_ECGConfig::validatesHeartRates()
{
    QFETCH(Params, params);
    QFETCH(int, heartRate);
    QTEST(configWith(params)->validateHeartRate(heartRate), "expected");
}

void tst_ECGConfig::findsRatios_data()
{
    QTest::addColumn<Params>("params");
    QTest::addColumn<int>("heartRate");
    QTest::addColumn<int>("expected");
    QTest::newRow("nearest") << ratios({2, 1, 0}, {50, 60, 65}) << 62 << 1;
    QTest::newRow("tie") << ratios({2, 1, 0}, {50, 60, 65}) << 55 << 2;
    QTest::newRow("short RatioHR") << ratios({2, 1, 7}, {50, 60}) << 3 << 7;
    QTest::newRow("long RatioHR") << ratios({2, 1}, {50, 60, 65}) << highest << 2;
    QTest::newRow("no ratios") << ratios({}, {50}) << 50 << 0;
    QTest::newRow("other rate type") << range(20, 200) << 62 << -1;
    QTest::newRow("no rate type") << Params() << 62 << -1;
}

void tst_ECGConfig::findsRatios()
{
    QFETCH(Params, params);
    QFETCH(int, heartRate);
    QTEST(int(configWith(params)->getRatioForHeartRate(heartRate)), "expected");
}

void tst_ECGConfig::allowsExtrasystoles_data()
{
    QTest::addColumn<QVariantList>("listed");
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("expected");
    QTest::newRow("none, nothing listed") << QVariantList{} << 0 << true;
    QTest::newRow("none, not listed") << QVariantList{2} << 0 << true;
    QTest::newRow("listed") << QVariantList{0, 2, 4} << 4 << true;
    QTest::newRow("not listed") << QVariantList{0, 2, 4} << 3 << false;
    QTest::newRow("nothing listed") << QVariantList{} << 2 << false;
    QTest::newRow("lowest") << QVariantList{0, 2, 4} << lowest << false;
}

void tst_ECGConfig::allowsExtrasystoles()
{
    QFETCH(QVariantList, listed);
    QFETCH(int, type);
    const auto config = configWith({{QStringLiteral("ExtraSystoles"), listed}});
    QTEST(config->isExtraSystoleAllowed(RC_GUI::ExtraSystoleTypes_t(type)), "expected");
    QCOMPARE(config->canHaveExtrasystoles(), !listed.isEmpty());
}

void tst_ECGConfig::copiesIndependently()
{
    const auto original = configWith(range(20, 200));
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

void tst_ECGConfig::answersScripts_data()
{
    QTest::addColumn<QString>("expression");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *expression, const char *expected) {
        QTest::newRow(expression) << QString::fromLatin1(expression) << QString::fromLatin1(expected);
    };
    row("c.getParam('RatioTexts').join(' ')", "3:2 4:3");
    row("c.getParam('RatioHR')[1] + 1", "61");
    row("c.getParam('Rates')", "undefined");
    row("c.getParamValueAsInt('DefaultRatio')", "1");
    row("c.getParamValueAsInt('Rates')", "-1");
    row("c.getRhythmTypeName()", "block");
    row("c.getRateType()", "3");
    row("c.getDefaultHeartRate()", "60");
    row("c.getHeartRateMin()", "50");
    row("c.getHeartRateMax()", "65");
    row("c.getFixedHeartRate()", "-1");
    row("c.getSystolicBloodPressureMax()", "300");
    row("c.getDiastolicBloodPressureMax()", "200");
    row("c.validateHeartRate(52)", "50");
    row("c.validateHeartRate(NaN)", "50");
    row("c.getRatioForHeartRate(58)", "1");
    row("c.canHaveExtrasystoles()", "true");
    row("c.isExtraSystoleAllowed(3)", "true");
    row("c.isExtraSystoleAllowed(2)", "false");
    row("c.isExtraSystoleAllowed('x')", "true"); // no number reads as 0
    row("c.isExtraSystoleAllowed()", "Error: Insufficient arguments");
    row("properties(c)", "166,block,3,50,65,60,-1,300,200");
    row("properties(empty)", "0,,-1,-1,-1,-1,-1,-1,-1");
    row("empty.getParam('RateMin')", "undefined");
    row("empty.canHaveExtrasystoles()", "false");
    row("'use strict'; c.rhythm = 7", "TypeError: Cannot assign to read-only property \"rhythm\"");
}

void tst_ECGConfig::answersScripts()
{
    const auto config = configWith(ratios({2, 1}, {50, 60}));
    config->setRhythm(166);
    config->append(QStringLiteral("RhythmTypeName"), QStringLiteral("block"));
    config->append(QStringLiteral("RatioTexts"), QStringList{QStringLiteral("3:2"), QStringLiteral("4:3")});
    config->append(QStringLiteral("ExtraSystoles"), QVariantList{0, 3});
    const QPair<const char *, int> integers[] = {{"DefaultRatio", 1}, {"DefaultRate", 60}, {"RateMin", 50},
                                                 {"RateMax", 65},     {"MaxBPSys", 300},   {"MaxBPDia", 200}};
    for (const auto &[key, value] : integers)
        config->append(QString::fromLatin1(key), value);

    ECGConfig empty;
    QJSEngine engine;
    for (ECGConfig *object : {config.get(), &empty})
        QQmlEngine::setObjectOwnership(object, QQmlEngine::CppOwnership);
    engine.globalObject().setProperty(QStringLiteral("c"), engine.newQObject(config.get()));
    engine.globalObject().setProperty(QStringLiteral("empty"), engine.newQObject(&empty));
    engine.evaluate(
        QStringLiteral("function properties(o) { return [o.rhythm, o.rhythmTypeName, o.rate_type, "
                       "o.heartrate_min, o.heartrate_max, o.heartrate_default, o.heartrate_fixed, "
                       "o.systolic_max, o.diastolic_max] }"));
    QFETCH(QString, expression);
    QTEST(engine.evaluate(expression).toString(), "expected");
}

QTEST_GUILESS_MAIN(tst_ECGConfig)
#include "tst_ECGConfig.moc"
