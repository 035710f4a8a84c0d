// olvex-console: shows on six pages what the library gives an application.

#include "CommandLine.h"
#include "ConsoleTypes.h"

#include <AppConfig.h>
#include <RunGuard.h>

#include <QDir>
#include <QEventLoop>
#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickItemGrabResult>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTimer>

#include <memory>

namespace {

const Program program{
    "olvex-console",
    "shows on six pages what the library gives an application",
    "[--theme dark|light] [--size WIDTHxHEIGHT]",
    {
        {"--theme", Option::Text, "<dark|light> Sets the colours"},
        {"--size", Option::Text, "<size> Sets width and height of the window, from 1024x600 to 7680x4320"},
        {"--screenshots", Option::Text, "<directory> Stores a picture of every page and ends"},
        {"--load", Option::Flag, "Sends on the link and logs as fast as it can"},
    },
    "",
    R"(olvex-console --theme light --logoutput console.log
QT_QPA_PLATFORM=offscreen olvex-console --screenshots pictures
)",
    R"(0  closed
1  the user interface could not be loaded, or a picture not be written
2  the command line is wrong
3  another instance is running
)",
    2};

// What is wrong with the values of the options; empty if nothing is.
QString complaint(const CommandLine &line)
{
    const QString theme = line.value("--theme");
    if (line.has("--theme") && theme != text("dark") && theme != text("light"))
        return text("--theme is dark or light, not \"%1\".").arg(theme);
    const QString size = line.value("--size");
    if (line.has("--size") && !windowSize(size).isValid())
        return text("--size goes from 1024x600 to 7680x4320, not \"%1\".").arg(size);
    return QString();
}

// Shows one page after the other, each for long enough to fill with life.
bool takeScreenshots(QQuickWindow *window, const QDir &directory)
{
    QEventLoop loop;
    QTimer timer;
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, &loop, &QEventLoop::quit);
    const QStringList pages = window->property("pages").toStringList();
    bool stored = directory.mkpath(text("."));
    for (int page = 0; page < pages.size() && stored; ++page) {
        window->setProperty("page", page);
        timer.start(1500);
        loop.exec();
        const auto grab = window->contentItem()->grabToImage();
        QObject::connect(grab.data(), &QQuickItemGrabResult::ready, &loop, &QEventLoop::quit);
        loop.exec();
        stored = grab->image().save(directory.filePath(pages.at(page).toLower() + text(".png")));
    }
    return stored;
}

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    const CommandLine line(program, arguments);
    if (line.isAnswered())
        return finish(line.status());
    const QString wrong = complaint(line);
    if (!wrong.isEmpty())
        return fail(program.refusal, wrong);

    const bool needsDisplay = !line.has("--version") && !line.has("--systemversion");
    const std::unique_ptr<QCoreApplication> application(needsDisplay ? new QGuiApplication(argc, argv)
                                                                     : new QCoreApplication(argc, argv));
    for (const Option &option : program.options)
        AppConfig::instance()->addArgument(option.name, option.kind == Option::Flag ? 0 : 1, option.help);
    if (AppConfig::instance()->initialize(text(program.name), QString()))
        return finish(0);
    RunGuard guard(QString::fromLatin1(guardName));
    if (!guard.tryToRun())
        return fail(3, text("Another instance is running."));
    AppConfig::cleanExit();

    registerConsoleTypes();
    QQuickStyle::setStyle(text("Default"));
    QQmlApplicationEngine engine(QUrl(text("qrc:/console/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    if (!line.has("--screenshots"))
        return QGuiApplication::exec();
    auto *const window = qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst());
    return takeScreenshots(window, line.value("--screenshots")) ? 0 : 1;
}
