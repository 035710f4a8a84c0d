// soak-connectivity [CHECKS [SEED]]: long runs of connectivity checks that no test should take the time for.
//
// faults: CHECKS checks (1000), ten at a time, against a server that misbehaves at random. Every check has to
//         end, with one status each, and the heap may grow by what NetworkManager::instance() is known to
//         keep.
// storm:  200 checkers hear the same network event, several times over. Each may have one probe in flight,
//         the probes have to be spread over the jitter, and no event may hold up the event loop.
//
// Prints the figures; exit status 1 if one is out of bounds. The server runs on a thread of its own, so that
// the times of the main thread are those of the library and of Qt.

#include <ConnectivityChecker.h>
#include <NetworkManager.h>

#include "ScriptedServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QLoggingCategory>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRandomGenerator>
#include <QSemaphore>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#ifdef __GLIBC__
#    include <malloc.h>
#endif

namespace {

using Server = ScriptedServer;

constexpr int patience = 60000; // ms without any progress
constexpr qint64 longestEvent = 50 * 1000 * 1000; // ns
constexpr double bytesPerCall = 128; // see OXUrls::instance()
constexpr double heapSlack = 64 * 1024; // caches of Qt that come and go

int failures = 0;

void report(const char *what, double value, const char *unit, bool good = true)
{
    std::printf("  %-46s %10.1f %-6s%s\n", what, value, unit, good ? "" : "  OUT OF BOUNDS");
    failures += !good;
}

double heapInUse()
{
#ifdef __GLIBC__
    const auto info = mallinfo2();
    return double(info.uordblks + info.hblkhd);
#else
    return 0;
#endif
}

// Times every event that the main thread delivers.
class TimedApplication : public QCoreApplication {
public:
    using QCoreApplication::QCoreApplication;

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (thread() != QThread::currentThread())
            return QCoreApplication::notify(receiver, event);
        const QByteArray name = receiver->metaObject()->className();
        QElapsedTimer time;
        time.start();
        const bool result = QCoreApplication::notify(receiver, event);
        qint64 &longest = m_longest[name];
        longest = qMax(longest, time.nsecsElapsed());
        return result;
    }

    void forget() { m_longest.clear(); }

    void reportLongestEvent() const
    {
        const auto shorter = [](const auto &a, const auto &b) { return a.second < b.second; };
        const auto longest = std::max_element(m_longest.begin(), m_longest.end(), shorter);
        report(("longest event, for " + longest->first).constData(), double(longest->second) / 1e6, "ms",
               longest->second < longestEvent);
    }

private:
    std::map<QByteArray, qint64> m_longest;
};

// A server on its own thread.
class ServerThread : public QThread {
public:
    explicit ServerThread(std::function<Server::Answer()> answer) : m_answer(std::move(answer))
    {
        start();
        m_ready.acquire();
    }
    ~ServerThread() override
    {
        quit();
        wait();
    }
    QUrl url(const QByteArray &path) const { return m_url.resolved(QUrl(QString::fromLatin1(path))); }

protected:
    void run() override
    {
        const Server server(m_answer);
        m_url = server.url();
        m_ready.release();
        exec();
    }

private:
    std::function<Server::Answer()> m_answer;
    QSemaphore m_ready;
    QUrl m_url;
};

// Runs the event loop until done(); false if nothing goes on for too long.
template <typename Done> bool runUntil(Done done, const int &progress)
{
    QElapsedTimer idle;
    idle.start();
    for (int seen = progress; !done(); QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents)) {
        if (seen != progress) {
            seen = progress;
            idle.restart();
        }
        if (idle.elapsed() > patience)
            return false;
    }
    return true;
}

QList<QNetworkReply *> repliesAlive()
{
    return NetworkManager::instance()->findChildren<QNetworkReply *>();
}

// Mostly a fault.
Server::Answer anyAnswer(QRandomGenerator *random)
{
    switch (random->bounded(14)) {
    case 0:
        return Server::page("ok");
    case 1:
        return Server::page(QByteArray(random->bounded(1000000), 'b'));
    case 2:
        return Server::page("elsewhere", 302, "Location: /again\r\n");
    case 3:
        return Server::page("oops", 400 + random->bounded(200));
    default:
        return (Server::faults().begin() + random->bounded(Server::faults().size())).value();
    }
}

// What the checkers of the fault run have in common.
struct Count {
    int toStart = 0;
    int running = 0;
    int ended = 0;
    int succeeded = 0;
    int surplusSignals = 0;
};

// A checker that checks again as long as there is something left to start.
class Prober : public QObject {
public:
    Prober(const QUrl &url, Count *count) : m_count(count)
    {
        m_checker.setUrl(url);
        m_checker.setTimeout(200);
        connect(&m_checker, &ConnectivityChecker::statusReceived, this, &Prober::receive);
    }

    void start()
    {
        if (m_count->toStart == 0)
            return;
        --m_count->toStart;
        ++m_count->running;
        m_expected = m_checker.status() == ConnectivityChecker::FAILED
            ? QVector<int>{ConnectivityChecker::CONNECTING, ended}
            : QVector<int>{ended};
        m_checker.startCheck();
    }

private:
    static constexpr int ended = -1; // whichever way

