#include <ECGLibrary.h>

#include "Cases.h"
#include "ChildProcess.h"
#include "LogCapture.h"

#include <QDir>
#include <QJSEngine>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMetaProperty>
#include <QPointer>
#include <QQmlEngine>

#include <memory>

namespace {

const struct {
    const char *name; // the parameters
    const char *answers; // "10>20": 10 becomes 20; "62>60(1)": and gives the ratio 1
} heartRateCases[] = {
    {"{}", "-2147483648>-2147483648"},
    {R"({"RateType": -1})", "80>80"},
    {R"({"RateType": -2147483648})", "2147483647>2147483647"},
    {R"({"RateType": 0, "RateMin": 20, "RateMax": 200})", "-2147483648>20 10>20 80>80 250>200"},
    {R"({"RateType": 0, "RateMin": 200, "RateMax": 20})", "80>20"},
    {R"({"RateType": 0})", "80>-1"},
    {R"({"RateType": 1, "FixedRate": 180})", "80>180"},
    {R"({"RateType": 1, "FixedRate": "fast"})", "80>-1"},
    // The nearest, of two the first. Squares from 1000000000 on never win, those beyond 32 bits wrap.
    {R"({"RateType": 2, "Rates": [75, 100, 150]})", "87>75 88>100 125>100 31772>150 31773>75"},
    {R"({"RateType": 2, "Rates": [150, 100]})", "125>150"},
    {R"({"RateType": 2, "Rates": [40, 55, 60]})", "46400>55"},
    {R"({"RateType": 2, "Rates": [75, -2147483648]})", "2147483647>-2147483648"},
    {R"({"RateType": 2, "Rates": ["75", "100"]})", "90>100"},
    {R"({"RateType": 2, "Rates": []})", "80>0"},
    {R"({"RateType": 2, "Rates": 75})", "80>0"},
    {R"({"RateType": 3, "Ratios": [2, 1, 0], "RatioHR": [50, 60, 65]})", "62>60(1) 55>50(2)"},
    {R"({"RateType": 3, "Ratios": [2, 1, 7], "RatioHR": [50, 60]})", "3>0(7)"},
    {R"({"RateType": 3, "Ratios": [2], "RatioHR": [50, 60]})", "60>50(2)"},
    {R"({"RateType": 3, "Ratios": [], "RatioHR": []})", "80>0(0)"},
    {R"({"RateType": 4})", "80>0"},
};

// What a script gets from a configuration and from an empty one, by the members of the class in order.
const char *const members = R"(int rhythm: 166,0
QString rhythmTypeName: block,
int rate_type: 3,-1
int heartrate_min: 50,-1
int heartrate_max: 65,-1
int heartrate_default: 60,-1
int heartrate_fixed: 70,-1
int systolic_max: 300,-1
int diastolic_max: 200,-1
QVariant getParam(QString)
int getParamValueAsInt(QString)
QString getRhythmTypeName(): block,
RC_GUI::RateTypes_t getRateType(): 3,-1
int getDefaultHeartRate(): 60,-1
int getHeartRateMin(): 50,-1
int getHeartRateMax(): 65,-1
int getFixedHeartRate(): 70,-1
int getSystolicBloodPressureMax(): 300,-1
int getDiastolicBloodPressureMax(): 200,-1
int validateHeartRate(int)
RC_GUI::AVBlockRatios_t getRatioForHeartRate(int)
bool canHaveExtrasystoles(): true,false
bool isExtraSystoleAllowed(RC_GUI::ExtraSystoleTypes_t))";

std::unique_ptr<ECGConfig> configWith(const char *json)
{
    auto config = std::make_unique<ECGConfig>(nullptr);
    const QVariantMap params = QJsonDocument::fromJson(json).object().toVariantMap();
    for (auto param = params.begin(); param != params.end(); ++param)
        config->append(param.key(), param.value());
    return config;
}

