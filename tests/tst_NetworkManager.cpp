#include <NetworkManager.h>

#include "LogCapture.h"
#include "ScriptedServer.h"

#include <QBuffer>
#include <QHttpMultiPart>
#include <QNetworkReply>
#include <QtTest>

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
        const QObjectList managers = manager->children();
        QCOMPARE(managers.size(), 2);
        manager->initialize();
        QCOMPARE(manager->children(), managers);
        QCOMPARE(checks.count(), 0);
        NetworkManager::updateConfigurations();
        QCOMPARE(checks.count(), 1);
    }

    void sendsRequestsUnchanged()
    {
        QStringList received;
        const ScriptedServer server([&] {
            // Method, address, own header, and the body, which of a multi-part message is its last part.
            static const QRegularExpression pattern(
                QStringLiteral("^(.*) HTTP.*X-Own: (\\w+).*\r\n\r\n(\\w*)"),
                QRegularExpression::DotMatchesEverythingOption);
            received += pattern.match(QString::fromLatin1(server.lastRequest()))
                            .capturedTexts()
                            .mid(1)
                            .join(QLatin1Char(' '));
            return ScriptedServer::page("answer");
        });
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

        NetworkManager::instance()->initialize();
        QLoggingCategory::setFilterRules(QStringLiteral("Olvex.NetworkManager=true"));
        const LogCapture log;
        QNetworkReply *const replies[] = {
            NetworkManager::httpGet(request),
            NetworkManager::httpPost(request, &devices[0]),
            NetworkManager::httpPost(request, "bytes"),
            NetworkManager::httpPost(request, &messages[0]),
            NetworkManager::httpPut(request, &devices[1]),
            NetworkManager::httpPut(request, "bytes"),
            NetworkManager::httpPut(request, &messages[1]),
        };
        QLoggingCategory::setFilterRules(QString());
        const QString line =
            QStringLiteral("Olvex.NetworkManager.debug: url: QUrl(\"%1\")\n").arg(request.url().toString());
        QCOMPARE(log.lines().join(QLatin1Char('\n')),
                 line.repeated(6) + QLatin1String("Olvex.NetworkManager.info: httpPut"));
        QVERIFY(replies[0]->request() == request); // to the others, Qt adds the length of the body

        for (QNetworkReply *const reply : replies) {
            QTRY_VERIFY(reply->isFinished());
            QCOMPARE(reply->readAll(), QByteArray("answer"));
            delete reply;
        }
        received.sort();
        QCOMPARE(
            received.join(QLatin1String("; ")),
            QLatin1String("GET /path?q=1 kept ; POST /path?q=1 kept bytes; POST /path?q=1 kept device; "
                          "POST /path?q=1 kept part; PUT /path?q=1 kept bytes; PUT /path?q=1 kept device; "
                          "PUT /path?q=1 kept part"));
    }
};

QTEST_GUILESS_MAIN(tst_NetworkManager)
#include "tst_NetworkManager.moc"
