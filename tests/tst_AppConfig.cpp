// What AppConfig does and answers inside a process that starts it up again and again. What a process shows to
// the outside is the matter of tst_programs.

#include <AppConfig.h>
#include <HXCommonVersion.h>
#include <platform/Platform.h>

#include "Cases.h"

#include <QTemporaryDir>
#include <QTextCodec>

#include <algorithm>
#include <csignal>
#include <future>
#include <thread>

namespace {

// The argument list behind QCoreApplication::arguments(), which reads it again on every call.
int argumentCount = 1;
char *argumentVector[16] = {};
QVector<QByteArray> argumentTexts;

void setCommandLine(const QByteArray &arguments)
{
    argumentTexts = ("program " + arguments).trimmed().split(' ').toVector();
    argumentCount = argumentTexts.size();
    std::transform(argumentTexts.begin(), argumentTexts.end(), argumentVector,
                   [](QByteArray &argument) { return argument.data(); });
}

// After the application object was destroyed that the test's own one follows.
[[maybe_unused]] bool signalsWereGivenBack = false;

// Returns whether the process should go on.
bool start(const QByteArray &arguments)
{
    setCommandLine(arguments);
    return !AppConfig::instance()->initialize(QStringLiteral("test"), QStringLiteral("1.2.3.4"));
}

// With all messages, and no others, in my.log.
bool startQuietly(const QByteArray &arguments = QByteArray())
{
    AppConfig::logOutputFile.close();
    QFile::remove(text("my.log"));
    return start("--null --disablestamps --logoutput my.log " + arguments);
}

} // namespace

class tst_AppConfig : public QObject {
    Q_OBJECT

private Q_SLOTS:
    // What holds before and right after the first start.
    void initTestCase()
    {
        QVERIFY(QDir::setCurrent(m_sandbox.path()));
        qputenv("APPDATA", "user");
        AppConfig *other = nullptr;
        std::thread([&other] { other = AppConfig::Instance(); }).join();
        QVERIFY(other == AppConfig::instance() && other->thread() == qApp->thread());
        QVERIFY(AppConfig::version().isEmpty() && !AppConfig::application() && AppConfig::elapsedTime() == 0);
        QCOMPARE(AppConfig::systemVersion(), text(HXCOMMON_VERSION_STRING)); // is kept
        QCOMPARE(DebugInfoEnterExit::debugLevel, -1);

        // Two texts, because the library tells categories of one name apart by the address of the name.
        static const char names[][25] = {"Olvex.NetworkControl.Qml", "Olvex.NetworkControl.Qml"};
        const QLoggingCategory early(names[0]);
        qInstallMessageHandler(nullptr); // that of Qt Test does not outlive the test
        QVERIFY(early.isDebugEnabled() && startQuietly());
        const QLoggingCategory late(names[1]);
        QVERIFY(!early.isDebugEnabled() && !late.isDebugEnabled() && late.isInfoEnabled());
        QLoggingCategory::setFilterRules(text("Olvex.NetworkControl.Qml.debug=true"));
        QVERIFY(early.isDebugEnabled() && late.isDebugEnabled());

        QVERIFY(AppConfig::loggingCategoriesFromIndex(0) && !AppConfig::loggingCategoriesFromIndex(-1));
        QVERIFY(!AppConfig::loggingCategoriesFromIndex(AppConfig::loggingCategories.size()));
        QVERIFY(start("--null") && AppConfig::disableTimestamp); // is set only
        QVERIFY(AppConfig::elapsedTime() >= 0 && AppConfig::elapsedTimer.isValid());
        QVERIFY(!AppConfig::elapsedTimerLock.isLocked());
        QCOMPARE(QStringList({AppConfig::systemVersion(), AppConfig::versionInfo(), AppConfig::buildStamp(),
                              AppConfig::majorMiniorMicroVersion()}),
                 QStringList({text(HXCOMMON_VERSION_STRING), text("test Ver. 1.2.3.4"),
                              text("Sep 10 2021 12:00:10"), text("1.2.3")}));
        QVERIFY(AppConfig::application() == qApp && AppConfig::isPrototype() && !AppConfig::runAsUser());
        QCoreApplication::setApplicationVersion(text("beta"));
        QCOMPARE(AppConfig::majorMiniorMicroVersion(), text("1.0.0"));
    }