    void receive(ConnectivityChecker::ConnectivityStatus status)
    {
        const int wanted = m_expected.isEmpty() ? -2 : m_expected.takeFirst();
        const int got = status == ConnectivityChecker::CONNECTING ? int(status) : ended;
        m_count->surplusSignals += got != wanted;
        if (got != ended)
            return;
        --m_count->running;
        ++m_count->ended;
        m_count->succeeded += status == ConnectivityChecker::SUCCESS;
        QTimer::singleShot(0, this, &Prober::start); // the probe is still pending here
    }

    ConnectivityChecker m_checker;
    Count *m_count;
    QVector<int> m_expected;
};

// Whether all of the checks end. Afterwards nothing of them is left, nor of the server.
bool check(int checks, QRandomGenerator *random, Count *count)
{
    const ServerThread server([random] { return anyAnswer(random); });
    *count = Count();
    count->toStart = checks;
    std::vector<std::unique_ptr<Prober>> probers(10);
    for (auto &prober : probers) {
        prober = std::make_unique<Prober>(server.url("/"), count);
        prober->start();
    }
    const bool ended = runUntil(
        [&] { return count->toStart + count->running == 0 && repliesAlive().isEmpty(); }, count->ended);
    NetworkManager::instance()->accessManager()->clearConnectionCache();
    return ended;
}

void faults(int checks, quint32 seed)
{
    std::printf("faults: %d checks, ten at a time, seed %u\n", checks, seed);
    QRandomGenerator random(seed);
    Count count;
    check(200, &random, &count); // fills the caches
    const double before = heapInUse();
    QElapsedTimer time;
    time.start();
    const bool ended = check(checks, &random, &count);
    const double growth = heapInUse() - before;
    report("ended", count.ended, "", ended && count.ended == checks);
    report("of them successful", count.succeeded, "");
    report("statusReceived too many, too few or wrong", count.surplusSignals, "", count.surplusSignals == 0);
    report("time", double(time.elapsed()) / 1000, "s");
    report("heap growth per check", growth / checks, "bytes", growth <= bytesPerCall * checks + heapSlack);
}

struct Storm {
    std::vector<std::unique_ptr<ConnectivityChecker>> checkers;
    QElapsedTimer sinceEvent;
    std::vector<qint64> starts; // ms after the event
    int mostInFlight = 0; // of one checker
    int answered = 0;

    void look()
    {
        std::map<QString, int> inFlight;
        for (const QNetworkReply *const reply : repliesAlive()) {
            if (!reply->isFinished())
                mostInFlight = qMax(mostInFlight, ++inFlight[reply->url().path()]);
        }
    }

    void start()
    {
        starts.push_back(sinceEvent.elapsed());
        look();
    }

    void event()
    {
        sinceEvent.start();
        starts.clear();
        NetworkManager::instance()->startCheckConnectivity();
    }

    // The most starts within 50 ms.
    int crowd() const
    {
        std::ptrdiff_t most = 0;
        for (auto from = starts.begin(); from != starts.end(); ++from)
            most = qMax(most, std::upper_bound(from, starts.end(), *from + 50) - from);
        return int(most);
    }
};

void storm()
{
    constexpr int size = 200;
    std::printf("storm: %d checkers\n", size);
    Server::Answer answer = Server::page("ok");
    answer.pause = 20;
    const ServerThread server([answer] { return answer; });
    Storm storm;
    for (int i = 0; i < size; ++i) {
        auto checker = std::make_unique<ConnectivityChecker>();
        checker->setUrl(server.url('/' + QByteArray::number(i)));
        QObject::connect(checker.get(), &ConnectivityChecker::statusReceived, [&storm] { ++storm.answered; });
        QObject::connect(checker->findChild<QTimer *>(), &QTimer::timeout, [&storm] { storm.start(); });
        storm.checkers.push_back(std::move(checker));
    }

    for (int again = 0; again < 9; ++again) // an interface that flaps
        storm.event();
    storm.event();
    report("the last of ten events delivered in", double(storm.sinceEvent.nsecsElapsed()) / 1e6, "ms");
    runUntil([&storm] { return storm.starts.size() >= size / 2; }, storm.answered);
    for (const auto &checker : storm.checkers) // whoever has no probe in flight starts one now
        checker->startCheck();
    storm.look();
    const bool ended = runUntil([&storm] { return storm.starts.size() >= size && repliesAlive().isEmpty(); },
                                storm.answered);

    report("all answered", storm.answered, "statuses", ended);
    report("most probes in flight of one checker", storm.mostInFlight, "", storm.mostInFlight == 1);
    report("first start after the event", double(storm.starts.front()), "ms", storm.starts.front() >= 950);
    report("last start after the event", double(storm.starts.back()), "ms", storm.starts.back() >= 1900);
    report("most starts within 50 ms (10 are even)", storm.crowd(), "", storm.crowd() <= 30);
}

} // namespace

int main(int argc, char **argv)
{
    QLoggingCategory::setFilterRules(QStringLiteral("Olvex.*=false"));
    TimedApplication application(argc, argv);
    NetworkManager::instance()->initialize();
    const QStringList arguments = application.arguments();
    faults(arguments.value(1, QStringLiteral("1000")).toInt(),
           arguments.value(2, QStringLiteral("1")).toUInt());
    application.reportLongestEvent();
    application.forget();
    storm();
    application.reportLongestEvent();
    return failures == 0 ? 0 : 1;
}
