#include <OXUrls.h>

#include "LogCapture.h"

#include <QJSEngine>
#include <QMetaMethod>
#include <QQmlEngine>
#include <QTemporaryDir>
#include <QtTest>

#include <set>
#include <thread>
#include <vector>

#ifdef Q_OS_UNIX
#    include <sys/resource.h>
#endif

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("missing");
}

QByteArray document()
{
    static const QByteArray json = contents(QFINDTESTDATA("data/OlvexUrls.json"));
    return json;
}

} // namespace

class tst_OXUrls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void isEmptyBeforeInitialize();
    void comesBackAfterDestruction();
    void everyInstanceCallConnects();
    void looksUp_data();
    void looksUp();
    void carriesUnknownKeysAlong();
    void buildsUrls_data();
    void buildsUrls();
    void tracesLookups();
    void selectorsSignalChangesOnly();
    void reportsUnusableDocuments_data();
    void reportsUnusableDocuments();
    void loadsHugeDocument();
    void setsTheStoredFileAside_data();
    void setsTheStoredFileAside();
    void restoresTheStoredFile();
    void worksFromScripts();
    void listsItsInterfaceInOrder();

private:
    QString path() const { return m_directory->filePath(QStringLiteral("OlvexUrls.json")); }
    QString write(const QByteArray &json) const;

    std::unique_ptr<QTemporaryDir> m_directory;
};

QString tst_OXUrls::write(const QByteArray &json) const
{
    QFile file(path());
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size())
        qFatal("cannot write %s", qPrintable(path()));
    return path();
}

// The first calls of the process: only one object may come of them.
void tst_OXUrls::initTestCase()
{
    std::vector<OXUrls *> seen(8);
    std::vector<std::thread> threads;
    for (OXUrls *&place : seen)
        threads.emplace_back([&place] { place = OXUrls::instance(); });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(std::set<OXUrls *>(seen.begin(), seen.end()).size(), std::size_t(1));
}

void tst_OXUrls::init()
{
    delete OXUrls::instance();
    m_directory = std::make_unique<QTemporaryDir>();
}

void tst_OXUrls::isEmptyBeforeInitialize()
{
    const OXUrls *const urls = OXUrls::instance();
    QCOMPARE(urls->environment(), text("production"));
    QCOMPARE(urls->region(), text("us"));
    QCOMPARE(urls->urlInfo(text("account")), QVariantMap());
    QVERIFY(!urls->dataValue(text("account"), text("limit")).isValid());
    QCOMPARE(urls->baseUrl(text("account")), QUrl());
    QCOMPARE(OXUrls::url(text("account"), text("api")), QUrl(text("/api")));
}

void tst_OXUrls::comesBackAfterDestruction()
{
    QPointer<OXUrls> first = OXUrls::instance();
    QCOMPARE(OXUrls::Instance(), first.data());
    QVERIFY(!first->parent());
    first->setRegion(text("eu"));

    // A successor made while the first one is being destroyed must survive its predecessor's connections.
    OXUrls::instance();
    OXUrls *early = nullptr;
    connect(first, &QObject::destroyed, this, [&early] { early = OXUrls::instance(); });
    OXUrls::instance();
    delete first;
    QVERIFY(early);
    QCOMPARE(OXUrls::instance(), early);
    QCOMPARE(early->region(), text("us"));
}

void tst_OXUrls::everyInstanceCallConnects()
{
    struct Open : QObject {
        using QObject::receivers;
    };
    const auto connections = [](const QObject *object) {
        return (object->*(&Open::receivers))(SIGNAL(destroyed(QObject *)));
    };
    const int before = connections(OXUrls::instance());
    QCOMPARE(connections(OXUrls::Instance()), before + 1);
    OXUrls::url(text("account"));
    QCOMPARE(connections(OXUrls::instance()), before + 3);
}

