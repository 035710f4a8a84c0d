#include <ECGLibrary.h>

#include "Cases.h"
#include "ChildProcess.h"

#include <QDir>
#include <QJSEngine>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPointer>
#include <QScopedValueRollback>

#include <cstdio>
#include <memory>

namespace {

const struct {
    const char *name; // the parameters
    const char *answers; // "10>20": 10 becomes 20; "62>60(1)": and gives the ratio 1
} heartRateCases[] = {
    {"{}", "-2147483648>-2147483648"},
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
    {R"({"RateType": 3, "Ratios": [2, 1, 0], "RatioHR": [50, 60, 65]})", "62>60(1) 55>50(2)"},
    {R"({"RateType": 3, "Ratios": [2, 1, 7], "RatioHR": [50, 60]})", "3>0(7)"},
    {R"({"RateType": 3, "Ratios": [2], "RatioHR": [50, 60]})", "60>50(2)"},
    {R"({"RateType": 3, "Ratios": [], "RatioHR": []})", "80>0(0)"},
    {R"({"RateType": 4})", "80>0"},
};

std::unique_ptr<ECGConfig> configWith(const char *json)
{
    auto config = std::make_unique<ECGConfig>(nullptr);
    const QVariantMap params = QJsonDocument::fromJson(json).object().toVariantMap();
    for (auto param = params.begin(); param != params.end(); ++param)
        config->append(param.key(), param.value());
    return config;
}

// The rhythm and its parameters, with the types of their values: 7 {"RhythmTypeName":"sinus",...}
QByteArray lineOf(const ECGConfig &config)
{
    QJsonObject params;
    for (const char *name : {"RhythmTypeName", "RateType", "DefaultRate", "RateMin", "RateMax", "FixedRate",
                             "Rates", "DefaultRatio", "Ratios", "RatioTexts", "RatioHR", "DefaultAmplitude",
                             "AmplitudeMin", "AmplitudeMax", "ExtraSystoles", "MaxBPSys", "MaxBPDia"}) {
        const QVariant value = config.getParam(QString::fromLatin1(name));
        if (value.isValid())
            params.insert(QLatin1String(name), QJsonValue::fromVariant(value));
    }
    return QByteArray::number(config.getRhythm()) + ' '
        + QJsonDocument(params).toJson(QJsonDocument::Compact);
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
        for (const QString &answer : expected) {
            const int heartRate = answer.section(QLatin1Char('>'), 0, 0).toInt();
            const int ratio = config->getRatioForHeartRate(heartRate);
            answers << text("%1>%2").arg(heartRate).arg(config->validateHeartRate(heartRate))
                    + (ratio == -1 ? QString() : text("(%1)").arg(ratio));
        }
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
        engine.globalObject().setProperty(text("c"), engine.newQObject(config.release()));
        engine.globalObject().setProperty(text("empty"), engine.newQObject(new ECGConfig));
        engine.evaluate(text("all = o => Object.keys(o).filter(name => "
                             "/^(rh|rate|heart|sys|dia|can|get(?!Param|Ratio))/.test(name))"
                             ".map(name => typeof o[name] === 'function' ? o[name]() : o[name]);"
                             "allowed = (o, ...types) => types.map(type => o.isExtraSystoleAllowed(type))"));
        const QPair<const char *, const char *> scripts[] = {
            {"all(c)", "166,block,3,50,65,60,70,300,200,block,3,60,50,65,70,300,200,true"},
            {"all(empty)", "0,,-1,-1,-1,-1,-1,-1,-1,,-1,-1,-1,-1,-1,-1,-1,false"},
            {"[c, empty].map(o => o.getParamValueAsInt('DefaultRatio'))", "1,-1"},
            {"[c.getParam('RatioHR')[1] + 1, c.getParam('RatioTexts'), c.getParam('Rates')]", "61,3:2,4:3,"},
            {"[c.validateHeartRate(58), c.getRatioForHeartRate(58)]", "60,1"},
            {"[allowed(c, 0, 4, 2, 'x'), allowed(empty, 0, 4)]", "true,true,false,true,true,false"},
        };
        for (const auto &[script, result] : scripts)
            QCOMPARE(engine.evaluate(QLatin1String(script)).toString(), QLatin1String(result));
    }

