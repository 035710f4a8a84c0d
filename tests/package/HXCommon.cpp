#include <AppConfig.h>
#include <ECGLibrary.h>
#include <Eyes.h>

#include <QCoreApplication>

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (AppConfig::instance()->initialize(QStringLiteral("consumer"), QString()))
        return 0;
    const bool works =
        ECGLibraries::Instance().getECGConfig(QString(), 7) && Eyes::staticMetaObject.enumeratorCount() > 0;
    return works ? 0 : 1;
}
