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

// What the scripts can do, and the journal of what came of it.
class Stage : public ScriptStage {
    Q_OBJECT

public:
    Stage()
    {
        NetworkManager *const manager = NetworkManager::instance();
        manager->initialize();
        OXUrls::instance()->initialize(QFINDTESTDATA("data/OlvexUrls.json"), OXUrls::DefaultEnvironment, {});
        testOffline(false);
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

    QString url() const { return m_server.url().toString(); }

    // From now on.
    Q_INVOKABLE void answer(int status, const QString &body = text("the body"))
    {
        m_answer = ScriptedServer::page(body.toLatin1(), status, "Location: /\r\n");
    }
    Q_INVOKABLE void answerNothing(bool close)
    {
        m_answer = {"", close ? ScriptedServer::Close : ScriptedServer::Hang};
    }
    Q_INVOKABLE int replies() const
    {
        return NetworkManager::instance()->findChildren<QNetworkReply *>().size();
    }
    Q_INVOKABLE void awaitReplies() { QTRY_COMPARE(replies(), 0); }
    Q_INVOKABLE void awaitChange() { QSignalSpy(m_checker, &Checker::statusChanged).wait(); }
    // The milliseconds to the next check, which is cancelled; -1 if there is none.
    Q_INVOKABLE int appointment()
    {
        auto *const timer = m_checker->findChild<QTimer *>();
        const int result = timer->isActive() ? timer->interval() : -1;
        timer->stop();
        return result;
    }
    Q_INVOKABLE void useOXUrl(const QString &key, const QString &path) { m_checker->useOXUrl(key, path); }
    Q_INVOKABLE void testOffline(bool value) { qApp->setProperty("TestOffline", value); }

private:
    ScriptedServer::Answer m_answer = ScriptedServer::page("the body");
    ScriptedServer m_server{[this] { return m_answer; }};
    Checker *m_checker;
};

class tst_ConnectivityChecker : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QCoreApplication::setLibraryPaths({}); } // no plug-ins: Qt watches no real network

    void plays_data() { ScriptStage::addScripts(QFINDTESTDATA("data/connectivity.txt")); }
    void plays()
    {
        QFETCH(QString, script);
        QFETCH(QString, journal);
        Stage stage;
        QCOMPARE(stage.play(script), journal.replace(text("URL"), stage.url()));
        QCOMPARE(QMetaType::type("ConnectivityStatus"), qMetaTypeId<Checker::ConnectivityStatus>());
    }
};

QTEST_GUILESS_MAIN(tst_ConnectivityChecker)
#include "tst_ConnectivityChecker.moc"
