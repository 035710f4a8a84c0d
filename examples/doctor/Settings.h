#ifndef SETTINGS_H
#define SETTINGS_H

#include "Report.h"

#include <QFileInfo>
#include <QVariantMap>

/// A settings file, read without changing it.
struct SettingsFile {
    explicit SettingsFile(const QString &path);

    QFileInfo file;
    QString application; ///< empty for the old common file
    QVariantMap values; ///< empty when it cannot be read
    bool isDamaged;

    QString environment() const;
    QString region() const;
};

/// Every settings file of the variable configuration.
QVector<SettingsFile> settingsFiles();

/// The one application that has settings, or an empty text when there is none or more.
QString onlyApplication();

/// What an application will find in its settings at its next start, which replaces them by the old common
/// file if that is newer or the application has none. An empty name stands for a new application.
SettingsFile settingsInForce(const QString &application);

/// Reports on all settings files, and on what is in force for an application.
QVector<Table> examineSettings(const QString &application, QVector<Problem> &problems);

#endif
