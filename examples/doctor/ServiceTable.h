#ifndef SERVICETABLE_H
#define SERVICETABLE_H

#include "Report.h"

#include <QJsonObject>

/// The document of the service table.
struct ServiceTable {
    /// Reads it; what is wrong with it is added to @p problems.
    explicit ServiceTable(QVector<Problem> &problems);

    QString path;
    QJsonObject environments; ///< by name

    /// The names of all services that can be resolved in the environment in force, sorted.
    QStringList targets() const;
    /// The names of all regions that a service names, sorted.
    QStringList regions() const;
    /// Whether a service comes from production although another environment is in force.
    bool fallsBack(const QString &target) const;
};

/// The deployment in force, such as "staging, region eu".
QString deploymentName();

#endif
