#include <NetworkReplyTimeout.h>

#include "Cases.h"
#include "LogCapture.h"

#include <QAbstractEventDispatcher>
#include <QNetworkReply>

namespace {

// A reply without a network behind it, which notes how it is ended.
struct FakeReply : QNetworkReply {
    explicit FakeReply(OpenMode mode = ReadOnly) { setOpenMode(mode); }
    void abort() override
    {
        journal += QLatin1String("abort ");
        delete findChild<NetworkReplyTimeout *>(); // as the owner may, when it hears of the end
    }
    void close() override { journal += QLatin1String("close "); }
    qint64 readData(char *, qint64) override { return -1; }

    using QNetworkReply::setFinished;
    QString journal;
};

const struct {
    const char *name;
    QIODevice::OpenMode mode;
    bool finishedBefore, finishesMeanwhile;
    int timeout;
    const char *journal; // the milliseconds of each timer and what came of it
} replies[] = {
    {"runs", QIODevice::ReadOnly, false, false, 1234, "1234 abort "},
    {"negative time", QIODevice::ReadOnly, false, false, -5, "0 abort "},
    {"not readable", QIODevice::NotOpen, false, false, 1234, "1234 close "},
    {"finishes meanwhile", QIODevice::ReadOnly, false, true, 1234, "1234 close "},
    {"finished before", QIODevice::ReadOnly, true, true, 1234, ""},
};

} // namespace

class tst_NetworkReplyTimeout : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void refusesNull()
    {
        const LogCapture log;
        QVERIFY(!NetworkReplyTimeout::set(nullptr, 10));
        QCOMPARE(log.lines(), QStringList(QStringLiteral("default.warning: Reply is nullptr")));
    }

    void endsReplies_data() { addCases(replies); }
    void endsReplies()
    {
        const auto &c = currentCase(replies);
        FakeReply reply(c.mode);
        reply.setFinished(c.finishedBefore);
        const QPointer<NetworkReplyTimeout> guard = NetworkReplyTimeout::set(&reply, c.timeout);
        QCOMPARE(guard->parent(), &reply);
        reply.setFinished(c.finishesMeanwhile);
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(guard);
        QTimerEvent other(-1);
        QCoreApplication::sendEvent(guard, &other);
        for (const auto &timer : timers) {
            reply.journal += QStringLiteral("%1 ").arg(timer.interval);
            QTimerEvent due(timer.timerId);
            QCoreApplication::sendEvent(guard, &due);
        }
        QVERIFY(!guard
                || QAbstractEventDispatcher::instance()->registeredTimers(guard).isEmpty()); // once only
        QCOMPARE(reply.journal, QLatin1String(c.journal));
    }

    // Also a finished reply, which itself makes nothing of it.
    void quittingAborts()
    {
        FakeReply guarded, finished;
        finished.setFinished(true);
        NetworkReplyTimeout::set(&guarded, 60000);
        NetworkReplyTimeout::set(&finished, 60000);
        QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
        QCoreApplication::exec();
        QCOMPARE(guarded.journal + finished.journal, QLatin1String("abort abort "));
    }
};

QTEST_GUILESS_MAIN(tst_NetworkReplyTimeout)
#include "tst_NetworkReplyTimeout.moc"
