#include "AppConfig.h"

#include "AppConfig_p.h"
#include "HXCommonVersion.h"
#include "NetworkManager.h"
#include "OXUrls.h"
#include "OXVersion.h"

#include <QCoreApplication>
#include <QTextStream>
#include <QVersionNumber>

namespace {

const QLatin1String libraryVersion(HXCOMMON_VERSION_STRING);

} // namespace

AppConfig *AppConfig::instance()
{
    static AppConfig config;
    return &config;
}

AppConfig *AppConfig::Instance()
{
    return instance();
}

AppConfig::AppConfig()
{
    // Also makes the category before this object, so that it outlives it.
    qCDebug(appConfigCategory);

    if (const QCoreApplication *const application = QCoreApplication::instance())
        moveToThread(application->thread());
    qRegisterMetaType<OXVersion>();
    QMetaType::registerConverter(&OXVersion::toString);
    QMetaType::registerConverter(&OXVersion::isValid);
    m_confFormat =
        QSettings::registerFormat(QStringLiteral("conf"), &readConf, &writeConf, Qt::CaseSensitive);
}

AppConfig::~AppConfig()
{
    qCDebug(appConfigCategory) << "Begin";
    removeLogHandler();
    forgetLoggingCategories();
    logOutputFile.close();
    qCDebug(appConfigCategory) << "End";
}

bool AppConfig::initialize(const QString &applicationName, const QString &version)
{
    m_application = QCoreApplication::instance();
    QCoreApplication::setOrganizationName(QStringLiteral("Brantel Medical"));
    QCoreApplication::setApplicationName(applicationName);
    installLoggingFilter();
    if (QCoreApplication::applicationVersion().isEmpty())
        QCoreApplication::setApplicationVersion(version.isEmpty() ? QString(libraryVersion) : version);
    m_version = QCoreApplication::applicationVersion();

    if (parseApplicationArgs())
        return true;

    setupConfigPaths();
    settingIniPath(true);
    NetworkManager::instance()->initialize();
    m_settings.reset(new QSettings(settingIniPath(false), QSettings::IniFormat, this));
    OXUrls::instance()->initialize(confPath(QStringLiteral("OlvexUrls.json")),
                                   m_settings->value(QStringLiteral("System/Environment")).toString(),
                                   m_settings->value(QStringLiteral("System/Region")).toString());
    return false;
}

QString AppConfig::version()
{
    return instance()->m_version;
}

QString AppConfig::majorMiniorMicroVersion()
{
    QVersionNumber number = QVersionNumber::fromString(QCoreApplication::applicationVersion());
    if (number.isNull())
        number = QVersionNumber(1, 0, 0);
    return number.toString().section(QLatin1Char('.'), 0, 2);
}

QString AppConfig::buildStamp()
{
    return QStringLiteral(HXCOMMON_BUILD_DATE " " HXCOMMON_BUILD_TIME);
}

QString AppConfig::versionInfo()
{
    return QCoreApplication::applicationName() + QLatin1String(" Ver. ") + version();
}

QString AppConfig::systemVersion()
{
    static QString kept;
    QFile file(QStringLiteral("version.txt"));
    if (kept.isEmpty() && file.open(QIODevice::ReadOnly | QIODevice::Text))
        QTextStream(&file) >> kept;
    else if (kept.isEmpty())
        kept = version().isEmpty() ? QString(libraryVersion) : version();
    return kept;
}

bool AppConfig::isPrototype()
{
    return true;
}

QCoreApplication *AppConfig::application()
{
    return instance()->m_application;
}

bool AppConfig::runAsUser()
{
    return false;
}
