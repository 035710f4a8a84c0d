#include "ScriptedServer.h"
#include "SoakLoads.h"

#include <ConnectivityChecker.h>
#include <FileSync.h>
#include <NetworkManager.h>

#include <QCoreApplication>
#include <QNetworkReply>
#include <QRandomGenerator>

namespace {

// ---- connectivity checks, all after the same network event, against a server that answers at random

const std::vector<ScriptedServer::Answer> &faults()
{
    using Server = ScriptedServer;
    static const QByteArray whole = Server::page(QByteArray(10000, 'x')).bytes;
    static const QByteArray part = whole.left(1000);
    static const std::vector<Server::Answer> answers{
        {"", Server::Hang},
        {part, Server::Hang},
        {whole, Server::Keep, 5, 1}, // drips
        {"HTTP/1.1 200 Scripted\r\n" + QByteArray("X-Filler: x\r\n").repeated(1000), Server::Hang},
        {"", Server::Close},
        {part.left(30), Server::Close},
        {part, Server::Close},
        {"", Server::Reset},
        {part, Server::Reset},
        {"\x16\x03\x01\xff\xfe no HTTP \r\n\r\n", Server::Close},
    };
    return answers;
}

ScriptedServer::Answer anyAnswer()
{
    const int count = int(faults().size());
    const int kind = QRandomGenerator::global()->bounded(2 * count);
    return kind < count ? faults()[std::size_t(kind)] : ScriptedServer::page(QByteArray(100 * kind, 'b'));
}

class CheckLoad : public SoakLoad {
public:
    CheckLoad() : SoakLoad(100, [this] { checkAll(); })
    {
        for (ConnectivityChecker &checker : m_checkers) {
            checker.setUrl(m_server.url());
            checker.setTimeout(200);
            connect(&checker, &ConnectivityChecker::statusReceived, this, [this](auto status) {
                ++m_received;
                --m_statusesMissing;
                m_succeeded += status == ConnectivityChecker::SUCCESS;
                m_unended -= status != ConnectivityChecker::CONNECTING;
            });
        }
    }

    bool isIdle() const override
    {
        return m_unended == 0 && m_network->findChildren<QNetworkReply *>().isEmpty();
    }

private:
    // A check reports its end, and its start, too, if the last one has failed.
    void checkAll()
    {
        if (!isIdle())
            return;
        for (const ConnectivityChecker &checker : m_checkers) {
            ++m_started;
            ++m_unended;
            m_statusesMissing += checker.status() == ConnectivityChecker::FAILED ? 2 : 1;
        }
        m_network->startCheckConnectivity();
    }

    Count &m_started = count("checks started");
    Count &m_succeeded = count("checks that succeeded");
    Count &m_received = count("statuses received");
    Count &m_unended = count("checks that did not end", 0);
    Count &m_statusesMissing = count("statuses missing", 0);
    NetworkManager *const m_network = NetworkManager::instance();
    const ScriptedServer m_server{anyAnswer};
    ConnectivityChecker m_checkers[30];
};

// ---- synchronisation jobs: commands and local copies; beside each, one that is deleted while it runs

struct JobKind {
    const char *script; // null for a local copy
    int status;
};

constexpr JobKind jobKinds[] = {{"exit 0", 0}, {"echo 45%; exit 23", 23}, {"kill -9 $$", -1}, {nullptr, 0}};

class JobLoad : public SoakLoad {
public:
    explicit JobLoad(const QString &directory)
        : SoakLoad(250, [this, directory] { startJobs(directory); }) { }

    bool isIdle() const override { return findChildren<FileSync *>().isEmpty(); }

private:
    void startJobs(const QString &directory)
    {
        const JobKind &kind = jobKinds[std::size_t(++m_started) % std::size(jobKinds)];
        ++m_unreported;
        auto *const job = new FileSync(this);
        connect(job, &FileSync::completed, this, [this, &kind](int status) {
            --m_unreported;
            m_wrong += status != kind.status;
        });
        if (kind.script == nullptr)
            job->syncFile(QCoreApplication::applicationFilePath(), directory + QLatin1String("/copy"), {},
                          false);
        else
            job->executeCommand(QStringLiteral("sh"), {QStringLiteral("-c"), QLatin1String(kind.script)}, {},
                                directory);

        auto *const hanging = new FileSync(this);
        hanging->executeCommand(QStringLiteral("sleep"), {QStringLiteral("1000")}, {}, directory);
        QTimer::singleShot(100, hanging, SLOT(deleteLater()));
    }

    Count &m_started = count("jobs started");
    Count &m_unreported = count("jobs not completed", 0);
    Count &m_wrong = count("jobs with a wrong status", 0);
};

} // namespace

void addOutsideLoads(const QString &directory, SoakLoads *loads)
{
    loads->push_back(std::make_unique<CheckLoad>());
    loads->push_back(std::make_unique<JobLoad>(directory));
}
