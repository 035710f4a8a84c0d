#include <ConnectivityChecker.h>
#include <NetworkManager.h>
#include <OXUrls.h>

#include "Cases.h"
#include "ScriptStage.h"
#include "ScriptedServer.h"

#include <QNetworkConfigurationManager>
#include <QNetworkReply>
#include <QTimer>

QT_WARNING_DISABLE_DEPRECATED

using Checker = ConnectivityChecker;
using Server = ScriptedServer;

namespace {

int repliesAlive()
{
    return NetworkManager::instance()->findChildren<QNetworkReply *>().size();
}

// Scripts and what they have to cause: each status received as "old>new", followed by "!" if it was a change,
// and what they note themselves. URL stands for the server's.
const struct {
    const char *name, *script, *journal;
} scenarios[] = {
    {"CONNECTING shows after failures only; redirects are not followed",
     "for (const status of [500, 500, 302, 404, 404]) { answer(status); check() } log('check connectivity')",
     "UNKNOWN>FAILED! FAILED>CONNECTING! CONNECTING>FAILED! FAILED>CONNECTING! CONNECTING>SUCCESS! "
     "SUCCESS>FAILED! FAILED>CONNECTING! CONNECTING>FAILED! "
     "info: check connectivity: success for QUrl('URL') payload 'the body' info: check connectivity: error "
     "for QUrl('URL') error: 'Error transferring URL - server replied: Scripted'"},
    {"no URL, nobody there, fails before it starts",
     "for (const url of ['', 'http://127.0.0.1:1', 'file:///missing']) { checker.url = url; check() }",
     "UNKNOWN>FAILED! FAILED>CONNECTING! CONNECTING>FAILED! FAILED>FAILED"},
    {"no manager; it takes the probe in flight with it",
     "check(); checker.startCheck(); deleteNetworkManager(); checker.startCheck(); log('error')",
     "UNKNOWN>SUCCESS! SUCCESS>FAILED! info: check connectivity: error for QUrl('URL') error: 'no reply'"},
    {"one probe in flight; it fails if TestOffline is set meanwhile",
     "checker.startCheck(); check(); log('pending'); checker.startCheck(); testOffline(true); check()",
     "UNKNOWN>SUCCESS! info: pending reply: QUrl('URL') FAILED>FAILED!"},
    {"appointment after a check",
     "for (const ms of [-1, 0, 7000]) { checker.scheduleTimeout = ms; check(); note(appointment()) }"
     "answer(404); check(); note(appointment())",
     "UNKNOWN>SUCCESS! -1 SUCCESS>SUCCESS -1 SUCCESS>SUCCESS 7000 SUCCESS>FAILED! 7000"},
    {"TestOffline sends nothing",
     "testOffline(true); note(checker.status); for (const ms of [-1, 0, 7000]) "
     "{ checker.scheduleTimeout = ms; check(); note(appointment()) } testOffline(false); check()",
     "2 FAILED>FAILED! 10000 FAILED>FAILED 10000 FAILED>FAILED 7000 FAILED>CONNECTING! CONNECTING>SUCCESS!"},
    {"appointments replace each other",
     "note(appointment()); checker.scheduleCheck(60000); checker.scheduleCheck(); note(appointment());"
     "checker.scheduleCheck(-7); note(appointment()); checker.scheduleCheck(1); awaitChange(); "
     "note(appointment())",
     "-1 1000 0 UNKNOWN>SUCCESS! -1"},
    {"appointments after changes of the network",
     "const taken = () => note(appointment() >= 1000); manager.checkConnectivity(); taken();"
     "for (const on of [true, false]) { configurations.onlineStateChanged(on); taken() }",
     "true true true"},
    {"they are spread",
     "const drawn = []; for (let i = 0; i < 500; ++i) { checker.checkConnectivity(); "
     "drawn.push(appointment()) }"
     "drawn.sort(); note([drawn[0] >= 1000, drawn[0] < 1100, new Set(drawn).size > 200, drawn[499] > 1900,"
     "drawn[499] < 2000])",
     "true,true,true,true,true"},
    {"loss of the network",
     "check(); for (const now of [1, -1, 0]) network.networkAccessibleChanged(now); log('not accessible')",
     "UNKNOWN>SUCCESS! SUCCESS>FAILED! "
     "info: Network not accessible, unable to access: QUrl('URL')"},
    {"follows the registry, once told to",
     "const plan = () => { note(checker.url); note(appointment()) }; urls.region = 'eu'; plan();"
     "useOXUrl('account', 'probe'); log('OXUrl'); plan(); urls.region = 'us'; plan();"
     "urls.environment = 'test'; plan(); checker.url = 'http://own.example';"
     "urls.environment = 'production'; plan()",
     "URL -1 info: OXUrlKey: 'account' Path: 'probe' https://account.example.com/base/probe -1 "
     "https://us.example.com/base//probe 1000 https://test.example.com/base/probe 1000 "
     "https://us.example.com/base//probe 1000"},
    {"signals changes only",
     "for (const name of ['url', 'timeout', 'scheduleTimeout']) checker[name + 'Changed'].connect(note);"
     "note(checker.timeout); note(checker.scheduleTimeout); for (const again of [false, true])"
     "{ checker.url = 'http://a.example'; checker.timeout = 5; checker.setScheduleTimeout() }"
     "note(appointment())",
     "10000 -1 http://a.example 5 10000 -1"},
    {"time-out", "check(); answer('hang'); checker.timeout = 250; check(); log('error')",
     "UNKNOWN>SUCCESS! SUCCESS>FAILED! info: check connectivity: error for QUrl('URL') error: 'Operation "
     "canceled'"},
    {"closed without an answer", "check(); answer('close'); check(); log('error')",
     "UNKNOWN>SUCCESS! SUCCESS>FAILED! info: check connectivity: error for QUrl('URL') error: 'Connection "
     "closed'"},
    {"keeps 1 MiB of the body", "answer('large'); check(); noteLength()", "UNKNOWN>SUCCESS! 1048576"},
    {"may be deleted when a status comes", "checker.statusReceived.connect(drop); check()",
     "UNKNOWN>SUCCESS"},
    {"may be deleted when the status changes",
     "checker.scheduleTimeout = 1; checker.statusChanged.connect(drop); check()", "UNKNOWN>SUCCESS!"},
    {"may be deleted when the URL changes",
     "useOXUrl('account', 'probe'); checker.urlChanged.connect(drop); urls.region = 'eu'", ""},
    {"may be deleted in flight; the probe ends in time",
     "answer('hang'); checker.timeout = 100; checker.startCheck(); deleteChecker()", "1 reply left"},
};

} // namespace