    void insertsAndCopies()
    {
        ECGConfig *const config = configWith(R"({"RateType": 2, "Rates": [50]})").release();
        ECGConfig replaced; // not deleted
        ECGLibrary library;
        library.insert(&replaced);
        library.insert(config);
        config->setRhythm(-5);
        library.insert(config); // under two ids, and yet deleted once
        QTest::ignoreMessage(QtWarningMsg, "ECGLibrary::insert: there is no configuration to insert");
        library.insert(nullptr);
        QCOMPARE(library.configs(), (QMap<int, ECGConfig *>{{-5, config}, {0, config}}));

        QObject parent;
        ECGConfig copy(*config, &parent);
        copy.append(text("Rates"), QVariant::fromValue(QList<int>{75, 100})); // no QVariantList
        QVERIFY(copy.parent() == &parent && copy.getRhythm() == -5);
        QCOMPARE(copy.validateHeartRate(90), 100);
        QCOMPARE(config->validateHeartRate(90), 50);
    }

    // Lists all rhythms of the adults, and those of the other ages that differ from them.
    void holdsTheRhythmsOfAllAges()
    {
        if (!ECGLibrary::m_DefaultECGLibrary) { // alone in its process, see below
            ECGLibrary::cleanup(); // there is nothing to delete yet
            const ECGLibrary *const baby = ECGLibrary::getBabyECGLibrary();
            QVERIFY(baby == ECGLibrary::m_BabyECGLibrary && ECGLibrary::m_DefaultECGLibrary);
            QVERIFY(!ECGLibrary::m_ChildECGLibrary && !ECGLibrary::m_InfantECGLibrary); // built on demand
        }
        ECGLibraries::Instance();
        QByteArrayList lines;
        const ECGLibrary *const adults = ECGLibrary::m_DefaultECGLibrary;
        const auto list = [&lines, adults](const char *age, const ECGLibrary *library) {
            connect(library, &QObject::destroyed, library, [age] {
                std::fprintf(stderr, "%s: %s\n", ECGLibrary::m_DefaultECGLibrary ? "deleted" : "reset", age);
            });
            lines << age + (": " + QByteArray::number(library->configs().size())) + " rhythms";
            for (const ECGConfig *config : library->configs()) {
                const QByteArray line = lineOf(*config);
                if (library == adults || line != lineOf(*adults->getECGConfig(config->getRhythm())))
                    lines << line;
            }
        };
        list("adult", adults);
        list("child", ECGLibrary::m_ChildECGLibrary);
        list("infant", ECGLibrary::m_InfantECGLibrary);
        list("baby", ECGLibrary::m_BabyECGLibrary);
        QCOMPARE(lines, contents(QFINDTESTDATA("data/rhythms.txt")).trimmed().split('\n'));
    }

    // A process that runs the test above. The pointers are left dangling.
    void deletesTheLibrariesAtExit()
    {
        qputenv("QT_FORCE_STDERR_LOGGING", "1"); // Windows: the process has no console
        const ChildResult result = runChild(QCoreApplication::applicationFilePath(),
                                            {text("holdsTheRhythmsOfAllAges")}, QDir::currentPath());
        QVERIFY(!result.crashed && result.exitCode == 0);
        QCOMPARE(
            result.err.simplified(),
            QByteArray("ECGLibraries cleanup deleted: adult deleted: child deleted: baby deleted: infant"));
    }

    // Asked by a script, whose engine deletes nothing.
    void selectsByAge()
    {
        const QPointer<ECGLibraries> libraries = &ECGLibraries::Instance();
        const QPointer<ECGLibrary> library = ECGLibrary::getBabyECGLibrary();
        const QPointer<ECGConfig> pacemaker = library->getECGConfig(95), svt = library->getECGConfig(181);
        ECGLibrary adults; // they alone have rhythm 0
        adults.insert(new ECGConfig);
        const QScopedValueRollback<ECGLibrary *> rollback(ECGLibrary::m_DefaultECGLibrary, &adults);
        {
            QJSEngine engine;
            engine.globalObject().setProperty(text("libraries"), engine.newQObject(libraries));
            engine.globalObject().setProperty(text("library"), engine.newQObject(library));
            const auto answers = engine.evaluate(text(
                "minimum = config => config && config.heartrate_min;"
                "all = age => [0, 95, 132].map(id => minimum(libraries.getECGConfig(age, id))).join();"
                "[library.getECGConfig(181).rhythmTypeName,"
                " ...['adult', '', 'Child', 'BABY', 'infant ', 'child', 'infant', 'baby'].map(all)].join(' "
                "')"));
            QCOMPARE(answers.toString(), text("svt -1,, -1,, -1,, -1,, -1,, ,140,10 ,90,14 ,90,10"));
        } // collects all that the engine owns
        QVERIFY(libraries && library && pacemaker && svt);
    }
};

QTEST_GUILESS_MAIN(tst_ECGLibrary)
#include "tst_ECGLibrary.moc"
