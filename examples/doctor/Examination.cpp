#include "Examination.h"

#include "CommandLine.h"
#include "Machine.h"
#include "ServiceTable.h"
#include "Settings.h"

#include <AppConfig.h>
#include <OXUrls.h>

#include <QLoggingCategory>
#include <QSslSocket>
#include <QUrl>

#include <algorithm>

namespace {

// Also in the settings of others, which are found to be wrong when it is their turn.
void judgeNames(const ServiceTable &services, QVector<Problem> &problems)
{
    const QStringList environments = services.environments.keys();
    const QStringList regions = services.regions();
    const QVector<SettingsFile> files = environments.isEmpty() ? QVector<SettingsFile>() : settingsFiles();
    for (const SettingsFile &settings : files) {
        const QString name = settings.file.fileName();
        if (!settings.environment().isEmpty() && !environments.contains(settings.environment()))
            problems.append(
                {text("environment-unknown"),
                 text("The environment \"%1\" of %2 is not in the service table: \"%3\" is used instead.")
                     .arg(settings.environment(), name, OXUrls::DefaultEnvironment),
                 text("Set System/Environment to one of these: %1.").arg(environments.join(text(", ")))});
        if (!settings.region().isEmpty() && !regions.contains(settings.region()))
            problems.append({text("region-unknown"),
                             text("The region \"%1\" of %2 is not in the service table, and has no effect.")
                                 .arg(settings.region(), name),
                             text("Set System/Region to one of these: %1.")
                                 .arg(regions.isEmpty() ? text("(none)") : regions.join(text(", ")))});
    }
}

Table deployment(const ServiceTable &services)
{
    const QString environment = OXUrls::instance()->environment();
    const QString region = OXUrls::instance()->region();
    const QStringList environments = services.environments.keys();
    const QStringList regions = services.regions();
    return {text("deployment"),
            text("Deployment"),
            {text("item"), text("value")},
            {{text("service table"), services.path},
             {text("environment"), environment},
             {text("region"), region},
             {text("environments known"), environments},
             {text("regions known"), regions}}};
}

Table serviceTable(const ServiceTable &services, QVector<Problem> &problems)
{
    Table table{text("services"),
                text("Services of %1").arg(deploymentName()),
                {text("service"), text("by region"), text("fallback"), text("URL")},
                {}};
    bool needsTls = false;
    const QStringList names = services.targets();
    for (const QString &target : names) {
        const QUrl url = OXUrls::url(target, QString(), true);
        const bool byRegion = OXUrls::instance()->regionsValue(target, text("baseUrl")).isValid();
        table.rows.append({target, byRegion, services.fallsBack(target), url.toString()});
        needsTls = needsTls || url.scheme() == text("https");
        if (!url.isValid() || url.isRelative())
            problems.append({text("service-url"), text("The service \"%1\" has no usable URL.").arg(target),
                             text("Give it a \"baseUrl\" with scheme and host in %1.").arg(services.path)});
    }
    if (needsTls && !QSslSocket::supportsSsl())
        problems.append({text("tls-missing"), text("There is no TLS, and services need it."),
                         text("Install the OpenSSL libraries that Qt was built for: %1.")
                             .arg(QSslSocket::sslLibraryBuildVersionString())});
    return table;
}

Table categories()
{
    Table table{text("categories"),
                text("Logging categories"),
                {text("category"), text("debug"), text("info"), text("warning"), text("critical")},
                {}};
    for (int i = 0; const QLoggingCategory *const category = AppConfig::loggingCategoriesFromIndex(i); ++i) {
        table.rows.append({text(category->categoryName()), category->isDebugEnabled(),
                           category->isInfoEnabled(), category->isWarningEnabled(),
                           category->isCriticalEnabled()});
    }
    std::sort(table.rows.begin(), table.rows.end(), [](const QVariantList &left, const QVariantList &right) {
        return left.first().toString() < right.first().toString();
    });
    return table;
}

} // namespace

Report examine(const QString &application, const QString &logFile)
{
    Report report;
    QVector<Problem> &problems = report.problems;
    report.tables = examineSettings(application, problems);
    const ServiceTable services(problems);
    judgeNames(services, problems);
    report.tables << deployment(services) << serviceTable(services, problems) << examineMachine(problems)
                  << examineLogs(logFile, problems) << examineRemoteAccess(problems) << categories();
    return report;
}