void tst_OXUrls::looksUp_data()
{
    QTest::addColumn<QString>("environment");
    QTest::addColumn<QString>("region");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("baseUrl");
    QTest::addColumn<QVariant>("limit");
    QTest::addColumn<QVariant>("mode");

    const auto row = [](const char *name, const char *environment, const char *region, const char *target,
                        const char *baseUrl, const QVariant &limit, const QVariant &mode) {
        QTest::newRow(name) << text(environment) << text(region) << text(target) << text(baseUrl) << limit
                            << mode;
    };
    const QVariant none;
    const QVariant plain = text("plain");
    const char *const own = "https://account.example.com/base";
    row("no region", "production", "", "account", own, 20, plain);
    row("region", "production", "us", "account", "https://us.example.com/base/", 10, none);
    row("region without base", "production", "eu", "account", own, 5, none);
    row("unknown region", "production", "xx", "account", own, 20, plain);
    row("null in region", "production", "null", "account", "", 20, plain);
    row("case matters", "production", "US", "account", own, 20, plain);
    row("unknown environment", "staging", "us", "account", "https://us.example.com/base/", 10, none);
    row("empty environment", "", "", "account", own, 20, plain);
    row("other environment", "test", "us", "account", "https://test.example.com/base", none, none);
    row("environment lacks target", "staging", "", "bare", "https://bare.example.com", none, none);
    row("null entry", "test", "", "files", "", none, none);
    row("empty entry", "test", "", "bare", "", none, none);
    row("unknown target", "production", "us", "nothing", "", none, none);
}

void tst_OXUrls::looksUp()
{
    QFETCH(QString, environment);
    QFETCH(QString, region);
    QFETCH(QString, target);
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(write(document()), environment, region);
    QTEST(urls->baseUrl(target).toString(), "baseUrl");
    const auto data = [&](const char *key) {
        const QVariant value = urls->dataValue(target, text(key));
        return value.type() == QVariant::LongLong || value.type() == QVariant::Double
            ? QVariant(value.toInt())
            : value;
    };
    QTEST(data("limit"), "limit");
    QTEST(data("mode"), "mode");
}

void tst_OXUrls::carriesUnknownKeysAlong()
{
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(write(document()), text("production"), text("us"));
    QCOMPARE(urls->urlInfo(text("account")).value(text("note")).toStringList(), QStringList(text("kept")));
    QCOMPARE(urls->regionsValue(text("account"), text("urlQuery")).toMap(),
             (QVariantMap{{text("never"), text("read")}}));
}

void tst_OXUrls::buildsUrls_data()
{
    QTest::addColumn<QString>("region");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("addUrlQuery");
    QTest::addColumn<QString>("result");

    const auto row = [](const char *name, const char *region, const char *target, const char *path,
                        bool addUrlQuery, const char *result) {
        QTest::newRow(name) << text(region) << text(target) << text(path) << addUrlQuery << text(result);
    };
    row("no path", "", "account", "", false, "https://account.example.com/base");
    row("relative path", "", "account", "api", false, "https://account.example.com/base/api");
    row("absolute path", "", "account", "/api", false, "https://account.example.com/base/api");
    row("doubled slash", "us", "account", "api", false, "https://us.example.com/base//api");
    row("no base path", "", "bare", "api", false, "https://bare.example.com/api");
    row("path is decoded", "", "bare", "a?b%20c", false, "https://bare.example.com/a%3Fb%2520c");
    row("base is decoded", "", "files", "c", false, "https://files.example.com/a/b/c?q=1#f");
    row("base untouched", "", "files", "", false, "https://files.example.com/a%2Fb?q=1#f");
    row("query of entry", "us", "account", "", true,
        "https://us.example.com/base/?mine=1&beta=true&client=tablet&none&zone=7");
    row("query replaced", "", "files", "", true, "https://files.example.com/a%2Fb?mine=1#f");
    row("unknown target", "", "nothing", "api", false, "/api");
    row("unknown target, two slashes", "", "nothing", "//api", false, "");
}

// The caller's own items are given in every row; they appear only together with the entry's.
void tst_OXUrls::buildsUrls()
{
    QFETCH(QString, region);
    QFETCH(QString, target);
    QFETCH(QString, path);
    QFETCH(bool, addUrlQuery);
    OXUrls::instance()->initialize(write(document()), text("production"), region);
    const QUrlQuery mine{{text("mine"), text("1")}};
    QTEST(OXUrls::url(target, path, addUrlQuery, mine).toString(QUrl::FullyEncoded), "result");
}

void tst_OXUrls::tracesLookups()
{
    QLoggingCategory::setFilterRules(text("Olvex.OXExternalServers=true"));
    const LogCapture capture;
    OXUrls::url(text("account"), text("p"), true, QUrlQuery(text("a=1")));
    OXUrls::instance()->setEnvironment(text("test"));
    QLoggingCategory::setFilterRules(QString());
    OXUrls::instance()->setRegion(text("eu")); // info is off by default
    QCOMPARE(capture.lines(),
             (QStringList{text("Olvex.OXExternalServers.debug: target: \"account\" path: \"p\" addUrlQuery: "
                               "true urlQuery: \"a=1\" region: \"us\" environment: \"production\""),
                          text("Olvex.OXExternalServers.debug: result: QUrl(\"/p?a=1\")"),
                          text("Olvex.OXExternalServers.info: environment \"test\"")}));
}

