#include <OXUrls.h>

#include "Cases.h"
#include "LogCapture.h"

#include <QMetaMethod>
#include <QQmlEngine>
#include <QTemporaryDir>

#include <future>

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
    const char *name; // a script, where at() selects the environment and the region
    const char *result;
} lookUps[] = {
    {"at('production', '').baseUrl('account')", "https://account.example.com/base"},
    {"at('production', 'us').baseUrl('account')", "https://us.example.com/base/"},
    {"at('production', 'eu').baseUrl('account')", "https://account.example.com/base"},
    {"at('production', 'null').baseUrl('account')", ""},
    {"at('production', 'US').baseUrl('account')", "https://account.example.com/base"},
    {"at('production', 'us').baseUrl('nothing')", ""},
    {"at('unknown', 'us').baseUrl('account')", "https://us.example.com/base/"},
    {"at('test', 'us').baseUrl('account')", "https://test.example.com/base"},
    {"at('test', '').baseUrl('files')", ""},
    {"at('test', '').baseUrl('bare')", ""},
    {"at('production', '').dataValue('account', 'mode')", "plain"},
    {"at('production', 'us').dataValue('account', 'limit')", "10"},
    {"at('production', 'us').dataValue('account', 'mode')", "undefined"},
    {"at('production', 'US').dataValue('account', 'limit')", "20"},
    {"at('production', 'us').urlInfo('account').note", "kept"},
    {"at('production', '').url('account', 'api')", "https://account.example.com/base/api"},
    {"at('production', '').url('account', '/api')", "https://account.example.com/base/api"},
    {"at('production', 'us').url('account', 'api')", "https://us.example.com/base//api"},
    {"at('production', '').url('bare', 'a?b%20c')", "https://bare.example.com/a%3Fb%2520c"},
    {"at('production', '').url('files', 'c')", "https://files.example.com/a/b/c?q=1#f"},
    {"at('production', '').url('files', '', false, mine)", "https://files.example.com/a%2Fb?q=1#f"},
    {"at('production', '').url('files', '', true, mine)", "https://files.example.com/a%2Fb?mine=1#f"},
    {"at('production', 'us').url('account', '', true, mine)",
     "https://us.example.com/base/?mine=1&beta=true&client=tablet&none&zone=7"},
    {"at('production', '').url('nothing', 'api')", "/api"},
    {"at('production', '').url('nothing', '//api')", ""},
};

const struct {
    const char *name;
    QByteArray json; // null: no such file
    const char *warning, *baseUrl;
} documents[] = {
    {"missing keeps the old", {}, "unable to load external urls: ", "https://test.example.com/base"},
    {"empty", "", "Url json invalid ", ""},
    {"cut off", "{\"environment\":{", "Url json invalid ", ""},
    {"binary", "\xff\xfe{", "Url json invalid ", ""},
    {"10000 levels", QByteArray(10000, '[') + QByteArray(10000, ']'), "Url json invalid ", ""},
    {"array", "[1]", "", ""},
    {"wrong shapes", R"({"environment":{"production":{"account":5}}})", "", ""},
};

const struct {
    const char *name, *json;
    bool fileExists, backupExists;
    const char *result; // file, backup and warning
    bool canOpenFiles = true;
} stores[] = {
    {"valid", "{}", true, false, ", document, open file to load external urls: "},
    {"invalid", "{", true, false, "document, missing, Url json invalid "},
    {"backup in the way", "{}", true, true, "document, old, "},
    {"no file", "{}", false, false, "missing, missing, "},
    {"no new file", "{}", true, false, "document, missing, File not stored: ", false},
};

// The last warning without what it quotes.
QString warning(const LogCapture &log)
{
    return (QStringList(QString()) + log.texts()).last().section(QLatin1Char('"'), 0, 0);
}

} // namespace

class tst_OXUrls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void comesBackAfterDestruction();
    void everyInstanceCallConnects();
    void looksUp_data() { addCases(lookUps); }
    void looksUp();
    void tracesLookups();
    void selectorsSignalChangesOnly();
    void loadsDocuments_data() { addCases(documents); }
    void loadsDocuments();
    void setsTheStoredFileAside_data() { addCases(stores); }
    void setsTheStoredFileAside();
    void listsItsInterfaceInOrder();

private:
    QString write(const QByteArray &json, const char *name = "OlvexUrls.json") const;

    std::unique_ptr<QTemporaryDir> m_directory;
};

