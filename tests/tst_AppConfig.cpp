// What AppConfig answers inside a process. Start-up as a whole is the matter of tst_AppConfigProcess.

#include <AppConfig.h>
#include <OXVersion.h>

#include <QBuffer>
#include <QTextCodec>
#include <QtTest>

#include <algorithm>
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
                   [](QByteArray &text) { return text.data(); });
}

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

} // namespace

class tst_AppConfig : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void looksOptionsUp();
    void countsValuesOfOddPositions();
    void readsConf();
    void writesConf();
    void opensIoMap();
    void testsSettings();
    void tellsVersions();
    void tellsFixedFacts();
    void keepsSystemVersion();
    void resolvesOddFileNames();
};

void tst_AppConfig::looksOptionsUp()
{
    const struct {
        const char *arguments;
        const char *option;
        const char *found; // index; number of values; value, by default "d"; number, by default 5; values
    } lookUps[] = {
        {"", "--tmppath", "-1; -1; d; 5; "},
        {"--tmppath /t", "tmppath", "1; 1; /t; 5; /t"},
        {"x --tmppath", "--tmppath", "2; 1; d; 5; "}, // one value, which is empty
        {"--tmppath --null", "--tmppath", "1; 1; --null; 5; --null"},
        {"--TMPPATH /t", "--tmppath", "-1; -1; d; 5; "},
        {"--debugLevel 1 --debugLevel 2", "--debugLevel", "1; 1; 1; 1; 1"},
        {"--debugLevel abc", "debugLevel", "1; 1; abc; 5; abc"},
        {"--debugLevel 2147483648", "debugLevel", "1; 1; 2147483648; 5; 2147483648"},
        {"--debugLevel -7", "debugLevel", "1; 1; -7; -7; -7"},
        {"--null 7", "null", "1; 0; d; 5; "},
        {"--unknown 7", "unknown", "1; -1; d; 5; "},
        {"--datapath /d", "datapath", "1; -1; d; 5; "},
        {"--pair 7 8 9", "pair", "1; 2; 7; 7; 7|8"},
        {"--pair 7", "pair", "1; 2; 7; 7; 7|"},
        {"--many 7 8", "many", "1; 0; d; 5; "}, // a variable number always counts 0
        {"--help 7", "help", "1; 0; d; 5; "},
        {"---x 7", "-x", "1; -1; d; 5; "},
        {"-- 7", "", "1; -1; d; 5; "},
        {"", "program", "-1; -1; d; 5; "},
    };
    AppConfig &config = *AppConfig::instance();
    config.addArgument("--pair", 2, "two values");
    config.addArgument("--many", -1, "any number of values");
    config.addArgument("--help", 5, "loses against the built-in option");
    for (const auto &c : lookUps) {
        setCommandLine(c.arguments);
        const QString option = text(c.option);
        const AppConfig::cmdArgInfo_t info = config.getArgInfo(option);
        const QStringList found = {QString::number(info.index), QString::number(info.valueCount),
                                   config.argumentValue(option, text("d")),
                                   QString::number(config.argumentValue(option, 5)),
                                   config.argumentValues(option).join(QLatin1Char('|'))};
        QCOMPARE(found.join(text("; ")), text(c.found));
        QCOMPARE(AppConfig::argumentExits(option), info.index != -1);
    }
}

// Positions that are not an option's own end the count, too.
void tst_AppConfig::countsValuesOfOddPositions()
{
    setCommandLine("word --many 1 2");
    const AppConfig::cmdArg_t many{"--many", -1, nullptr};
    for (const auto &[index, count] : {std::pair(2, 0), std::pair(9, 1), std::pair(1, 0), std::pair(-1, 1)}) {
        AppConfig::cmdArgInfo_t info{index, -1};
        AppConfig::instance()->getArgValueCnt(many, info);
        QCOMPARE(info.valueCount, count);
    }
}

void tst_AppConfig::readsConf()
{
    const struct {
        QByteArray written;
        const char *entries; // "key>value" joined by ","
    } confs[] = {
        {"", ""},
        {"a=1\na=2\nb=3", "a>2,b>3"},
        {"=1\na=\n", ">1,a>"},
        {"a\n\nb=1=2\nc=3\n", "c>3"},
        {" a = 1 \r\n", " a > 1 \r"},
        {"x/y=1\n#c=2\n[g]\n", "#c>2,x/y>1"},
        {"a=\xfc\n", "a>ü"},
        {QByteArray("a=1\0x=2\nb=3\n", 12), "a>1,b>3"},
    };
    for (const auto &c : confs) {
        QBuffer buffer;
        buffer.setData(c.written);
        QVERIFY(buffer.open(QIODevice::ReadOnly));
        QSettings::SettingsMap map;
        QVERIFY(AppConfig::readConf(buffer, map));
        QStringList entries;
        for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
            entries << entry.key() + QLatin1Char('>') + entry.value().toString();
        QCOMPARE(entries.join(QLatin1Char(',')), text(c.entries));
    }
}

