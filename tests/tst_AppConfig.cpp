// What AppConfig does and answers inside a process that starts it up again and again. What a process shows to
// the outside is the matter of tst_programs.

#include <AppConfig.h>
#include <AppConfigProcess.h>
#include <OXVersion.h>
#include <platform/Platform.h>

#include "Cases.h"

#include <QTemporaryDir>
#include <QTextCodec>

#include <algorithm>
#include <atomic>
#include <csignal>
#include <thread>

namespace {

// The argument list behind QCoreApplication::arguments(), which reads it again on every call.
int argumentCount = 1;
char *argumentVector[70000] = {};
QVector<QByteArray> argumentTexts;

void setCommandLine(const QByteArray &arguments)
{
    argumentTexts = ("program " + arguments).trimmed().split(' ').toVector();
    argumentCount = argumentTexts.size();
    std::transform(argumentTexts.begin(), argumentTexts.end(), argumentVector,
                   [](QByteArray &argument) { return argument.data(); });
}

// Returns whether the process should go on.
bool start(const QByteArray &arguments)
{
    setCommandLine(arguments);
    return !AppConfig::instance()->initialize(QStringLiteral("test"), QStringLiteral("1.2.3.4"));
}

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

// With all messages, and no others, in my.log.
bool startQuietly(const QByteArray &arguments = QByteArray())
{
    AppConfig::logOutputFile.close();
    QFile::remove(text("my.log"));
    return start("--null --disablestamps --logoutput my.log " + arguments);
}

QByteArray readFile(const char *path)
{
    QFile file(text(path));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no file");
}

bool writeFile(const char *path, const QByteArray &contents)
{
    QFile file(text(path));
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
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
        QVERIFY(AppConfig::version().isEmpty() && !AppConfig::application() && AppConfig::elapsedTime() == 0);
        QCOMPARE(DebugInfoEnterExit::debugLevel, -1);
        AppConfig *other = nullptr;
        std::thread([&other] { other = AppConfig::Instance(); }).join();
        QCOMPARE(other, AppConfig::instance());

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
        QVERIFY(AppConfig::elapsedTime() >= 0 && AppConfig::elapsedTimer.isValid());
        QVERIFY(!AppConfig::elapsedTimerLock.isLocked());
    }

    void readsOptions()
    {
        AppConfig::cmdArgInfo_t outside{9, -1}; // the end of the list ends the count, too
        AppConfig::instance()->getArgValueCnt({"--many", -1, nullptr}, outside);
        QCOMPARE(outside.valueCount, 1);

        QVERIFY(start("--null --disablestamps --disablecrashdump --debugLevel 3"));
        QVERIFY(AppConfig::nullOutput && AppConfig::disableTimestamp && AppConfig::disableCrashHandler);
        QCOMPARE(DebugInfoEnterExit::debugLevel, 3);
        QVERIFY(start("--debugLevel --null"));
        QVERIFY(AppConfig::nullOutput && !AppConfig::disableTimestamp && !AppConfig::disableCrashHandler);
        QCOMPARE(DebugInfoEnterExit::debugLevel, 0);
    }

    void resolvesPaths()
    {
        QVERIFY(startQuietly());
        const QDir here = QDir::current();
        QVERIFY(here.exists(AppConfig::varLogPath(QString())));
        QVERIFY(!here.exists(AppConfig::factoryDataPath(QString())));
        QCOMPARE(AppConfig::sharePath(QDir::rootPath()), QDir::rootPath());
        QCOMPARE(AppConfig::sharePath(text("a") + QChar(0) + text("b")), here.filePath(text("a")));
        const QString local = QString::fromLocal8Bit(text("日").toLocal8Bit()); // "?" in some code pages
        QCOMPARE(AppConfig::sharePath(text("日")), here.filePath(local));
    }

    void opensSettings()
    {
        const QSharedPointer<QSettings> ioMap = AppConfig::ioMapSettings();
        QVERIFY(ioMap->fileName().endsWith(text("/etc/iomap.conf"))); // behind a drive letter on Windows
        QCOMPARE(ioMap->iniCodec()->name(), QByteArray("UTF-8"));
        QVERIFY(ioMap != AppConfig::ioMapSettings());

        const char contents[] = "a=1\na=2\nb=\n\nno=1=2\n c = 1 \r\nx/y=1\n#d=2\n[g]\nz=1\0zz=2\nu=\xfc";
        QVERIFY(writeFile("my.conf", QByteArray(contents, sizeof contents - 1)));
        QSettings conf(text("my.conf"), ioMap->format());
        conf.setValue(text("a %2"), text("%1"));
        conf.setValue(text("none"), QVariant());
        conf.sync();
        // In the local encoding, although it is read as Latin-1: other letters change on every rewrite.
        QCOMPARE(readFile("my.conf"),
                 text(" c = 1 \r\n#d=2\na=2\na %2=%1\nb=\nnone=\nu=ü\nx/y=1\nz=1\n").toLocal8Bit());

        QVERIFY(startQuietly("--varetcpath ."));
        const char *const key = "Group/answer";
        QCOMPARE(AppConfig::testSetting(key, 1), QVariant(1));
        AppConfig::settings()->setValue(text(key), text("two"));
        QCOMPARE(AppConfig::testSetting(key, 1), QVariant(text("two")));
        qApp->setProperty(key, 3);
        QCOMPARE(AppConfig::testSetting(key, 1), QVariant(3));
    }

