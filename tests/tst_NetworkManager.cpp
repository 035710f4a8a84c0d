#include <NetworkManager.h>
#include <NetworkReplyTimeout.h>

#include "LogCapture.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <QtTest>

class tst_NetworkManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void belongsToTheApplication();
    void refusesRequestsBeforeInitialize();
    void initializeIsIdempotent();
    void updateAsksForChecks();
};

void tst_NetworkManager::init()
{
    delete NetworkManager::instance();
}

void tst_NetworkManager::belongsToTheApplication()
{
    NetworkManager *const manager = NetworkManager::instance();
    QCOMPARE(manager->parent(), QCoreApplication::instance());
    QCOMPARE(NetworkManager::Instance(), manager);
}

void tst_NetworkManager::refusesRequestsBeforeInitialize()
{
    const LogCapture capture;
    const QNetworkRequest request(QUrl(QStringLiteral("http://localhost/")));
    QVERIFY(!NetworkManager::httpGet(request));
    QVERIFY(!NetworkManager::httpPost(request, QByteArray()));
    NetworkManager::updateConfigurations();
    const QString warning = QStringLiteral("Olvex.NetworkManager.warning: Request before initialize: "
                                           "QUrl(\"http://localhost/\")");
    QCOMPARE(capture.lines(), QStringList({warning, warning}));
}

void tst_NetworkManager::initializeIsIdempotent()
{
    NetworkManager *const manager = NetworkManager::instance();
    QSignalSpy checks(manager, &NetworkManager::checkConnectivity);
    manager->initialize();
    const QObjectList managers = manager->children();
    QCOMPARE(managers.size(), 2);
    QVERIFY(managers.contains(manager->accessManager()));
    manager->initialize();
    QCOMPARE(manager->children(), managers);
    QCOMPARE(checks.count(), 0);
}

void tst_NetworkManager::updateAsksForChecks()
{
    NetworkManager::instance()->initialize();
    QSignalSpy checks(NetworkManager::instance(), &NetworkManager::checkConnectivity);
    NetworkManager::updateConfigurations();
    QCOMPARE(checks.count(), 1);
}

QTEST_GUILESS_MAIN(tst_NetworkManager)
#include "tst_NetworkManager.moc"
