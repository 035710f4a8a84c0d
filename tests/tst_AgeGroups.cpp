#include <AgeGroups.h>

#include "LogCapture.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

#include <limits>

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

QVariantHash limits(const char *json)
{
    return QJsonDocument::fromJson(json).object().toVariantHash();
}

QString groupsOf(std::initializer_list<double> ages)
{
    QStringList groups;
    for (const double age : ages)
        groups << AgeGroups::getAgeGroup(age);
    return groups.join(QLatin1Char(' '));
}

} // namespace

class tst_AgeGroups : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void findsTheGroup()
    {
        const LogCapture capture;
        AgeGroups::setAgeGroupLimits({});
        QCOMPARE(groupsOf({-1, 90}), QStringLiteral("adult adult"));
        AgeGroups::setAgeGroupLimits(limits(R"({"child": 1, "baby": 0, "adult": "12"})"));
        QCOMPARE(groupsOf({-0.0, 0.5, 1, 11.9, 12, infinity}),
                 QStringLiteral("baby baby child child adult adult"));
        QCOMPARE(groupsOf({-1, -infinity, notANumber}), QStringLiteral("baby baby baby"));
        const QString message = QStringLiteral(
            "Olvex.OXAgeGroups.info: ageInYears is lower than the lowest entry in ageGroupLowerLimits");
        QCOMPARE(capture.lines(), (QStringList{message, message, message}));
    }

    void leavesOutInvalidAndEqualLimits()
    {
        QVariantHash ageLimits = limits(R"({"a": "abc", "b": "nan", "c": [], "least": -1, "most": "inf",
                                            "between": 1e300, "same": 1e300})");
        ageLimits.insert(QStringLiteral("d"), notANumber);
        ageLimits.insert(QStringLiteral("e"), QVariant());
        const LogCapture capture;
        AgeGroups::setAgeGroupLimits(ageLimits);
        const QString message =
            QStringLiteral("Olvex.OXAgeGroups.info: ageLimits contain invalid age limit: QVariant(");
        QCOMPARE(capture.lines().filter(message).size(), 5);
        QVERIFY(capture.lines().contains(message + QStringLiteral("QString, \"abc\")")));
        QCOMPARE(AgeGroups::m_sortedAgeGroups.size(), size_t(3));
        QCOMPARE(groupsOf({-1, 0, infinity}), QStringLiteral("least least most"));
    }
};

QTEST_GUILESS_MAIN(tst_AgeGroups)
#include "tst_AgeGroups.moc"