// In the local encoding, although it is read as Latin-1: other letters change on every rewrite.
void tst_AppConfig::writesConf()
{
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QVERIFY(AppConfig::writeConf(buffer,
                                 {{text("b"), 2}, {text("a %2"), text("%1 ü")}, {text("c"), QVariant()}}));
    QCOMPARE(buffer.data(), text("a %2=%1 ü\nb=2\nc=\n").toLocal8Bit());
}

void tst_AppConfig::opensIoMap()
{
    const QSharedPointer<QSettings> first = AppConfig::ioMapSettings();
    QVERIFY(first->fileName().endsWith(text("/etc/iomap.conf"))); // behind a drive letter on Windows
    QVERIFY(first->format() >= QSettings::CustomFormat1);
    QCOMPARE(first->iniCodec()->name(), QByteArray("UTF-8"));
    QVERIFY(first != AppConfig::ioMapSettings());
}

void tst_AppConfig::testsSettings()
{
    AppConfig::instance()->setupConfigPaths(); // below APPDATA, which belongs to this test
    const char *const key = "Group/answer";
    AppConfig::settings()->remove(QString());
    QCOMPARE(AppConfig::testSetting(key, 1), QVariant(1));
    AppConfig::settings()->setValue(text(key), text("two"));
    QCOMPARE(AppConfig::testSetting(key, 1), QVariant(text("two")));
    qApp->setProperty(key, 3);
    QCOMPARE(AppConfig::testSetting(key, 1), QVariant(3));
}

void tst_AppConfig::tellsVersions()
{
    for (const auto &[version, threeParts] :
         {std::pair("8.0.2.1", "8.0.2"), std::pair("7.1", "7.1"), std::pair("08.00.02.1", "8.0.2"),
          std::pair("1..2", "1"), std::pair("1.2-beta", "1.2"), std::pair("", "1.0.0"),
          std::pair("99999999999.1", "1.0.0")}) {
        QCoreApplication::setApplicationVersion(text(version));
        QCOMPARE(AppConfig::majorMiniorMicroVersion(), text(threeParts));
    }
    const QVariant version = QVariant::fromValue(OXVersion(text("1.2.3")));
    QCOMPARE(version.toString(), text("1.2.3.0"));
    QVERIFY(version.toBool() && !QVariant::fromValue(OXVersion()).toBool());
}

// Of an AppConfig that was not initialised.
void tst_AppConfig::tellsFixedFacts()
{
    QCOMPARE(AppConfig::buildStamp(), text("Sep 10 2021 12:00:10"));
    QCOMPARE(AppConfig::version(), QString());
    QCOMPARE(AppConfig::versionInfo(), text("tst_AppConfig Ver. "));
    QVERIFY(AppConfig::isPrototype() && !AppConfig::runAsUser() && !AppConfig::application());
    QCOMPARE(AppConfig::cmdArgs.size(), 23);
    QCOMPARE(AppConfig::elapsedTime(), qint64(0));
    QVERIFY(!AppConfig::elapsedTimerLock.isLocked());

    AppConfig *other = nullptr;
    std::thread([&other] { other = AppConfig::Instance(); }).join();
    QCOMPARE(other, AppConfig::instance());
}

void tst_AppConfig::keepsSystemVersion()
{
    QFile file(text("version.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(" \n 12.4 and more");
    file.close();
    QCOMPARE(AppConfig::systemVersion(), text("12.4"));
    QVERIFY(file.remove());
    QCOMPARE(AppConfig::systemVersion(), text("12.4"));
}

void tst_AppConfig::resolvesOddFileNames()
{
    const QString share = AppConfig::sharePath(QString());
    QCOMPARE(AppConfig::sharePath(text("a") + QChar(0) + text("b")), share + text("/a"));
    const QString absolute = QDir::rootPath() + text("etc/passwd");
    QCOMPARE(AppConfig::sharePath(absolute), absolute);
#ifdef Q_OS_WIN
    QCOMPARE(AppConfig::sharePath(text("D:\\a\\b")), text("D:\\a\\b"));
    QCOMPARE(AppConfig::sharePath(text("日")), share + text("/?")); // not in the code page
#else
    QCOMPARE(AppConfig::sharePath(text("日")), share + text("/日"));
#endif
}

int main(int argc, char **argv)
{
    setCommandLine("");
    QCoreApplication::setApplicationName(QStringLiteral("tst_AppConfig"));
    const QCoreApplication application(argumentCount, argumentVector);
    tst_AppConfig test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_AppConfig.moc"