// What the scripts can do, and the journal of what came of it.
class Stage : public ScriptStage {
    Q_OBJECT

public:
    Stage()
    {
        NetworkManager *const manager = NetworkManager::instance();
        manager->initialize();
        OXUrls::instance()->initialize(QFINDTESTDATA("data/OlvexUrls.json"), OXUrls::DefaultEnvironment, {});
        m_checker = new Checker(this);
        m_checker->setUrl(m_server.url());
        show("checker", m_checker);
        show("urls", OXUrls::instance());
        show("manager", manager);
        show("network", manager->accessManager());
        show("configurations", manager->configurationManager());
        connect(m_checker, &Checker::statusReceived, this, [this](Checker::ConnectivityStatus status) {
            journal << m_checker->property("status").toString() + QLatin1Char('>')
                    + QVariant::fromValue(status).toString();
        });
        connect(m_checker, &Checker::statusChanged, this, [this] { journal.last() += QLatin1Char('!'); });
    }

    QString play(const QString &script)
    {
        return ScriptStage::play(script).replace(m_server.url().toString(), QStringLiteral("URL"));
    }

    // From now on, with this fault of the server or with a page of this status.
    Q_INVOKABLE void answer(const QString &name)
    {
        m_answer = name == QLatin1String("hang") ? Server::Answer{"", Server::Hang}
            : name == QLatin1String("close")     ? Server::Answer{"", Server::Close}
            : name == QLatin1String("large")     ? Server::page(QByteArray(3 << 20, 'z'))
                                                 : Server::page("the body", name.toInt(), "Location: /\r\n");
    }
    Q_INVOKABLE void check()
    {
        m_checker->startCheck();
        QTRY_COMPARE(repliesAlive(), 0);
    }
    // The milliseconds to the next check, which is cancelled; -1 if there is none.
    Q_INVOKABLE int appointment()
    {
        auto *const timer = m_checker->findChild<QTimer *>();
        const int result = timer->isActive() ? timer->interval() : -1;
        timer->stop();
        return result;
    }
    Q_INVOKABLE void drop() { delete m_checker; }
    Q_INVOKABLE void noteLength()
    {
        log(QStringLiteral("success"));
        journal << QString::number(journal.takeLast().count(QLatin1Char('z')));
    }
    Q_INVOKABLE void deleteChecker()
    {
        delete m_checker;
        journal << QStringLiteral("%1 reply left").arg(repliesAlive());
        QTRY_COMPARE(repliesAlive(), 0);
    }
    Q_INVOKABLE void deleteNetworkManager() { delete NetworkManager::instance(); }
    Q_INVOKABLE void awaitChange() { QSignalSpy(m_checker, &Checker::statusChanged).wait(); }
    Q_INVOKABLE void useOXUrl(const QString &key, const QString &path) { m_checker->useOXUrl(key, path); }
    Q_INVOKABLE void testOffline(bool value) { qApp->setProperty("TestOffline", value); }

private:
    Server::Answer m_answer = Server::page("the body");
    Server m_server{[this] { return m_answer; }};
    Checker *m_checker;
};

class tst_ConnectivityChecker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setLibraryPaths({}); } // no plug-ins: Qt watches no real network

    void cleanup()
    {
        qApp->setProperty("TestOffline", QVariant());
        QTRY_COMPARE(repliesAlive(), 0);
    }

    void plays_data() { addCases(scenarios); }
    void plays()
    {
        const auto &c = currentCase(scenarios);
        QCOMPARE(Stage().play(QString::fromLatin1(c.script)), QLatin1String(c.journal));
        QCOMPARE(QMetaType::type("ConnectivityStatus"), qMetaTypeId<Checker::ConnectivityStatus>());
    }
};

QTEST_GUILESS_MAIN(tst_ConnectivityChecker)
#include "tst_ConnectivityChecker.moc"
