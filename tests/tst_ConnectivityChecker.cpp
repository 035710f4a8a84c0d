#include <ConnectivityChecker.h>
#include <NetworkManager.h>
#include <OXUrls.h>

#include "LogCapture.h"
#include "ScriptedServer.h"

#include <QMetaMethod>
#include <QNetworkConfigurationManager>
#include <QNetworkReply>
#include <QTemporaryDir>
#include <QTimer>
#include <QtTest>

#include <functional>
#include <set>

QT_WARNING_DISABLE_DEPRECATED

using Checker = ConnectivityChecker;
using Server = ScriptedServer;
using Statuses = QList<Checker::ConnectivityStatus>;

Q_DECLARE_METATYPE(ScriptedServer::Script)
Q_DECLARE_METATYPE(Statuses)

namespace {

Statuses statuses(const QSignalSpy &spy)
{
    Statuses result;
    for (const QVariantList &arguments : spy)
        result << arguments.first().value<Checker::ConnectivityStatus>();
    return result;
}

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

} // namespace

class tst_ConnectivityChecker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void startsIdle();
    void judgesAnswers_data();
    void judgesAnswers();
    void failsAtOnce();
    void failsWithoutNetworkManager();
    void showsConnectingAfterFailureOnly();
    void keepsOneProbeInFlight();
    void logsThePayloadAndTheFirstError();
    void testOfflineSendsNothing();
    void testOfflineOverridesAnAnswer();
    void schedulesTheNextCheck();
    void scheduledCheckRuns();
    void replacesAppointments();
    void spreadsChecks();
    void reactsToTheNetwork();
    void losesTheNetwork();
    void followsTheRegistry();
    void settersSignalChangesOnly();
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

void tst_ConnectivityChecker::startsIdle()
{
    const Checker checker;
    QCOMPARE(checker.status(), Checker::UNKNOWN);
    QCOMPARE(checker.url(), QUrl());
    QCOMPARE(checker.timeout(), 10000);
    QCOMPARE(checker.scheduleTimeout(), -1);
    QVERIFY(!scheduleOf(checker)->isActive());
    QVERIFY(scheduleOf(checker)->isSingleShot());
    QCOMPARE(scheduleOf(checker)->interval(), 1000);
}

void tst_ConnectivityChecker::judgesAnswers_data()
{
    QTest::addColumn<Server::Script>("script");
    QTest::addColumn<Checker::ConnectivityStatus>("status");
    const auto good = Checker::SUCCESS;
    const auto bad = Checker::FAILED;
    QTest::newRow("page") << Server::page("ok") << good;
    QTest::newRow("empty page") << Server::page("", 204) << good;
    QTest::newRow("error page without a network error") << Server::page("<h1>Error</h1>") << good;
    QTest::newRow("large body") << Server::page(QByteArray(20 * 1024 * 1024, 'l')) << good;
    QTest::newRow("redirect, not followed") << Server::redirect("/elsewhere") << good;
    QTest::newRow("redirect loop") << Server::redirect("/") << good;
    QTest::newRow("not found") << Server::page("no", 404) << bad;
    QTest::newRow("server error") << Server::page("oops", 500) << bad;
    QTest::newRow("unavailable") << Server::page("", 503) << bad;
    QTest::newRow("hang") << Server::hang() << bad;
    QTest::newRow("hang in body") << Server::hangInBody() << bad;
    QTest::newRow("drip") << Server::drip(10000, 5) << bad;
    QTest::newRow("endless header") << Server::endlessHeader(1000) << bad;
    QTest::newRow("close at once") << Server::closeAtOnce() << bad;
    QTest::newRow("close in header") << Server::closeInHeader() << bad;
    QTest::newRow("close in body") << Server::closeInBody() << bad;
    QTest::newRow("half close") << Server::halfClose() << bad;
    QTest::newRow("half close in body") << Server::halfCloseInBody() << bad;
    QTest::newRow("reset") << Server::reset() << bad;
    QTest::newRow("reset in body") << Server::resetInBody() << bad;
    QTest::newRow("garbage") << Server::garbage() << bad;
}

