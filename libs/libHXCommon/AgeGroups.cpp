#include "AgeGroups.h"

#include <QLoggingCategory>

#include <cmath>

namespace {
Q_LOGGING_CATEGORY(category, "Olvex.OXAgeGroups")
}

[[gnu::init_priority(101)]] std::map<double, QString, std::greater<double>>
    AgeGroups::m_sortedAgeGroups; // clazy:exclude=non-pod-global-static

void AgeGroups::setAgeGroupLimits(const QHash<QString, QVariant> &ageLimits)
{
    m_sortedAgeGroups.clear();
    for (auto group = ageLimits.begin(); group != ageLimits.end(); ++group) {
        bool isNumber = false;
        const double limit = group.value().toDouble(&isNumber);
        if (isNumber && !std::isnan(limit)) // NaN has no place in an ordered map
            m_sortedAgeGroups.emplace(limit, group.key());
        else
            qCInfo(category) << "ageLimits contain invalid age limit:" << group.value();
    }
}

QString AgeGroups::getAgeGroup(double ageInYears)
{
    if (m_sortedAgeGroups.empty())
        return QStringLiteral("adult");
    for (const auto &[limit, name] : m_sortedAgeGroups) {
        if (limit <= ageInYears)
            return name;
    }
    qCInfo(category) << "ageInYears is lower than the lowest entry in ageGroupLowerLimits";
    return m_sortedAgeGroups.rbegin()->second;
}
