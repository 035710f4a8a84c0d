#include "AppConfig.h"

namespace {

QString userBase()
{
    return QString::fromUtf8(qgetenv("APPDATA")) + QLatin1String("/Brantel Medical/Olvex/");
}

} // namespace

struct AppConfig::DirectoryRow {
    Directory AppConfig::*directory;
    const char *option;
    QString (*base)(); // where the default starts; null: the working directory
    const char *path; // empty without a base: there is no default
};

// Deliberate: the factory data is read from "--datapath", which like "--logpath" is no built-in option, while
// the built-in "--factorydatapath" is read by nobody; and the persistent storage keeps the path of a build
// machine.
const AppConfig::DirectoryRow AppConfig::directoryRows[] = {
    {&AppConfig::m_tmp, "--tmppath", &QDir::tempPath, ""},
    {&AppConfig::m_log, "--logpath", &userBase, "./var/Logs"},
    {&AppConfig::m_conf, "--confpath", nullptr, "./data/etc"},
    {&AppConfig::m_share, "--sharepath", nullptr, "."},
    {&AppConfig::m_factoryData, "--datapath", nullptr, "./data"},
    {&AppConfig::m_var, "--varpath", &userBase, "./var"},
    {&AppConfig::m_varEtc, "--varetcpath", &userBase, "./var/etc"},
    {&AppConfig::m_persistentStorage, "--persistentpath", &userBase,
     "c:/ccnet/builds/olvex-release/installer/data/persistent"},
    {&AppConfig::m_varLog, "--varlogpath", &userBase, "./var/log"},
    {&AppConfig::m_bin, "--binpath", nullptr, "."},
    {&AppConfig::m_dravik, "--dravikpath", nullptr, "./var/dravik"},
    {&AppConfig::m_plugins, "--pluginpath", nullptr, ""},
    {&AppConfig::m_qml, "--qmlpath", nullptr, ""},
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
            directory.setPath((row.base ? row.base() : QString()) + QLatin1String(row.path));
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
