#include <ECGLibrary.h>

#include "ChildProcess.h"

#include <QDir>
#include <QJSEngine>
#include <QPointer>
#include <QtTest>

class tst_ECGLibraries : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void selectsByAge();
    void holdsEveryRhythmAtEveryAge();
    void adaptsLimits();
    void childIsAnIndependentCopy();
    void surviveScripts();
    void cleanUpAtExit();
};

namespace {

// Default rate, minimum and maximum of adult, infant and baby.
const struct {
    const char *name;
    int rhythm;
    const char *limits;
} adaptations[] = {
    {"sinus", 7, "80 20 200, 80 20 240, 80 20 240"},
    {"sinusRBBB", 203, "80 20 200, 80 20 240, 80 20 240"},
    {"sinusPostIschaemia", 204, "80 20 200, 80 20 200, 80 20 200"},
    {"wanderingPacemaker", 95, "180 140 260, 180 90 320, 180 90 320"},
    {"svt", 181, "160 140 260, 160 90 320, 160 90 320"},
    {"vt", 138, "180 120 240, 180 120 320, 180 120 320"},
    {"vt2", 213, "180 120 240, 180 120 240, 180 120 240"},
    {"asystoleIdioventricular", 132, "80 10 100, 80 14 100, 80 10 100"},
    {"avBlock3", 172, "40 10 50, 40 20 100, 40 20 100"},
    {"vf", 146, "-1 -1 -1, -1 -1 -1, -1 -1 -1"},
};

ECGConfig *config(const char *age, int rhythm)
{
    return ECGLibraries::Instance().getECGConfig(QString::fromLatin1(age), rhythm);
}

} // namespace

void tst_ECGLibraries::selectsByAge()
{
    ECGLibraries::Instance();
    QCOMPARE(config("child", 7), ECGLibrary::m_ChildECGLibrary->getECGConfig(7));
    QCOMPARE(config("baby", 7), ECGLibrary::m_BabyECGLibrary->getECGConfig(7));
    QCOMPARE(config("infant", 7), ECGLibrary::m_InfantECGLibrary->getECGConfig(7));
    for (const char *adult : {"default", "adult", "", "Child", "BABY", "infant "})
        QCOMPARE(config(adult, 7), ECGLibrary::m_DefaultECGLibrary->getECGConfig(7));

    auto *added = new ECGConfig;
    added->setRhythm(1000);
    ECGLibrary::m_DefaultECGLibrary->insert(added);
    QCOMPARE(config("adult", 1000), added);
    for (const char *age : {"child", "infant", "baby"})
        QVERIFY(!config(age, 1000)); // never falls back to the adults'
}

void tst_ECGLibraries::holdsEveryRhythmAtEveryAge()
{
    const QList<int> ids = {7,   8,   9,   10,  95,  103, 113, 120, 132, 138, 146, 148,
                            149, 156, 166, 169, 172, 174, 175, 181, 200, 201, 202, 203,
                            204, 205, 206, 207, 208, 209, 210, 211, 212, 213};
    ECGLibraries::Instance();
    for (const ECGLibrary *library :
         {ECGLibrary::m_ChildECGLibrary, ECGLibrary::m_InfantECGLibrary, ECGLibrary::m_BabyECGLibrary})
        QCOMPARE(library->configs().keys(), ids);
    QCOMPARE(config("", 201)->getRhythmTypeName(), config("", 212)->getRhythmTypeName());
    QVERIFY(config("", 201)->canHaveExtrasystoles() && !config("", 212)->canHaveExtrasystoles());
}

void tst_ECGLibraries::adaptsLimits()
{
    for (const auto &c : adaptations) {
        QStringList limits;
        for (const char *age : {"adult", "infant", "baby"}) {
            const ECGConfig *const adapted = config(age, c.rhythm);
            limits << QStringLiteral("%1 %2 %3")
                          .arg(adapted->getDefaultHeartRate())
                          .arg(adapted->getHeartRateMin())
                          .arg(adapted->getHeartRateMax());
        }
        QVERIFY2(limits.join(QLatin1String(", ")) == QLatin1String(c.limits), c.name);
    }
}

void tst_ECGLibraries::childIsAnIndependentCopy()
{
    for (const ECGConfig *copy : ECGLibrary::getChildECGLibrary()->configs()) {
        const ECGConfig *const original = ECGLibrary::getDefaultECGLibrary()->getECGConfig(copy->getRhythm());
        QVERIFY(copy != original);
        for (const char *key : {"RhythmTypeName", "RateMax", "RatioHR", "ExtraSystoles", "AmplitudeMin"})
            QCOMPARE(copy->getParam(QString::fromLatin1(key)), original->getParam(QString::fromLatin1(key)));
    }
}

void tst_ECGLibraries::surviveScripts()
{
    const QPointer<ECGConfig> held = config("baby", 138);
    const QPointer<ECGLibraries> libraries = &ECGLibraries::Instance();
    {
        QJSEngine engine;
        engine.globalObject().setProperty(QStringLiteral("libraries"), engine.newQObject(libraries));
        const auto result = [&engine](const char *script) {
            QString text = engine.evaluate(QString::fromLatin1(script)).toString();
            engine.collectGarbage();
            return text;
        };
        QCOMPARE(result("var vt = libraries.getECGConfig('baby', 138); vt.heartrate_max"),
                 QStringLiteral("320"));
        QCOMPARE(result("vt.validateHeartRate(400)"), QStringLiteral("320"));
        QCOMPARE(result("libraries.getECGConfig('baby', 999)"), QStringLiteral("null"));
        QCOMPARE(result("vt = null; libraries = null"), QStringLiteral("null"));
    }
    QVERIFY(held && libraries);
    QCOMPARE(held->getHeartRateMax(), 320);
}

void tst_ECGLibraries::cleanUpAtExit()
{
    const ChildResult result = runChild(QStringLiteral(MODEL_DUMP_PATH), {}, QDir::currentPath());
    QVERIFY(!result.crashed);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(
        result.err.simplified(),
        QByteArray("ECGLibraries cleanup deleted: default deleted: child deleted: baby deleted: infant"));
}

QTEST_GUILESS_MAIN(tst_ECGLibraries)
#include "tst_ECGLibraries.moc"
