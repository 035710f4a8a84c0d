#include <AgeGroups.h>

#include "Cases.h"
#include "LogCapture.h"

#include <limits>

class tst_AgeGroups : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsTheGroup_data();
    void findsTheGroup();
    void reportsInvalidLimits();
    void ordersByDescendingLimit();
};

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

const struct {
    const char *name;
    double age;
    const char *group;
    bool isBelowAll;
} ages[] = {
    {"-1", -1, "baby", true},       {"-inf", -infinity, "baby", true}, {"nan", notANumber, "baby", true},
    {"-0", -0.0, "baby", false},    {"0.5", 0.5, "baby", false},       {"1", 1, "child", false},
    {"11.9", 11.9, "child", false}, {"12", 12, "adult", false},        {"inf", infinity, "adult", false},
};

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

QHash<QString, QVariant> limits()
{
    return {{text("child"), 1}, {text("baby"), 0.0}, {text("adult"), text("12")}};
}

} // namespace

void tst_AgeGroups::findsTheGroup_data()
{
    addCases(ages);
}

void tst_AgeGroups::findsTheGroup()
{
    const auto &c = currentCase(ages);
    const LogCapture capture;
    AgeGroups::setAgeGroupLimits({});
    QCOMPARE(AgeGroups::getAgeGroup(c.age), text("adult"));
    QCOMPARE(capture.lines(), QStringList());
    AgeGroups::setAgeGroupLimits(limits());
    QCOMPARE(AgeGroups::getAgeGroup(c.age), text(c.group));
    const QString message =
        text("Olvex.OXAgeGroups.info: ageInYears is lower than the lowest entry in ageGroupLowerLimits");
    QCOMPARE(capture.lines(), c.isBelowAll ? QStringList(message) : QStringList());
}

void tst_AgeGroups::reportsInvalidLimits()
{
    const QPair<QVariant, const char *> invalid[] = {
        {text("abc"), "QVariant(QString, \"abc\")"},
        {text("nan"), "QVariant(QString, \"nan\")"},
        {notANumber, "QVariant(double, nan)"},
        {QVariantList{1}, "QVariant(QVariantList, (QVariant(int, 1)))"},
        {QVariant(), "QVariant(Invalid)"},
    };
    for (const auto &[value, printed] : invalid) {
        QHash<QString, QVariant> ageLimits = limits();
        ageLimits.insert(text("elder"), value);
        const LogCapture capture;
        AgeGroups::setAgeGroupLimits(ageLimits);
        QCOMPARE(capture.lines(),
                 QStringList(text("Olvex.OXAgeGroups.info: ageLimits contain invalid age limit: ")
                             + text(printed)));
        QCOMPARE(AgeGroups::m_sortedAgeGroups.size(), size_t(3));
        QCOMPARE(AgeGroups::getAgeGroup(90), text("adult"));
    }
}

void tst_AgeGroups::ordersByDescendingLimit()
{
    AgeGroups::setAgeGroupLimits(
        {{text("a"), -1}, {text("b"), text("inf")}, {text("c"), 1e300}, {text("same"), 1e300}});
    QCOMPARE(AgeGroups::m_sortedAgeGroups.size(), size_t(3)); // of equal limits one stays
    QCOMPARE(AgeGroups::m_sortedAgeGroups.begin()->second, text("b"));
    QCOMPARE(AgeGroups::m_sortedAgeGroups.rbegin()->second, text("a"));
}

QTEST_GUILESS_MAIN(tst_AgeGroups)
#include "tst_AgeGroups.moc"
