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
#include <QQmlComponent>
#include <QQmlEngine>
#include <QtTest>

#include <memory>

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

// The script's result in QML.
QString evaluateQml(QQmlEngine &engine, const QString &script)
{
    const QString text =
        QStringLiteral("import QtQml 2.15\nimport Olvex 1.0\nQtObject { property string x: %1 }");
    QQmlComponent component(&engine);
    component.setData(text.arg(script).toLatin1(), QUrl());
    const std::unique_ptr<QObject> object(component.create());
    return object->property("x").toString();
}

} // namespace

class tst_Vocabulary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QFile file(QFINDTESTDATA("data/vocabulary.txt"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString text = QString::fromLatin1(file.readAll().trimmed());
        m_lines = text.arg(HXCOMMON_BRANTEL_BLE_ID).arg(HXCOMMON_BRANTEL_USB_ID).split(QLatin1Char('\n'));
    }

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
            if (products.contains(manikin) || name != QLatin1String("Unknown Manikin"))
                lines << QStringLiteral("manikin %1: product %2, %3")
                             .arg(QString::number(manikin), QString::number(products.value(manikin, -1)),
                                  name);
        }
        QCOMPARE(lines, m_lines);
    }

    void reachesScripts()
    {
        QJSEngine scripts;
        QQmlEngine engine;
        for (const QMetaObject *type : vocabulary) {
            const QString name = nameOf(*type);
            scripts.globalObject().setProperty(name, scripts.newQMetaObject(type));
            qmlRegisterUncreatableMetaObject(*type, "Olvex", 1, 0, qPrintable(name), QString());
        }
        const QRegularExpression entry(QStringLiteral("(\\w+)=-?\\d+"));
        for (const QString &line : m_lines.filter(entry)) {
            // 'Eyes pupilSize_t PupilSizeSmall=' + Eyes.PupilSizeSmall + ...
            const QString type = line.section(QLatin1Char(' '), 0, 0);
            const QString script = QStringLiteral("'%1'").arg(line).replace(
                entry, QStringLiteral("\\1=' + %1.\\1 + '").arg(type));
            QCOMPARE(scripts.evaluate(script).toString(), line);
            if (type != QLatin1String("BLSService")) // QML hides keys that start with a lower-case letter
                QCOMPARE(evaluateQml(engine, script), line);
        }
    }

private:
    QStringList m_lines;
};

QTEST_GUILESS_MAIN(tst_Vocabulary)
#include "tst_Vocabulary.moc"
