#include "LinkData.h"
#include "SoakLoads.h"

#include <AppConfig.h>
#include <PausingTimer.h>
#include <communication/LogicalLinkControl.h>

#include <QLocalServer>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QRegularExpression>

#include <algorithm>
#include <thread>

namespace {

Q_LOGGING_CATEGORY(category, "Olvex.Soak")

using Communication::LogicalLinkControl;
using LinkData::Bytes;

// ---- messages of several threads to the log file

class LogLoad : public SoakLoad {
public:
    void start() override
    {
        m_running = true;
        for (std::thread &thread : m_threads)
            thread = std::thread([this] { log(); });
    }

    void stop() override
    {
        m_running = false;
        for (std::thread &thread : m_threads)
            thread.join();
        readLogFile();
    }

private:
    static QByteArray text(qint64 number)
    {
        return "soaking " + QByteArray::number(number) + ' ' + QByteArray(int(number % 200), '.');
    }

    void log()
    {
        for (; m_running; std::this_thread::sleep_for(std::chrono::milliseconds(4)))
            qCInfo(category, "%s", text(++m_logged).constData());
    }

    // Every line has to start with time and level, and every message to be there once and whole.
    void readLogFile()
    {
        static const QRegularExpression stamp(
            QStringLiteral("^\\d+:\\d\\d:\\d\\d\\.\\d{3} \\| [DWCFI] \\| "));
        std::vector<bool> found(static_cast<std::size_t>(m_logged));
        m_torn = 0;
        QFile file(AppConfig::logOutputFile.fileName());
        for (file.open(QIODevice::ReadOnly); !file.atEnd();) {
            const QByteArray line = file.readLine();
            m_torn += !stamp.match(QString::fromLatin1(line.left(20))).hasMatch();
            const QByteArray message = line.mid(line.indexOf("soaking "));
            const qint64 number = message.split(' ').value(1).toLongLong();
            if (number > 0 && number <= m_logged && message == text(number) + '\n')
                found[std::size_t(number - 1)] = true;
        }
        m_lost = std::count(found.begin(), found.end(), false);
    }

    Count &m_logged = count("messages logged");
    Count &m_lost = count("messages lost", 0);
    Count &m_torn = count("log lines torn", 0);
    std::atomic<bool> m_running{false};
    std::thread m_threads[4];
};

// ---- framed messages through a local socket, behind noise; every fifth is damaged

class LinkLoad : public SoakLoad {
public:
    explicit LinkLoad(const QString &directory) : SoakLoad(10, [this] { sendTen(); })
    {
        m_server.listen(directory + QLatin1String("/link"));
        m_out.connectToServer(m_server.fullServerName());
        m_server.waitForNewConnection(1000);
        m_in = m_server.nextPendingConnection();
        if (m_in == nullptr)
            qFatal("No local socket in %s", qPrintable(directory));
        connect(m_in, &QLocalSocket::readyRead, this, &LinkLoad::read);
    }

    bool isIdle() const override { return m_missing == 0; }

private:
    static bool isDamaged(qint64 number) { return number % 5 == 0; }

    // Begins with its number, on which all else depends.
    static Bytes messageOf(qint64 number)
    {
        std::mt19937 generator(static_cast<unsigned int>(number));
        Bytes message;
        LogicalLinkControl::push_back_u32le(message, static_cast<unsigned int>(number));
        const Bytes body = LinkData::anyBytes(generator, LinkData::below(generator, 240));
        message.insert(message.end(), body.begin(), body.end());
        return message;
    }

    void sendTen()
    {
        for (int i = 0; i < 10; ++i)
            send();
    }

    void send()
    {
        const qint64 number = ++m_sent;
        Bytes message = messageOf(number);
        Bytes frame;
        m_link.encode_message(message, frame);
        if (isDamaged(number))
            frame[below(frame.size())] ^= static_cast<unsigned char>(1U << below(8));
        else
            ++m_missing;
        write(LinkData::anyBytes(m_generator, below(40)));
        write(frame);
    }

    void write(const Bytes &bytes)
    {
        m_out.write(reinterpret_cast<const char *>(bytes.data()), qint64(bytes.size()));
    }

    void read()
    {
        while (m_in->bytesAvailable() > 0) {
            const QByteArray bytes = m_in->read(1 + qint64(below(300)));
            Bytes chunk(bytes.begin(), bytes.end());
            unsigned int position = 0;
            unsigned int result;
            while ((result = m_link.receive(chunk, position, m_message)) >= LogicalLinkControl::CRC_ERROR) {
                if (result == LogicalLinkControl::CRC_ERROR)
                    ++m_crcErrors;
                else
                    accept();
            }
        }
    }

    void accept()
    {
        unsigned int position = 0;
        const qint64 number = LogicalLinkControl::retrieve_u32le(m_message, position);
        ++m_received;
        if (m_message != messageOf(number))
            m_tooManyWrong += ++m_wrong > 10 + m_crcErrors / 10000;
        else if (!isDamaged(number)) // a damaged one may have a whole message
            --m_missing;
    }

    std::size_t below(std::size_t limit) { return LinkData::below(m_generator, limit); }

    Count &m_sent = count("frames sent, every fifth damaged");
    Count &m_received = count("frames received");
    Count &m_crcErrors = count("CRC errors");
    Count &m_missing = count("intact frames lost", 0);
    Count &m_wrong = count("frames wrongly accepted"); // the checksum lets 1 in 65536 pass
    Count &m_tooManyWrong = count("more of them than 1 in 10000", 0);
    QLocalServer m_server;
    QLocalSocket m_out;
    QLocalSocket *m_in;
    std::mt19937 m_generator{1};
    LogicalLinkControl m_link{250};
    Bytes m_message;
};

// ---- timers that are paused and resumed again and again

class TimerLoad : public SoakLoad {
public:
    TimerLoad() : SoakLoad(700, [this] { run(!m_running); })
    {
        for (PausingTimer &timer : m_timers) {
            timer.start(period);
            timer.pause();
            connect(&timer, &PausingTimer::timeout, this, [this] {
                ++m_fired;
                m_firedPaused += !m_running;
            });
        }
    }

    void start() override
    {
        SoakLoad::start();
        run(true);
    }

    void stop() override
    {
        SoakLoad::stop();
        run(false);
        m_expected = m_ran / period * qint64(std::size(m_timers));
        m_missing = qMax<qint64>(0, m_expected * 9 / 10 - m_fired);
    }

private:
    static constexpr int period = 150; // ms

    void run(bool running)
    {
        if (m_running)
            m_ran += m_sinceSwitch.elapsed();
        m_running = running;
        m_sinceSwitch.start();
        for (PausingTimer &timer : m_timers)
            running ? timer.resume() : timer.pause();
    }

    Count &m_fired = count("timers fired");
    Count &m_expected = count("timers expected to fire");
    Count &m_missing = count("missing of nine tenths of that", 0); // a busy machine delays timers
    Count &m_firedPaused = count("timers fired while paused", 0);
    PausingTimer m_timers[10];
    QElapsedTimer m_sinceSwitch;
    bool m_running = false;
    qint64 m_ran = 0;
};

} // namespace

void addLocalLoads(const QString &directory, SoakLoads *loads)
{
    loads->push_back(std::make_unique<LogLoad>());
    loads->push_back(std::make_unique<LinkLoad>(directory));
    loads->push_back(std::make_unique<TimerLoad>());
}
