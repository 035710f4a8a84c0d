#include "Machine.h"

#include "CommandLine.h"
#include "Directories.h"

#include <AppConfig.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QSslSocket>
#include <QStandardPaths>
#include <QStorageInfo>
#include <QSysInfo>
#include <QTimeZone>

#include <algorithm>

namespace {

constexpr qint64 megabyte = 1000000;
constexpr qint64 leastSpace = 50 * megabyte;
constexpr qint64 largeLog = 100 * megabyte;

QStringList itemColumns()
{
    return {text("item"), text("value")};
}

Table identity(QVector<Problem> &problems)
{
    const QString versionFile = QDir::current().absoluteFilePath(text("version.txt"));
    const bool hasVersionFile = QFileInfo::exists(versionFile);
    if (hasVersionFile && AppConfig::systemVersion().isEmpty())
        problems.append({text("version-empty"),
                         text("The file %1 holds no version, so that the system has none.").arg(versionFile),
                         text("Install the system again, or write its version into the file.")});
    const QDateTime now = QDateTime::currentDateTime();
    if (now < QLocale::c().toDateTime(AppConfig::buildStamp().simplified(), text("MMM d yyyy hh:mm:ss")))
        problems.append(
            {text("clock-wrong"),
             text("The clock says %1, which is before this system was built.").arg(now.toString(Qt::ISODate)),
             text("Set the clock: the certificates of services are refused at a wrong time.")});
    return {text("identity"),
            text("Identity"),
            itemColumns(),
            {{text("doctor"), AppConfig::versionInfo()},
             {text("version"), AppConfig::majorMiniorMicroVersion()},
             {text("system version"), AppConfig::systemVersion()},
             {text("version file"), hasVersionFile ? versionFile : QVariant()},
             {text("build"), AppConfig::buildStamp()},
             {text("prototype"), AppConfig::isPrototype()},
             {text("Qt"), text(qVersion())},
             {text("TLS"), QSslSocket::supportsSsl() ? QSslSocket::sslLibraryVersionString() : QVariant()},
             {text("operating system"), QSysInfo::prettyProductName()},
             {text("clock"), now.toOffsetFromUtc(now.offsetFromUtc()).toString(Qt::ISODate)},
             {text("time zone"), QString::fromLatin1(QTimeZone::systemTimeZoneId())},
             {text("program"), QCoreApplication::applicationFilePath()},
             {text("working directory"), QDir::currentPath()}}};
}

Table environment(QVector<Problem> &problems)
{
    const QString appData = qEnvironmentVariable("APPDATA");
    const QString qml = qEnvironmentVariable("QML_LOCAL_PATH");
    bool isUsed = false;
    for (const Directory &directory : directories)
        isUsed = isUsed
            || (directory.need == Need::Creation
                && directory.path().contains(text("/Brantel Medical/Olvex")));
    if (appData.isEmpty() && isUsed)
        problems.append({text("appdata-unset"),
                         text("APPDATA is not set, so settings would go to /Brantel Medical/Olvex."),
                         text("Set it, or use --varpath, --varetcpath and --varlogpath.")});
    if (!qml.isEmpty() && !QFileInfo(qml).isDir())
        problems.append({text("qml-path-missing"),
                         text("QML_LOCAL_PATH names %1, which is no directory.").arg(qml),
                         text("Correct it, or take it away.")});
    const auto shown = [](const QString &value) { return value.isEmpty() ? QVariant() : value; };
    return {text("environment"),
            text("Environment"),
            itemColumns(),
            {{text("APPDATA"), shown(appData)}, {text("QML_LOCAL_PATH"), shown(qml)}}};
}

void judge(const Directory &directory, const QString &path, bool exists, bool writable,
           QVector<Problem> &problems)
{
    const auto add = [&](const char *code, const char *sentence, const char *advice) {
        problems.append({text(code), text(sentence).arg(text(directory.name), path),
                         text(advice).arg(text(directory.option))});
    };
    if (!exists && (directory.need == Need::Existence || directory.need == Need::Writability))
        add("directory-missing", "The %1 directory %2 does not exist.",
            "Start in the right directory, make it, or name another with %1 DIR.");
    else if (!exists && !writable && directory.need == Need::Creation)
        add("directory-missing", "The %1 directory %2 does not exist and cannot be made.",
            "Make it for the account that runs the application, or name another with %1 DIR.");
    else if (!writable && directory.need >= Need::Writability)
        add("directory-unwritable", "The %1 directory %2 is not writable.",
            "Give the account that runs the application the right to write it, or name another with %1 DIR.");
}

Table directoryTable(QVector<Problem> &problems)
{
    Table table{
        text("directories"),
        text("Directories"),
        {text("directory"), text("option"), text("exists"), text("writable"), text("free MB"), text("path")},
        {}};
    QStringList full;
    for (const Directory &directory : directories) {
        const QString path = directory.path();
        const bool exists = !path.isEmpty() && QFileInfo(path).isDir();
        const QString nearest = nearestDirectory(path);
        const bool writable = !path.isEmpty() && isWritable(nearest);
        const QStorageInfo storage(nearest);
        table.rows.append({text(directory.name), text(directory.option), exists, exists && writable,
                           storage.isValid() ? storage.bytesAvailable() / megabyte : QVariant(), path});
        judge(directory, path, exists, writable, problems);
        if (directory.need >= Need::Writability && storage.isValid() && storage.bytesAvailable() < leastSpace
            && !full.contains(storage.rootPath())) {
            full << storage.rootPath();
            problems.append(
                {text("disk-full"),
                 text("The disk of %1 has only %2 MB left.")
                     .arg(path, QString::number(storage.bytesAvailable() / megabyte)),
                 text("Remove what is not needed: settings and logs that cannot be written are lost.")});
        }
    }
    return table;
}

QString logDirectory()
{
    const auto found = std::find_if(directories.cbegin(), directories.cend(), [](const Directory &directory) {
        return qstrcmp(directory.option, "--varlogpath") == 0;
    });
    return found->path();
}

} // namespace

