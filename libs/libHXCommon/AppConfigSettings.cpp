#include "AppConfig.h"

#include "AppConfig_p.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QFileInfo>

namespace {

// Leaves the file as it is when the copy fails.
void replaceByCopy(const QString &path, const QString &source)
{
    const QString copy = path + QLatin1String(".new");
    QFile::remove(copy); // of a process that was killed
    // The sizes, because QFile::copy() does not look at what it writes last.
    if (QFile::copy(source, copy) && QFileInfo(copy).size() == QFileInfo(source).size()) {
        QFile::remove(path);
        QFile::rename(copy, path);
    }
    QFile::remove(copy);
}

} // namespace

QString AppConfig::settingIniPath(bool migrate)
{
    QString path =
        varEtcPath(QLatin1String("Settings_") + QCoreApplication::applicationName() + QLatin1String(".ini"));
    if (!migrate)
        return path;

    const QFileInfo own(path);
    const QFileInfo old(varEtcPath(QStringLiteral("Settings.ini")));
    const bool oldExists = old.isFile() && old.lastModified().isValid();
    if (own.exists() && (!oldExists || own.lastModified() >= old.lastModified()))
        return path;

    // Deliberate: names this executable's file twice and the old one never; logged also when neither exists.
    qCInfo(appConfigCategory) << "Using old Settings.ini file," << own.fileName()
                              << "Last modified:" << old.lastModified() << "-" << own.fileName()
                              << "last modified:" << own.lastModified();
    if (oldExists)
        replaceByCopy(path, old.filePath());
    return path;
}

QSharedPointer<QSettings> AppConfig::settings()
{
    return QSharedPointer<QSettings>::create(settingIniPath(false), QSettings::IniFormat);
}

QSharedPointer<QSettings> AppConfig::ioMapSettings()
{
    auto settings = QSharedPointer<QSettings>::create(ioMapIniPath(), instance()->m_confFormat);
    settings->setIniCodec("UTF-8");
    return settings;
}

QVariant AppConfig::testSetting(const char *key, const QVariant &defaultValue)
{
    const QCoreApplication *const application = QCoreApplication::instance();
    const QVariant override = application ? application->property(key) : QVariant();
    return override.isValid() ? override : settings()->value(QString::fromUtf8(key), defaultValue);
}

bool AppConfig::readConf(QIODevice &device, QSettings::SettingsMap &map)
{
    while (!device.atEnd()) {
        QString line = QString::fromLatin1(device.readLine().constData()); // ends at the first NUL
        line.remove(QLatin1Char('\n'));
        const QStringList parts = line.split(QLatin1Char('='));
        if (parts.size() == 2)
            map.insert(parts.at(0), parts.at(1));
    }
    return true;
}

// Deliberate: written in the local encoding and read as Latin-1, so that only ASCII survives a rewrite.
bool AppConfig::writeConf(QIODevice &device, const QSettings::SettingsMap &map)
{
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        device.write(QStringLiteral("%1=%2\n").arg(entry.key(), entry.value().toString()).toLocal8Bit());
    return true;
}
