#include "Start.h"

#include <AppConfig.h>

#include <QCoreApplication>
#include <QLoggingCategory>

namespace {

struct Start {
    QHash<QString, QString> withheld; // values, by option
    QString noPlace; // what the library takes for the value of APPDATA
};

Start &start()
{
    static Start known;
    return known;
}

} // namespace

bool startWithoutTrace(const CommandLine &line, int &argc, char **argv, const char *name,
                       const QStringList &withheld)
{
    const QStringList all = withheld
        + QStringList{QStringLiteral("--varpath"), QStringLiteral("--varetcpath"),
                      QStringLiteral("--varlogpath")};
    for (const QString &option : all)
        start().withheld.insert(option, line.value(option.toLatin1().constData()));
    line.leaveToLibrary(argc, argv, all);

    QLoggingCategory::setFilterRules(
        QStringLiteral("Olvex.AppConfig=false\nOlvex.NetworkManager=false\nOlvex.OXExternalServers=false"));
    const QByteArray appData = qgetenv("APPDATA");
    const bool isSet = qEnvironmentVariableIsSet("APPDATA");
    start().noPlace = QCoreApplication::applicationFilePath(); // no directory can be made below a file
    qputenv("APPDATA", start().noPlace.toUtf8());
    const bool answered = AppConfig::instance()->initialize(QString::fromLatin1(name), QString());
    if (isSet)
        qputenv("APPDATA", appData);
    else
        qunsetenv("APPDATA");
    AppConfig::nullOutput = true;
    QLoggingCategory::setFilterRules(QStringLiteral("Olvex.AppConfig.debug=false"));
    return answered;
}

QString usualPath(const QString &path, const char *option)
{
    const QString withheld = start().withheld.value(QString::fromLatin1(option));
    if (!withheld.isEmpty())
        return QDir::cleanPath(QDir::current().absoluteFilePath(withheld));
    const QString &noPlace = start().noPlace;
    if (noPlace.isEmpty() || !path.startsWith(noPlace))
        return path;
    const QString appData = QString::fromUtf8(qgetenv("APPDATA"));
    return QDir::cleanPath(QDir::current().absoluteFilePath(appData + path.mid(noPlace.size())));
}