    void opensSettings()
    {
        const QSharedPointer<QSettings> ioMap = AppConfig::ioMapSettings();
        QVERIFY(ioMap->fileName().endsWith(text("/etc/iomap.conf"))); // behind a drive letter on Windows
        QCOMPARE(ioMap->iniCodec()->name(), QByteArray("UTF-8"));
        QVERIFY(ioMap != AppConfig::ioMapSettings());

        QVERIFY(write(
            text("my.conf"),
            QByteArrayLiteral("a=1\na=2\nb=\n\nno=1=2\n c = 1 \r\nx/y=1\n#d=2\n[g]\nz=1\0zz=2\nu=\xfc")));
        QSettings conf(text("my.conf"), ioMap->format());
        conf.setValue(text("a %2"), text("%1"));
        conf.setValue(text("none"), QVariant());
        conf.sync();
        QCOMPARE(conf.value(text(" c ")), QVariant(text(" 1 \r")));
        // In the local encoding, although it is read as Latin-1: other letters change on every rewrite.
        QCOMPARE(contents(text("my.conf")),
                 text(" c = 1 \n#d=2\na=2\na %2=%1\nb=\nnone=\nu=ü\nx/y=1\nz=1\n").toLocal8Bit());

        QVERIFY(startQuietly("--varetcpath ."));
        const char *const key = "Group/answer";
        QCOMPARE(AppConfig::testSetting(key, 1), QVariant(1));
        AppConfig::settings()->setValue(text(key), text("two"));
        QCOMPARE(AppConfig::testSetting(key, 1), QVariant(text("two")));
        qApp->setProperty(key, 3);
        QCOMPARE(AppConfig::testSetting(key, 1), QVariant(3));
    }

    void logsInOrder()
    {
        AppConfig::disableTimestamp = false;
        QFile::remove(text("my.log"));
        QVERIFY(start("--null --logoutput my.log"));
        QCOMPARE(AppConfig::logOutputFile.fileName(), text("my.log"));
        const QTime before = QTime::currentTime();
        qInfo("first");
        QCOMPARE(AppConfig::logOutputFile.write("raw\n"), 4);
        qInfo("last");
        const QRegularExpression end(text("(\\S+) \\| I \\| [^|]*: first\nraw\n[^\n]*: last\n$"));
        const QString time = end.match(text(contents(text("my.log")))).captured(1);
        const QTime logged = QTime::fromString(time, text("h:mm:ss.zzz"));
        QVERIFY2(before <= logged && logged <= QTime::currentTime(), qPrintable(time));
    }

    // The application's handler and filter hand everything on to those of the library that they replaced.
    void forwardsOnce()
    {
        static QtMessageHandler handler;
        static QLoggingCategory::CategoryFilter filter;
        static int messages = 0;
        handler =
            qInstallMessageHandler([](QtMsgType type, const QMessageLogContext &context, const QString &t) {
                ++messages;
                handler(type, context, t);
            });
        filter = QLoggingCategory::installFilter(
            [](QLoggingCategory *category) { filter ? filter(category) : void(); });
        AppConfig::logOutputFile.close();
        QFile::remove(text("my.log"));
        QVERIFY(start("--logoutput my.log"));
        messages = 0;
        qCInfo(QLoggingCategory("new"), "forwarded");
        QCOMPARE(messages, 1);
        QCOMPARE(contents(text("my.log")).count("forwarded"), 1);
    }

