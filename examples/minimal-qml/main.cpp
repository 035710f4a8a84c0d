#include <AppConfig.h>
#include <HXCommonQml.h>

#include <QGuiApplication>
#include <QQmlApplicationEngine>

int main(int argc, char **argv)
{
    const QGuiApplication application(argc, argv);
    AppConfig *const config = AppConfig::instance();
    config->addArgument("--service", 1, "<key> Shows this service of OlvexUrls.json");
    if (config->initialize(QStringLiteral("minimal-qml"), QStringLiteral("1.0")))
        return 0; // help or a version was printed
    AppConfig::cleanExit(); // SIGTERM and console events end the event loop

    const int starts = AppConfig::settings()->value(QStringLiteral("Minimal/Starts")).toInt() + 1;
    AppConfig::settings()->setValue(QStringLiteral("Minimal/Starts"), starts);

    registerHXCommonTypes("HXCommon");
    QQmlApplicationEngine engine;
    const QString service = config->argumentValue(QStringLiteral("service"), QStringLiteral("account"));
    engine.setInitialProperties({{QStringLiteral("starts"), starts}, {QStringLiteral("service"), service}});
    engine.load(QUrl(QStringLiteral("qrc:/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1; // the log says why
    return QGuiApplication::exec();
}
