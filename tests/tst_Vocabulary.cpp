#include "VocabularyList.h"

#include <QJSEngine>
#include <QMetaEnum>
#include <QQmlComponent>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQmlExpression>
#include <QtTest>

#include <memory>
#include <numeric>

namespace {

using Values = QVector<int>;

// count consecutive values
Values from(int first, int count)
{
    Values values(count);
    std::iota(values.begin(), values.end(), first);
    return values;
}

QString typeName(const QMetaObject &type)
{
    return QString::fromLatin1(type.className()).section(QStringLiteral("::"), -1);
}

// All keys of a type with their values.
QVector<QPair<QString, int>> entriesOf(const QMetaObject &type)
{
    QVector<QPair<QString, int>> entries;
    for (int e = 0; e < type.enumeratorCount(); ++e) {
        for (int i = 0; i < type.enumerator(e).keyCount(); ++i)
            entries.append({QString::fromLatin1(type.enumerator(e).key(i)), type.enumerator(e).value(i)});
    }
    return entries;
}

// The result of an expression in QML, or the text of its error.
QVariant evaluateQml(QQmlEngine &engine, const QString &expression)
{
    QQmlComponent component(&engine);
    component.setData("import QtQml 2.15\nimport Olvex 1.0\nQtObject { function evaluate() { return "
                          + expression.toLatin1() + " } }",
                      QUrl());
    const std::unique_ptr<QObject> object(component.create());
    QQmlExpression call(engine.rootContext(), object.get(), QStringLiteral("evaluate()"));
    const QVariant result = call.evaluate();
    return call.hasError() ? QVariant(call.error().description()) : result;
}

} // namespace

class tst_Vocabulary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void keepsValuesInOrder();
    void reachesScripts();

private:
    static void reachesScripts(const QMetaObject &type);
};

// As an application would.
void tst_Vocabulary::initTestCase()
{
    for (const QMetaObject *type : vocabulary)
        qmlRegisterUncreatableMetaObject(*type, "Olvex", 1, 0, qPrintable(typeName(*type)),
                                         QStringLiteral("holds enumerations"));
}

void tst_Vocabulary::keepsValuesInOrder()
{
    const struct {
        const char *name;
        const QMetaObject *type;
        Values values;
    } enumerations[] = {
        {"advancedairway_t", &AdvancedAirwayTypes::staticMetaObject, from(0, 6)},
        {"Types", &AirwayBlockageTypes::staticMetaObject, from(0, 6) + Values{8, 10, 12}},
        {"sessionControlState_t", &BLSService::staticMetaObject, from(0, 5) + Values{255}},
        {"BatteryLevels", &Battery::staticMetaObject, from(-1, 5)},
        {"BatteryThresholds", &Battery::staticMetaObject, {100, 95, 15, 10, 5, 3}},
        {"BUBatteryStatus", &Battery::staticMetaObject, from(0, 3)},
        {"breathingPattern_t", &BreathingPatternTypes::staticMetaObject, from(-1, 4)},
        {"capillaryRefill_t", &CapillaryRefillTypes::staticMetaObject, from(0, 2)},
        {"chestRise_t", &ChestRiseTypes::staticMetaObject, from(0, 5)},
        {"enlargedLiver_t", &EnlargedLiverTypes::staticMetaObject, from(0, 2)},
        {"pupilSize_t", &Eyes::staticMetaObject, from(1, 3)},
        {"eyelidStatus_t", &Eyes::staticMetaObject, from(1, 5)},
        {"blinkRate_t", &Eyes::staticMetaObject, from(1, 8)},
        {"lightSensitivity_t", &Eyes::staticMetaObject, from(1, 5)},
        {"eyeSelection_t", &Eyes::staticMetaObject, from(1, 3)},
        {"Fontanelle_t", &FontanelleTypes::staticMetaObject, from(0, 2)},
        {"HeadLimp_t", &HeadLimpTypes::staticMetaObject, from(0, 2)},
        {"HeadSeizure_t", &HeadSeizureTypes::staticMetaObject, from(0, 2)},
        {"headtiltstate_t", &HeadTiltStateTypes::staticMetaObject, from(0, 6)},
        {"laryngospasm_t", &LaryngospasmTypes::staticMetaObject, from(0, 3)},
        {"lungCompliance_t", &LungComplianceTypes::staticMetaObject, {0, 67, 50, 33, 100}},
        {"movementState_t", &MovementTypes::staticMetaObject, from(1, 6)},
        {"pharyngealobstruction_t", &PharyngealObstructionTypes::staticMetaObject, from(0, 2)},
        {"tracheostoma_t", &TracheostomaTypes::staticMetaObject, {0, 50, 100}},
        {"manufacturerId_t",
         &BM_HXCommon::Product::staticMetaObject,
         {HXCOMMON_BRANTEL_BLE_ID, HXCOMMON_BRANTEL_USB_ID, 0x0483}},
        {"manufacturerProductId_t", &BM_HXCommon::Product::staticMetaObject,
         from(0, 10) + from(12, 17) + from(31, 12) + Values{48, 100, 101, 128, 0xDF11, 0x5740}},
    };
    for (const auto &c : enumerations) {
        const QMetaEnum enumeration = c.type->enumerator(c.type->indexOfEnumerator(c.name));
        QVERIFY2(enumeration.isValid() && !enumeration.isScoped() && !enumeration.isFlag(), c.name);
        Values values;
        for (int i = 0; i < enumeration.keyCount(); ++i)
            values << enumeration.value(i);
        QVERIFY2(values == c.values, c.name);
    }
    QCOMPARE(QMetaEnum::fromType<AirwayBlockageTypes::Types>().valueToKey(8), "LeftPartialRightClear");
    QCOMPARE(QMetaEnum::fromType<BreathingPatternTypes::breathingPattern_t>().keyToValue("Minus1"), -1);
    QCOMPARE(QMetaEnum::fromType<Battery::BatteryLevels>().valueToKey(-1), "BatteryLevelInvalid");
    QCOMPARE(QMetaEnum::fromType<BLSService::sessionControlState_t>().valueToKey(255), "sessionConfig");
    QCOMPARE(QMetaEnum::fromType<LungComplianceTypes::lungCompliance_t>().key(1), "SixtySeven");
}

void tst_Vocabulary::reachesScripts()
{
    for (const QMetaObject *type : vocabulary)
        reachesScripts(*type);
}

void tst_Vocabulary::reachesScripts(const QMetaObject &type)
{
    QQmlEngine engine;
    const QString name = typeName(type);
    engine.rootContext()->setContextProperty(QStringLiteral("made"),
                                             QVariant::fromValue(engine.newQMetaObject(&type)));
    QJSEngine scripts;
    scripts.globalObject().setProperty(name, scripts.newQMetaObject(&type));

    const auto entries = entriesOf(type);
    for (const auto &[key, value] : entries) {
        const QString expression = name + QLatin1Char('.') + key;
        QCOMPARE(scripts.evaluate(expression).toVariant(), QVariant(value));
        QCOMPARE(evaluateQml(engine, QStringLiteral("made.") + key), QVariant(value));
        const QVariant byType = key.at(0).isUpper()
            ? QVariant(value)
            : QStringLiteral(
                  "TypeError: Cannot access enum value '%1' of '%2', enum values need to start with "
                  "an uppercase letter.")
                  .arg(key, name);
        QCOMPARE(evaluateQml(engine, expression), byType);
    }
}

QTEST_GUILESS_MAIN(tst_Vocabulary)
#include "tst_Vocabulary.moc"
