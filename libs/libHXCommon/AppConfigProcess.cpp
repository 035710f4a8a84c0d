#include "AppConfigProcess.h"

#include "AppConfig.h"
#include "AppConfigLogging.h"
#include "platform/Platform.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>
#include <QThread>

HXAtomicLock AppConfig::elapsedTimerLock;
QElapsedTimer AppConfig::elapsedTimer;
int AppConfig::signalsFD[2] = {-1, -1};

namespace {

void deliverSignals()
{
    for (int number = 0; (number = platform::readSignal(AppConfig::signalsFD[0])) != -1;)
        AppConfig::instance()->signalReceived(number);
}

// The notifier ends with the application object; a later one gets a new notifier.
bool watchSignals()
{
    static QPointer<QSocketNotifier> notifier;
    QCoreApplication *const application = QCoreApplication::instance();
    if (!application)
        return false;
    if (!notifier) {
        notifier = new QSocketNotifier(AppConfig::signalsFD[0], QSocketNotifier::Read, application);
        QObject::connect(notifier, &QSocketNotifier::activated, application, &deliverSignals);
    }
    return true;
}

} // namespace

bool cleanWindowsExit(unsigned long event)
{
    qDebug("cleanWindowsExit %d", int(event));
    AppConfig::exit(0);
    QThread::msleep(5000);
    return true;
}

void AppConfig::exit(qint32 code)
{
    if (QCoreApplication::closingDown()) {
        qCInfo(appConfigCategory) << "Application exit called, but application is already closing down";
        return;
    }
    qCInfo(appConfigCategory) << "Application exit called with" << code;
    QCoreApplication::exit(code);
}

bool AppConfig::cleanExit()
{
    return platform::installTerminationHandlers({&signalHandler, &cleanWindowsExit}, signalsFD)
        && (!platform::hasTerminationSignals || watchSignals());
}

void AppConfig::signalHandler(int signal, void *, void *)
{
    platform::writeSignal(signalsFD[1], signal);
}

void AppConfig::signalReceived(int signal)
{
    if (!platform::hasTerminationSignals)
        return;
    Q_EMIT shutdownRequested(signal);
    exit(0);
}

qint64 AppConfig::elapsedTime()
{
    const HXSpinLocker locker(&elapsedTimerLock, "", "");
    return elapsedTimer.isValid() ? elapsedTimer.elapsed() : 0;
}

void AppConfig::freopenstd(const char *path, const char *mode, std::FILE *stream)
{
    const int descriptor = platform::descriptorOf(stream);
    if (std::freopen(path, mode, stream))
        return;
    std::fclose(stream);
    platform::parkOnNullDevice(descriptor);
}

void AppConfig::redirectStdFilesToNull()
{
    // Deliberate: the same path on every platform.
    freopenstd("/dev/null", "r", stdin);
    freopenstd("/dev/null", "w", stdout);
    freopenstd("/dev/null", "w", stderr);
}
