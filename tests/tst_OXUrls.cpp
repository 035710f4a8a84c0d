#include <OXUrls.h>

#include "Cases.h"
#include "LogCapture.h"

#include <QJSEngine>
#include <QMetaMethod>
#include <QQmlEngine>
#include <QTemporaryDir>

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

const struct {
    const char *name, *environment, *region, *target, *baseUrl, *limit, *mode;
} lookUps[] = {
    {"no region", "production", "", "account", "https://account.example.com/base", "20", "plain"},
    {"region", "production", "us", "account", "https://us.example.com/base/", "10", ""},
    {"region without base", "production", "eu", "account", "https://account.example.com/base", "5", ""},
    {"null in region", "production", "null", "account", "", "20", "plain"},
    {"case matters", "production", "US", "account", "https://account.example.com/base", "20", "plain"},
    {"unknown environment", "staging", "us", "account", "https://us.example.com/base/", "10", ""},
    {"empty environment", "", "", "account", "https://account.example.com/base", "20", "plain"},
    {"other environment", "test", "us", "account", "https://test.example.com/base", "", ""},
    {"null entry", "test", "", "files", "", "", ""},
    {"empty entry", "test", "", "bare", "", "", ""},
    {"unknown target", "production", "us", "nothing", "", "", ""},
};

const struct {
    const char *name, *region, *target, *path;
    bool addUrlQuery;
    const char *result;
} builtUrls[] = {
    {"no path", "", "account", "", false, "https://account.example.com/base"},
    {"relative path", "", "account", "api", false, "https://account.example.com/base/api"},
    {"absolute path", "", "account", "/api", false, "https://account.example.com/base/api"},
    {"doubled slash", "us", "account", "api", false, "https://us.example.com/base//api"},
    {"no base path", "", "bare", "api", false, "https://bare.example.com/api"},
    {"path is decoded", "", "bare", "a?b%20c", false, "https://bare.example.com/a%3Fb%2520c"},
    {"base is decoded", "", "files", "c", false, "https://files.example.com/a/b/c?q=1#f"},
    {"base untouched", "", "files", "", false, "https://files.example.com/a%2Fb?q=1#f"},
    {"query of entry", "us", "account", "", true,
     "https://us.example.com/base/?mine=1&beta=true&client=tablet&none&zone=7"},
    {"query replaced", "", "files", "", true, "https://files.example.com/a%2Fb?mine=1#f"},
    {"unknown target", "", "nothing", "api", false, "/api"},
    {"unknown target, two slashes", "", "nothing", "//api", false, ""},
};

// Valid, of 50 MB.
QByteArray huge()
{
    return R"({"environment":{"production":{"account":{"baseUrl":"https://a.example"}}},"more":[)"
        + ('"' + QByteArray(1000, 'x') + "\",").repeated(50 * 1024) + "0]}";
}

const struct {
    const char *name;
    QByteArray (*json)(); // null: no such file
    const char *warning;
    const char *baseUrl;
} documents[] = {
    {"missing keeps the old", nullptr, "unable to load external urls: \"", "https://test.example.com/base"},
    {"empty", [] { return QByteArray(""); }, "Url json invalid \"", ""},
    {"cut off", [] { return document().left(300); }, "Url json invalid \"", ""},
    {"binary", [] { return QByteArray("\0\xff\xfe{", 4); }, "Url json invalid \"", ""},
    {"10000 levels", [] { return "{\"a\":" + QByteArray(10000, '[') + QByteArray(10000, ']') + '}'; },
     "Url json invalid \"", ""},
    {"array", [] { return QByteArray("[1]"); }, "", ""},
    {"wrong shapes", [] { return QByteArray(R"({"environment":{"production":{"account":5}}})"); }, "", ""},
    {"huge", huge, "", "https://a.example"},
};

const struct {
    const char *name, *json;
    bool fileExists, backupExists;
    const char *fileAfter, *backupAfter; // null: the document
    const char *warning;
} stores[] = {
    {"valid", "{\"environment\":{}}", true, false, "", nullptr, "open file to load external urls: "},
    {"invalid", "{", true, false, nullptr, "missing", "Url json invalid "},
    {"backup in the way", "{}", true, true, nullptr, "old", ""},
    {"no file", "{}", false, false, "missing", "missing", ""},
};

} // namespace

class tst_OXUrls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void isEmptyBeforeInitialize();
    void comesBackAfterDestruction();
    void everyInstanceCallConnects();
    void looksUp_data() { addCases(lookUps); }
    void looksUp();
    void buildsUrls_data() { addCases(builtUrls); }
    void buildsUrls();
    void tracesLookups();
    void selectorsSignalChangesOnly();
    void loadsDocuments_data() { addCases(documents); }
    void loadsDocuments();
    void setsTheStoredFileAside_data() { addCases(stores); }
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
    QVERIFY(!urls->dataValue(text("account"), text("limit")).isValid());
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

