// The services of the URL document, and the environment "loopback", in which this program serves them itself.

#include "ConsoleTypes.h"
#include "ServiceTable.h"

#include <AppConfig.h>
#include <NetworkManager.h>
#include <OXUrls.h>

#include <QCoreApplication>
#include <QHash>
#include <QJsonDocument>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryFile>

namespace {

// The same entry with this machine in every address; the host becomes the first part of the path.
QJsonObject onLoopback(QJsonObject entry, quint16 port)
{
    for (auto member = entry.begin(); member != entry.end(); ++member) {
        const QUrl url(member.value().toString());
        if (member.value().isObject())
            member.value() = onLoopback(member.value().toObject(), port);
        else if (member.key() == text("baseUrl"))
            member.value() = text("http://127.0.0.1:%1/%2%3").arg(port).arg(url.host(), url.path());
    }
    return entry;
}

// Why a request failed; the HTTP status where the server gave one.
QString words(const QNetworkReply &reply)
{
    const QString status = reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toString();
    if (reply.error() == QNetworkReply::OperationCanceledError)
        return QCoreApplication::translate("Services", "no answer in time");
    if (status.isEmpty())
        return reply.errorString();
    return text("HTTP %1 %2")
        .arg(status, reply.attribute(QNetworkRequest::HttpReasonPhraseAttribute).toString());
}

} // namespace

class Services : public QObject {
    Q_OBJECT
    Q_PROPERTY(QStringList names MEMBER m_names CONSTANT)
    Q_PROPERTY(QStringList environments MEMBER m_environments CONSTANT)
    Q_PROPERTY(QStringList regions MEMBER m_regions CONSTANT)
    Q_PROPERTY(QStringList problems MEMBER m_problems CONSTANT) // of the service table, and what to do
    Q_PROPERTY(QString answer MEMBER m_answer NOTIFY changed) // the server's HTTP status, empty for silence
    Q_PROPERTY(bool testOffline READ testOffline WRITE setTestOffline NOTIFY changed)

public:
    Services()
    {
        connect(&m_server, &QTcpServer::newConnection, this, &Services::accept);
        connect(NetworkManager::instance()->accessManager(), &QNetworkAccessManager::finished, this,
                [this](const QNetworkReply *reply) { m_errors.insert(reply->url(), words(*reply)); });
        QVector<Problem> problems;
        ServiceTable table(problems);
        for (const Problem &problem : qAsConst(problems))
            m_problems << problem.text << problem.advice;
        serveEnvironment(table.environments);
        m_environments = table.environments.keys();
        m_names = table.targets();
        m_regions = table.regions();
        if (m_names.isEmpty() && m_problems.isEmpty())
            m_problems << tr("The service table names no service.") << tr("Restore it from a copy.");
    }

    // Why the last request to this URL failed.
    Q_INVOKABLE QString error(const QUrl &url) const { return m_errors.value(url, tr("no network")); }

    static bool testOffline() { return qApp->property("TestOffline").toBool(); }

    void setTestOffline(bool offline)
    {
        qApp->setProperty("TestOffline", offline);
        Q_EMIT changed();
    }

Q_SIGNALS:
    void changed();

private:
    // Adds the environment of this server to the document and loads the registry with it.
    void serveEnvironment(QJsonObject &environments)
    {
        QTemporaryFile file(AppConfig::tmpPath(text("services-XXXXXX.json")));
        if (!m_server.listen(QHostAddress::LocalHost) || !file.open()) {
            m_problems << m_server.errorString() + file.errorString();
            return;
        }
        const QJsonObject entries = environments.value(OXUrls::DefaultEnvironment).toObject();
        environments.insert(text("loopback"), onLoopback(entries, m_server.serverPort()));
        file.write(QJsonDocument(QJsonObject{{text("environment"), environments}}).toJson());
        file.close();
        OXUrls *const urls = OXUrls::instance();
        urls->initialize(file.fileName(), urls->environment(), urls->region());
        urls->setEnvironment(text("loopback"));
    }

    void accept()
    {
        QTcpSocket *const socket = m_server.nextPendingConnection();
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
            socket->readAll();
            if (m_answer.isEmpty())
                return;
            socket->write("HTTP/1.1 " + m_answer.toLatin1() + "\r\nContent-Length: 0\r\n\r\n");
            socket->disconnectFromHost();
        });
    }

    QTcpServer m_server;
    QString m_answer = text("200 OK");
    QHash<QUrl, QString> m_errors;
    QStringList m_problems;
    QStringList m_names;
    QStringList m_environments;
    QStringList m_regions;
};

void registerServices()
{
    registerModel<Services>("Services");
}

#include "Services.moc"