    void logsEveryLineOfManyThreads()
    {
        if (qEnvironmentVariableIsSet("WINEPREFIX"))
            QSKIP("Wine finds the end of a file and writes there in two steps; Windows does so in one");
        QVERIFY(startQuietly());
        {
            std::future<void> threads[8]; // their ends are awaited
            for (int thread = 0; thread < 8; ++thread)
                threads[thread] = std::async(std::launch::async, [thread] {
                    for (int i = 0; i < 5000; ++i)
                        qInfo("thread %d line %d end", thread, i);
                });
        }
        const QRegularExpression whole(text("^ \\| I \\| [^|]*: thread [0-7] line \\d+ end$"));
        QStringList lines = text(contents(text("my.log"))).split(QLatin1Char('\n')).filter(text("thread"));
        QCOMPARE(lines.removeDuplicates(), 0);
        QCOMPARE(lines.filter(whole).size(), 8 * 5000);
    }

    void exits()
    {
        // Calls the handler itself: behind qFatal(), Qt aborts whatever the handler does.
        const auto original = platform::showFatalReport;
        platform::showFatalReport = [](const char *title, const char *message) {
            qInfo("box %s: %s", title, message);
            return int(*message == 's');
        };
        QVERIFY(startQuietly());
        const QtMessageHandler handler = qInstallMessageHandler(nullptr);
        qInstallMessageHandler(handler);
        QTimer::singleShot(0, qApp, [handler] {
            for (const char *message : {"not shown", "shown"})
                handler(QtFatalMsg, QMessageLogContext("file", 1, "f", "default"), text(message));
            AppConfig::exit(7);
        });
        QCOMPARE(QCoreApplication::exec(), 7); // the last one wins
        platform::showFatalReport = original;
        QVERIFY(looksLike(contents(text("my.log")),
                          "* | F | f: not shown\n | I | *: box Olvex Fatal error: not shown\n"
                          " | F | f: shown\n | I | *: box Olvex Fatal error: shown\n"
                          " | I | *: Application exit called with -1\n"
                          " | I | *: Application exit called with 7\n"));
    }

    void endsOnSignal()
    {
#ifdef Q_OS_WIN
        QSKIP("this system has no POSIX signals");
#else
        QVERIFY(signalsWereGivenBack);
        std::signal(SIGHUP, SIG_IGN); // as for nohup
        QVERIFY(startQuietly() && AppConfig::cleanExit());
        QSignalSpy requests(AppConfig::instance(), &AppConfig::shutdownRequested);
        std::raise(SIGHUP);
        QCoreApplication::processEvents();
        QCOMPARE(requests.size(), 0); // nor is that of the first application object left
        std::signal(SIGHUP, SIG_DFL);
        QVERIFY(AppConfig::cleanExit());
        QTimer deadline;
        connect(&deadline, &QTimer::timeout, [] { QCoreApplication::exit(9); });
        deadline.start(20000);
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
            std::raise(number);
            QCoreApplication::processEvents(); // reads it before there is a loop to end
            QCOMPARE(requests.takeFirst(), QVariantList{number});
            QCOMPARE(QCoreApplication::exec(), 0);
        }
        errno = 42;
        for (int i = 0; i < 20000; ++i) // nobody reads them meanwhile
            AppConfig::signalHandler(SIGTERM, nullptr, nullptr);
        QCOMPARE(errno, 42);
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(!requests.isEmpty() && requests.size() <= 20000);
#endif
    }

private:
    QTemporaryDir m_sandbox; // the working directory
};

int main(int argc, char **argv)
{
    setCommandLine("");
#ifndef Q_OS_WIN
    {
        const QCoreApplication first(argumentCount, argumentVector);
        if (AppConfig::cleanExit())
            std::raise(SIGTERM);
    }
    signalsWereGivenBack = std::signal(SIGTERM, SIG_DFL) == SIG_DFL;
#endif
    const QCoreApplication application(argumentCount, argumentVector);
    tst_AppConfig test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_AppConfig.moc"
