#include "Settings.h"

#include "CommandLine.h"
#include "Directories.h"

#include <RunGuard.h>

#include <QDateTime>
#include <QDir>
#include <QSettings>
#include <QTemporaryFile>

namespace {

QString settingsPath(const QString &application)
{
    return variableConfiguration(application.isEmpty() ? text("Settings.ini")
                                                       : text("Settings_%1.ini").arg(application));
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString origin(const SettingsFile &settings, const QString &application)
{
    if (!settings.file.exists())
        return text("none: defaults are in force");
    if (application.isEmpty())
        return text("the old common file, which an application without settings takes over; for another give "
                    "--application");
    if (settings.application.isEmpty())
        return text("the old common file, which the application takes over at its next start");
    return text(contents(settings.file.filePath()) == contents(settingsPath(QString()))
                    ? "a copy of the old common file"
                    : "the application's own");
}

void judge(const SettingsFile &settings, const QString &application, QVector<Problem> &problems)
{
    const QString path = settings.file.filePath();
    if (settings.file.exists() && !settings.file.isReadable())
        problems.append({text("settings-unreadable"), text("The settings file %1 cannot be read.").arg(path),
                         text("Give the account that runs the application the right to read it.")});
    else if (settings.file.exists() && !settings.file.isWritable())
        problems.append({text("settings-unwritable"),
                         text("The settings file %1 cannot be written.").arg(path),
                         text("Give the account that runs the application the right to write it.")});
    if (application.isEmpty())
        return;
    if (!settings.file.exists())
        problems.append({text("settings-missing"), text("%1 has no settings.").arg(application),
                         text("Check the name: without --application, all settings are listed. An "
                              "application that never started has none.")});
    else if (settings.application.isEmpty() && QFileInfo::exists(settingsPath(application)))
        problems.append({text("settings-replaced"),
                         text("Settings.ini is newer than Settings_%1.ini and replaces it at the next start.")
                             .arg(application),
                         text("If its own settings are to stay, move %1 away.").arg(path)});
}

} // namespace

// Qt tells of damage only to the first object that opens a file, which may be another one: it reads a copy.
SettingsFile::SettingsFile(const QString &path)
    : file(path), application(file.completeBaseName().section(QLatin1Char('_'), 1))
{
    QTemporaryFile copy;
    const bool isCopied = copy.open() && copy.write(contents(path)) != -1 && copy.flush();
    const QSettings settings(isCopied ? copy.fileName() : path, QSettings::IniFormat);
    const QStringList keys = settings.allKeys();
    for (const QString &key : keys)
        values.insert(key, settings.value(key));
    isDamaged = settings.status() == QSettings::FormatError;
}

QString SettingsFile::environment() const
{
    return values.value(text("System/Environment")).toString();
}

QString SettingsFile::region() const
{
    return values.value(text("System/Region")).toString();
}

QVector<SettingsFile> settingsFiles()
{
    QVector<SettingsFile> files;
    const QFileInfoList found =
        QDir(variableConfiguration(QString()))
            .entryInfoList({text("Settings.ini"), text("Settings_*.ini")}, QDir::Files, QDir::Name);
    for (const QFileInfo &file : found)
        files.append(SettingsFile(file.filePath()));
    return files;
}

QString onlyApplication()
{
    const QStringList found =
        QDir(variableConfiguration(QString())).entryList({text("Settings_*.ini")}, QDir::Files);
    return found.size() == 1 ? SettingsFile(variableConfiguration(found.first())).application : QString();
}

SettingsFile settingsInForce(const QString &application)
{
    const QFileInfo own(settingsPath(application));
    const QFileInfo old(settingsPath(QString()));
    const bool takesOver = old.exists() && (!own.exists() || own.lastModified() < old.lastModified());
    return SettingsFile((takesOver ? old : own).filePath());
}

QVector<Table> examineSettings(const QString &application, QVector<Problem> &problems)
{
    Table files{text("settings_files"),
                text("Settings files in %1").arg(variableConfiguration(QString())),
                {text("file"), text("application"), text("environment"), text("region"), text("keys"),
                 text("last modified")},
                {}};
    const QVector<SettingsFile> found = settingsFiles();
    for (const SettingsFile &settings : found) {
        files.rows.append({settings.file.fileName(), settings.application, settings.environment(),
                           settings.region(), settings.values.size(),
                           settings.file.lastModified().toString(text("yyyy-MM-dd HH:mm:ss"))});
        if (settings.isDamaged)
            problems.append({text("settings-damaged"),
                             text("The settings file %1 is damaged: what cannot be read has its default.")
                                 .arg(settings.file.filePath()),
                             text("Mend the lines that are no section, comment or key=value, or restore it "
                                  "from a copy.")});
    }

    const SettingsFile inForce = settingsInForce(application);
    judge(inForce, application, problems);
    const QVariant running = application.isEmpty() ? QVariant() : !RunGuard(application).tryToRun();
    Table values{text("settings"), text("Values in force"), {text("key"), text("value")}, {}};
    for (auto value = inForce.values.cbegin(); value != inForce.values.cend(); ++value)
        values.rows.append({value.key(), value.value()});
    return {files,
            {text("application"),
             text("Application"),
             {text("item"), text("value")},
             {{text("name"), application.isEmpty() ? QVariant() : application},
              {text("running"), running},
              {text("settings"), inForce.file.filePath()},
              {text("origin"), origin(inForce, application)}}},
            values};
}
