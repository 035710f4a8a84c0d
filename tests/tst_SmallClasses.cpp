// Age groups, cyanosis levels, versions, and the timer that pauses.

#define major(x) x // as in sys/sysmacros.h
#include <OXVersion.h>

#include <AgeGroups.h>
#include <AppConfig.h>
#include <CyanosisCalculator.h>
#include <PausingTimer.h>

#include "Cases.h"
#include "LogCapture.h"

#include <QJSEngine>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimer>

#include <limits>

namespace {

static_assert(major(1), "the header leaves macros alone");

constexpr int lowest = std::numeric_limits<int>::min();
constexpr int highest = std::numeric_limits<int>::max();
constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double ages[] = {notANumber, -infinity, -1, -0.0, 0.5, 1, 11.9, 12, infinity};

const struct {
    const char *name; // the lower limits
    const char *groups; // of the ages above
    int tooYoung, invalid;
} ageCases[] = {
    {"{}", "adult adult adult adult adult adult adult adult adult", 0, 0},
    {R"({"child": 1, "baby": 0, "adult": "12"})", "baby baby baby baby baby child child adult adult", 3, 0},
    {R"({"a": "abc", "b": "nan", "c": [], "d": null, "least": -1, "most": "inf", "x": 1e300, "y": 1e300})",
     "least least least least least least least least most", 2, 4},
};

const struct {
    const char *name;
    int threshold, saturation;
    short upperOffset, lowerOffset, levelCount;
    double level;
} cyanosisCases[] = {
    {"below threshold", 90, 89, 2, -8, 4, 0.0},
    {"at upper end", 90, 92, -2, -8, 4, 1.0},
    {"at lower end", 90, 98, 2, -8, 4, 3.0},
    {"between", 90, 90, 2, -8, 4, 2.3},
    {"between, at the ceiling", 90, 95, 2, -8, 4, 3.0},
    {"negative between", 90, 90, 60, -40, -4, 0.0},
    {"above 100", 100, 250, 2, -8, 4, 2.3},
    {"above 100 is not raised", 110, 101, 2, -120, 4, 0.0},
    {"100 is raised", 110, 100, 2, -120, 4, 3.0},
    {"raised to -lowerOffset", -5, -20, 3, -8, 4, 3.0},
    {"raised to 0", -5, -20, 3, 0, 4, 0.0},

    {"no levels, level 0", 90, 50, 2, -8, 0, -1.0},
    {"no levels, level 1", 90, 92, -2, -8, 0, -1.0},
    {"no levels, last level", 90, 98, 2, -8, 0, 0.0},
    {"negative levels, level 0", 90, 50, 2, -8, -32768, -32769.0},
    {"one level", 90, 92, -2, -8, 1, 0.0},

    {"lowest threshold", lowest, lowest, -32768, -32768, 4, 3.0},
    {"highest threshold", highest, highest, 32767, 32767, 4, 0.0},
    {"wrapped product", 1, 100, 32767, -32768, 4, 0.0},
};

const struct {
    const char *left, *right, *answers; // equal in major and minor both ways round, left less
} comparedVersions[] = {
    {"99.0.0", "99.7.1", "true,true,true"}, // the rule for 99 holds for equality only
    {"98.0.0", "98.1.0", "false,false,true"},
    {"99.0.0", "98.0.0", "false,false,false"},
    {"98.1.2", "98.1.3-rc", "true,true,true"},
    {"2.3.5", "2.3.4", "true,true,false"},
    {"2.3.4-beta", "2.3.4", "true,true,false"},
    {"invalid", "0.0.1", "true,true,true"}, // an invalid version compares by its zeros
    {"0.65536.0", "1.0.0", "true,true,false"}, // fields are not masked
    {"0.0.65536", "0.1.0", "false,false,false"},
    {"4096.0.0", "0.0.0", "true,true,false"}, // the top is cut off at 64 bits
    {"2048.0.0", "0.0.0", "false,false,true"}, // and the key is signed
};

// 60000: start with that period; =50000: set the period; a slot; overdue: wait, without an event loop, until
// it is (on Windows after a timeout only: timers start with the event loop); timeout: wait for one; last: let
// the next timeout be the last
const struct {
    const char *name;
    int period; // that the inner timer runs with, up to a tenth of it: time passes; -1: it does not run
} timerCases[] = {
    {"pause resume =60000 resume", -1},
    {"start", 0},
    {"=60000 start", 60000},
    {"60000 50000", 50000},
    {"60000 pause start", 60000},
    {"60000 pause resume", 60000},
    {"60000 pause stop resume", -1},
    {"60000 =50000", 50000},
    {"60000 pause =50000", -1},
    {"60000 pause =50000 resume", 50000},
    {"10 timeout overdue pause pause resume", 0}, // the second does not overwrite the remainder
    {"10 timeout overdue resume pause resume", 0}, // the first does not start again
    {"10 timeout overdue pause resume timeout", 10},
    {"5 timeout last timeout resume", -1},
};

void step(PausingTimer &timer, QTimer &inner, const QString &step)
{
    if (step.at(0).isDigit())
        timer.start(step.toInt());
    else if (step.startsWith(QLatin1Char('=')))
        timer.setInterval(step.midRef(1).toInt());
    else if (step == QLatin1String("overdue"))
        while (inner.remainingTime() > 0) { }
    else if (step == QLatin1String("timeout"))
        QVERIFY(QSignalSpy(&timer, &PausingTimer::timeout).wait());
    else if (step == QLatin1String("last"))
        inner.setSingleShot(true);
    else
        QVERIFY(QMetaObject::invokeMethod(&timer, qPrintable(step)));
}

OXVersion version(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

class tst_SmallClasses : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsAgeGroups_data() { addCases(ageCases); }
    void findsAgeGroups()
    {
        const auto &c = currentCase(ageCases);
        const LogCapture capture;
        AgeGroups::setAgeGroupLimits(QJsonDocument::fromJson(c.name).object().toVariantHash());
        QStringList groups;
        for (const double age : ages)
            groups << AgeGroups::getAgeGroup(age);
        QCOMPARE(groups.join(QLatin1Char(' ')), QString::fromLatin1(c.groups));
        const QString prefix =
            QStringLiteral("Olvex.OXAgeGroups.info: ageLimits contain invalid age limit: ");
        QCOMPARE(capture.lines().filter(prefix + QStringLiteral("QVariant(")).size(), c.invalid);
        QCOMPARE(capture.contains(QStringLiteral("QVariant(QString, \"abc\")")), c.invalid > 0);
        QCOMPARE(capture.lines().count(QStringLiteral("Olvex.OXAgeGroups.info: ageInYears is lower than the "
                                                      "lowest entry in ageGroupLowerLimits")),
                 c.tooYoung);
    }

    void calculatesCyanosis_data() { addCases(cyanosisCases); }
    void calculatesCyanosis()
    {
        const auto &c = currentCase(cyanosisCases);
        const auto level = [&c](bool enabled) {
            return CyanosisCalculator::CalculateCyanosisLevel(c.threshold, c.saturation, enabled,
                                                              c.upperOffset, c.lowerOffset, c.levelCount);
        };
        QCOMPARE(level(true), c.level);
        QCOMPARE(level(false), c.levelCount > 0 ? 0.0 : c.levelCount - 1.0);
    }

    void parsesVersions()
    {
        AppConfig::instance(); // lets variants convert them
        // An invalid version prints nothing; digits of other scripts match but do not convert.
        for (const auto &[text, printed] :
             {std::pair("1.2.3", "1.2.3.0"), std::pair("1.2.3-4", "1.2.3.4"), std::pair("1.2.3-", "1.2.3.0"),
              std::pair("1.2.3-rc", "1.2.3.0-rc"), std::pair("1.2.3rc", "1.2.3.0-rc"),
              std::pair("1.2.3.4-5", "1.2.3.4-5"), std::pair("1.2.3.4.5", "1.2.3.0"),
              std::pair("1.2.3 x\n", "1.2.3.0"), std::pair("9223372036854775808.1.2", "0.1.2.0"),
              std::pair("١.٢.٣", "0.0.0.0"), std::pair("", ""), std::pair("1.2.", ""), std::pair("a.b.c", ""),
              std::pair(" 1.2.3", ""), std::pair("1,2,3", "")}) {
            const QVariant variant = QVariant::fromValue(version(text));
            QCOMPARE(variant.toString(), QString::fromLatin1(printed));
            QCOMPARE(variant.toBool(), *printed != '\0');
        }
        QString printed;
        QDebug(&printed) << version("1.2.3-rc") << OXVersion();
        QCOMPARE(printed, QStringLiteral("OXVersion(\"1.2.3.0-rc\") OXVersion(\"\") "));
    }

    // From a script, as the user interface does.
    void comparesVersions()
    {
        QJSEngine engine;
        const auto answer = [&engine](const char *script) {
            return engine.evaluate(QString::fromLatin1(script)).toString();
        };
        for (const auto &c : comparedVersions) {
            engine.globalObject().setProperty(QStringLiteral("left"), engine.toScriptValue(version(c.left)));
            engine.globalObject().setProperty(QStringLiteral("right"),
                                              engine.toScriptValue(version(c.right)));
            QCOMPARE(answer("[left.isMajorMinorEqual(right), right.isMajorMinorEqual(left),"
                            "left.isMajorMinorMicroLess(right)]"),
                     QString::fromLatin1(c.answers));
        }
        QCOMPARE(
            answer("[5, null, undefined, {}, []].every(x => left.isMajorMinorMicroLess(x) === undefined)"),
            QStringLiteral("true"));
        QCOMPARE(answer("left.toString() + left.isValid()"), QStringLiteral("2048.0.0.0true"));
    }

    void pauses_data() { addCases(timerCases); }
    void pauses()
    {
        const auto &expected = currentCase(timerCases);
        PausingTimer timer;
        QTimer *const inner = timer.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(inner->timerType(), Qt::PreciseTimer); // a coarse one errs by up to 5 % at every pause
        const QStringList steps = QString::fromLatin1(expected.name).split(QLatin1Char(' '));
        for (const QString &name : steps)
            step(timer, *inner, name);
        const int period = inner->isActive() ? inner->interval() : -1;
        QVERIFY2(qAbs(period - expected.period) <= expected.period / 10, qPrintable(QString::number(period)));
    }
};

QTEST_GUILESS_MAIN(tst_SmallClasses)
#include "tst_SmallClasses.moc"
