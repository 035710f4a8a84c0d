#include <ConnectivityChecker.h>
#include <NetworkManager.h>
#include <OXUrls.h>

#include "Cases.h"
#include "LogCapture.h"
#include "ScriptedServer.h"

#include <QMetaMethod>
#include <QNetworkConfigurationManager>
#include <QNetworkReply>
#include <QTimer>

#include <functional>
#include <set>

QT_WARNING_DISABLE_DEPRECATED

using Checker = ConnectivityChecker;
using Server = ScriptedServer;
using Statuses = QList<Checker::ConnectivityStatus>;

namespace {

QTimer *scheduleOf(const Checker &checker)
{
    return checker.findChild<QTimer *>();
}

int repliesAlive()
{
    return NetworkManager::instance()->findChildren<QNetworkReply *>().size();
}

// Whether the real network of the machine is heard; while it is, its events may come at any time.
void hearPlatform(bool heard)
{
    NetworkManager::instance()->accessManager()->blockSignals(!heard);
    NetworkManager::instance()->configurationManager()->blockSignals(!heard);
}

QString text(const char *latin1)
{
    return QString::fromLatin1(latin1);
}

struct Spy : QSignalSpy {
    using QSignalSpy::QSignalSpy;
    Statuses statuses() const
    {
        Statuses result;
        for (const QVariantList &arguments : *this)
            result << arguments.first().value<Checker::ConnectivityStatus>();
        return result;
    }
};

// A checker and the server that it asks.
struct Probe {
    explicit Probe(const Server::Handler &handler) : server(handler) { checker.setUrl(server.url()); }

    Server server;
    Checker checker;
    Spy received{&checker, &Checker::statusReceived};
    Spy changed{&checker, &Checker::statusChanged};
};

const struct {
    const char *name;
    Server::Script (*script)();
    Checker::ConnectivityStatus status;
    const char *url = nullptr; // instead of the server's
} answers[] = {
    {"page", [] { return Server::page("ok"); }, Checker::SUCCESS},
    {"large body", [] { return Server::page(QByteArray(20 << 20, 'l')); }, Checker::SUCCESS},
    {"redirect loop, not followed", [] { return Server::redirect("/"); }, Checker::SUCCESS},
    {"not found", [] { return Server::page("no", 404); }, Checker::FAILED},
    {"hang", Server::hang, Checker::FAILED},
    {"hang in body", Server::hangInBody, Checker::FAILED},
    {"drip", [] { return Server::drip(10000, 5); }, Checker::FAILED},
    {"endless header", [] { return Server::endlessHeader(1000); }, Checker::FAILED},
    {"close at once", Server::closeAtOnce, Checker::FAILED},
    {"close in body", Server::closeInBody, Checker::FAILED},
    {"half close", Server::halfClose, Checker::FAILED},
    {"reset", Server::reset, Checker::FAILED},
    {"reset in body", Server::resetInBody, Checker::FAILED},
    {"garbage", Server::garbage, Checker::FAILED},
    {"nobody listens", Server::hang, Checker::FAILED, "http://127.0.0.1:1/"},
    {"fails before it starts", Server::hang, Checker::FAILED, "file:///missing/file"},
    {"no URL", Server::hang, Checker::FAILED, ""},
    {"unknown scheme", Server::hang, Checker::FAILED, "gopher://localhost/"},
};

} // namespace

class tst_ConnectivityChecker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void judgesAnswers_data() { addCases(answers); }
    void judgesAnswers();
    void failsWithoutNetworkManager();
    void showsConnectingAfterFailureOnly();
    void keepsOneProbeInFlight();
    void testOfflineSendsNothing();
    void schedulesChecks();
    void spreadsChecks();
    void losesTheNetwork();
    void followsTheRegistry();
    void startsIdleAndSignalsChangesOnly();
    void mayBeDeletedInFlight();
    void listsItsInterfaceInOrder();

private:
    std::unique_ptr<LogCapture> m_capture;
};

void tst_ConnectivityChecker::init()
{
    delete OXUrls::instance();
    m_capture = std::make_unique<LogCapture>();
    NetworkManager::instance()->initialize();
    hearPlatform(false);
}

void tst_ConnectivityChecker::cleanup()
{
    qApp->setProperty("TestOffline", QVariant());
    m_capture.reset();
    QTRY_COMPARE(repliesAlive(), 0);
}

