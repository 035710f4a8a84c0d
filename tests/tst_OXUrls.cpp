#include <OXUrls.h>

#include "Cases.h"
#include "ScriptStage.h"

#include <QTemporaryDir>

#ifdef Q_OS_UNIX
#    include <sys/resource.h>
#endif

namespace {

// Scripts and the journals that they have to cause; at() selects the environment and the region, "mine" is a
// query with one item.
const struct {
    const char *name, *script, *journal;
} scenarios[] = {
    {"regions",
     "for (const region of ['', 'us', 'eu', 'null', 'US'])"
     "note([at('production', region).baseUrl('account'), at('production', region).dataValue('account', "
     "'limit'), urls.dataValue('account', 'mode')])",
     "https://account.example.com/base,20,plain https://us.example.com/base/,10, "
     "https://account.example.com/base,5, ,20,plain https://account.example.com/base,20,plain"},
    {"environments",
     "for (const environment of ['unknown', '', 'test']) note(at(environment, 'us').baseUrl('account'));"
     "for (const target of ['files', 'bare', 'none']) note([at('test', '').baseUrl(target)])",
     "https://us.example.com/base/ https://us.example.com/base/ https://test.example.com/base   "},
    {"paths",
     "for (const path of ['', 'api', '/api']) note(urls.url('account', path)); note(urls.url('files', 'c'));"
     "note(urls.url('bare', 'a?b%20c')); note(urls.url('none', 'api')); note([urls.url('none', '//api')]);"
     "note(at('production', 'us').url('account', 'api'))",
     "https://account.example.com/base https://account.example.com/base/api "
     "https://account.example.com/base/api https://files.example.com/a/b/c?q=1#f "
     "https://bare.example.com/a%3Fb%2520c /api  https://us.example.com/base//api"},
    {"queries",
     "note(urls.url('files', '', false, mine)); note(urls.url('files', '', true, mine));"
     "note(at('production', 'us').url('account', '', true, mine)); note(regionsValue('account', "
     "'urlQuery').never)",
     "https://files.example.com/a%2Fb?q=1#f https://files.example.com/a%2Fb?mine=1#f "
     "https://us.example.com/base/?mine=1&beta=true&client=tablet&none&zone=7 read"},
    {"signals changes only, and none from initialize()",
     "urls.environmentChanged.connect(note); urls.regionChanged.connect(note); "
     "note(urls.urlInfo('account').note);"
     "load('urls.json', 'test', 'us'); at('test', 'us'); at('production', 'eu'); changeSettings(5, 6)",
     "kept production eu 5 6"},
    {"traces",
     "at('test', ''); urls.url('account'); log(); trace(true); urls.url('bare', 'p', true, mine); at('new', "
     "''); trace(false); log()",
     "debug: target: 'bare' path: 'p' addUrlQuery: true urlQuery: 'mine=1' region: '' environment: 'test' "
     "debug: result: QUrl('/p?mine=1') info: environment 'new' info: region ''"},
    {"documents of which nothing is left",
     "for (const json of ['{', '', '\x80', '['.repeat(10000) + ']'.repeat(10000), '[1]',"
     "'{\"environment\":{\"production\":{\"account\":5}}}']) { write('new.json', json);"
     "load('urls.json', '', ''); load('new.json', 'test', 'us'); log(); note([urls.baseUrl('account')]) }"
     "note(urls.environment)",
     "warning: Url json invalid 'unterminated object'  warning: Url json invalid 'illegal value'  "
     "warning: Url json invalid 'illegal value'  warning: Url json invalid 'too deeply nested document'  "
     "  test"},
    {"a missing document keeps the old, and there is nothing to set aside",
     "load('none.json', 'test', ''); note(urls.baseUrl('account')); store('{}'); log('open file')",
     "https://test.example.com/base"},
    {"the document is set aside, the new one not stored",
     "store('{}'); files(); note(urls.urlInfo('account').note)",
     " document warning: open file to load external urls: 'Unknown error' kept"},
    {"invalid", "store('{'); files()", "document missing warning: Url json invalid 'unterminated object'"},
    {"a backup is in the way", "write('urls.json.bk', 'old'); store('{}'); files()", "document old"},
#ifdef Q_OS_UNIX
    {"no file can be opened: the document comes back and is kept",
     "limitOpenFiles(0); store('{}'); load('urls.json', 'test', ''); limitOpenFiles(256); files();"
     "note(urls.urlInfo('account').baseUrl)",
     "document missing warning: File not stored: 'Too many open files' "
     "warning: unable to load external urls: 'Too many open files' https://test.example.com/base"},
#endif
};

} // namespace

