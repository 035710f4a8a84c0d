#include "Directories.h"

#include "Start.h"

#include <AppConfig.h>

#include <QFileInfo>

#ifdef Q_OS_WIN
extern Q_CORE_EXPORT int qt_ntfs_permission_lookup; // as Qt documents it
#endif

const std::vector<Directory> directories = {
    {"temporary", "--tmppath", &AppConfig::tmpPath, Need::Writability, false},
    {"configuration", "--confpath", &AppConfig::confPath, Need::Existence, false},
    {"share root", "--sharepath", &AppConfig::sharePath, Need::Existence, false},
    {"sounds", "--sharepath", &AppConfig::soundsPath, Need::Nothing, false},
    {"plug-ins", "--pluginpath", &AppConfig::pluginsPath, Need::Nothing, false},
    {"factory data", "--datapath", &AppConfig::factoryDataPath, Need::Nothing, false},
    {"variable data", "--varpath", &AppConfig::varPath, Need::Creation, true},
    {"variable configuration", "--varetcpath", &AppConfig::varEtcPath, Need::Creation, true},
    {"variable log", "--varlogpath", &AppConfig::varLogPath, Need::Creation, true},
    {"persistent storage", "--persistentpath", &AppConfig::persistentStoragePath, Need::Nothing, true},
    {"binary", "--binpath", &AppConfig::binPath, Need::Nothing, false},
    {"scenario store", "--dravikpath", &AppConfig::dravikPath, Need::Nothing, false},
    {"user interface", "--qmlpath", &AppConfig::qmlLocalPath, Need::Nothing, false},
};

QString Directory::path() const
{
    return usualPath(getter(QString()), option);
}

QString variableConfiguration(const QString &file)
{
    const QString directory = usualPath(AppConfig::varEtcPath(QString()), "--varetcpath");
    return file.isEmpty() ? directory : directory + QLatin1Char('/') + file;
}

QString nearestDirectory(QString path)
{
    while (!path.isEmpty() && !QFileInfo::exists(path) && !QDir(path).isRoot())
        path = QFileInfo(path).path();
    return path;
}

bool isWritable(const QString &directory)
{
#ifdef Q_OS_WIN
    ++qt_ntfs_permission_lookup;
#endif
    const QFileInfo info(directory);
    const bool writable = info.isDir() && info.isWritable();
#ifdef Q_OS_WIN
    --qt_ntfs_permission_lookup;
#endif
    return writable;
}