QString answer(ECGConfig &config, int heartRate)
{
    const int ratio = config.getRatioForHeartRate(heartRate);
    return QStringLiteral("%1>%2").arg(heartRate).arg(config.validateHeartRate(heartRate))
        + (ratio == -1 ? QString() : QStringLiteral("(%1)").arg(ratio));
}

ECGConfig *config(const char *age, int rhythm)
{
    return ECGLibraries::Instance().getECGConfig(QString::fromLatin1(age), rhythm);
}

} // namespace

class tst_ECGLibrary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void answersHeartRates_data() { addCases(heartRateCases); }

    void answersHeartRates()
    {
        const auto &c = currentCase(heartRateCases);
        const auto config = configWith(c.name);
        const QStringList expected = QString::fromLatin1(c.answers).split(QLatin1Char(' '));
        QStringList answers;
        for (const QString &text : expected)
            answers << answer(*config, text.section(QLatin1Char('>'), 0, 0).toInt());
        QCOMPARE(answers, expected);
    }

    void answersScripts()
    {
        auto config = configWith(
            R"({"RhythmTypeName": "block", "RateType": 3, "DefaultRate": 60, "RateMin": 50, "RateMax": 65,
                "FixedRate": 70, "DefaultRatio": 1, "Ratios": [2, 1], "RatioTexts": ["3:2", "4:3"],
                "RatioHR": [50, 60], "ExtraSystoles": [3, 4], "MaxBPSys": 300, "MaxBPDia": 200})");
        config->setRhythm(166);
        QJSEngine engine;
        engine.globalObject().setProperty(QStringLiteral("c"), engine.newQObject(config.release()));
        engine.globalObject().setProperty(QStringLiteral("empty"), engine.newQObject(new ECGConfig));
        const auto evaluate = [&engine](const char *script) {
            return engine.evaluate(QString::fromLatin1(script)).toString();
        };
        const auto line = [&evaluate](const QByteArray &type, const QByteArray &member) {
            const bool takesArguments = member.contains('(') && !member.endsWith("()");
            const QString declaration = QString::fromLatin1(type + ' ' + member);
            return takesArguments
                ? declaration
                : declaration + QLatin1String(": ") + evaluate("[c." + member + ", empty." + member + "]");
        };

        const QMetaObject &meta = ECGConfig::staticMetaObject;
        QStringList lines;
        for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i) {
            const QMetaProperty p = meta.property(i);
            QVERIFY(p.isReadable() && p.isConstant() && !p.isWritable() && !p.hasNotifySignal());
            lines << line(p.typeName(), p.name());
        }
        for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
            lines << line(meta.method(i).typeName(), meta.method(i).methodSignature());
        QCOMPARE(lines, QString::fromLatin1(members).split(QLatin1Char('\n')));

        QCOMPARE(evaluate("[c.getParam('RatioTexts').join('; '), c.getParam('RatioHR')[1] + 1,"
                          "empty.getParam('Rates'), c.getParamValueAsInt('DefaultRatio'),"
                          "c.validateHeartRate(58), c.getRatioForHeartRate(58)]"),
                 QStringLiteral("3:2; 4:3,61,,1,60,1"));
        QCOMPARE(evaluate("[c, empty].map(function(config) { return [0, 4, 2, 'x'].map(function(type) {"
                          "return config.isExtraSystoleAllowed(type) }) }).join(' ')"),
                 QStringLiteral("true,true,false,true true,false,false,true"));
    }

    void copiesAreIndependent()
    {
        const auto original = configWith(R"({"RateType": 2, "Rates": [50]})");
        original->setRhythm(7);
        QObject parent;
        ECGConfig copy(*original, &parent);
        copy.append(QStringLiteral("Rates"), QVariant::fromValue(QList<int>{75, 100})); // no QVariantList
        QVERIFY(copy.parent() == &parent && copy.getRhythm() == 7);
        QCOMPARE(copy.validateHeartRate(90), 100);
        QCOMPARE(original->validateHeartRate(90), 50);
    }

    void insertsAndReplaces()
    {
        ECGConfig replaced; // not deleted
        auto *config = new ECGConfig;
        ECGLibrary library;
        library.insert(&replaced);
        QVERIFY(QMetaObject::invokeMethod(&library, "insert", Q_ARG(ECGConfig *, config)));
        config->setRhythm(-5);
        library.insert(config); // under two ids, and yet deleted once
        QCOMPARE(library.configs(), (QMap<int, ECGConfig *>{{-5, config}, {0, config}}));
        QCOMPARE(library.getECGConfig(-5), config);

        const LogCapture capture;
        library.insert(nullptr);
        QCOMPARE(library.configs().size(), 2);
        QCOMPARE(capture.lines(),
                 QStringList(QStringLiteral(
                     "default.warning: ECGLibrary::insert: there is no configuration to insert")));
    }

    // Before any test that makes ECGLibraries, which builds all of them.
    void buildsOnDemand()
    {
        ECGLibrary::cleanup(); // there is nothing to delete yet
        const ECGLibrary *const baby = ECGLibrary::getBabyECGLibrary();
        QVERIFY(baby == ECGLibrary::m_BabyECGLibrary && baby == ECGLibrary::getBabyECGLibrary());
        QVERIFY(ECGLibrary::m_DefaultECGLibrary);
        QVERIFY(!ECGLibrary::m_ChildECGLibrary && !ECGLibrary::m_InfantECGLibrary);
    }

    void selectsByAge()
    {
        QCOMPARE(config("child", 7), ECGLibrary::getChildECGLibrary()->getECGConfig(7));
        QCOMPARE(config("baby", 7), ECGLibrary::getBabyECGLibrary()->getECGConfig(7));
        QCOMPARE(config("infant", 7), ECGLibrary::getInfantECGLibrary()->getECGConfig(7));

        auto *added = new ECGConfig;
        added->setRhythm(1000);
        ECGLibrary::getDefaultECGLibrary()->insert(added);
        for (const char *adult : {"default", "adult", "", "Child", "BABY", "infant "})
            QCOMPARE(config(adult, 1000), added);
        for (const char *age : {"child", "infant", "baby"})
            QVERIFY(!config(age, 1000)); // never falls back to the adults'
    }

    void scriptsDeleteNothing()
    {
        const QPointer<ECGLibraries> libraries = &ECGLibraries::Instance();
        const QPointer<ECGLibrary> library = ECGLibrary::getBabyECGLibrary();
        const QPointer<ECGConfig> vt = config("baby", 138), svt = config("baby", 181);
        {
            QJSEngine engine;
            engine.globalObject().setProperty(QStringLiteral("libraries"), engine.newQObject(libraries));
            engine.globalObject().setProperty(QStringLiteral("library"), engine.newQObject(library));
            const auto result = engine.evaluate(QStringLiteral(
                "var vt = libraries.getECGConfig('baby', 138);"
                "var svt = library.getECGConfig(181);"
                "[vt.heartrate_max, svt.rhythmTypeName, libraries.getECGConfig('baby', 999)].join()"));
            QCOMPARE(result.toString(), QStringLiteral("320,svt,"));
            engine.evaluate(QStringLiteral("vt = svt = library = libraries = null"));
            engine.collectGarbage();
        }
        QVERIFY(libraries && library && vt && svt);
    }

    void holdsTheRhythmsUntilExit()
    {
        QFile rhythms(QFINDTESTDATA("data/rhythms.txt"));
        QVERIFY(rhythms.open(QIODevice::ReadOnly));
        const ChildResult result = runChild(QStringLiteral(RHYTHM_DUMP_PATH), {}, QDir::currentPath());
        QVERIFY(!result.crashed && result.exitCode == 0);
        QCOMPARE(result.out.split('\n'), rhythms.readAll().split('\n'));
        QCOMPARE(
            result.err.simplified(),
            QByteArray("ECGLibraries cleanup deleted: adult deleted: child deleted: baby deleted: infant "
                       "pointers: left dangling"));
    }
};

QTEST_GUILESS_MAIN(tst_ECGLibrary)
#include "tst_ECGLibrary.moc"
