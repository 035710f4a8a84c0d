#include "Directories.h"

#include "Start.h"

#include <AppConfig.h>

#include <QFileInfo>

#ifdef Q_OS_WIN
extern Q_CORE_EXPORT int qt_ntfs_permission_lookup; // as Qt documents it
#endif

const std::vector<Directory> directories = {
    {"temporary", "--tmppath", &AppConfig::tmpPath, Need::Writability},
    {"configuration", "--confpath", &AppConfig::confPath, Need::Existence},
    {"share root", "--sharepath", &AppConfig::sharePath, Need::Existence},
    {"sounds", "--sharepath", &AppConfig::soundsPath, Need::Nothing},
    {"plug-ins", "--pluginpath", &AppConfig::pluginsPath, Need::Nothing},
    {"factory data", "--datapath", &AppConfig::factoryDataPath, Need::Nothing},
    {"variable data", "--varpath", &AppConfig::varPath, Need::Creation},
    {"variable configuration", "--varetcpath", &AppConfig::varEtcPath, Need::Creation},
    {"variable log", "--varlogpath", &AppConfig::varLogPath, Need::Creation},
    {"persistent storage", "--persistentpath", &AppConfig::persistentStoragePath, Need::Nothing},
    {"binary", "--binpath", &AppConfig::binPath, Need::Nothing},
    {"scenario store", "--dravikpath", &AppConfig::dravikPath, Need::Nothing},
    {"user interface", "--qmlpath", &AppConfig::qmlLocalPath, Need::Nothing},
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
