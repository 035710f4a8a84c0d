// Loads the QML documents named on its command line; fails when one has an error.
#include <HXCommonQml.h>
#include <NetworkManager.h>

#include <QCoreApplication>
#include <QDebug>
#include <QQmlComponent>
#include <QQmlEngine>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    NetworkManager::instance()->initialize();
    registerHXCommonTypes("HXCommon");
    QQmlEngine engine;
    for (int i = 1; i < argc; ++i) {
        QQmlComponent component(&engine, QUrl::fromLocalFile(QString::fromLocal8Bit(argv[i])));
        const QScopedPointer<QObject> object(component.create());
        if (!object) {
            qCritical() << component.errorString();
            return 1;
        }
    }
    return 0;
}
