// Runs tst_console.qml on the types that the program registers.

#include "ConsoleTypes.h"

#include <AppConfig.h>
#include <RunGuard.h>

#include <QAccessible>
#include <QQmlContext>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QtQuickTest>

#include <utility>

static QStringList warnings;
static QtMessageHandler libraryHandler, testHandler;

static void handleMessage(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    const QString category = text(context.category);
    if (type != QtDebugMsg && type != QtInfoMsg && !category.startsWith(text("Olvex.")))
        warnings << category + text(": ") + message;
    libraryHandler(type, context, message);
}

// What can have the focus, but has no name for assistive technology.
static QStringList unnamedIn(QAccessibleInterface *item)
{
    QStringList found;
    if (item->state().focusable && item->text(QAccessible::Name).isEmpty())
        found << item->object()->objectName() + text(item->object()->metaObject()->className());
    for (int i = 0; i < item->childCount() && !item->state().invisible; ++i)
        found += unnamedIn(item->child(i));
    return found;
}

class Setup : public QObject {
    Q_OBJECT

public:
    /// Takes the messages over from Qt Test, or gives them back.
    Q_INVOKABLE void watchMessages(bool watch)
    {
        testHandler = qInstallMessageHandler(watch ? &handleMessage : testHandler);
    }

    /// The warnings since the last call that are none of the library's own.
    Q_INVOKABLE QStringList takeWarnings() const { return std::exchange(warnings, QStringList()); }

    Q_INVOKABLE QStringList unnamed(QQuickWindow *window) const
    {
        QAccessible::setActive(true); // the controls that there are tell of themselves
        return unnamedIn(QAccessible::queryAccessibleInterface(window));
    }

public Q_SLOTS:
    void applicationAvailable()
    {
        QDir().mkpath(text("data/etc"));
        QFile::copy(text(EXAMPLE_DATA "/etc/OlvexUrls.json"), text("data/etc/OlvexUrls.json"));
        AppConfig::instance()->initialize(text("olvex-console"), QString());
        AppConfig::logOutputFile.setFileName(text("console.log"));
        AppConfig::logOutputFile.open(QIODevice::WriteOnly);
        libraryHandler = qInstallMessageHandler(&handleMessage);
        (new RunGuard(text(guardName), this))->tryToRun();
        registerConsoleTypes();
        QQuickStyle::setStyle(text("Default"));
    }

    void qmlEngineAvailable(QQmlEngine *engine)
    {
        engine->rootContext()->setContextProperty(text("setup"), this);
    }
};

QUICK_TEST_MAIN_WITH_SETUP(console, Setup)
#include "tst_console.moc"
