#include "AppConfig.h"

namespace {

// Where the default of a directory starts.
enum class Base {
    None, // there is no default
    System, // the system's temporary directory
    WorkingDirectory,
    User // the per-user base directory
};

struct DirectoryRow {
    const char *option;
    Base base;
    const char *path;
};

// In the order of AppConfig::Directory.
// Deliberate: the factory data is read from "--datapath", which like "--logpath" is no built-in option, while
// the built-in "--factorydatapath" is read by nobody; and the persistent storage keeps the path of a build
// machine.
constexpr DirectoryRow directoryRows[] = {
    {"--tmppath", Base::System, ""},
    {"--logpath", Base::User, "./var/Logs"},
    {"--confpath", Base::WorkingDirectory, "./data/etc"},
    {"--sharepath", Base::WorkingDirectory, "."},
    {"--datapath", Base::WorkingDirectory, "./data"},
    {"--varpath", Base::User, "./var"},
    {"--varetcpath", Base::User, "./var/etc"},
    {"--persistentpath", Base::User, "c:/ccnet/builds/olvex-release/installer/data/persistent"},
    {"--varlogpath", Base::User, "./var/log"},
    {"--binpath", Base::WorkingDirectory, "."},
    {"--dravikpath", Base::WorkingDirectory, "./var/dravik"},
    {"--pluginpath", Base::None, ""},
    {"--qmlpath", Base::None, ""},
};

QString userBase()
{
    return QString::fromUtf8(qgetenv("APPDATA")) + QLatin1String("/Brantel Medical/Olvex/");
}

QString defaultPath(const DirectoryRow &row)
{
    switch (row.base) {
    case Base::System:
        return QDir::tempPath();
    case Base::WorkingDirectory:
        return QString::fromLatin1(row.path);
    case Base::User:
        return userBase() + QLatin1String(row.path);
    case Base::None:
        break;
    }
    return QString();
}

} // namespace

void AppConfig::readDirectoryOptions()
{
    static_assert(sizeof directoryRows / sizeof *directoryRows == DirectoryCount, "one row per directory");
    for (int i = 0; i < DirectoryCount; ++i)
        m_directories[i].setPath(argumentValue(QString::fromLatin1(directoryRows[i].option), QString()));
}

void AppConfig::setupConfigPaths()
{
    QDir().mkpath(userBase());
    for (int i = 0; i < DirectoryCount; ++i) {
        if (m_directories[i].path().isEmpty())
            m_directories[i].setPath(defaultPath(directoryRows[i]));
    }
}

QString AppConfig::filePath(Directory directory, const QString &file)
{
    const QString local = QString::fromLocal8Bit(file.toLocal8Bit().constData()); // ends at the first NUL
    return instance()->m_directories[directory].absoluteFilePath(local);
}

QString AppConfig::createdFilePath(Directory directory, const QString &file)
{
    const QDir &dir = instance()->m_directories[directory];
    if (!dir.exists())
        dir.mkpath(QStringLiteral("."));
    return filePath(directory, file);
}

QString AppConfig::tmpPath(const QString &file)
{
    return filePath(Tmp, file);
}

QString AppConfig::confPath(const QString &file)
{
    return filePath(Conf, file);
}

QString AppConfig::sharePath(const QString &file)
{
    return filePath(Share, file);
}

QString AppConfig::factoryDataPath(const QString &file)
{
    return filePath(FactoryData, file);
}

QString AppConfig::persistentStoragePath(const QString &file)
{
    return filePath(PersistentStorage, file);
}

QString AppConfig::binPath(const QString &file)
{
    return filePath(Bin, file);
}

QString AppConfig::dravikPath(const QString &file)
{
    return filePath(Dravik, file);
}

QString AppConfig::varPath(const QString &file)
{
    return createdFilePath(Var, file);
}

QString AppConfig::varEtcPath(const QString &file)
{
    return createdFilePath(VarEtc, file);
}

QString AppConfig::varLogPath(const QString &file)
{
    return createdFilePath(VarLog, file);
}

QString AppConfig::soundsPath(const QString &file)
{
    return QDir(sharePath(QStringLiteral("sounds"))).filePath(file);
}

QString AppConfig::pluginsPath(const QString &file)
{
    const QDir &directory = instance()->m_directories[Plugins];
    return (directory.path().isEmpty() ? QDir(sharePath(QStringLiteral("plugins"))) : directory)
        .filePath(file);
}

QString AppConfig::qmlLocalPath(const QString &file)
{
    const QDir &root = instance()->m_directories[Qml];
    if (!root.path().isEmpty() && root.exists())
        return filePath(Qml, file);
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
