#ifndef SERVICETABLE_H
#define SERVICETABLE_H

#include <QJsonObject>
#include <QStringList>

/// The environments of the document at @p path; what is wrong with it is added to @p problems.
QJsonObject readEnvironments(const QString &path, QStringList &problems);

/// The names of all services that can be resolved in the environment in force, sorted.
QStringList targets(const QJsonObject &environments);

#endif
