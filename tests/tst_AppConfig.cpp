// What AppConfig answers inside a process. Start-up as a whole is the matter of tst_AppConfigProcess.

#include <AppConfig.h>
#include <OXVersion.h>

#include "Cases.h"

#include <QBuffer>
#include <QMetaMethod>
#include <QTextCodec>

#include <thread>

namespace {

// The argument list behind QCoreApplication::arguments(), which reads it again on every call.
int argumentCount = 1;
char *argumentVector[16] = {};
QVector<QByteArray> argumentTexts;

void setCommandLine(const QStringList &arguments)
{
    argumentTexts = {QByteArray("program")};
    for (const QString &argument : arguments)
        argumentTexts.append(argument.toLocal8Bit());
    argumentCount = argumentTexts.size();
    for (int i = 0; i < argumentCount; ++i)
        argumentVector[i] = argumentTexts[i].data();
}

QStringList words(const char *text)
{
    return QString::fromUtf8(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

} // namespace

class tst_AppConfig : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void looksOptionsUp_data();
    void looksOptionsUp();
    void fixesNames();
    void countsValuesOfOddPositions();
    void readsConf_data();
    void readsConf();
    void writesConf();
    void keepsAsciiThroughConf();
    void opensIoMap();
    void testsSettings();
    void tellsVersions();
    void tellsFixedFacts();
    void keepsSystemVersion();
    void convertsVersions();
    void listsItsMethods();
    void isOneObject();
    void resolvesOddFileNames();
    void tellsNoTimeBeforeTheStart();
};

void tst_AppConfig::initTestCase()
{
    AppConfig &config = *AppConfig::instance();
    config.addArgument("--own", 1, nullptr);
    config.addArgument("--pair", 2, "two values");
    config.addArgument("--many", -1, "any number of values");
    config.addArgument("--help", 5, "loses against the built-in option");
}

void tst_AppConfig::cleanup()
{
    setCommandLine({});
}

namespace {

const struct {
    const char *name; // the command line, then the option asked for
    int index;
    int valueCount;
    const char *value; // with the default "d"
    int number; // with the default 5
    const char *values; // joined by "|"
} lookUps[] = {
    {": --tmppath", -1, -1, "d", 5, ""},
    {"--tmppath /t: --tmppath", 1, 1, "/t", 5, "/t"},
    {"--tmppath /t: tmppath", 1, 1, "/t", 5, "/t"},
    {"x --tmppath: --tmppath", 2, 1, "d", 5, ""}, // one value, which is empty
    {"--tmppath --null: --tmppath", 1, 1, "--null", 5, "--null"},
    {"--TMPPATH /t: --tmppath", -1, -1, "d", 5, ""},
    {"--debugLevel 1 --debugLevel 2: --debugLevel", 1, 1, "1", 1, "1"},
    {"--debugLevel abc: debugLevel", 1, 1, "abc", 5, "abc"},
    {"--debugLevel 2147483648: debugLevel", 1, 1, "2147483648", 5, "2147483648"},
    {"--debugLevel -7: debugLevel", 1, 1, "-7", -7, "-7"},
    {"--debugLevel 0x10: debugLevel", 1, 1, "0x10", 5, "0x10"},
    {"--null 7: null", 1, 0, "d", 5, ""},
    {"--unknown 7: unknown", 1, -1, "d", 5, ""},
    {"--datapath /d: datapath", 1, -1, "d", 5, ""},
    {"--own 7: own", 1, 1, "7", 7, "7"},
    {"--pair 7 8 9: pair", 1, 2, "7", 7, "7|8"},
    {"--pair 7: pair", 1, 2, "7", 7, "7|"},
    {"--many 7 8: many", 1, 0, "d", 5, ""}, // a variable number always counts 0
    {"--help 7: help", 1, 0, "d", 5, ""},
    {"program: program", -1, -1, "d", 5, ""},
};

} // namespace

void tst_AppConfig::looksOptionsUp_data()
{
    addCases(lookUps);
}

void tst_AppConfig::looksOptionsUp()
{
    const auto &c = currentCase(lookUps);
    const QStringList parts = QString::fromLatin1(c.name).split(QStringLiteral(": "));
    const QString name = parts.last();
    setCommandLine(words(qPrintable(parts.first())));

    const AppConfig &config = *AppConfig::instance();
    QCOMPARE(config.getArgInfo(name).index, c.index);
    QCOMPARE(config.getArgInfo(name).valueCount, c.valueCount);
    QCOMPARE(config.argumentValue(name, QStringLiteral("d")), QString::fromLatin1(c.value));
    QCOMPARE(config.argumentValue(name, 5), c.number);
    QCOMPARE(config.argumentValues(name).join(QLatin1Char('|')), QString::fromLatin1(c.values));
    QCOMPARE(AppConfig::argumentExits(name), c.index != -1);
}

void tst_AppConfig::fixesNames()
{
    for (const auto &[given, fixed] :
         {std::pair("x", "--x"), std::pair("--x", "--x"), std::pair("-x", "---x"), std::pair("", "--")}) {
        QString name = QString::fromLatin1(given);
        AppConfig::instance()->fixArg(name);
        QCOMPARE(name, QString::fromLatin1(fixed));
    }
}

// Positions that are not an option's own end the count, too.
void tst_AppConfig::countsValuesOfOddPositions()
{
    setCommandLine(words("word --many 1 2"));
    const AppConfig::cmdArg_t many{"--many", -1, nullptr};
    for (const auto &[index, count] : {std::pair(2, 0), std::pair(9, 1), std::pair(1, 0), std::pair(-1, 1)}) {
        AppConfig::cmdArgInfo_t info{index, -1};
        AppConfig::instance()->getArgValueCnt(many, info);
        QCOMPARE(info.valueCount, count);
    }
}

namespace {

const struct {
    const char *name;
    QByteArray text;
    const char *entries; // "key>value" joined by ","
} confs[] = {
    {"plain", "a=1\nb=2\n", "a>1,b>2"},
    {"no line end", "a=1", "a>1"},
    {"later wins", "a=1\na=2\n", "a>2"},
    {"empty key, empty value", "=1\na=\n", ">1,a>"},
    {"no or two signs", "a\n\nb=1=2\nc=3\n", "c>3"},
    {"nothing trimmed", " a = 1 \r\n", " a > 1 \r"},
    {"no groups, no comments", "x/y=1\n#c=2\n[g]\n", "#c>2,x/y>1"},
    {"Latin-1", "a=\xfc\n", "a>ü"},
    {"ends at NUL", QByteArray("a=1\0x=2\nb=3\n", 12), "a>1,b>3"},
    {"empty", "", ""},
};

} // namespace

void tst_AppConfig::readsConf_data()
{
    addCases(confs);
}

void tst_AppConfig::readsConf()
{
    const auto &c = currentCase(confs);
    QBuffer buffer;
    buffer.setData(c.text);
    QVERIFY(buffer.open(QIODevice::ReadOnly));
    QSettings::SettingsMap map;
    QVERIFY(AppConfig::readConf(buffer, map));
    QStringList entries;
    for (auto entry = map.cbegin(); entry != map.cend(); ++entry)
        entries << entry.key() + QLatin1Char('>') + entry.value().toString();
    QCOMPARE(entries.join(QLatin1Char(',')), QString::fromUtf8(c.entries));
}

void tst_AppConfig::writesConf()
{
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::WriteOnly));
    QVERIFY(AppConfig::writeConf(buffer,
                                 {{QStringLiteral("b"), 2},
                                  {QStringLiteral("a %2"), QStringLiteral("%1 ü")},
                                  {QStringLiteral("c"), QVariant()}}));
    QCOMPARE(buffer.data(), QStringLiteral("a %2=%1 ü\nb=2\nc=\n").toLocal8Bit());
}

