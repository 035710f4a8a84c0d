#include <ECGLibrary.h>

#include "LogCapture.h"

#include <QJSEngine>
#include <QPointer>
#include <QtTest>

// ECGLibraries stays out of this program: it would delete the libraries a second time.
class tst_ECGLibrary : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void filesUnderTheIdAtInsertion();
    void replacesWithoutDeleting();
    void refusesNull();
    void surviveScripts();
    void buildsOnDemand();
    void cleanupTestCase();
};

void tst_ECGLibrary::filesUnderTheIdAtInsertion()
{
    ECGLibrary library;
    auto *config = new ECGConfig;
    config->setRhythm(-5);
    library.insert(config);
    config->setRhythm(9);
    QCOMPARE(library.getECGConfig(-5), config);
    QVERIFY(!library.getECGConfig(9));
    library.insert(config); // under two ids, and yet deleted once
}

void tst_ECGLibrary::replacesWithoutDeleting()
{
    ECGConfig replaced;
    ECGLibrary library;
    library.insert(&replaced);
    auto *config = new ECGConfig;
    library.insert(config);
    QVERIFY(ECGLibrary::staticMetaObject.indexOfSlot("insert(ECGConfig*)") != -1);
    QCOMPARE(library.getECGConfig(0), config);
    QCOMPARE(library.configs().size(), 1);
}

void tst_ECGLibrary::refusesNull()
{
    const LogCapture capture;
    ECGLibrary library;
    library.insert(nullptr);
    QVERIFY(library.configs().isEmpty());
    QCOMPARE(capture.lines(),
             QStringList(
                 QStringLiteral("default.warning: ECGLibrary::insert: there is no configuration to insert")));
}

void tst_ECGLibrary::surviveScripts()
{
    const QPointer<ECGLibrary> library = ECGLibrary::getDefaultECGLibrary();
    const QPointer<ECGConfig> config = library->getECGConfig(181);
    {
        QJSEngine engine;
        engine.globalObject().setProperty(QStringLiteral("library"), engine.newQObject(library));
        QCOMPARE(engine.evaluate(QStringLiteral("library.getECGConfig(181).rhythmTypeName")).toString(),
                 QStringLiteral("svt"));
        engine.evaluate(QStringLiteral("library = null"));
        engine.collectGarbage();
    }
    QVERIFY(library && config);
}

void tst_ECGLibrary::buildsOnDemand()
{
    QVERIFY(!ECGLibrary::m_ChildECGLibrary && !ECGLibrary::m_BabyECGLibrary
            && !ECGLibrary::m_InfantECGLibrary);
    ECGLibrary *const baby = ECGLibrary::getBabyECGLibrary();
    QCOMPARE(baby, ECGLibrary::m_BabyECGLibrary);
    QCOMPARE(ECGLibrary::getBabyECGLibrary(), baby);
    QVERIFY(ECGLibrary::m_DefaultECGLibrary);
    QVERIFY(!ECGLibrary::m_ChildECGLibrary && !ECGLibrary::m_InfantECGLibrary);
}

void tst_ECGLibrary::cleanupTestCase()
{
    const QPointer<ECGLibrary> library = ECGLibrary::getDefaultECGLibrary();
    const QPointer<ECGConfig> config = ECGLibrary::getBabyECGLibrary()->getECGConfig(7);
    ECGLibrary::cleanup();
    QVERIFY(!library && !config);
    QVERIFY(ECGLibrary::m_DefaultECGLibrary); // left dangling
    QVERIFY(!ECGLibrary::m_ChildECGLibrary);
}

QTEST_GUILESS_MAIN(tst_ECGLibrary)
#include "tst_ECGLibrary.moc"
