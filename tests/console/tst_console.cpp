// Runs tst_console.qml on the types that the program registers.

#include "ConsoleTypes.h"

#include <AppConfig.h>
#include <RunGuard.h>

#include <QDir>
#include <QQmlContext>
#include <QQuickStyle>
#include <QtQuickTest>

namespace {

QStringList warnings;
QtMessageHandler libraryHandler = nullptr;
QtMessageHandler testHandler = nullptr;

void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QString category = text(context.category);
    if (type != QtDebugMsg && type != QtInfoMsg && !category.startsWith(text("Olvex.")))
        warnings << category + text(": ") + message;
    libraryHandler(type, context, message);
}

} // namespace

class Setup : public QObject {
    Q_OBJECT

public:
    /// Takes the messages over from Qt Test, or gives them back.
    Q_INVOKABLE void watchMessages(bool watch)
    {
        const QtMessageHandler previous = qInstallMessageHandler(watch ? &handleMessage : testHandler);
        if (watch)
            testHandler = previous;
    }

    /// The warnings since the last call that are none of the library's own.
    Q_INVOKABLE QStringList takeWarnings() const
    {
        QStringList taken;
        taken.swap(warnings);
        return taken;
    }

public Q_SLOTS:
    void applicationAvailable()
    {
        QDir().mkpath(text("data/etc"));
        QFile::copy(text(EXAMPLE_DATA "/etc/OlvexUrls.json"), text("data/etc/OlvexUrls.json"));
        AppConfig::instance()->initialize(text("olvex-console"), QString());
        QFile::remove(AppConfig::settingIniPath(false));
        AppConfig::logOutputFile.setFileName(text("console.log"));
        AppConfig::logOutputFile.open(QIODevice::WriteOnly | QIODevice::Truncate | QIODevice::Unbuffered);
        libraryHandler = qInstallMessageHandler(nullptr);
        qInstallMessageHandler(libraryHandler);
        m_guard.reset(new RunGuard(text(guardName)));
        m_guard->tryToRun();
        registerConsoleTypes();
        QQuickStyle::setStyle(text("Default"));
    }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->rootContext()->setContextProperty(text("setup"), this);
    }

    void cleanupTestCase() { m_guard.reset(); }

private:
    QScopedPointer<RunGuard> m_guard;
};

QUICK_TEST_MAIN_WITH_SETUP(console, Setup)
#include "tst_console.moc"