    void survivesBadInput()
    {
        const QByteArray rubbish("\xff\x00[\xfe=\n[[[\x01=\x02\\x]\n%\xf0", 18);
        QVERIFY(QDir().mkdir(text("bad")) && writeFile("file", rubbish));
        QVERIFY(writeFile("bad/Settings_test.ini", rubbish) && writeFile("bad/Settings.ini", rubbish));
        for (const QByteArray &arguments :
             {QByteArray("--varetcpath bad"), QByteArray("--varetcpath file/x --varlogpath file/x"),
              QByteArray("--varetcpath a\xff\xc0"), QByteArray("x ").repeated(60000)}) {
            QVERIFY(startQuietly(arguments));
            QCOMPARE(AppConfig::settings()->value(text("System/Region")), QVariant());
        }
        QCOMPARE(readFile("bad/Settings.ini"), rubbish);
    }

    void tellsVersions()
    {
        for (const auto &[version, threeParts] :
             {std::pair("8.0.2.1", "8.0.2"), std::pair("7.1-beta", "7.1"), std::pair("", "1.0.0")}) {
            QCoreApplication::setApplicationVersion(text(version));
            QCOMPARE(AppConfig::majorMiniorMicroVersion(), text(threeParts));
        }
        QVERIFY(startQuietly());
        QCOMPARE(AppConfig::versionInfo(), text("test Ver. 1.2.3.4"));
        QCOMPARE(AppConfig::buildStamp(), text("Sep 10 2021 12:00:10"));
        QVERIFY(AppConfig::isPrototype() && !AppConfig::runAsUser() && AppConfig::application() == qApp);

        QVERIFY(writeFile("version.txt", " \n 12.4 and more"));
        QCOMPARE(AppConfig::systemVersion(), text("12.4"));
        QVERIFY(QFile::remove(text("version.txt")));
        QCOMPARE(AppConfig::systemVersion(), text("12.4")); // is kept

        const QVariant version = QVariant::fromValue(OXVersion(text("1.2.3")));
        QCOMPARE(version.toString(), text("1.2.3.0"));
        QVERIFY(version.toBool() && !QVariant::fromValue(OXVersion()).toBool());
    }

    void logsEveryLineOfManyThreads()
    {
        if (qEnvironmentVariableIsSet("WINEPREFIX"))
            QSKIP("Wine finds the end of a file and writes there in two steps; Windows does so in one");
        QVERIFY(startQuietly());
        std::thread threads[8];
        for (std::thread &thread : threads) {
            thread = std::thread([number = int(&thread - threads)] {
                for (int i = 0; i < 5000; ++i)
                    qInfo("thread %d line %d end", number, i);
            });
        }
        for (std::thread &thread : threads)
            thread.join();
        const QRegularExpression whole(text("^ \\| I \\| [^|]*: thread [0-7] line \\d+ end$"));
        QStringList lines = text(readFile("my.log")).split(QLatin1Char('\n')).filter(text("thread"));
        QCOMPARE(lines.removeDuplicates(), 0);
        QCOMPARE(lines.filter(whole).size(), 8 * 5000);
    }

    void exits()
    {
        // Calls the handler itself: behind qFatal(), Qt aborts whatever the handler does.
        const auto original = platform::showFatalReport;
        platform::showFatalReport = [](const char *title, const char *message) {
            qInfo("box %s: %s", title, message);
            return qstrcmp(message, "shown") == 0 ? 1 : 0;
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
        QVERIFY2(looksLike(readFile("my.log"), R"(*
 | F | f: not shown
 | I | *: box Olvex Fatal error: not shown
 | F | f: shown
 | I | *: box Olvex Fatal error: shown
 | I | *: Application exit called with -1
 | I | *: Application exit called with 7
)"),
                 readFile("my.log"));
    }

    void endsOnSignal()
    {
#ifdef Q_OS_WIN
        QSKIP("this system has no POSIX signals");
#else
        QVERIFY(startQuietly() && AppConfig::cleanExit() && AppConfig::cleanExit());
        QSignalSpy requests(AppConfig::instance(), &AppConfig::shutdownRequested);
        for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
            QTimer::singleShot(0, qApp, [number] { std::raise(number); });
            QCOMPARE(QCoreApplication::exec(), 0);
            QCOMPARE(requests.takeFirst(), QVariantList{number});
        }
        errno = 42;
        for (int i = 0; i < 20000; ++i) // nobody reads them meanwhile
            AppConfig::signalHandler(SIGTERM, nullptr, nullptr);
        QCOMPARE(errno, 42);
        QCOMPARE(QCoreApplication::exec(), 0);
        QVERIFY(!requests.isEmpty() && requests.size() <= 20000);
#endif
    }

    // By break and close events, which the system reports on threads of its own and to which it ends the
    // process as soon as they return. Wine sends neither; tst_programs receives what it does send.
    void endsOnConsoleEvents()
    {
        QVERIFY(startQuietly());
        std::atomic<int> handled{0};
        std::vector<std::thread> system;
        QTimer::singleShot(0, qApp, [&] {
            for (const unsigned long event : {1UL, 2UL})
                system.emplace_back([&handled, event] { handled += cleanWindowsExit(event) ? 1 : 100; });
        });
        QCOMPARE(QCoreApplication::exec(), 0);
        QCOMPARE(handled.load(), 0); // there is time to wind down
        for (std::thread &thread : system)
            thread.join();
        QCOMPARE(handled.load(), 2);
        const QByteArray log = readFile("my.log");
        for (const char *line : {"cleanWindowsExit 1", "cleanWindowsExit 2", "exit called with 0"})
            QVERIFY2(log.contains(line), log);
    }

private:
    QTemporaryDir m_sandbox; // the working directory
};

int main(int argc, char **argv)
{
    setCommandLine("");
    const QCoreApplication application(argumentCount, argumentVector);
    tst_AppConfig test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_AppConfig.moc"