// The local encoding out and Latin-1 in: other letters change on every rewrite.
void tst_AppConfig::keepsAsciiThroughConf()
{
    QBuffer buffer;
    QVERIFY(buffer.open(QIODevice::ReadWrite));
    AppConfig::writeConf(buffer, {{QStringLiteral("k"), QStringLiteral("plain ü")}});
    buffer.seek(0);
    QSettings::SettingsMap map;
    AppConfig::readConf(buffer, map);
    QCOMPARE(map.value(QStringLiteral("k")).toString(),
             QString::fromLatin1(QStringLiteral("plain ü").toLocal8Bit()));
}

void tst_AppConfig::opensIoMap()
{
    const QSharedPointer<QSettings> first = AppConfig::ioMapSettings();
    QVERIFY(
        first->fileName().endsWith(QStringLiteral("/etc/iomap.conf"))); // behind a drive letter on Windows
    QVERIFY(first->format() >= QSettings::CustomFormat1);
    QCOMPARE(first->iniCodec()->name(), QByteArray("UTF-8"));
    QVERIFY(first != AppConfig::ioMapSettings());
}

void tst_AppConfig::testsSettings()
{
    AppConfig::instance()->setupConfigPaths(); // below APPDATA, which belongs to this test
    QCoreApplication::setApplicationName(QStringLiteral("tst_AppConfig"));
    const char *const key = "Group/answer";
    const auto setting = [key] { return AppConfig::testSetting(key, 1); };

    AppConfig::settings()->remove(QString());
    QCOMPARE(setting(), QVariant(1));
    AppConfig::settings()->setValue(QString::fromLatin1(key), QStringLiteral("two"));
    QCOMPARE(setting(), QVariant(QStringLiteral("two")));
    qApp->setProperty(key, 3);
    QCOMPARE(setting(), QVariant(3));
    qApp->setProperty(key, QVariant());
    QCOMPARE(setting(), QVariant(QStringLiteral("two")));
    QCOMPARE(AppConfig::testSetting("applicationName", 0), QVariant(QStringLiteral("tst_AppConfig")));
}