// What the scripts can do.
class Stage : public ScriptStage {
    Q_OBJECT

public:
    Stage()
    {
        QFile::copy(QFINDTESTDATA("data/OlvexUrls.json"), path(text("urls.json")));
        m_document = contents("urls.json");
        load(text("urls.json"), text("production"), QString());
        show("urls", OXUrls::instance());
        const QUrlQuery mine(text("mine=1"));
        engine.globalObject().setProperty(
            text("mine"), engine.toScriptValue(QVariant(QMetaType::type("QUrlQuery"), &mine)));
        engine.evaluate(text("at = (environment, region) => Object.assign(urls, {environment, region})"));
    }

    Q_INVOKABLE void load(const QString &file, const QString &environment, const QString &region)
    {
        OXUrls::instance()->initialize(path(file), environment, region);
    }
    Q_INVOKABLE void write(const QString &name, const QString &latin1)
    {
        QFile file(path(name));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(latin1.toLatin1());
    }
    Q_INVOKABLE void store(const QString &json) { QVERIFY(!OXUrls::instance()->storeUrls(json.toLatin1())); }
    // Notes what the document and its backup contain, and the messages.
    Q_INVOKABLE void files()
    {
        journal << contents("urls.json") << contents("urls.json.bk");
        log(text("OXExternalServers"));
    }
#ifdef Q_OS_UNIX
    Q_INVOKABLE void limitOpenFiles(int number)
    {
        rlimit limit;
        QCOMPARE(getrlimit(RLIMIT_NOFILE, &limit), 0);
        limit.rlim_cur = rlim_t(number);
        QCOMPARE(setrlimit(RLIMIT_NOFILE, &limit), 0);
    }
#endif
    Q_INVOKABLE QVariant regionsValue(const QString &target, const QString &key) const
    {
        return OXUrls::instance()->regionsValue(target, key);
    }
    Q_INVOKABLE void changeSettings(const QVariant &environment, const QVariant &region)
    {
        OXUrls::setEnvironmentSetting(text("any key"), environment);
        OXUrls::setRegionSetting(text("any key"), region);
    }
    Q_INVOKABLE void trace(bool on)
    {
        QLoggingCategory::setFilterRules(text(on ? "Olvex.OXExternalServers=true" : ""));
    }

private:
    QString path(const QString &name) const
    {
        return m_directory.filePath(name);
    }
    QString contents(const char *name) const
    {
        QFile file(path(text(name)));
        const QString found = text(file.open(QIODevice::ReadOnly) ? file.readAll().constData() : "missing");
        return found == m_document ? text("document") : found;
    }

    QTemporaryDir m_directory;
    QString m_document;
};

class tst_OXUrls : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init() { delete OXUrls::instance(); }

    // Also if that is asked for while the first one is being destroyed, whose connections it must survive.
    void hasASuccessor()
    {
        OXUrls *const first = OXUrls::instance();
        QVERIFY(!first->parent());
        first->setRegion(text("eu"));
        OXUrls *successor = nullptr;
        connect(first, &QObject::destroyed, this, [&successor] { successor = OXUrls::instance(); });
        OXUrls::instance();
        delete first;
        QVERIFY(successor);
        QCOMPARE(OXUrls::instance(), successor);
        QCOMPARE(successor->environment() + successor->region(), text("productionus"));
        QCOMPARE(OXUrls::url(text("account"), text("api")), QUrl(text("/api"))); // it is empty
    }

    void everyInstanceCallConnects()
    {
        const auto connections = [] {
            return (OXUrls::instance()->*&tst_OXUrls::receivers)(SIGNAL(destroyed(QObject *)));
        };
        const int before = connections();
        OXUrls::Instance();
        OXUrls::url(text("account"));
        QCOMPARE(connections(), before + 3);
    }

    void plays_data() { addCases(scenarios); }
    void plays()
    {
        const auto &c = currentCase(scenarios);
        QCOMPARE(Stage().play(text(c.script)), text(c.journal));
    }
};

QTEST_GUILESS_MAIN(tst_OXUrls)
#include "tst_OXUrls.moc"