// Every answer ends in one status, and only one, whatever the server does afterwards.
void tst_ConnectivityChecker::judgesAnswers()
{
    QFETCH(Server::Script, script);
    QFETCH(Checker::ConnectivityStatus, status);
    Server server([&script](const Server::Request &) { return script; });
    Checker checker;
    checker.setUrl(server.url());
    checker.setTimeout(status == Checker::FAILED ? 250 : 10000);
    QSignalSpy received(&checker, &Checker::statusReceived);
    QSignalSpy changed(&checker, &Checker::statusChanged);
    connect(&checker, &Checker::statusReceived, this,
            [&checker] { QCOMPARE(checker.status(), Checker::UNKNOWN); }); // not stored yet
    checker.startCheck();
    QCOMPARE(checker.status(), Checker::UNKNOWN);
    QVERIFY(received.wait(20000));
    QCOMPARE(checker.status(), status);
    QTRY_COMPARE(repliesAlive(), 0);
    QCOMPARE(statuses(received), Statuses{status});
    QCOMPARE(statuses(changed), Statuses{status});
    QVERIFY(!scheduleOf(checker)->isActive());
}

void tst_ConnectivityChecker::failsAtOnce()
{
    const struct {
        const char *url;
        int timeout;
    } cases[] = {
        {"file:///missing/file", 10000}, // fails before it starts
        {"", 10000},
        {"gopher://localhost/", 10000},
        {"http:///", 10000},
        {"http://127.0.0.1:1/", 10000}, // nobody listens
        {"http://127.0.0.1:1/", 0},
        {"http://127.0.0.1:1/", -1},
    };
    for (const auto &c : cases) {
        Checker checker;
        checker.setUrl(QUrl(text(c.url)));
        checker.setTimeout(c.timeout);
        QSignalSpy received(&checker, &Checker::statusReceived);
        checker.startCheck();
        QTRY_COMPARE(checker.status(), Checker::FAILED);
        QTRY_COMPARE(repliesAlive(), 0);
        QCOMPARE(statuses(received), Statuses{Checker::FAILED});
    }
}

// The manager and the probe in flight die with it; the next check finds no manager.
void tst_ConnectivityChecker::failsWithoutNetworkManager()
{
    Server server([](const Server::Request &) { return Server::hang(); });
    Checker checker;
    checker.setUrl(server.url());
    checker.startCheck();
    QTRY_COMPARE(server.requests().size(), 1);
    delete NetworkManager::instance();
    QSignalSpy received(&checker, &Checker::statusReceived);
    checker.startCheck();
    QCOMPARE(statuses(received), Statuses{Checker::FAILED});
}

void tst_ConnectivityChecker::showsConnectingAfterFailureOnly()
{
    int status = 500;
    Server server([&status](const Server::Request &) { return Server::page("", status); });
    Checker checker;
    checker.setUrl(server.url());
    QSignalSpy received(&checker, &Checker::statusReceived);
    QSignalSpy changed(&checker, &Checker::statusChanged);
    const auto check = [&](int answer, int signalsAfter) {
        status = answer;
        checker.startCheck();
        QTRY_COMPARE(received.count(), signalsAfter);
    };
    check(500, 1);
    check(500, 3);
    check(200, 5);
    check(200, 6);
    QCOMPARE(statuses(received),
             (Statuses{Checker::FAILED, Checker::CONNECTING, Checker::FAILED, Checker::CONNECTING,
                       Checker::SUCCESS, Checker::SUCCESS}));
    QCOMPARE(statuses(changed), statuses(received).mid(0, 5));
}

void tst_ConnectivityChecker::keepsOneProbeInFlight()
{
    Server server([](const Server::Request &) {
        return Server::Script{{Server::Step::Pause, {}, 20}} + Server::page("");
    });
    Checker checker;
    checker.setUrl(server.url());
    checker.startCheck();
    checker.startCheck();
    QCOMPARE(repliesAlive(), 1);
    QVERIFY(m_capture->contains(text("pending reply: QUrl(\"%1\")").arg(server.url().toString())));
    QTRY_COMPARE(checker.status(), Checker::SUCCESS);
    QCOMPARE(server.requests().size(), 1);
}

void tst_ConnectivityChecker::logsThePayloadAndTheFirstError()
{
    QVector<int> answers{500, 200, 404, 404};
    Server server(
        [&answers](const Server::Request &) { return Server::page("the body", answers.takeFirst()); });
    Checker checker;
    checker.setUrl(server.url());
    QSignalSpy received(&checker, &Checker::statusReceived);
    for (const int signalsAfter : {1, 3, 4, 6}) {
        checker.startCheck();
        QTRY_COMPARE(received.count(), signalsAfter);
    }
    const QStringList errors = m_capture->lines().filter(text("check connectivity: error for"));
    QCOMPARE(errors.size(), 1);
    QVERIFY(errors.first().startsWith(text("Olvex.ConnectivityChecker.info: ")));
    QVERIFY(errors.first().contains(text("error: \"Error transferring")));
    QVERIFY(m_capture->contains(text("check connectivity: success for QUrl(\"%1\") payload \"the body\"")
                                    .arg(server.url().toString())));
}