void tst_AppConfig::tellsVersions()
{
    for (const auto &[version, threeParts] :
         {std::pair("8.0.2.1", "8.0.2"), std::pair("7.1", "7.1"), std::pair("8", "8"),
          std::pair("08.00.02.1", "8.0.2"), std::pair("1..2", "1"), std::pair("1.2-beta", "1.2"),
          std::pair("nonsense", "1.0.0"), std::pair("", "1.0.0"), std::pair("99999999999.1", "1.0.0")}) {
        QCoreApplication::setApplicationVersion(QString::fromLatin1(version));
        QCOMPARE(AppConfig::majorMiniorMicroVersion(), QString::fromLatin1(threeParts));
    }
}

void tst_AppConfig::tellsFixedFacts()
{
    QCOMPARE(AppConfig::buildStamp(), QStringLiteral("Sep 10 2021 12:00:10"));
    QCOMPARE(AppConfig::version(), QString()); // not initialised
    QCOMPARE(AppConfig::versionInfo(), QStringLiteral("tst_AppConfig Ver. "));
    QVERIFY(AppConfig::isPrototype());
    QVERIFY(!AppConfig::runAsUser());
    QCOMPARE(AppConfig::application(), nullptr);
    QCOMPARE(AppConfig::cmdArgs.size(), 23);
}

void tst_AppConfig::keepsSystemVersion()
{
    QFile file(QStringLiteral("version.txt"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(" \n 12.4 and more");
    file.close();
    QCOMPARE(AppConfig::systemVersion(), QStringLiteral("12.4"));
    QVERIFY(file.remove());
    QCOMPARE(AppConfig::systemVersion(), QStringLiteral("12.4"));
}

void tst_AppConfig::convertsVersions()
{
    const QVariant version = QVariant::fromValue(OXVersion(QStringLiteral("1.2.3")));
    QCOMPARE(version.toString(), QStringLiteral("1.2.3.0"));
    QVERIFY(version.toBool());
    QVERIFY(!QVariant::fromValue(OXVersion()).toBool());
}

void tst_AppConfig::listsItsMethods()
{
    const QMetaObject &meta = AppConfig::staticMetaObject;
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), QByteArray("shutdownRequested(int)"));
    QCOMPARE(meta.method(meta.methodOffset() + 1).methodSignature(), QByteArray("signalReceived(int)"));
}

void tst_AppConfig::isOneObject()
{
    AppConfig *other = nullptr;
    std::thread([&other] { other = AppConfig::Instance(); }).join();
    QCOMPARE(other, AppConfig::instance());
}

void tst_AppConfig::resolvesOddFileNames()
{
    const QString share = AppConfig::sharePath(QString());
    QCOMPARE(AppConfig::sharePath(QStringLiteral("a") + QChar(0) + QStringLiteral("b")),
             share + QStringLiteral("/a"));
    const QString absolute = QDir::rootPath() + QStringLiteral("etc/passwd");
    QCOMPARE(AppConfig::sharePath(absolute), absolute);
#ifdef Q_OS_WIN
    QCOMPARE(AppConfig::sharePath(QStringLiteral("D:/a")), QStringLiteral("D:/a"));
    QCOMPARE(AppConfig::sharePath(QStringLiteral("D:\\a\\b")), QStringLiteral("D:\\a\\b"));
    QCOMPARE(AppConfig::sharePath(QStringLiteral("日")),
             share + QStringLiteral("/?")); // not in the code page
#else
    QCOMPARE(AppConfig::sharePath(QStringLiteral("日")), share + QStringLiteral("/日"));
#endif
}

void tst_AppConfig::tellsNoTimeBeforeTheStart()
{
    QCOMPARE(AppConfig::elapsedTime(), qint64(0));
    QVERIFY(!AppConfig::elapsedTimerLock.isLocked());
}

int main(int argc, char **argv)
{
    setCommandLine({});
    const QCoreApplication application(argumentCount, argumentVector);
    tst_AppConfig test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_AppConfig.moc"