void tst_OXUrls::looksUp()
{
    const auto &c = currentCase(lookUps);
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(write(document()), text(c.environment), text(c.region));
    QCOMPARE(urls->baseUrl(text(c.target)).toString(), text(c.baseUrl));
    QCOMPARE(urls->dataValue(text(c.target), text("limit")).toString(), text(c.limit));
    QCOMPARE(urls->dataValue(text(c.target), text("mode")).toString(), text(c.mode));
}

// The caller's own items are given in every row; they appear only together with the entry's.
void tst_OXUrls::buildsUrls()
{
    const auto &c = currentCase(builtUrls);
    OXUrls::instance()->initialize(write(document()), text("production"), text(c.region));
    const QUrl url = OXUrls::url(text(c.target), text(c.path), c.addUrlQuery, {{text("mine"), text("1")}});
    QCOMPARE(url.toString(QUrl::FullyEncoded), text(c.result));
}

void tst_OXUrls::loadsDocuments()
{
    const auto &c = currentCase(documents);
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(write(document()), text("production"), QString());
    const LogCapture capture;
    const QString missing = m_directory->filePath(text("none"));
    urls->initialize(c.json ? write(c.json()) : missing, text("test"), text("us"));
    QCOMPARE(capture.texts().size(), *c.warning ? 1 : 0);
    QCOMPARE(capture.texts().value(0).left(int(qstrlen(c.warning))), text(c.warning));
    QCOMPARE(urls->baseUrl(text("account")).toString(), text(c.baseUrl));
    QCOMPARE(urls->environment(), text("test"));
}

void tst_OXUrls::setsTheStoredFileAside()
{
    const auto &c = currentCase(stores);
    const QString backup = path() + text(".bk");
    if (c.backupExists) {
        write("old");
        QVERIFY(QFile::rename(path(), backup));
    }
    OXUrls::instance()->initialize(write(document()), text("production"), QString());
    QVERIFY(c.fileExists || QFile::remove(path()));

    const LogCapture capture;
    QVERIFY(!OXUrls::instance()->storeUrls(c.json));
    QCOMPARE(contents(path()), c.fileAfter ? QByteArray(c.fileAfter) : document());
    QCOMPARE(contents(backup), c.backupAfter ? QByteArray(c.backupAfter) : document());
    QCOMPARE(capture.texts().size(), *c.warning ? 1 : 0);
    QCOMPARE(capture.texts().value(0).left(int(qstrlen(c.warning))), text(c.warning));
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
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(write(document()), text("production"), text("us"));
    QCOMPARE(urls->regionsValue(text("account"), text("urlQuery")).toMap(),
             (QVariantMap{{text("never"), text("read")}}));
    QJSEngine engine;
    QQmlEngine::setObjectOwnership(urls, QQmlEngine::CppOwnership);
    engine.globalObject().setProperty(text("urls"), engine.newQObject(urls));
    const auto result = [&engine](const char *script) { return engine.evaluate(text(script)).toString(); };
    QCOMPARE(result("urls.url('account', '/x')"), text("https://us.example.com/base//x"));
    QCOMPARE(result("urls.url('bare', 'x', true)"), text("https://bare.example.com/x"));
    QCOMPARE(result("urls.region = 'eu'; urls.baseUrl('account')"), text("https://account.example.com/base"));
    QCOMPARE(result("urls.dataValue('account', 'limit')"), text("5"));
    QCOMPARE(result("urls.urlInfo('account').data.mode"), text("plain"));
    QCOMPARE(result("urls.urlInfo('account').note[0]"), text("kept"));
    QVERIFY(QMetaType::type("QUrlQuery") != QMetaType::UnknownType);
}

void tst_OXUrls::listsItsInterfaceInOrder()
{
    const QMetaObject &meta = OXUrls::staticMetaObject;
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        methods << text(meta.method(i).typeName()) + text(" ") + text(meta.method(i).methodSignature());
    QCOMPARE(methods.join(text("; ")),
             text("void environmentChanged(QString); void regionChanged(QString); QUrl baseUrl(QString); "
                  "QVariant dataValue(QString,QString); QVariantMap urlInfo(QString); "
                  "QUrl url(QString,QString,bool,QUrlQuery); QUrl url(QString,QString,bool); "
                  "QUrl url(QString,QString); QUrl url(QString)"));
    QCOMPARE(meta.propertyCount() - meta.propertyOffset(), 2);
    QCOMPARE(text(meta.property(meta.propertyOffset()).name()), text("environment"));
    QCOMPARE(OXUrls::DefaultEnvironment, text("production"));
}

QTEST_GUILESS_MAIN(tst_OXUrls)
#include "tst_OXUrls.moc"
