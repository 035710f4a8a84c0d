#include "ServiceTable.h"

#include "CommandLine.h"

#include <AppConfig.h>
#include <OXUrls.h>

#include <QJsonDocument>

namespace {

void sortOnce(QStringList &names)
{
    names.sort();
    names.removeDuplicates();
}

} // namespace

ServiceTable::ServiceTable(QVector<Problem> &problems) : path(AppConfig::confPath(text("OlvexUrls.json")))
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problems.append(
            {text("services-unreadable"),
             text("The service table %1 cannot be read: %2.").arg(path, file.errorString()),
             text("Start in the right directory, or name that of OlvexUrls.json with --confpath DIR.")});
        return;
    }
    QJsonParseError error;
    const QByteArray json = file.readAll();
    const QJsonObject document = QJsonDocument::fromJson(json, &error).object();
    if (error.error != QJsonParseError::NoError)
        problems.append(
            {text("services-damaged"),
             text("The service table %1 is damaged at byte %2, line %3: %4.")
                 .arg(path, QString::number(error.offset),
                      QString::number(json.left(error.offset).count('\n') + 1), error.errorString()),
             text("Mend it there, or restore it from a copy.")});
    else if (!document.value(text("environment")).isObject())
        problems.append({text("services-empty"), text("The service table %1 names no environment.").arg(path),
                         text("Restore it from a copy.")});
    environments = document.value(text("environment")).toObject();
}

QStringList ServiceTable::targets() const
{
    QStringList names = environments.value(OXUrls::instance()->environment()).toObject().keys()
        + environments.value(OXUrls::DefaultEnvironment).toObject().keys();
    sortOnce(names);
    return names;
}

QStringList ServiceTable::regions() const
{
    QStringList names;
    for (const QJsonValue &environment : environments) {
        const QJsonObject entries = environment.toObject();
        for (const QJsonValue &entry : entries)
            names += entry.toObject().value(text("regions")).toObject().keys();
    }
    sortOnce(names);
    return names;
}

bool ServiceTable::fallsBack(const QString &target) const
{
    const QString environment = OXUrls::instance()->environment();
    return !environment.isEmpty() && environment != OXUrls::DefaultEnvironment
        && !environments.value(environment).toObject().contains(target);
}

QString deploymentName()
{
    const QString environment = OXUrls::instance()->environment();
    const QString region = OXUrls::instance()->region();
    return (environment.isEmpty() ? OXUrls::DefaultEnvironment : environment)
        + (region.isEmpty() ? QString() : text(", region %1").arg(region));
}
