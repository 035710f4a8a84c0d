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

Q_DECLARE_METATYPE(const QMetaObject *)

namespace {

using Values = QVector<int>;

// count consecutive values
Values from(int first, int count)
{
    Values values(count);
    std::iota(values.begin(), values.end(), first);
    return values;
}

Values valuesOf(const QMetaEnum &enumeration)
{
    Values values;
    for (int i = 0; i < enumeration.keyCount(); ++i)
        values << enumeration.value(i);
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
    void keepsValuesInOrder_data();
    void keepsValuesInOrder();
    void findsOddValues();
    void reachesScripts_data();
    void reachesScripts();
};

// As an application would.
void tst_Vocabulary::initTestCase()
{
    for (const QMetaObject *type : vocabulary)
        qmlRegisterUncreatableMetaObject(*type, "Olvex", 1, 0, qPrintable(typeName(*type)),
                                         QStringLiteral("holds enumerations"));
}

void tst_Vocabulary::keepsValuesInOrder_data()
{
    QTest::addColumn<const QMetaObject *>("type");
    QTest::addColumn<QString>("name");
    QTest::addColumn<Values>("values");
    const auto row = [](const QMetaObject &type, const char *name, const Values &values) {
        QTest::newRow(name) << &type << QString::fromLatin1(name) << values;
    };
    row(AdvancedAirwayTypes::staticMetaObject, "advancedairway_t", from(0, 6));
    row(AirwayBlockageTypes::staticMetaObject, "Types", from(0, 6) + Values{8, 10, 12});
    row(BLSService::staticMetaObject, "sessionControlState_t", from(0, 5) + Values{255});
    row(Battery::staticMetaObject, "BatteryLevels", from(-1, 5));
    row(Battery::staticMetaObject, "BatteryThresholds", {100, 95, 15, 10, 5, 3});
    row(Battery::staticMetaObject, "BUBatteryStatus", from(0, 3));
    row(BreathingPatternTypes::staticMetaObject, "breathingPattern_t", from(-1, 4));
    row(CapillaryRefillTypes::staticMetaObject, "capillaryRefill_t", from(0, 2));
    row(ChestRiseTypes::staticMetaObject, "chestRise_t", from(0, 5));
    row(EnlargedLiverTypes::staticMetaObject, "enlargedLiver_t", from(0, 2));
    row(Eyes::staticMetaObject, "pupilSize_t", from(1, 3));
    row(Eyes::staticMetaObject, "eyelidStatus_t", from(1, 5));
    row(Eyes::staticMetaObject, "blinkRate_t", from(1, 8));
    row(Eyes::staticMetaObject, "lightSensitivity_t", from(1, 5));
    row(Eyes::staticMetaObject, "eyeSelection_t", from(1, 3));
    row(FontanelleTypes::staticMetaObject, "Fontanelle_t", from(0, 2));
    row(HeadLimpTypes::staticMetaObject, "HeadLimp_t", from(0, 2));
    row(HeadSeizureTypes::staticMetaObject, "HeadSeizure_t", from(0, 2));
    row(HeadTiltStateTypes::staticMetaObject, "headtiltstate_t", from(0, 6));
    row(LaryngospasmTypes::staticMetaObject, "laryngospasm_t", from(0, 3));
    row(LungComplianceTypes::staticMetaObject, "lungCompliance_t", {0, 67, 50, 33, 100});
    row(MovementTypes::staticMetaObject, "movementState_t", from(1, 6));
    row(PharyngealObstructionTypes::staticMetaObject, "pharyngealobstruction_t", from(0, 2));
    row(TracheostomaTypes::staticMetaObject, "tracheostoma_t", {0, 50, 100});
    using namespace BM_HXCommon;
    row(Product::staticMetaObject, "manufacturerId_t",
        {HXCOMMON_BRANTEL_BLE_ID, HXCOMMON_BRANTEL_USB_ID, 0x0483});
    row(Product::staticMetaObject, "manufacturerProductId_t",
        from(0, 10) + from(12, 17) + from(31, 12) + Values{48, 100, 101, 128, 0xDF11, 0x5740});
}

void tst_Vocabulary::keepsValuesInOrder()
{
    QFETCH(const QMetaObject *, type);
    QFETCH(QString, name);
    const QMetaEnum enumeration = type->enumerator(type->indexOfEnumerator(name.toLatin1().constData()));
    QVERIFY(enumeration.isValid());
    QVERIFY(!enumeration.isScoped() && !enumeration.isFlag());
    QTEST(valuesOf(enumeration), "values");
}

void tst_Vocabulary::findsOddValues()
{
    const auto airway = QMetaEnum::fromType<AirwayBlockageTypes::Types>();
    QVERIFY(!airway.valueToKey(6));
    QCOMPARE(airway.valueToKey(8), "LeftPartialRightClear");
    QCOMPARE(QMetaEnum::fromType<BreathingPatternTypes::breathingPattern_t>().keyToValue("Minus1"), -1);
    QCOMPARE(QMetaEnum::fromType<Battery::BatteryLevels>().valueToKey(-1), "BatteryLevelInvalid");
    QCOMPARE(QMetaEnum::fromType<BLSService::sessionControlState_t>().valueToKey(255), "sessionConfig");
    QCOMPARE(QMetaEnum::fromType<LungComplianceTypes::lungCompliance_t>().key(1), "SixtySeven");
    QVERIFY(!QMetaEnum::fromType<BM_HXCommon::Product::manufacturerProductId_t>().valueToKey(43));
}

void tst_Vocabulary::reachesScripts_data()
{
    QTest::addColumn<const QMetaObject *>("type");
    for (const QMetaObject *type : vocabulary)
        QTest::newRow(type->className()) << type;
}

void tst_Vocabulary::reachesScripts()
{
    QFETCH(const QMetaObject *, type);
    QQmlEngine engine;
    const QString name = typeName(*type);
    engine.rootContext()->setContextProperty(QStringLiteral("made"),
                                             QVariant::fromValue(engine.newQMetaObject(type)));
    QJSEngine scripts;
    scripts.globalObject().setProperty(name, scripts.newQMetaObject(type));

    for (const auto &[key, value] : entriesOf(*type)) {
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
