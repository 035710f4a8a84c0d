#include <NetworkManager.h>

#include "Cases.h"
#include "LogCapture.h"
#include "ScriptedServer.h"

#include <QBuffer>
#include <QHttpMultiPart>
#include <QNetworkConfigurationManager>
#include <QNetworkReply>

#include <memory>

QT_WARNING_DISABLE_DEPRECATED

class tst_NetworkManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refusesRequestsBeforeInitialize()
    {
        const LogCapture log;
        QVERIFY(!NetworkManager::httpGet(QNetworkRequest(QUrl(QStringLiteral("http://localhost/")))));
        NetworkManager::updateConfigurations();
        QCOMPARE(log.lines().join(QLatin1Char(';')),
                 QLatin1String(
                     "Olvex.NetworkManager.warning: Request before initialize: QUrl(\"http://localhost/\")"));
    }

    void initializeIsIdempotent()
    {
        NetworkManager *const manager = NetworkManager::Instance();
        QCOMPARE(manager->parent(), QCoreApplication::instance());
        const QSignalSpy checks(manager, &NetworkManager::checkConnectivity);
        manager->initialize();
        QSignalSpy updates(manager->configurationManager(), &QNetworkConfigurationManager::updateCompleted);
        const QObjectList managers = manager->children();
        QCOMPARE(managers.size(), 2);
        manager->initialize();
        QCOMPARE(manager->children(), managers);
        QCOMPARE(checks.count(), 0);
        while (updates.wait(500)) { } // for what initialize() began
        updates.clear();
        NetworkManager::updateConfigurations();
        QCOMPARE(checks.count(), 1);
        QTRY_VERIFY(!updates.isEmpty());
    }

    void sendsRequestsUnchanged()
    {
        const ScriptedServer server([] { return ScriptedServer::page("answer"); });
        QNetworkRequest request(server.url("/path?q=1"));
        request.setRawHeader("X-Own", "kept");
        request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/plain"));
        QBuffer devices[2];
        QHttpMultiPart messages[2];
        for (int i = 0; i < 2; ++i) {
            devices[i].setData("device");
            devices[i].open(QIODevice::ReadOnly);
            QHttpPart part;
            part.setBody("part");
            messages[i].append(part);
        }

        const auto check = [&](QNetworkReply *reply, const QByteArray &method, const QByteArray &body) {
            const std::unique_ptr<QNetworkReply> owned(reply);
            QTRY_VERIFY(reply->isFinished());
            QCOMPARE(reply->readAll(), QByteArray("answer"));
            QVERIFY2(looksLike(server.lastRequest(), method + " /path?q=1 HTTP*X-Own: kept*\r\n\r\n" + body),
                     server.lastRequest());
            // To what has a body, Qt adds its length.
            QVERIFY(method != "GET" || reply->request() == request);
        };
        NetworkManager::instance()->initialize();
        QLoggingCategory::setFilterRules(QStringLiteral("Olvex.NetworkManager=true"));
        const LogCapture log;
        check(NetworkManager::httpGet(request), "GET", "");
        check(NetworkManager::httpPost(request, &devices[0]), "POST", "device");
        check(NetworkManager::httpPost(request, "bytes"), "POST", "bytes");
        check(NetworkManager::httpPost(request, &messages[0]), "POST", "part*");
        check(NetworkManager::httpPut(request, &devices[1]), "PUT", "device");
        check(NetworkManager::httpPut(request, "bytes"), "PUT", "bytes");
        check(NetworkManager::httpPut(request, &messages[1]), "PUT", "part*");
        QLoggingCategory::setFilterRules(QString());
        const QString line =
            QStringLiteral("Olvex.NetworkManager.debug: url: QUrl(\"%1\")\n").arg(request.url().toString());
        QCOMPARE(log.lines().join(QLatin1Char('\n')),
                 line.repeated(6) + QLatin1String("Olvex.NetworkManager.info: httpPut"));
    }
};

QTEST_GUILESS_MAIN(tst_NetworkManager)
#include "tst_NetworkManager.moc"
