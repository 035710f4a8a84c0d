#include <AgeGroups.h>

#include "LogCapture.h"

#include <QtTest>

#include <limits>

class tst_AgeGroups : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsTheGroup_data();
    void findsTheGroup();
    void reportsInvalidLimits_data();
    void reportsInvalidLimits();
    void ordersByDescendingLimit();
};

namespace {

const QString belowAll = QStringLiteral(
    "Olvex.OXAgeGroups.info: ageInYears is lower than the lowest entry in ageGroupLowerLimits");

QHash<QString, QVariant> limits()
{
    return {{QStringLiteral("child"), 1},
            {QStringLiteral("baby"), 0.0},
            {QStringLiteral("adult"), QStringLiteral("12")}};
}

} // namespace

void tst_AgeGroups::findsTheGroup_data()
{
    QTest::addColumn<double>("age");
    QTest::addColumn<QString>("group");
    QTest::addColumn<bool>("isBelowAll");
    const auto row = [](double age, const char *group, bool isBelowAll = false) {
        QTest::addRow("%g", age) << age << QString::fromLatin1(group) << isBelowAll;
    };
    row(-1, "baby", true);
    row(-std::numeric_limits<double>::infinity(), "baby", true);
    row(std::numeric_limits<double>::quiet_NaN(), "baby", true);
    row(-0.0, "baby");
    row(0.5, "baby");
    row(1.0, "child");
    row(11.999, "child");
    row(12, "adult");
    row(std::numeric_limits<double>::infinity(), "adult");
}

void tst_AgeGroups::findsTheGroup()
{
    QFETCH(double, age);
    QFETCH(bool, isBelowAll);
    const LogCapture capture;
    AgeGroups::setAgeGroupLimits({});
    QCOMPARE(AgeGroups::getAgeGroup(age), QStringLiteral("adult"));
    QCOMPARE(capture.lines(), QStringList());
    AgeGroups::setAgeGroupLimits(limits());
    QTEST(AgeGroups::getAgeGroup(age), "group");
    QCOMPARE(capture.lines(), isBelowAll ? QStringList(belowAll) : QStringList());
}

void tst_AgeGroups::reportsInvalidLimits_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("printed");
    QTest::newRow("text") << QVariant(QStringLiteral("abc")) << QStringLiteral("QVariant(QString, \"abc\")");
    QTest::newRow("nan") << QVariant(QStringLiteral("nan")) << QStringLiteral("QVariant(QString, \"nan\")");
    QTest::newRow("NaN") << QVariant(std::numeric_limits<double>::quiet_NaN())
                         << QStringLiteral("QVariant(double, nan)");
    QTest::newRow("list") << QVariant(QVariantList{1})
                          << QStringLiteral("QVariant(QVariantList, (QVariant(int, 1)))");
    QTest::newRow("none") << QVariant() << QStringLiteral("QVariant(Invalid)");
}

void tst_AgeGroups::reportsInvalidLimits()
{
    QFETCH(QVariant, value);
    QFETCH(QString, printed);
    QHash<QString, QVariant> ageLimits = limits();
    ageLimits.insert(QStringLiteral("elder"), value);
    const LogCapture capture;
    AgeGroups::setAgeGroupLimits(ageLimits);
    QCOMPARE(capture.lines(),
             QStringList(QStringLiteral("Olvex.OXAgeGroups.info: ageLimits contain invalid age limit: ")
                         + printed));
    QCOMPARE(AgeGroups::m_sortedAgeGroups.size(), size_t(3));
    QCOMPARE(AgeGroups::getAgeGroup(90), QStringLiteral("adult"));
}

void tst_AgeGroups::ordersByDescendingLimit()
{
    AgeGroups::setAgeGroupLimits({{QStringLiteral("a"), -1},
                                  {QStringLiteral("b"), QStringLiteral("inf")},
                                  {QStringLiteral("c"), 1e300},
                                  {QStringLiteral("same"), 1e300}});
    QCOMPARE(AgeGroups::m_sortedAgeGroups.size(), size_t(3)); // of equal limits the first stays
    QCOMPARE(AgeGroups::m_sortedAgeGroups.begin()->second, QStringLiteral("b"));
    QCOMPARE(AgeGroups::m_sortedAgeGroups.rbegin()->second, QStringLiteral("a"));
}

QTEST_GUILESS_MAIN(tst_AgeGroups)
#include "tst_AgeGroups.moc"