void tst_ConnectivityChecker::testOfflineSendsNothing()
{
    qApp->setProperty("TestOffline", true);
    const struct {
        int scheduleTimeout;
        int delay;
    } cases[] = {{-1, 10000}, {0, 10000}, {70, 70}};
    for (const auto &c : cases) {
        Checker checker;
        checker.setScheduleTimeout(c.scheduleTimeout);
        QSignalSpy received(&checker, &Checker::statusReceived);
        QCOMPARE(checker.property("status"), QVariant::fromValue(Checker::FAILED)); // whatever is stored
        QCOMPARE(received.count(), 0);
        checker.startCheck();
        QCOMPARE(statuses(received), Statuses{Checker::FAILED});
        QCOMPARE(repliesAlive(), 0);
        QVERIFY(scheduleOf(checker)->isActive());
        QCOMPARE(scheduleOf(checker)->interval(), c.delay);
    }
}

void tst_ConnectivityChecker::testOfflineOverridesAnAnswer()
{
    Server server([](const Server::Request &) { return Server::page(""); });
    Checker checker;
    checker.setUrl(server.url());
    QSignalSpy received(&checker, &Checker::statusReceived);
    checker.startCheck();
    qApp->setProperty("TestOffline", true);
    QVERIFY(received.wait());
    QCOMPARE(statuses(received), Statuses{Checker::FAILED});
}

void tst_ConnectivityChecker::schedulesTheNextCheck()
{
    int httpStatus = 0;
    Server server([&httpStatus](const Server::Request &) { return Server::page("", httpStatus); });
    for (const int scheduleTimeout : {60000, 0, -1}) {
        for (const int answer : {200, 500}) {
            httpStatus = answer;
            Checker checker;
            checker.setUrl(server.url());
            checker.setScheduleTimeout(scheduleTimeout);
            QVERIFY(!scheduleOf(checker)->isActive());
            QSignalSpy received(&checker, &Checker::statusReceived);
            checker.startCheck();
            QVERIFY(received.wait());
            QCOMPARE(scheduleOf(checker)->isActive(), scheduleTimeout > 0);
            QCOMPARE(scheduleOf(checker)->interval(), scheduleTimeout > 0 ? scheduleTimeout : 1000);
        }
    }
}

void tst_ConnectivityChecker::scheduledCheckRuns()
{
    Server server([](const Server::Request &) { return Server::page(""); });
    Checker checker;
    checker.setUrl(server.url());
    checker.setScheduleTimeout(1);
    checker.scheduleCheck(1);
    QTRY_VERIFY(server.requests().size() >= 3);
}

void tst_ConnectivityChecker::replacesAppointments()
{
    Checker checker;
    checker.scheduleCheck(60000);
    QVERIFY(QMetaObject::invokeMethod(&checker, "scheduleCheck"));
    QCOMPARE(scheduleOf(checker)->interval(), 1000);
    checker.scheduleCheck(-7);
    QCOMPARE(scheduleOf(checker)->interval(), 0);
    QCOMPARE(checker.findChildren<QTimer *>().size(), 1);
}

void tst_ConnectivityChecker::spreadsChecks()
{
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

void tst_ConnectivityChecker::reactsToTheNetwork()
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
        QVERIFY(scheduleOf(checker)->interval() >= 1000 && scheduleOf(checker)->interval() <= 1999);
    }
}

void tst_ConnectivityChecker::losesTheNetwork()
{
    using Access = QNetworkAccessManager;
    Server server([](const Server::Request &) { return Server::page(""); });
    Checker checker;
    checker.setUrl(server.url());
    checker.startCheck();
    QTRY_COMPARE(checker.status(), Checker::SUCCESS);

    QSignalSpy received(&checker, &Checker::statusReceived);
    Access *const manager = NetworkManager::instance()->accessManager();
    hearPlatform(true);
    for (const Access::NetworkAccessibility value :
         {Access::Accessible, Access::UnknownAccessibility, Access::NotAccessible, Access::NotAccessible})
        Q_EMIT manager->networkAccessibleChanged(value);
    hearPlatform(false);
    QCOMPARE(statuses(received), (Statuses{Checker::FAILED, Checker::FAILED}));
    QCOMPARE(m_capture->texts().filter(text("Network not accessible, unable to access: QUrl(")).size(), 1);
}

