#include "AppConfig.h"

#include "AppConfig_p.h"
#include "platform/Platform.h"

#include <QCoreApplication>
#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>

HXAtomicLock AppConfig::elapsedTimerLock;
QElapsedTimer AppConfig::elapsedTimer;
int AppConfig::signalsFD[2] = {-1, -1};

namespace {

// Receives the signals on behalf of the application object, as long as that lives.
bool watchSignals()
{
    static QPointer<QSocketNotifier> notifier;
    QCoreApplication *const application = QCoreApplication::instance();
    if (!application || !platform::openChannel(AppConfig::signalsFD))
        return false;
    if (notifier)
        return true;

    while (platform::readSignal(AppConfig::signalsFD[0]) != -1) { } // left over from an earlier one
    notifier = new QSocketNotifier(AppConfig::signalsFD[0], QSocketNotifier::Read, application);
    auto *const repetition = new QTimer(notifier);
    QObject::connect(notifier, &QSocketNotifier::activated, repetition, [repetition] {
        for (int number = 0; (number = platform::readSignal(AppConfig::signalsFD[0])) != -1;)
            AppConfig::instance()->signalReceived(number);
        repetition->start(100);
    });
    // A loop that ran before exec() has swallowed the request.
    QObject::connect(repetition, &QTimer::timeout, application, [] { QCoreApplication::exit(0); });
    QObject::connect(application, &QCoreApplication::aboutToQuit, repetition, &QTimer::stop);
    QObject::connect(notifier, &QObject::destroyed, &platform::restoreTerminationHandlers);
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
    return (!platform::hasTerminationSignals || watchSignals())
        && platform::installTerminationHandlers(&signalHandler, &cleanWindowsExit);
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