QVector<Table> examineMachine(QVector<Problem> &problems)
{
    return {identity(problems), environment(problems), directoryTable(problems)};
}

QStringList logFiles(const QString &path)
{
    QStringList files;
    if (!path.isEmpty())
        files << QFileInfo(path).absoluteFilePath();
    const QFileInfoList found = QDir(logDirectory()).entryInfoList({text("*.log")}, QDir::Files, QDir::Name);
    for (const QFileInfo &file : found)
        files << file.absoluteFilePath();
    files.removeDuplicates();
    return files;
}

Table examineLogs(const QString &path, QVector<Problem> &problems)
{
    Table table{text("logs"),
                text("Log files"),
                {text("file"), text("exists"), text("bytes"), text("last modified")},
                {}};
    const QStringList files = logFiles(path);
    for (const QString &name : files) {
        const QFileInfo file(name);
        table.rows.append(
            {name, file.exists(), file.size(),
             file.exists() ? file.lastModified().toString(text("yyyy-MM-dd HH:mm:ss")) : QVariant()});
        if (file.exists() ? !file.isFile() || !file.isWritable() : !isWritable(file.path()))
            problems.append({text("log-unwritable"), text("The log file %1 cannot be written.").arg(name),
                             text("Name another with --logoutput FILE, or make its directory for the account "
                                  "that runs the application.")});
        if (file.size() > largeLog)
            problems.append({text("log-large"),
                             text("The log file %1 has %2 MB, and only grows.")
                                 .arg(name, QString::number(file.size() / megabyte)),
                             text("Move it away while the application does not run; it starts a new one.")});
    }
    return table;
}

Table examineRemoteAccess(QVector<Problem> &problems)
{
    const QString ssh = QStandardPaths::findExecutable(text("ssh"));
    const QDir directory(AppConfig::sharePath(text("certificates")));
    const QStringList keys = directory.entryList({text("*_rsa")}, QDir::Files, QDir::Name);
    if (ssh.isEmpty() && !keys.isEmpty())
        problems.append({text("ssh-missing"),
                         text("There is no program ssh in PATH, so that olvex-sync reaches no host."),
                         text("Install an OpenSSH client.")});
    for (const QString &key : keys) {
        const QFileInfo file(directory.filePath(key));
        if (!file.isReadable())
            problems.append({text("key-unreadable"), text("The key %1 cannot be read.").arg(file.filePath()),
                             text("Give the account that runs olvex-sync the right to read it.")});
#ifndef Q_OS_WIN
        else if (file.permissions()
                 & (QFile::ReadGroup | QFile::WriteGroup | QFile::ReadOther | QFile::WriteOther))
            problems.append(
                {text("key-open"),
                 text("The key %1 is open to others, so that ssh refuses it.").arg(file.filePath()),
                 text("chmod 600 %1").arg(file.filePath())});
#endif
    }
    return {text("remote_access"),
            text("Remote access"),
            itemColumns(),
            {{text("ssh"), ssh.isEmpty() ? QVariant() : ssh},
             {text("certificates"), directory.path()},
             {text("keys"), keys}}};
}
