#include "CheckCommand.h"

#include "Report.h"
#include "ServiceTable.h"

#include <AppConfig.h>
#include <ConnectivityChecker.h>
#include <NetworkManager.h>
#include <OXUrls.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QHash>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryFile>
#include <QTimer>

#include <cstdio>
#include <memory>
#include <vector>

#ifdef Q_OS_WIN
#    include <io.h>
#else
#    include <unistd.h>
#endif

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

bool hasTerminal()
{
#ifdef Q_OS_WIN
    return ::_isatty(::_fileno(stderr)) != 0;
#else
    return ::isatty(STDERR_FILENO) != 0;
#endif
}

QStringList namedTargets()
{
    const QStringList arguments = QCoreApplication::arguments();
    QStringList names;
    for (int i = arguments.indexOf(text("--check")) + 1; i < arguments.size(); ++i) {
        if (arguments.at(i).startsWith(text("--")))
            break;
        names << arguments.at(i);
    }
    names.removeDuplicates();
    return names;
}

// Answers every request with a page.
class LoopbackService : public QTcpServer {
public:
    LoopbackService()
    {
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *const socket = nextPendingConnection();
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, socket, [socket] {
                socket->readAll();
                socket->write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\nConnection: close\r\n\r\nok");
                socket->disconnectFromHost();
            });
        });
    }

    // Makes the registry lead to this server.
    bool takeOver(const QStringList &services)
    {
        QTemporaryFile document;
        if (!listen(QHostAddress::LocalHost) || !document.open())
            return false;
        QJsonObject entries;
        for (const QString &service : services) {
            const QString address = text("http://127.0.0.1:%1/%2").arg(serverPort()).arg(service);
            entries.insert(service, QJsonObject{{text("baseUrl"), address}});
        }
        const QJsonObject environments{{OXUrls::DefaultEnvironment, entries}};
        document.write(QJsonDocument(QJsonObject{{text("environment"), environments}}).toJson());
        document.close();
        OXUrls::instance()->initialize(document.fileName(), OXUrls::DefaultEnvironment, QString());
        return true;
    }
};

// All probes of one run.
class Check {
public:
    explicit Check(const QStringList &services)
        : m_services(services), m_waitingFor(services.size()), m_rows(services.size())
    {
        QObject::connect(NetworkManager::instance()->accessManager(), &QNetworkAccessManager::finished,
                         &m_loop,
                         [this](const QNetworkReply *reply) { m_errors.insert(reply->url(), words(reply)); });
        for (int i = 0; i < services.size(); ++i)
            prepare(i);
    }

    Table run()
    {
        m_time.start();
        for (const auto &checker : m_checkers)
            checker->startCheck();
        QTimer progress;
        if (hasTerminal()) {
            QObject::connect(&progress, &QTimer::timeout, &m_loop, [this] { showProgress(); });
            progress.start(100);
        }
        if (m_waitingFor > 0)
            m_loop.exec();
        if (hasTerminal())
            std::fputs("\r\033[K", stderr);
        return {text("Connectivity"),
                {text("service"), text("status"), text("ms"), text("URL"), text("error")},
                m_rows};
    }

    QStringList problems() const { return m_problems; }

private:
    static QString words(const QNetworkReply *reply)
    {
        if (reply->error() == QNetworkReply::NoError)
            return QString();
        return reply->error() == QNetworkReply::OperationCanceledError ? text("no answer in time")
                                                                       : reply->errorString();
    }

    void prepare(int index)
    {
        m_checkers.push_back(std::make_unique<ConnectivityChecker>());
        ConnectivityChecker *const checker = m_checkers.back().get();
        const QString path =
            OXUrls::instance()->dataValue(m_services.at(index), text("healthPath")).toString();
        checker->useOXUrl(m_services.at(index), path);
        QObject::connect(checker, &ConnectivityChecker::statusReceived, &m_loop,
                         [this, index](ConnectivityChecker::ConnectivityStatus status) {
                             enter(index, status == ConnectivityChecker::SUCCESS);
                         });
    }

    void enter(int index, bool good)
    {
        QVariantList &row = m_rows[index];
        if (!row.isEmpty())
            return; // the platform reported a change meanwhile
        const QUrl url = m_checkers[std::size_t(index)]->url();
        const QString words = good ? QString() : m_errors.value(url, text("no network"));
        row = {m_services.at(index), good ? text("ok") : text("failed"), m_time.elapsed(), url.toString(),
               words};
        if (!good)
            m_problems << text("The service \"%1\" cannot be reached: %2.").arg(m_services.at(index), words);
        if (--m_waitingFor == 0)
            m_loop.quit();
    }

    void showProgress() const
    {
        std::fprintf(stderr, "\r\033[Kwaiting for %d of %d services, %.0f s", m_waitingFor, m_services.size(),
                     double(m_time.elapsed()) / 1000);
    }

    QStringList m_services;
    int m_waitingFor;
    QVector<QVariantList> m_rows;
    QEventLoop m_loop;
    QElapsedTimer m_time;
    QHash<QUrl, QString> m_errors;
    std::vector<std::unique_ptr<ConnectivityChecker>> m_checkers;
    QStringList m_problems;
};

int report(const Table &table, const QStringList &problems)
{
    if (AppConfig::argumentExits(text("--json")))
        std::fputs(Report{{table}, problems}.toJson().constData(), stdout);
    else
        print(table);
    return problems.isEmpty() ? 0 : 1;
}

} // namespace

void chooseDeployment()
{
    OXUrls *const urls = OXUrls::instance();
    const AppConfig *const options = AppConfig::instance();
    urls->setEnvironment(options->argumentValue(text("--environment"), urls->environment()));
    urls->setRegion(options->argumentValue(text("--region"), urls->region()));
}

int runCheck()
{
    QStringList problems;
    const QStringList known =
        targets(readEnvironments(AppConfig::confPath(text("OlvexUrls.json")), problems));
    if (!problems.isEmpty()) {
        refuse(problems.join(QLatin1Char('\n')));
        return 1;
    }
    const QStringList named = namedTargets();
    for (const QString &target : named) {
        if (!known.contains(target))
            return refuse(
                text("There is no service \"%1\": choose from %2.").arg(target, known.join(text(", "))));
    }

    const QStringList services = named.isEmpty() ? known : named;
    LoopbackService loopback;
    if (AppConfig::argumentExits(text("--selftest")) && !loopback.takeOver(services))
        return refuse(text("The loopback interface cannot be used: %1.").arg(loopback.errorString()));
    Check check(services);
    const Table table = check.run();
    return report(table, check.problems());
}
