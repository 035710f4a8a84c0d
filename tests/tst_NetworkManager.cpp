#include <NetworkManager.h>

#include "Cases.h"
#include "LogCapture.h"
#include "ScriptedServer.h"

#include <QBuffer>
#include <QHttpMultiPart>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

namespace {

using Manager = NetworkManager;
using Request = QNetworkRequest;

QIODevice *device()
{
    auto *const buffer = new QBuffer(Manager::instance());
    buffer->setData("device");
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

QHttpMultiPart *message()
{
    auto *const parts = new QHttpMultiPart(Manager::instance());
    QHttpPart part;
    part.setBody("part");
    parts->append(part);
    return parts;
}

const struct {
    const char *name;
    QNetworkReply *(*send)(const Request &);
    const char *method, *body;
    const char *log = "debug: url: QUrl(\"%1\")";
} requests[] = {
    {"get", [](const Request &r) { return Manager::httpGet(r); }, "GET", ""},
    {"post device", [](const Request &r) { return Manager::httpPost(r, device()); }, "POST", "device"},
    {"post bytes", [](const Request &r) { return Manager::httpPost(r, "bytes"); }, "POST", "bytes"},
    {"post message", [](const Request &r) { return Manager::httpPost(r, message()); }, "POST",
     "\r\npart\r\n"},
    {"put device", [](const Request &r) { return Manager::httpPut(r, device()); }, "PUT", "device"},
    {"put bytes", [](const Request &r) { return Manager::httpPut(r, "bytes"); }, "PUT", "bytes"},
    {"put message", [](const Request &r) { return Manager::httpPut(r, message()); }, "PUT", "\r\npart\r\n",
     "info: httpPut"},
};

} // namespace

class tst_NetworkManager : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_capture.reset(); }
    void refusesRequestsBeforeInitialize();
    void initializeIsIdempotent();
    void sendsRequestsUnchanged_data() { addCases(requests); }
    void sendsRequestsUnchanged();

private:
    std::unique_ptr<LogCapture> m_capture;
};

void tst_NetworkManager::init()
{
    delete NetworkManager::instance();
    m_capture = std::make_unique<LogCapture>();
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
    QCOMPARE(manager->parent(), QCoreApplication::instance());
    QCOMPARE(NetworkManager::Instance(), manager);
    QSignalSpy checks(manager, &NetworkManager::checkConnectivity);
    manager->initialize();
    const QObjectList managers = manager->children();
    QCOMPARE(managers.size(), 2);
    QVERIFY(managers.contains(manager->accessManager()));
    manager->initialize();
    QCOMPARE(manager->children(), managers);
    QCOMPARE(checks.count(), 0);
    NetworkManager::updateConfigurations();
    QCOMPARE(checks.count(), 1);
}

void tst_NetworkManager::sendsRequestsUnchanged()
{
    const auto &c = currentCase(requests);
    ScriptedServer server([](const ScriptedServer::Request &) { return ScriptedServer::page("answer"); });
    NetworkManager::instance()->initialize();
    QNetworkRequest request(server.url("/path?q=1"));
    request.setRawHeader("X-Own", "kept");
    request.setHeader(QNetworkRequest::ContentTypeHeader, QStringLiteral("text/plain"));

    QLoggingCategory::setFilterRules(QStringLiteral("Olvex.NetworkManager=true"));
    const int logged = m_capture->lines().size();
    const std::unique_ptr<QNetworkReply> reply(c.send(request));
    QLoggingCategory::setFilterRules(QString());
    const QString url = request.url().toString();
    QString log = QLatin1String("Olvex.NetworkManager.") + QLatin1String(c.log);
    QCOMPARE(m_capture->lines().mid(logged), QStringList(log.replace(QLatin1String("%1"), url)));
    if (reply->operation() == QNetworkAccessManager::GetOperation) // Qt adds the length of a body
        QVERIFY(reply->request() == request);

    QSignalSpy finished(reply.get(), &QNetworkReply::finished);
    QVERIFY(finished.wait());
    QCOMPARE(reply->readAll(), QByteArray("answer"));
    QCOMPARE(server.requests().size(), 1);
    const ScriptedServer::Request received = server.requests().first();
    QCOMPARE(received.method, QByteArray(c.method));
    QCOMPARE(received.path, QByteArray("/path?q=1"));
    QVERIFY(received.headers.contains("\r\nx-own: kept\r\n"));
    QVERIFY2(received.body.contains(c.body) && received.body.isEmpty() == !*c.body, received.body);
}

QTEST_GUILESS_MAIN(tst_NetworkManager)
#include "tst_NetworkManager.moc"