// Every answer ends in one status, and only one, whatever the server does afterwards.
void tst_ConnectivityChecker::judgesAnswers()
{
    const auto &c = currentCase(answers);
    Probe probe([&c](const Server::Request &) { return c.script(); });
    const Checker &checker = probe.checker;
    if (c.url)
        probe.checker.setUrl(QUrl(text(c.url)));
    probe.checker.setTimeout(c.status == Checker::FAILED ? 250 : 10000);
    probe.checker.setScheduleTimeout(60000);
    connect(&checker, &Checker::statusReceived, this,
            [&checker] { QCOMPARE(checker.status(), Checker::UNKNOWN); }); // not stored yet
    probe.checker.startCheck();
    QTRY_COMPARE_WITH_TIMEOUT(checker.status(), c.status, 20000);
    QTRY_COMPARE(repliesAlive(), 0);
    QCOMPARE(probe.received.statuses(), Statuses{c.status});
    QCOMPARE(probe.changed.statuses(), Statuses{c.status});
    QVERIFY(scheduleOf(checker)->isActive());
    QCOMPARE(scheduleOf(checker)->interval(), 60000);
}

// The manager and the probe in flight die with it; the next check finds no manager.
void tst_ConnectivityChecker::failsWithoutNetworkManager()
{
    Probe probe([](const Server::Request &) { return Server::hang(); });
    probe.checker.startCheck();
    QTRY_COMPARE(probe.server.requests().size(), 1);
    delete NetworkManager::instance();
    const int before = probe.received.count();
    probe.checker.startCheck();
    QCOMPARE(probe.received.statuses().mid(before), Statuses{Checker::FAILED});
}

// And logs every payload, but only the first error.
void tst_ConnectivityChecker::showsConnectingAfterFailureOnly()
{
    int answer = 0;
    Probe probe([&answer](const Server::Request &) { return Server::page("the body", answer); });
    const struct {
        int answer, scheduleTimeout, signalsAfter;
    } checks[] = {{500, -1, 1}, {500, 0, 3}, {200, -1, 5}, {200, 0, 6}, {404, 0, 7}, {404, 0, 9}};
    for (const auto &check : checks) {
        answer = check.answer;
        probe.checker.setScheduleTimeout(check.scheduleTimeout);
        probe.checker.startCheck();
        QTRY_COMPARE(probe.received.count(), check.signalsAfter);
        QVERIFY(!scheduleOf(probe.checker)->isActive());
    }
    Statuses expected{Checker::FAILED,     Checker::CONNECTING, Checker::FAILED,
                      Checker::CONNECTING, Checker::SUCCESS,    Checker::SUCCESS,
                      Checker::FAILED,     Checker::CONNECTING, Checker::FAILED};
    QCOMPARE(probe.received.statuses(), expected);
    expected.removeAt(5);
    QCOMPARE(probe.changed.statuses(), expected);

    const QStringList errors = m_capture->lines().filter(text("check connectivity: error for"));
    QCOMPARE(errors.size(), 1);
    QVERIFY(errors.first().startsWith(text("Olvex.ConnectivityChecker.info: ")));
    QVERIFY(errors.first().contains(text("error: \"Error transferring")));
    QVERIFY(m_capture->contains(text("check connectivity: success for QUrl(\"%1\") payload \"the body\"")
                                    .arg(probe.server.url().toString())));
}

// Also one that succeeds after "TestOffline" was set.
void tst_ConnectivityChecker::keepsOneProbeInFlight()
{
    for (const auto status : {Checker::SUCCESS, Checker::FAILED}) {
        Probe probe([](const Server::Request &) { return Server::page(""); });
        probe.checker.startCheck();
        probe.checker.startCheck();
        QCOMPARE(repliesAlive(), 1);
        const QString url = probe.server.url().toString();
        QVERIFY(m_capture->contains(text("pending reply: QUrl(\"%1\")").arg(url)));
        qApp->setProperty("TestOffline", status == Checker::FAILED);
        QVERIFY(probe.received.wait());
        QCOMPARE(probe.received.statuses(), Statuses{status});
        QCOMPARE(probe.server.requests().size(), 1);
        QTRY_COMPARE(repliesAlive(), 0);
    }
}

