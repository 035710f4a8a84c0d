#include <AppConfig.h>
#include <ConnectivityChecker.h>

#include <QCoreApplication>
#include <QDebug>
#include <QTimer>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    AppConfig *const config = AppConfig::instance();
    config->addArgument("--service", 1, "<key> Checks this service of OlvexUrls.json");
    if (config->initialize(QStringLiteral("minimal"), QStringLiteral("1.0")))
        return 0; // help or a version was printed
    AppConfig::cleanExit(); // SIGTERM and console events end the event loop

    const int starts = AppConfig::settings()->value(QStringLiteral("Minimal/Starts")).toInt() + 1;
    AppConfig::settings()->setValue(QStringLiteral("Minimal/Starts"), starts);
    qInfo() << "start number" << starts;

    ConnectivityChecker checker;
    QObject::connect(&checker, &ConnectivityChecker::statusChanged,
                     [&](ConnectivityChecker::ConnectivityStatus status) {
                         qInfo() << checker.url().toString() << status;
                         AppConfig::exit(status == ConnectivityChecker::SUCCESS ? 0 : 1);
                     });
    const QString service = config->argumentValue(QStringLiteral("service"), QStringLiteral("account"));
    checker.useOXUrl(service, QString());
    QTimer::singleShot(0, &checker, &ConnectivityChecker::startCheck);
    return QCoreApplication::exec();
}
