#include "ServiceTable.h"

#include <OXUrls.h>

#include <QFile>
#include <QJsonDocument>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

QJsonObject readEnvironments(const QString &path, QStringList &problems)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        problems << text("The service table %1 cannot be read: %2.").arg(path, file.errorString());
        return QJsonObject();
    }
    QJsonParseError error;
    const QJsonObject document = QJsonDocument::fromJson(file.readAll(), &error).object();
    if (error.error != QJsonParseError::NoError)
        problems << text("The service table %1 is damaged at byte %2: %3.")
                        .arg(path, QString::number(error.offset), error.errorString());
    else if (!document.value(text("environment")).isObject())
        problems << text("The service table %1 names no environment.").arg(path);
    return document.value(text("environment")).toObject();
}

QStringList targets(const QJsonObject &environments)
{
    QStringList names = environments.value(OXUrls::instance()->environment()).toObject().keys()
        + environments.value(OXUrls::DefaultEnvironment).toObject().keys();
    names.sort();
    names.removeDuplicates();
    return names;
}
