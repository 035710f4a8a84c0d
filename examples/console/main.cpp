// olvex-console: shows on five pages what the library gives an application.
//
// Exit status: 0 closed, 1 user interface not loaded or screenshot not written, 2 wrong command line, 3
// another instance is running.

#include "ConsoleTypes.h"
#include "OptionValue.h"
#include "Report.h"

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

#include <algorithm>
#include <cstdio>
#include <memory>

namespace {

constexpr AppConfig::cmdArg_t options[] = {
    {"--size", 1, "<width>x<height> Sets the size of the window"},
    {"--theme", 1, "<dark|light> Sets the colours"},
    {"--screenshots", 1, "<directory> Stores a picture of every page and ends"},
    {"--load", 0, "Sends on the link and logs as fast as it can"},
};

// Those that print something and end, which needs no display.
bool printsOnly(int argc, char **argv)
{
    return std::any_of(argv + 1, argv + argc, [](const char *argument) {
        return QStringList{text("--help"), text("--version"), text("--systemversion")}.contains(
            text(argument));
    });
}

// What is wrong with the command line; empty if nothing is.
QString complaint()
{
    const QStringList arguments = QCoreApplication::arguments();
    for (int i = 1; i < arguments.size(); ++i) {
        const AppConfig::cmdArgInfo_t option = AppConfig::instance()->getArgInfo(arguments.at(i));
        if (!arguments.at(i).startsWith(text("--")) || option.valueCount == -1)
            return text("The option %1 is unknown: see --help.").arg(arguments.at(i));
        if (option.valueCount > 0 && optionValue(qPrintable(arguments.at(i))).isEmpty())
            return text("The option %1 needs a value: see --help.").arg(arguments.at(i));
        i += option.valueCount;
    }
    const QString size = optionValue("--size"), theme = optionValue("--theme");
    if (!size.isEmpty() && !windowSize(size).isValid())
        return text("The size \"%1\" is not <width>x<height> from %2.").arg(size, windowSizes());
    if (!theme.isEmpty() && theme != text("dark") && theme != text("light"))
        return text("The theme \"%1\" is neither dark nor light.").arg(theme);
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
        timer.start(2500);
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
    const std::unique_ptr<QCoreApplication> application(
        printsOnly(argc, argv) ? new QCoreApplication(argc, argv) : new QGuiApplication(argc, argv));
    for (const AppConfig::cmdArg_t &option : options)
        AppConfig::instance()->addArgument(option.name, option.valueCount, option.help);
    const QString wrong = complaint();
    if (!wrong.isEmpty())
        return refuse(wrong);
    if (AppConfig::instance()->initialize(text("olvex-console"), QString()))
        return 0;
    RunGuard guard(QString::fromLatin1(guardName));
    if (!guard.tryToRun()) {
        std::fputs("Another instance is running.\n", stderr);
        return 3;
    }
    AppConfig::cleanExit();

    registerConsoleTypes();
    QQuickStyle::setStyle(text("Default"));
    QQmlApplicationEngine engine(QUrl(text("qrc:/console/Main.qml")));
    if (engine.rootObjects().isEmpty())
        return 1;
    const QString pictures = optionValue("--screenshots");
    if (pictures.isEmpty())
        return QGuiApplication::exec();
    return takeScreenshots(qobject_cast<QQuickWindow *>(engine.rootObjects().constFirst()), pictures) ? 0 : 1;
}
