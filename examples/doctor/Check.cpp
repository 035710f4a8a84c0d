#include "CommandLine.h"
#include "Report.h"
#include "ServiceTable.h"
#include "Tasks.h"
#include "Terminal.h"

#include <AppConfig.h>
#include <ConnectivityChecker.h>
#include <NetworkManager.h>
#include <OXUrls.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QJsonDocument>
#include <QNetworkReply>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryFile>
#include <QTime>
#include <QTimer>

#include <cstdio>
#include <memory>

namespace {

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
        OXUrls *const urls = OXUrls::instance();
        urls->initialize(document.fileName(), urls->environment(), urls->region());
        return true;
    }
};

// One service.
struct Probe {
    QString service;
    bool fallsBack;
    std::unique_ptr<ConnectivityChecker> checker;
    QVariantList row; // of the table; empty until the first answer
};

QStringList columns()
{
    return {text("service"), text("status"), text("ms"), text("fallback"), text("URL"), text("error")};
}

// All probes of one run.
class Check {
public:
    Check(const CommandLine &line, const ServiceTable &table, const QStringList &services)
        : m_asJson(line.has("--json")), m_interval(line.value("--watch").toInt() * 1000),
          m_waitingFor(services.size())
    {
        QObject::connect(NetworkManager::instance()->accessManager(), &QNetworkAccessManager::finished,
                         &m_context,
                         [this](const QNetworkReply *reply) { m_errors.insert(reply->url(), words(reply)); });
        for (const QString &service : services) {
            m_probes.push_back(
                {service, table.fallsBack(service), std::make_unique<ConnectivityChecker>(), {}});
            prepare(m_probes.back(), line.value("--timeout", text("10")).toInt() * 1000);
        }
    }

    // Until all have answered, or for ever.
    void run()
    {
        m_time.start();
        for (const Probe &probe : m_probes)
            probe.checker->startCheck();
        QTimer progress;
        const bool isShown = terminal::isTerminal(stderr) && m_interval == 0;
        if (isShown) {
            QObject::connect(&progress, &QTimer::timeout, &m_context, [this] { showProgress(); });
            progress.start(100);
        }
        if (m_waitingFor > 0)
            QCoreApplication::exec();
        if (isShown)
            std::fputs("\r\033[K", stderr);
    }

    Report report() const
    {
        Report report;
        Table table{text("connectivity"), text("Connectivity of %1").arg(deploymentName()), columns(), {}};
        for (const Probe &probe : m_probes) {
            table.rows.append(probe.row);
            if (probe.row.at(1) != text("ok"))
                report.problems.append({text("service-unreachable"),
                                        text("The service \"%1\" cannot be reached: %2.")
                                            .arg(probe.service, probe.row.last().toString()),
                                        text("Check the network of the tablet, then the address.")});
        }
        report.tables << table;
        return report;
    }

private:
    static QString words(const QNetworkReply *reply)
    {
        if (reply->error() == QNetworkReply::NoError)
            return QString();
        return reply->error() == QNetworkReply::OperationCanceledError ? text("no answer in time")
                                                                       : reply->errorString();
    }

    void prepare(Probe &probe, int timeout)
    {
        const QString path = OXUrls::instance()->dataValue(probe.service, text("healthPath")).toString();
        probe.checker->useOXUrl(probe.service, path);
        probe.checker->setTimeout(timeout);
        probe.checker->setScheduleTimeout(m_interval);
        const auto index = m_probes.size() - 1;
        QObject::connect(probe.checker.get(), &ConnectivityChecker::statusReceived, &m_context,
                         [this, index](ConnectivityChecker::ConnectivityStatus status) {
                             if (status != ConnectivityChecker::CONNECTING)
                                 enter(m_probes[index], status == ConnectivityChecker::SUCCESS);
                         });
    }

    void enter(Probe &probe, bool good)
    {
        const bool isFirst = probe.row.isEmpty();
        if (!isFirst && m_interval == 0)
            return; // the platform reported a change meanwhile
        const QUrl url = probe.checker->url();
        const QVariant error = good ? QVariant() : m_errors.value(url, text("no network"));
        const QVariantList row{probe.service,
                               text(good ? "ok" : "failed"),
                               isFirst ? m_time.elapsed() : QVariant(),
                               probe.fallsBack,
                               url.toString(),
                               error};
        const bool isNews = isFirst || probe.row.at(1) != row.at(1) || probe.row.last() != error;
        probe.row = row;
        if (m_interval > 0 && isNews)
            printChange(row);
        else if (m_interval == 0 && --m_waitingFor == 0)
            QCoreApplication::quit();
    }

    void printChange(const QVariantList &row) const
    {
        const QString now = QTime::currentTime().toString(text("HH:mm:ss"));
        if (m_asJson)
            print(QJsonObject{{text("time"), now},
                              {text("service"), row.at(0).toString()},
                              {text("status"), row.at(1).toString()},
                              {text("url"), row.at(4).toString()},
                              {text("error"), QJsonValue::fromVariant(row.at(5))}},
                  true);
        else
            print(text("%1  %2  %3  %4  %5\n")
                      .arg(now, row.at(0).toString(), row.at(1).toString(), row.at(4).toString(),
                           row.at(5).toString()));
        std::fflush(stdout);
    }

    void showProgress() const
    {
        std::fprintf(stderr, "\r\033[Kwaiting for %d of %d services, %.0f s", m_waitingFor,
                     int(m_probes.size()), double(m_time.elapsed()) / 1000);
    }

    bool m_asJson;
    int m_interval; // ms, 0 for one answer each
    int m_waitingFor;
    QObject m_context;
    QElapsedTimer m_time;
    QHash<QUrl, QString> m_errors;
    std::vector<Probe> m_probes;
};

int printAnswer(const Report &report, bool asJson)
{
    if (asJson)
        print(report.toJson());
    else
        print(report.tables.first().toText(outputWidth()));
    return report.problems.isEmpty() ? 0 : 1;
}

} // namespace

int runCheck(const CommandLine &line)
{
    QVector<Problem> problems;
    const ServiceTable table(problems);
    if (!problems.isEmpty())
        return fail(1, problems.first().text + QLatin1Char(' ') + problems.first().advice);
    const QStringList known = table.targets();
    const QStringList named = line.values("--check");
    for (const QString &target : named) {
        if (!known.contains(target))
            return fail(
                2, text("There is no service \"%1\": choose from %2.").arg(target, known.join(text(", "))));
    }

    QStringList services = named.isEmpty() ? known : named;
    services.removeDuplicates();
    LoopbackService loopback;
    if (line.has("--selftest") && !loopback.takeOver(services))
        return fail(1, text("The loopback interface cannot be used: %1.").arg(loopback.errorString()));
    Check check(line, table, services);
    if (line.has("--watch"))
        AppConfig::cleanExit();
    check.run();
    return line.has("--watch") ? 0 : printAnswer(check.report(), line.has("--json"));
}