void tst_OXUrls::selectorsSignalChangesOnly()
{
    OXUrls *const urls = OXUrls::instance();
    QSignalSpy environments(urls, &OXUrls::environmentChanged);
    QSignalSpy regions(urls, &OXUrls::regionChanged);
    urls->initialize(write(document()), text("staging"), text("us")); // signals nothing
    QCOMPARE(urls->environment(), text("staging"));
    urls->setEnvironment(text("test"));
    urls->setEnvironment(text("test"));
    OXUrls::setEnvironmentSetting(text("any key"), 5);
    urls->setRegion(text("us")); // the same
    QVERIFY(urls->setProperty("region", text("eu")));
    OXUrls::setRegionSetting(text("any key"), QVariant());
    QCOMPARE(QList<QVariantList>(environments), (QList<QVariantList>{{text("test")}, {text("5")}}));
    QCOMPARE(QList<QVariantList>(regions), (QList<QVariantList>{{text("eu")}, {QString()}}));
    QCOMPARE(urls->property("environment"), QVariant(text("5")));
}

void tst_OXUrls::reportsUnusableDocuments_data()
{
    QTest::addColumn<QByteArray>("json"); // null: no such file
    QTest::addColumn<QString>("warning");
    QTest::addColumn<bool>("keepsOld");
    const QByteArray nested = "{\"environment\":" + QByteArray(10000, '[') + QByteArray(10000, ']') + '}';
    QTest::newRow("missing") << QByteArray() << text("unable to load external urls: \"") << true;
    QTest::newRow("empty") << QByteArray("") << text("Url json invalid \"") << false;
    QTest::newRow("cut off") << document().left(300) << text("Url json invalid \"") << false;
    QTest::newRow("binary") << QByteArray("\0\xff\xfe{", 4) << text("Url json invalid \"") << false;
    QTest::newRow("trailing comma") << QByteArray("{\"a\":1,}") << text("Url json invalid \"") << false;
    QTest::newRow("10000 levels") << nested << text("Url json invalid \"") << false;
    QTest::newRow("array") << QByteArray("[1]") << QString() << false;
    QTest::newRow("wrong shapes") << QByteArray(R"({"environment":{"production":{"account":5}}})")
                                  << QString() << false;
}

void tst_OXUrls::reportsUnusableDocuments()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, warning);
    QFETCH(bool, keepsOld);
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(write(document()), text("production"), QString());

    const LogCapture capture;
    const QString missing = m_directory->filePath(text("none"));
    urls->initialize(json.isNull() ? missing : write(json), text("test"), text("us"));
    QCOMPARE(capture.texts().size(), warning.isEmpty() ? 0 : 1);
    QVERIFY(capture.texts().join(QString()).startsWith(warning));
    QCOMPARE(urls->baseUrl(text("account")).isEmpty(), !keepsOld);
    QCOMPARE(urls->environment(), text("test"));
}

void tst_OXUrls::loadsHugeDocument()
{
    QByteArray json(R"({"environment":{"production":{"account":{"baseUrl":"https://a.example"}}},"more":[)");
    const QByteArray item = '"' + QByteArray(1000, 'x') + "\",";
    while (json.size() < 50 * 1024 * 1024)
        json += item;
    json += "0]}";
    const LogCapture capture;
    OXUrls::instance()->initialize(write(json), text("production"), QString());
    QCOMPARE(capture.texts(), QStringList());
    QCOMPARE(OXUrls::url(text("account")), QUrl(text("https://a.example")));
}

void tst_OXUrls::setsTheStoredFileAside_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<bool>("fileExists");
    QTest::addColumn<bool>("backupExists");
    QTest::addColumn<QByteArray>("fileAfter");
    QTest::addColumn<QByteArray>("backupAfter");
    QTest::addColumn<QString>("warning");
    const QByteArray valid("{\"environment\":{}}");
    QTest::newRow("valid") << valid << true << false << QByteArray() << document()
                           << text("open file to load external urls: ");
    QTest::newRow("invalid") << QByteArray("{") << true << false << document() << QByteArray("missing")
                             << text("Url json invalid ");
    QTest::newRow("backup in the way")
        << valid << true << true << document() << QByteArray("old") << QString();
    QTest::newRow("no file") << valid << false << false << QByteArray("missing") << QByteArray("missing")
                             << QString();
}