void tst_ConnectivityChecker::followsTheRegistry()
{
    const QTemporaryDir directory;
    QFile file(directory.filePath(text("urls.json")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(R"({"environment":{"production":{"a":{"baseUrl":"http://p.example/b","urlQuery":{"q":1},
        "regions":{"eu":{"baseUrl":"http://eu.example/b"}}}},"test":{"a":{"baseUrl":"http://t.example/b"}}}})");
    file.close();
    OXUrls::instance()->initialize(file.fileName(), text("production"), QString());

    Checker fixed;
    fixed.setUrl(QUrl(text("http://fixed.example")));
    Checker checker;
    checker.useOXUrl(text("a"), text("probe"));
    QCOMPARE(checker.url(), QUrl(text("http://p.example/b/probe")));
    QVERIFY(!scheduleOf(checker)->isActive());
    QVERIFY(m_capture->contains(text("OXUrlKey: \"a\" Path: \"probe\"")));

    const auto followed = [&](const char *url) {
        const bool result = checker.url() == QUrl(text(url)) && scheduleOf(checker)->isActive()
            && scheduleOf(checker)->interval() == 1000;
        scheduleOf(checker)->stop();
        return result;
    };
    OXUrls::instance()->setRegion(text("eu"));
    QVERIFY(followed("http://eu.example/b/probe"));
    OXUrls::instance()->setEnvironment(text("test"));
    QVERIFY(followed("http://t.example/b/probe"));
    checker.setUrl(QUrl(text("http://own.example"))); // the key stays in force
    OXUrls::instance()->setEnvironment(text("production"));
    QVERIFY(followed("http://eu.example/b/probe"));
    QCOMPARE(fixed.url(), QUrl(text("http://fixed.example")));
    QVERIFY(!scheduleOf(fixed)->isActive());
}

void tst_ConnectivityChecker::settersSignalChangesOnly()
{
    Checker checker;
    QSignalSpy urls(&checker, &Checker::urlChanged);
    QSignalSpy timeouts(&checker, &Checker::timeoutChanged);
    QSignalSpy schedules(&checker, &Checker::scheduleTimeoutChanged);
    for (int i = 0; i < 2; ++i) {
        checker.setUrl(QUrl(text("http://a.example")));
        checker.setTimeout(5);
        QVERIFY(QMetaObject::invokeMethod(&checker, "setScheduleTimeout"));
    }
    checker.setUrl(QUrl());
    QCOMPARE(urls.count(), 2);
    QCOMPARE(urls.first().first(), QVariant(QUrl(text("http://a.example"))));
    QCOMPARE(QList<QVariantList>(timeouts), (QList<QVariantList>{{5}}));
    QCOMPARE(QList<QVariantList>(schedules), (QList<QVariantList>{{10000}}));
    QVERIFY(!scheduleOf(checker)->isActive());
}

// The probe is not aborted, and cleanup() sees that nothing of it is left.
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
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        methods << QString::fromLatin1(method.methodSignature() + ' ' + method.parameterNames().value(0));
        if (method.access() == QMetaMethod::Private)
            methods.last() += text(" private");
    }
    QCOMPARE(methods.join(QLatin1Char('\n')),
             text("statusChanged(ConnectivityStatus) a_NewState\n"
                  "statusReceived(ConnectivityStatus) a_NewState\n"
                  "urlChanged(QUrl) a_NewUrl\n"
                  "timeoutChanged(int) a_NewTimeout\n"
                  "scheduleTimeoutChanged(int) scheduleTimeout\n"
                  "startCheck() \n"
                  "scheduleCheck(int) a_Timeout\n"
                  "scheduleCheck() \n"
                  "setScheduleTimeout(int) a_Timeout\n"
                  "setScheduleTimeout() \n"
                  "checkConnectivity() \n"
                  "checkFinished()  private\n"
                  "networkAccessibleChanged(QNetworkAccessManager::NetworkAccessibility) accessible private\n"
                  "onOXUrlsEnvironmentChanged(QString) environment private\n"
                  "onOXUrlsRegionChanged(QString) region private"));
    QStringList properties;
    for (int i = meta.propertyOffset(); i < meta.propertyCount(); ++i)
        properties << text(meta.property(i).name()) + text(meta.property(i).isWritable() ? " rw" : " r");
    QCOMPARE(properties.join(QLatin1Char(',')), text("status r,url rw,timeout rw,scheduleTimeout rw"));
    QCOMPARE(QMetaType::type("ConnectivityStatus"), qMetaTypeId<Checker::ConnectivityStatus>());
}

QTEST_GUILESS_MAIN(tst_ConnectivityChecker)
#include "tst_ConnectivityChecker.moc"
