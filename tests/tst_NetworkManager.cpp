#include <NetworkManager.h>

#include "LogCapture.h"
#include "ScriptedServer.h"

#include <QBuffer>
#include <QHttpMultiPart>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QtTest>

using Send = std::function<QNetworkReply *(const QNetworkRequest &)>;
Q_DECLARE_METATYPE(Send)

class tst_NetworkManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_capture.reset(); }
    void belongsToTheApplication();
    void refusesRequestsBeforeInitialize();
    void initializeIsIdempotent();
    void updateAsksForChecks();
    void sendsRequestsUnchanged_data();
    void sendsRequestsUnchanged();

private:
    std::unique_ptr<LogCapture> m_capture;
};

void tst_NetworkManager::init()
{
    delete NetworkManager::instance();
    m_capture = std::make_unique<LogCapture>();
}

void tst_NetworkManager::belongsToTheApplication()
{
    NetworkManager *const manager = NetworkManager::instance();
    QCOMPARE(manager->parent(), QCoreApplication::instance());
    QCOMPARE(NetworkManager::Instance(), manager);
}

void tst_NetworkManager::refusesRequestsBeforeInitialize()
{
    const QNetworkRequest request(QUrl(QStringLiteral("http://localhost/")));
    QVERIFY(!NetworkManager::httpGet(request));
    QVERIFY(!NetworkManager::httpPost(request, QByteArray()));
    NetworkManager::updateConfigurations();
    const QString warning = QStringLiteral("Olvex.NetworkManager.warning: Request before initialize: "
                                           "QUrl(\"http://localhost/\")");
    QCOMPARE(m_capture->lines(), QStringList({warning, warning}));
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

void tst_NetworkManager::sendsRequestsUnchanged_data()
{
    QTest::addColumn<Send>("send");
    QTest::addColumn<QByteArray>("method");
    QTest::addColumn<QByteArray>("bodyPart");
    QTest::addColumn<QString>("log"); // without the URL

    const auto buffer = [] {
        auto *const device = new QBuffer(NetworkManager::instance());
        device->setData("device");
        device->open(QIODevice::ReadOnly);
        return device;
    };
    const auto message = [] {
        auto *const parts = new QHttpMultiPart(NetworkManager::instance());
        QHttpPart part;
        part.setBody("part");
        parts->append(part);
        return parts;
    };
    using Manager = NetworkManager;
    using Request = QNetworkRequest;
    const auto row = [](const char *name, Send send, const char *method, const char *body,
                        const char *log = "debug: url: ") {
        QTest::newRow(name) << send << QByteArray(method) << QByteArray(body)
                            << QLatin1String("Olvex.NetworkManager.") + QLatin1String(log);
    };
    row(
        "get", [](const Request &request) { return Manager::httpGet(request); }, "GET", "");
    row(
        "post device", [=](const Request &request) { return Manager::httpPost(request, buffer()); }, "POST",
        "device");
    row(
        "post bytes", [](const Request &request) { return Manager::httpPost(request, QByteArray("bytes")); },
        "POST", "bytes");
    row(
        "post message", [=](const Request &request) { return Manager::httpPost(request, message()); }, "POST",
        "\r\npart\r\n");
    row(
        "put device", [=](const Request &request) { return Manager::httpPut(request, buffer()); }, "PUT",
        "device");
    row(
        "put bytes", [](const Request &request) { return Manager::httpPut(request, QByteArray("bytes")); },
        "PUT", "bytes");
    // The odd one out in the log.
    row(
        "put message", [=](const Request &request) { return Manager::httpPut(request, message()); }, "PUT",
        "\r\npart\r\n", "info: httpPut");
}

void tst_NetworkManager::sendsRequestsUnchanged()
{
    QFETCH(Send, send);
    QFETCH(QByteArray, bodyPart);
    QFETCH(QString, log);
    ScriptedServer server([](const ScriptedServer::Request &) { return ScriptedServer::page("answer"); });
    NetworkManager::instance()->initialize();
    QNetworkRequest request(server.url("/path?q=1"));
    request.setRawHeader("X-Own", "kept");
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/plain"));

    QLoggingCategory::setFilterRules(QStringLiteral("Olvex.NetworkManager=true"));
    const int logged = m_capture->lines().size();
    const std::unique_ptr<QNetworkReply> reply(send(request));
    QLoggingCategory::setFilterRules(QString());
    QCOMPARE(m_capture->lines().mid(logged),
             QStringList(log.endsWith(QLatin1Char(' '))
                             ? QStringLiteral("%1QUrl(\"%2\")").arg(log, request.url().toString())
                             : log));
    if (reply->operation() == QNetworkAccessManager::GetOperation) // Qt adds the length of a body
        QVERIFY(reply->request() == request);

    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    QVERIFY(finished.wait());
    QCOMPARE(reply->readAll(), QByteArray("answer"));
    QCOMPARE(server.requests().size(), 1);
    const ScriptedServer::Request received = server.requests().first();
    QTEST(received.method, "method");
    QCOMPARE(received.path, QByteArray("/path?q=1"));
    QVERIFY(received.headers.contains("\r\nx-own: kept\r\n"));
    QVERIFY2(received.body.contains(bodyPart) && received.body.isEmpty() == bodyPart.isEmpty(),
             received.body);
}

QTEST_GUILESS_MAIN(tst_NetworkManager)
#include "tst_NetworkManager.moc"