void tst_ConnectivityChecker::testOfflineSendsNothing()
{
    qApp->setProperty("TestOffline", true);
    for (const int scheduleTimeout : {-1, 0, 70}) {
        Checker checker;
        checker.setScheduleTimeout(scheduleTimeout);
        const Spy received(&checker, &Checker::statusReceived);
        QCOMPARE(checker.property("status"), QVariant::fromValue(Checker::FAILED)); // whatever is stored
        QCOMPARE(received.count(), 0);
        checker.startCheck();
        QCOMPARE(received.statuses(), Statuses{Checker::FAILED});
        QCOMPARE(repliesAlive(), 0);
        QVERIFY(scheduleOf(checker)->isActive());
        QCOMPARE(scheduleOf(checker)->interval(), scheduleTimeout > 0 ? scheduleTimeout : 10000);
    }
}

void tst_ConnectivityChecker::schedulesChecks()
{
    Probe probe([](const Server::Request &) { return Server::page(""); });
    const QTimer *const schedule = scheduleOf(probe.checker);
    probe.checker.scheduleCheck(60000);
    QVERIFY(QMetaObject::invokeMethod(&probe.checker, "scheduleCheck"));
    QCOMPARE(schedule->interval(), 1000);
    probe.checker.scheduleCheck(-7);
    QCOMPARE(schedule->interval(), 0);
    QCOMPARE(probe.checker.findChildren<QTimer *>().size(), 1);
    probe.checker.setScheduleTimeout(1);
    QTRY_VERIFY(probe.server.requests().size() >= 3);
}

void tst_ConnectivityChecker::spreadsChecks()
{
    NetworkManager *const network = NetworkManager::instance();
    const std::function<void()> triggers[] = {
        [=] { network->startCheckConnectivity(); },
        [] { NetworkManager::updateConfigurations(); },
        [=] { Q_EMIT network->configurationManager()->onlineStateChanged(true); },
        [=] { Q_EMIT network->configurationManager()->onlineStateChanged(false); },
    };
    for (const auto &trigger : triggers) {
        const Checker checker;
        hearPlatform(true);
        trigger();
        hearPlatform(false);
        QVERIFY(scheduleOf(checker)->isActive());
    }
    Checker checker;
    std::set<int> delays;
    for (int i = 0; i < 500; ++i) {
        checker.checkConnectivity();
        delays.insert(scheduleOf(checker)->interval());
    }
    QVERIFY(*delays.begin() >= 1000 && *delays.begin() < 1100);
    QVERIFY(*delays.rbegin() <= 1999 && *delays.rbegin() > 1900);
    QVERIFY(delays.size() > 200);
}

void tst_ConnectivityChecker::losesTheNetwork()
{
    using Access = QNetworkAccessManager;
    Probe probe([](const Server::Request &) { return Server::page(""); });
    probe.checker.startCheck();
    QTRY_COMPARE(probe.checker.status(), Checker::SUCCESS);
    hearPlatform(true);
    for (const auto value :
         {Access::Accessible, Access::UnknownAccessibility, Access::NotAccessible, Access::NotAccessible})
        Q_EMIT NetworkManager::instance()->accessManager()->networkAccessibleChanged(value);
    hearPlatform(false);
    QCOMPARE(probe.received.statuses(), (Statuses{Checker::SUCCESS, Checker::FAILED, Checker::FAILED}));
    QCOMPARE(m_capture->texts().filter(text("Network not accessible, unable to access: QUrl(")).size(), 1);
}

void tst_ConnectivityChecker::followsTheRegistry()
{
    OXUrls *const urls = OXUrls::instance();
    urls->initialize(QFINDTESTDATA("data/OlvexUrls.json"), text("production"), QString());
    Checker fixed;
    fixed.setUrl(QUrl(text("http://fixed.example")));
    Checker checker;
    checker.useOXUrl(text("account"), text("probe"));
    QCOMPARE(checker.url(), QUrl(text("https://account.example.com/base/probe")));
    QVERIFY(!scheduleOf(checker)->isActive());
    QVERIFY(m_capture->contains(text("OXUrlKey: \"account\" Path: \"probe\"")));

    const auto followed = [&](const char *url) {
        const bool scheduled = scheduleOf(checker)->isActive() && scheduleOf(checker)->interval() == 1000;
        scheduleOf(checker)->stop();
        return scheduled && checker.url() == QUrl(text(url));
    };
    urls->setRegion(text("us"));
    QVERIFY(followed("https://us.example.com/base//probe"));
    urls->setEnvironment(text("test"));
    QVERIFY(followed("https://test.example.com/base/probe"));
    checker.setUrl(QUrl(text("http://own.example"))); // the key stays in force
    urls->setEnvironment(text("production"));
    QVERIFY(followed("https://us.example.com/base//probe"));
    QCOMPARE(fixed.url(), QUrl(text("http://fixed.example")));
    QVERIFY(!scheduleOf(fixed)->isActive());
}

