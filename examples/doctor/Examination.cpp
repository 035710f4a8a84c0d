#include "Examination.h"

#include "OptionValue.h"
#include "ServiceTable.h"

#include <OXUrls.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLoggingCategory>
#include <QSysInfo>
#include <QTemporaryFile>

#include <algorithm>

namespace {

// What the application cannot do without in a directory.
enum class Need {
    Nothing,
    Existence,
    Writability
};

struct DirectoryRow {
    const char *name;
    const char *option;
    QString (*path)(const QString &file);
    Need need;
};

const DirectoryRow directoryRows[] = {
    {"temporary", "--tmppath", &AppConfig::tmpPath, Need::Writability},
    {"configuration", "--confpath", &AppConfig::confPath, Need::Existence},
    {"share root", "--sharepath", &AppConfig::sharePath, Need::Existence},
    {"sounds", "--sharepath", &AppConfig::soundsPath, Need::Nothing},
    {"plug-ins", "--pluginpath", &AppConfig::pluginsPath, Need::Nothing},
    {"factory data", "--datapath", &AppConfig::factoryDataPath, Need::Nothing},
    {"variable data", "--varpath", &AppConfig::varPath, Need::Writability},
    {"variable configuration", "--varetcpath", &AppConfig::varEtcPath, Need::Writability},
    {"variable log", "--varlogpath", &AppConfig::varLogPath, Need::Writability},
    {"persistent storage", "--persistentpath", &AppConfig::persistentStoragePath, Need::Nothing},
    {"binary", "--binpath", &AppConfig::binPath, Need::Nothing},
    {"scenario store", "--dravikpath", &AppConfig::dravikPath, Need::Nothing},
    {"user interface", "--qmlpath", &AppConfig::qmlLocalPath, Need::Nothing},
};

QStringList itemColumns()
{
    return {QStringLiteral("item"), QStringLiteral("value")};
}

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// By trying: permission bits do not tell of read-only media, access lists or the rights of an administrator.
bool isWritableDirectory(const QString &path)
{
    QTemporaryFile probe(path + QLatin1String("/olvex-doctor-XXXXXX"));
    return QFileInfo(path).isDir() && probe.open();
}

Table identity()
{
    return {text("Identity"),
            itemColumns(),
            {{text("application"), AppConfig::versionInfo()},
             {text("version"), AppConfig::majorMiniorMicroVersion()},
             {text("system version"), AppConfig::systemVersion()},
             {text("build"), AppConfig::buildStamp()},
             {text("prototype"), AppConfig::isPrototype()},
             {text("Qt"), text(qVersion())},
             {text("operating system"), QSysInfo::prettyProductName()},
             {text("program"), QCoreApplication::applicationFilePath()},
             {text("working directory"), QDir::currentPath()},
             {text("time since start"), text("%1 ms").arg(AppConfig::elapsedTime())}}};
}

Table directories(QStringList &problems)
{
    Table table{text("Directories"),
                {text("directory"), text("option"), text("exists"), text("writable"), text("path")},
                {}};
    for (const DirectoryRow &row : directoryRows) {
        const QString path = row.path(QString());
        const bool exists = !path.isEmpty() && QFileInfo(path).isDir();
        const bool writable = exists && isWritableDirectory(path);
        table.rows.append({text(row.name), text(row.option), exists, writable, path});
        if (row.need != Need::Nothing && !exists)
            problems << text("The %1 directory %2 does not exist.").arg(text(row.name), path);
        else if (row.need == Need::Writability && !writable)
            problems << text("The %1 directory %2 is not writable.").arg(text(row.name), path);
    }
    return table;
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString settingsOrigin(const QString &path, const QString &oldPath)
{
    if (!QFileInfo::exists(path))
        return text("none yet: defaults are in force");
    if (QFileInfo::exists(oldPath) && contents(path) == contents(oldPath))
        return text("migrated: a copy of the old %1").arg(oldPath);
    return text("this executable's own");
}

// Reads a copy: Qt tells of the damage only to the first object that opens a file, which is the library's.
bool isDamaged(const QString &path)
{
    QTemporaryFile copy;
    if (!copy.open() || copy.write(contents(path)) == -1 || !copy.flush())
        return false;
    const QSettings settings(copy.fileName(), QSettings::IniFormat);
    // cppcheck-suppress ignoredReturnValue ; reads the sections; until then only the headings were looked at
    settings.allKeys();
    return settings.status() == QSettings::FormatError;
}

Table settings(QStringList &problems)
{
    const QString path = AppConfig::settingIniPath(false);
    const QSharedPointer<QSettings> settings = AppConfig::settings();
    if (isDamaged(path))
        problems << text("The settings file %1 is damaged: what cannot be read has its default.").arg(path);
    else if (QFileInfo::exists(path) && !QFileInfo(path).isReadable())
        problems << text("The settings file %1 cannot be read.").arg(path);
    else if (!settings->isWritable())
        problems << text("The settings file %1 cannot be written.").arg(path);
    return {text("Settings"),
            itemColumns(),
            {{text("file in force"), path},
             {text("origin"), settingsOrigin(path, AppConfig::varEtcPath(text("Settings.ini")))},
             {text("last modified"), QFileInfo(path).lastModified().toString(Qt::ISODate)},
             {text("keys"), settings->allKeys().size()}}};
}

// The environments of the document, by name; reports a document that cannot be used.
Table deployment(const QJsonObject &environments, QStringList &problems)
{
    const QString environment = OXUrls::instance()->environment();
    if (!environments.isEmpty() && !environment.isEmpty() && !environments.contains(environment))
        problems << text("The environment \"%1\" is not in the service table: \"%2\" is used instead.")
                        .arg(environment, OXUrls::DefaultEnvironment);
    return {text("Deployment"),
            itemColumns(),
            {{text("service table"), AppConfig::confPath(text("OlvexUrls.json"))},
             {text("environment"), environment},
             {text("region"), OXUrls::instance()->region()},
             {text("environments known"), environments.keys().join(text(", "))}}};
}

Table services(const QJsonObject &environments, QStringList &problems)
{
    Table table{text("Services"), {text("service"), text("by region"), text("URL")}, {}};
    const QStringList names = targets(environments);
    for (const QString &target : names) {
        const QUrl url = OXUrls::url(target, QString(), true);
        const bool byRegion = OXUrls::instance()->regionsValue(target, text("baseUrl")).isValid();
        table.rows.append({target, byRegion, url.toString()});
        if (!url.isValid() || url.isRelative())
            problems << text("The service \"%1\" has no usable URL.").arg(target);
    }
    return table;
}

Table categories()
{
    Table table{text("Logging categories"),
                {text("category"), text("debug"), text("info"), text("warning"), text("critical")},
                {}};
    for (int i = 0; const QLoggingCategory *const category = AppConfig::loggingCategoriesFromIndex(i); ++i) {
        table.rows.append({text(category->categoryName()), category->isDebugEnabled(),
                           category->isInfoEnabled(), category->isWarningEnabled(),
                           category->isCriticalEnabled()});
    }
    std::sort(table.rows.begin(), table.rows.end(), [](const QVariantList &left, const QVariantList &right) {
        return left.first().toString() < right.first().toString();
    });
    return table;
}

Table log(QStringList &problems)
{
    // By the option: on Windows the open file has lost its name.
    const QString path = optionValue("--logoutput");
    const bool open = AppConfig::logOutputFile.isOpen();
    if (!path.isEmpty() && !open)
        problems << text("The log file %1 cannot be written: %2.")
                        .arg(path, AppConfig::logOutputFile.errorString());
    return {
        text("Log"),
        itemColumns(),
        {{text("file"),
          path.isEmpty() ? text("none (start with --logoutput FILE)") : QFileInfo(path).absoluteFilePath()},
         {text("open"), open},
         {text("bytes"), open ? AppConfig::logOutputFile.size() : 0},
         {text("trace level"), DebugInfoEnterExit::debugLevel}}};
}

// Values of options are skipped by what the options themselves say.
void checkOptions(QStringList &problems)
{
    const QStringList arguments = QCoreApplication::arguments();
    for (int i = 1; i < arguments.size(); ++i) {
        if (!arguments.at(i).startsWith(QLatin1String("--")))
            continue;
        const int valueCount = AppConfig::instance()->getArgInfo(arguments.at(i)).valueCount;
        if (valueCount == -1)
            problems << text("The option %1 is unknown and was ignored.").arg(arguments.at(i));
        else
            i += valueCount;
    }
}

} // namespace

Report examine()
{
    Report report;
    QStringList &problems = report.problems;
    checkOptions(problems);
    report.tables << identity() << directories(problems) << settings(problems);
    const QJsonObject environments = readEnvironments(AppConfig::confPath(text("OlvexUrls.json")), problems);
    report.tables << deployment(environments, problems) << services(environments, problems) << categories()
                  << log(problems);
    return report;
}
