#include <AdvancedAirwayTypes.h>
#include <AirwayBlockageTypes.h>
#include <BLSService.h>
#include <Battery.h>
#include <BreathingPatternTypes.h>
#include <CapillaryRefillTypes.h>
#include <ChestRiseTypes.h>
#include <EnlargedLiverTypes.h>
#include <Eyes.h>
#include <FontanelleTypes.h>
#include <HeadLimpTypes.h>
#include <HeadSeizureTypes.h>
#include <HeadTiltStateTypes.h>
#include <LaryngospasmTypes.h>
#include <LungComplianceTypes.h>
#include <MovementTypes.h>
#include <PharyngealObstructionTypes.h>
#include <Product.h>
#include <TracheostomaTypes.h>

#include <QJSEngine>
#include <QMetaEnum>
#include <QtTest>

namespace {

// clang-format off
const QMetaObject *const vocabulary[] = {
    &AdvancedAirwayTypes::staticMetaObject, &AirwayBlockageTypes::staticMetaObject,
    &BLSService::staticMetaObject, &Battery::staticMetaObject, &BreathingPatternTypes::staticMetaObject,
    &CapillaryRefillTypes::staticMetaObject, &ChestRiseTypes::staticMetaObject,
    &EnlargedLiverTypes::staticMetaObject, &Eyes::staticMetaObject, &FontanelleTypes::staticMetaObject,
    &HeadLimpTypes::staticMetaObject, &HeadSeizureTypes::staticMetaObject,
    &HeadTiltStateTypes::staticMetaObject, &LaryngospasmTypes::staticMetaObject,
    &LungComplianceTypes::staticMetaObject, &MovementTypes::staticMetaObject,
    &PharyngealObstructionTypes::staticMetaObject, &BM_HXCommon::Product::staticMetaObject,
    &TracheostomaTypes::staticMetaObject,
};
// clang-format on

QString nameOf(const QMetaObject &type)
{
    return QString::fromLatin1(type.className()).section(QStringLiteral("::"), -1);
}

// "BLSService sessionControlState_t sessionStop=0 ..."
QString lineOf(const QMetaObject &type, const QMetaEnum &enumeration)
{
    QString line = nameOf(type) + QLatin1Char(' ') + QLatin1String(enumeration.name());
    for (int i = 0; i < enumeration.keyCount(); ++i)
        line += QStringLiteral(" %1=%2").arg(QLatin1String(enumeration.key(i))).arg(enumeration.value(i));
    return line;
}

} // namespace

class tst_Vocabulary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void isTheSameAsTheDevices()
    {
        QStringList lines;
        for (const QMetaObject *type : vocabulary) {
            for (int i = 0; i < type->enumeratorCount(); ++i) {
                QVERIFY(!type->enumerator(i).isScoped() && !type->enumerator(i).isFlag());
                lines << lineOf(*type, type->enumerator(i));
            }
        }
        const auto &products = BM_HXCommon::Product::ManikinProductTypeMap;
        for (int manikin = -1; manikin <= 256; ++manikin) {
            const QString name = QString::fromLatin1(manikinTypeAsString(manikin));
            const int product = products.value(manikin, -1);
            if (product != -1 || name != QLatin1String("Unknown Manikin"))
                lines << QStringLiteral("manikin %1: product %2, %3")
                             .arg(QString::number(manikin), QString::number(product), name);
        }
        QFile file(QFINDTESTDATA("data/vocabulary.txt"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromLatin1(file.readAll().trimmed());
        QCOMPARE(lines,
                 text.arg(HXCOMMON_BRANTEL_BLE_ID).arg(HXCOMMON_BRANTEL_USB_ID).split(QLatin1Char('\n')));
    }

    void reachesScripts()
    {
        QJSEngine engine;
        for (const QMetaObject *type : vocabulary)
            engine.globalObject().setProperty(nameOf(*type), engine.newQMetaObject(type));
        const QString script = QStringLiteral("[BLSService.sessionConfig, Battery.BatteryLevelInvalid] + ''");
        QCOMPARE(engine.evaluate(script).toString(), QStringLiteral("255,-1"));
    }
};

QTEST_GUILESS_MAIN(tst_Vocabulary)
#include "tst_Vocabulary.moc"