void tst_ConnectivityChecker::startsIdleAndSignalsChangesOnly()
{
    Checker checker;
    const QSignalSpy urls(&checker, &Checker::urlChanged);
    const QSignalSpy timeouts(&checker, &Checker::timeoutChanged);
    const QSignalSpy schedules(&checker, &Checker::scheduleTimeoutChanged);
    QCOMPARE(checker.status(), Checker::UNKNOWN);
    QCOMPARE(checker.url(), QUrl());
    QCOMPARE(checker.timeout(), 10000);
    QCOMPARE(checker.scheduleTimeout(), -1);
    QCOMPARE(scheduleOf(checker)->interval(), 1000);
    QVERIFY(scheduleOf(checker)->isSingleShot());
    const QUrl url(text("http://a.example"));
    for (int i = 0; i < 2; ++i) {
        checker.setUrl(url);
        checker.setTimeout(5);
        QVERIFY(QMetaObject::invokeMethod(&checker, "setScheduleTimeout"));
    }
    checker.setUrl(QUrl());
    QCOMPARE(QList<QVariantList>(urls), (QList<QVariantList>{{url}, {QUrl()}}));
    QCOMPARE(QList<QVariantList>(timeouts), (QList<QVariantList>{{5}}));
    QCOMPARE(QList<QVariantList>(schedules), (QList<QVariantList>{{10000}}));
    QVERIFY(!scheduleOf(checker)->isActive());
}

// The probe is not aborted, and nothing of it is left.
void tst_ConnectivityChecker::mayBeDeletedInFlight()
{
    for (const Server::Script &script : {Server::page("late"), Server::hang()}) {
        const Server server([&script](const Server::Request &) { return script; });
        auto checker = std::make_unique<Checker>();
        checker->setUrl(server.url());
        checker->setTimeout(100);
        checker->startCheck();
        checker.reset();
        QCOMPARE(repliesAlive(), 1);
        QTRY_COMPARE(server.requests().size(), 1);
        QTRY_COMPARE(repliesAlive(), 0);
    }
}

void tst_ConnectivityChecker::listsItsInterfaceInOrder()
{
    const QMetaObject &meta = Checker::staticMetaObject;
    QStringList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i)
        names << text(meta.method(i).methodSignature() + ' ' + meta.method(i).parameterNames().value(0));
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        names << text(meta.property(i).name()) + text(meta.property(i).isWritable() ? " rw" : " r");
    QCOMPARE(
        names.join(text("; ")),
        text("statusChanged(ConnectivityStatus) a_NewState; statusReceived(ConnectivityStatus) a_NewState; "
             "urlChanged(QUrl) a_NewUrl; timeoutChanged(int) a_NewTimeout; "
             "scheduleTimeoutChanged(int) scheduleTimeout; "
             "startCheck() ; scheduleCheck(int) a_Timeout; scheduleCheck() ; "
             "setScheduleTimeout(int) a_Timeout; setScheduleTimeout() ; checkConnectivity() ; "
             "checkFinished() ; networkAccessibleChanged(QNetworkAccessManager::NetworkAccessibility) "
             "accessible; onOXUrlsEnvironmentChanged(QString) environment; "
             "onOXUrlsRegionChanged(QString) region; "
             "status r; url rw; timeout rw; scheduleTimeout rw"));
    QCOMPARE(QMetaType::type("ConnectivityStatus"), qMetaTypeId<Checker::ConnectivityStatus>());
}

QTEST_GUILESS_MAIN(tst_ConnectivityChecker)
#include "tst_ConnectivityChecker.moc"
