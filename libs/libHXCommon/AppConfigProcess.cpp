#include "AppConfigProcess.h"

#include "AppConfig.h"
#include "AppConfigLogging.h"
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
class SignalWatch : public QObject {
public:
    explicit SignalWatch(QCoreApplication *application)
        : QObject(application), m_notifier(AppConfig::signalsFD[0], QSocketNotifier::Read)
    {
        while (platform::readSignal(AppConfig::signalsFD[0]) != -1) { } // left over from an earlier one
        connect(&m_notifier, &QSocketNotifier::activated, this, &SignalWatch::deliver);
        // A loop that ran before exec() has swallowed the request.
        connect(&m_repetition, &QTimer::timeout, application, [] { QCoreApplication::exit(0); });
        connect(application, &QCoreApplication::aboutToQuit, &m_repetition, &QTimer::stop);
    }
    ~SignalWatch() override { platform::restoreTerminationHandlers(); }

private:
    void deliver()
    {
        for (int number = 0; (number = platform::readSignal(AppConfig::signalsFD[0])) != -1;)
            AppConfig::instance()->signalReceived(number);
        m_repetition.start(100);
    }

    QSocketNotifier m_notifier;
    QTimer m_repetition;
};

bool watchSignals()
{
    static QPointer<QObject> watch;
    QCoreApplication *const application = QCoreApplication::instance();
    if (!application || !platform::openChannel(AppConfig::signalsFD))
        return false;
    if (!watch)
        watch = new SignalWatch(application);
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
        && platform::installTerminationHandlers({&signalHandler, &cleanWindowsExit});
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
