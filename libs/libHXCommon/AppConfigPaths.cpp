#include "AppConfig.h"

namespace {

// Where the default of a directory starts.
enum class Base {
    None, // there is no default
    System, // the system's temporary directory
    WorkingDirectory,
    User // the per-user base directory
};

QString userBase()
{
    return QString::fromUtf8(qgetenv("APPDATA")) + QLatin1String("/Brantel Medical/Olvex/");
}

} // namespace

struct AppConfig::DirectoryRow {
    Directory AppConfig::*directory;
    const char *option;
    Base base;
    const char *path;

    QString defaultPath() const
    {
        switch (base) {
        case Base::System:
            return QDir::tempPath();
        case Base::WorkingDirectory:
            return QString::fromLatin1(path);
        case Base::User:
            return userBase() + QLatin1String(path);
        case Base::None:
            break;
        }
        return QString();
    }
};

// Deliberate: the factory data is read from "--datapath", which like "--logpath" is no built-in option, while
// the built-in "--factorydatapath" is read by nobody; and the persistent storage keeps the path of a build
// machine.
const AppConfig::DirectoryRow AppConfig::directoryRows[] = {
    {&AppConfig::m_tmp, "--tmppath", Base::System, ""},
    {&AppConfig::m_log, "--logpath", Base::User, "./var/Logs"},
    {&AppConfig::m_conf, "--confpath", Base::WorkingDirectory, "./data/etc"},
    {&AppConfig::m_share, "--sharepath", Base::WorkingDirectory, "."},
    {&AppConfig::m_factoryData, "--datapath", Base::WorkingDirectory, "./data"},
    {&AppConfig::m_var, "--varpath", Base::User, "./var"},
    {&AppConfig::m_varEtc, "--varetcpath", Base::User, "./var/etc"},
    {&AppConfig::m_persistentStorage, "--persistentpath", Base::User,
     "c:/ccnet/builds/olvex-release/installer/data/persistent"},
    {&AppConfig::m_varLog, "--varlogpath", Base::User, "./var/log"},
    {&AppConfig::m_bin, "--binpath", Base::WorkingDirectory, "."},
    {&AppConfig::m_dravik, "--dravikpath", Base::WorkingDirectory, "./var/dravik"},
    {&AppConfig::m_plugins, "--pluginpath", Base::None, ""},
    {&AppConfig::m_qml, "--qmlpath", Base::None, ""},
};

void AppConfig::readDirectoryOptions()
{
    for (const DirectoryRow &row : directoryRows)
        (this->*row.directory).setPath(argumentValue(QString::fromLatin1(row.option), QString()));
}

void AppConfig::setupConfigPaths()
{
    QDir().mkpath(userBase());
    for (const DirectoryRow &row : directoryRows) {
        Directory &directory = this->*row.directory;
        if (directory.path().isEmpty())
            directory.setPath(row.defaultPath());
    }
}

QString AppConfig::filePath(const QDir &directory, const QString &file)
{
    return directory.absoluteFilePath(
        QString::fromLocal8Bit(file.toLocal8Bit().constData())); // ends at the first NUL
}

QString AppConfig::createdFilePath(const QDir &directory, const QString &file)
{
    // The path that is returned does not follow the working directory, as a relative QDir would.
    QDir().mkpath(directory.absolutePath());
    return filePath(directory, file);
}

QString AppConfig::tmpPath(const QString &file)
{
    return filePath(instance()->m_tmp, file);
}

QString AppConfig::confPath(const QString &file)
{
    return filePath(instance()->m_conf, file);
}

QString AppConfig::sharePath(const QString &file)
{
    return filePath(instance()->m_share, file);
}

QString AppConfig::factoryDataPath(const QString &file)
{
    return filePath(instance()->m_factoryData, file);
}

QString AppConfig::persistentStoragePath(const QString &file)
{
    return filePath(instance()->m_persistentStorage, file);
}

QString AppConfig::binPath(const QString &file)
{
    return filePath(instance()->m_bin, file);
}

QString AppConfig::dravikPath(const QString &file)
{
    return filePath(instance()->m_dravik, file);
}

QString AppConfig::varPath(const QString &file)
{
    return createdFilePath(instance()->m_var, file);
}

QString AppConfig::varEtcPath(const QString &file)
{
    return createdFilePath(instance()->m_varEtc, file);
}

QString AppConfig::varLogPath(const QString &file)
{
    return createdFilePath(instance()->m_varLog, file);
}

QString AppConfig::soundsPath(const QString &file)
{
    return QDir(sharePath(QStringLiteral("sounds"))).filePath(file);
}

QString AppConfig::pluginsPath(const QString &file)
{
    const QDir &directory = instance()->m_plugins;
    return (directory.path().isEmpty() ? QDir(sharePath(QStringLiteral("plugins"))) : directory)
        .filePath(file);
}

QString AppConfig::qmlLocalPath(const QString &file)
{
    const QDir &root = instance()->m_qml;
    if (!root.path().isEmpty() && root.exists())
        return filePath(root, file);
    const QString local = qEnvironmentVariable("QML_LOCAL_PATH");
    return local.isEmpty() ? file : QDir(local).filePath(file);
}

QString AppConfig::sysInfoPath()
{
    return binPath(QStringLiteral("ox-sysinfo"));
}

QString AppConfig::ioMapIniPath()
{
    return QStringLiteral("/etc/iomap.conf");
}

QString AppConfig::guidelinesIniPath()
{
    return varEtcPath(QStringLiteral("Guidelines.ini"));
}

QString AppConfig::paramterIniPath()
{
    return confPath(QStringLiteral("Parameters.ini"));
}

QString AppConfig::paramterIniPathTHA()
{
    return confPath(QStringLiteral("Parameters_THA.ini"));
}
