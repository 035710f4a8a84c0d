#ifndef AGEGROUPS_H
#define AGEGROUPS_H

#include "HXCommonExport.h"

#include <QHash>
#include <QString>
#include <QVariant>

#include <functional>
#include <map>

/**
 * Turns a patient's age into the name of an age group, by a table of lower age limits.
 *
 * @code
 * AgeGroups::setAgeGroupLimits({{QStringLiteral("baby"), 0}, {QStringLiteral("child"), 1},
 *                               {QStringLiteral("adult"), 12}});
 * AgeGroups::getAgeGroup(1.0); // "child": a limit belongs to the group it opens
 * @endcode
 *
 * Static members only; not thread-safe. Log category: "Olvex.OXAgeGroups".
 */
class HXCOMMON_EXPORT AgeGroups {
public:
    AgeGroups() = delete;

    /**
     * Replaces the table.
     *
     * A value that does not convert to a number, or is no number (NaN), is reported with an info message and
     * left out. Of several groups with the same limit one is kept; which one is not defined.
     * @param ageLimits the lower age limit in years of each group, by group name
     */
    static void setAgeGroupLimits(const QHash<QString, QVariant> &ageLimits);

    /**
     * The group with the largest limit that is not above @p ageInYears.
     *
     * An age below all limits gets the group with the smallest limit and an info message. Without a table
     * every age is "adult".
     */
    static QString getAgeGroup(double ageInYears);

    /// The table: names by lower limit in years, largest limit first. Empty until limits are set.
    static std::map<double, QString, std::greater<double>> m_sortedAgeGroups;
};

#endif