void tst_OXUrls::setsTheStoredFileAside()
{
    QFETCH(QByteArray, json);
    QFETCH(bool, fileExists);
    QFETCH(bool, backupExists);
    QFETCH(QString, warning);
    const QString backup = path() + text(".bk");
    if (backupExists) {
        write("old");
        QVERIFY(QFile::rename(path(), backup));
    }
    OXUrls::instance()->initialize(write(document()), text("production"), QString());
    if (!fileExists)
        QVERIFY(QFile::remove(path()));

    const LogCapture capture;
    QVERIFY(!OXUrls::instance()->storeUrls(json));
    QTEST(contents(path()), "fileAfter");
    QTEST(contents(backup), "backupAfter");
    QCOMPARE(capture.texts().size(), warning.isEmpty() ? 0 : 1);
    QVERIFY(capture.texts().join(QString()).startsWith(warning));
    QVERIFY(!OXUrls::instance()->urlInfo(text("account")).isEmpty());
}

// The new file cannot be made: what was set aside comes back.
void tst_OXUrls::restoresTheStoredFile()
{
#ifdef Q_OS_UNIX
    OXUrls::instance()->initialize(write(document()), text("production"), QString());
    rlimit before;
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &before), 0);
    rlimit none = before;
    none.rlim_cur = 0;
    const LogCapture capture;
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &none), 0);
    const bool stored = OXUrls::instance()->storeUrls("{}");
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &before), 0);
    QVERIFY(!stored);
    QVERIFY(capture.contains(text("File not stored:")));
    QCOMPARE(contents(path()), document());
    QCOMPARE(contents(path() + text(".bk")), QByteArray("missing"));
    QVERIFY(!OXUrls::instance()->urlInfo(text("account")).isEmpty());
#else
    QSKIP("needs a limit of open files");
#endif
}

void tst_OXUrls::worksFromScripts()
{
    OXUrls::instance()->initialize(write(document()), text("production"), text("us"));
    QJSEngine engine;
    QQmlEngine::setObjectOwnership(OXUrls::instance(), QQmlEngine::CppOwnership);
    engine.globalObject().setProperty(text("urls"), engine.newQObject(OXUrls::instance()));
    const auto result = [&engine](const char *script) { return engine.evaluate(text(script)).toString(); };
    QCOMPARE(result("urls.url('account')"), text("https://us.example.com/base/"));
    QCOMPARE(result("urls.url('account', '/x')"), text("https://us.example.com/base//x"));
    QCOMPARE(result("urls.url('bare', 'x', true)"), text("https://bare.example.com/x"));
    QCOMPARE(result("urls.region = 'eu'; urls.baseUrl('account')"), text("https://account.example.com/base"));
    QCOMPARE(result("urls.dataValue('account', 'limit')"), text("5"));
    QCOMPARE(result("urls.urlInfo('account').data.mode"), text("plain"));
    QVERIFY(QMetaType::type("QUrlQuery") != QMetaType::UnknownType);
}

void tst_OXUrls::listsItsInterfaceInOrder()
{
    const QMetaObject &meta = OXUrls::staticMetaObject;
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        methods << text(meta.method(i).typeName()) + QLatin1Char(' ')
                + text(meta.method(i).methodSignature());
    QCOMPARE(
        methods,
        (QStringList{text("void environmentChanged(QString)"), text("void regionChanged(QString)"),
                     text("QUrl baseUrl(QString)"), text("QVariant dataValue(QString,QString)"),
                     text("QVariantMap urlInfo(QString)"), text("QUrl url(QString,QString,bool,QUrlQuery)"),
                     text("QUrl url(QString,QString,bool)"), text("QUrl url(QString,QString)"),
                     text("QUrl url(QString)")}));
    QCOMPARE(meta.propertyCount() - meta.propertyOffset(), 2);
    QCOMPARE(text(meta.property(meta.propertyOffset()).name()), text("environment"));
    QCOMPARE(OXUrls::DefaultEnvironment, text("production"));
}

QTEST_GUILESS_MAIN(tst_OXUrls)
#include "tst_OXUrls.moc"