// The path of a file that contains this.
QString tst_OXUrls::write(const QByteArray &json, const char *name) const
{
    QFile file(m_directory->filePath(text(name)));
    if (!file.open(QIODevice::WriteOnly) || file.write(json) != json.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
    return file.fileName();
}

// The first calls of the process: only one object may come of them.
void tst_OXUrls::initTestCase()
{
    std::future<OXUrls *> calls[8];
    for (auto &call : calls)
        call = std::async(std::launch::async, OXUrls::instance);
    for (auto &call : calls)
        QCOMPARE(call.get(), OXUrls::Instance());
}

void tst_OXUrls::init()
{
    delete OXUrls::instance();
    m_directory = std::make_unique<QTemporaryDir>();
}

// Also a successor made while the first one is being destroyed, whose connections it must survive.
void tst_OXUrls::comesBackAfterDestruction()
{
    OXUrls *const first = OXUrls::instance();
    QVERIFY(!first->parent());
    first->setRegion(text("eu"));
    OXUrls *early = nullptr;
    connect(first, &QObject::destroyed, this, [&early] { early = OXUrls::instance(); });
    OXUrls::instance();
    delete first;
    QVERIFY(early);
    QCOMPARE(OXUrls::instance(), early);
    QCOMPARE(early->region(), text("us"));
    QCOMPARE(OXUrls::url(text("account"), text("api")), QUrl(text("/api"))); // empty
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
    OXUrls::url(text("account"));
    QCOMPARE(connections(OXUrls::instance()), before + 2);
}

// The query has an item, mine=1.
void tst_OXUrls::looksUp()
{
    const auto &c = currentCase(lookUps);
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(write(document()), QString(), QString());
    QJSEngine engine;
    QQmlEngine::setObjectOwnership(urls, QQmlEngine::CppOwnership);
    engine.globalObject().setProperty(text("urls"), engine.newQObject(urls));
    const QUrlQuery mine(text("mine=1"));
    engine.globalObject().setProperty(text("mine"),
                                      engine.toScriptValue(QVariant(QMetaType::type("QUrlQuery"), &mine)));
    engine.evaluate(text("at = (environment, region) => Object.assign(urls, { environment, region })"));
    QCOMPARE(engine.evaluate(text(c.name)).toString(), text(c.result));
    QVERIFY(!urls->regionsValue(text("account"), text("none")).isValid());
}

void tst_OXUrls::tracesLookups()
{
    QLoggingCategory::setFilterRules(text("Olvex.OXExternalServers=true"));
    const LogCapture log;
    OXUrls::url(text("account"), text("p"), true, QUrlQuery(text("a=1")));
    OXUrls::instance()->setEnvironment(text("test"));
    QLoggingCategory::setFilterRules(QString());
    OXUrls::instance()->setRegion(text("eu")); // info is off by default
    QCOMPARE(log.lines().join(QLatin1Char('\n')),
             text("Olvex.OXExternalServers.debug: target: \"account\" path: \"p\" addUrlQuery: true "
                  "urlQuery: \"a=1\" region: \"us\" environment: \"production\"\n"
                  "Olvex.OXExternalServers.debug: result: QUrl(\"/p?a=1\")\n"
                  "Olvex.OXExternalServers.info: environment \"test\""));
}

void tst_OXUrls::selectorsSignalChangesOnly()
{
    OXUrls *const urls = OXUrls::instance();
    QString changes;
    connect(urls, &OXUrls::environmentChanged, [&](const QString &now) { changes += now + text(" "); });
    connect(urls, &OXUrls::regionChanged, [&](const QString &now) { changes += now + text(" "); });
    QCOMPARE(urls->environment(), OXUrls::DefaultEnvironment);
    urls->initialize(QString(), text("staging"), text("us")); // signals nothing
    urls->setEnvironment(text("test"));
    urls->setEnvironment(text("test"));
    OXUrls::setEnvironmentSetting(text("any key"), 5);
    urls->setRegion(text("us"));
    OXUrls::setRegionSetting(text("any key"), text("eu"));
    QCOMPARE(changes, text("test 5 eu "));
}

void tst_OXUrls::loadsDocuments()
{
    const auto &c = currentCase(documents);
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(write(document()), text("production"), QString());
    const LogCapture log;
    urls->initialize(c.json.isNull() ? text("none") : write(c.json), text("test"), text("us"));
    QCOMPARE(warning(log), text(c.warning));
    QCOMPARE(urls->baseUrl(text("account")).toString(), text(c.baseUrl));
    QCOMPARE(urls->environment(), text("test"));
}

void tst_OXUrls::setsTheStoredFileAside()
{
    const auto &c = currentCase(stores);
    OXUrls *const urls = OXUrls::instance();
    const QString path = write(document());
    urls->initialize(path, text("production"), QString());
    QVERIFY(c.fileExists || QFile::remove(path));
    if (c.backupExists)
        write("old", "OlvexUrls.json.bk");

    const LogCapture log;
#ifdef Q_OS_UNIX
    rlimit files;
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &files), 0);
    const rlimit limited{c.canOpenFiles ? files.rlim_cur : 0, files.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &limited), 0);
    const bool stored = urls->storeUrls(c.json);
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &files), 0);
#else
    if (!c.canOpenFiles)
        QSKIP("needs a limit of open files");
    const bool stored = urls->storeUrls(c.json);
#endif
    QVERIFY(!stored);
    QByteArray result = contents(path) + ", " + contents(path + text(".bk")) + ", " + warning(log).toUtf8();
    QCOMPARE(result.replace(document(), "document").constData(), c.result);
    QVERIFY(!urls->urlInfo(text("account")).isEmpty());
}

void tst_OXUrls::listsItsInterfaceInOrder()
{
    const QMetaObject &meta = OXUrls::staticMetaObject;
    QByteArray names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names += meta.method(i).typeName() + QByteArray(" ") + meta.method(i).methodSignature() + "; ";
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        names += QByteArray(meta.property(i).name()) + "; ";
    QCOMPARE(names.constData(),
             "void environmentChanged(QString); void regionChanged(QString); QUrl baseUrl(QString); "
             "QVariant dataValue(QString,QString); QVariantMap urlInfo(QString); "
             "QUrl url(QString,QString,bool,QUrlQuery); QUrl url(QString,QString,bool); "
             "QUrl url(QString,QString); QUrl url(QString); environment; region; ");
}

QTEST_GUILESS_MAIN(tst_OXUrls)
#include "tst_OXUrls.moc"
