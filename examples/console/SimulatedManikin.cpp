// A manikin that exists in software only, and the link that the console has to it: a pair of connected local
// sockets with noise on the line. The console sends 0x01, a heart rate (16 bits) and a number (32 bits); the
// manikin answers 0x81, its type, the heart rate and the number.

#include "CaptureDecoder.h"
#include "ConsoleTypes.h"

#include <Product.h>

#include <QLocalSocket>
#include <QLoggingCategory>
#include <QRandomGenerator>

#include <sys/socket.h>

using Communication::LogicalLinkControl;
using Bytes = std::vector<unsigned char>;

namespace {

Q_LOGGING_CATEGORY(category, "Olvex.Console.Link", QtInfoMsg)

constexpr unsigned char setHeartRate = 0x01;
constexpr unsigned char heartRateReport = 0x81;
constexpr int shownFrames = 40;

// What the line makes of a frame: a bit is flipped in about `noise` percent of its bytes.
QByteArray disturbed(const Bytes &frame, double noise)
{
    QRandomGenerator &random = *QRandomGenerator::global();
    QByteArray line;
    for (const unsigned char byte : frame)
        line += char(random.bounded(100.0) < noise ? byte ^ (1u << random.bounded(8)) : byte);
    return line;
}

// One end of the link.
struct End {
    QLocalSocket socket;
    LogicalLinkControl encoder{16};
    CaptureDecoder decoder;
    QByteArray line; // what has arrived since the last delimiter
    double sent = 0;

    explicit End(const std::function<void(const CapturedFrame &)> &report) : decoder(report) { }

    void receive()
    {
        const QByteArray chunk = socket.readAll();
        for (const char byte : chunk) {
            line += byte;
            decoder.feed(static_cast<unsigned char>(byte));
            if (byte == 0)
                line = QByteArray(1, byte);
        }
    }

    // Returns the frame as the line takes it.
    QByteArray send(Bytes message, double noise)
    {
        Bytes frame;
        encoder.encode_message(message, frame);
        QByteArray bytes = disturbed(frame, noise);
        socket.write(bytes);
        ++sent;
        return bytes;
    }
};

} // namespace

class SimulatedManikin : public QObject {
    Q_OBJECT
    Q_PROPERTY(double noise MEMBER m_noise NOTIFY changed) // percent of the bytes
    Q_PROPERTY(int type MEMBER m_type NOTIFY changed)

public:
    SimulatedManikin()
    {
        int pair[2] = {-1, -1};
        if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, pair) != 0)
            qCCritical(category) << "there is no link to the simulated manikin";
        for (End *const end : {&m_console, &m_manikin}) {
            end->socket.setSocketDescriptor(pair[end == &m_manikin]);
            connect(&end->socket, &QLocalSocket::readyRead, this, [end] { end->receive(); });
        }
    }

    ~SimulatedManikin() override { qCInfo(category) << "messages sent:" << qint64(m_console.sent); }

    // The console's last frames, the latest first, the last report in words, and for each end its name,
    // messages sent and received, checksum errors and bytes discarded. A busy link changes too often for
    // signals.
    Q_INVOKABLE QVariantMap state() const
    {
        QVariantList counters;
        for (const End *const end : {&m_console, &m_manikin}) {
            const CaptureTotals totals = end->decoder.totals();
            counters << text(end == &m_console ? "Console" : "Manikin") << end->sent << totals.intact
                     << totals.damaged << totals.noise + totals.tooShort;
        }
        return {{text("frames"), m_frames}, {text("report"), m_report}, {text("counters"), counters}};
    }

    Q_INVOKABLE void send(int heartRate)
    {
        const auto number = static_cast<unsigned int>(m_console.sent) + 1;
        Bytes message{setHeartRate};
        LogicalLinkControl::push_back_u16le(message, static_cast<unsigned short>(heartRate));
        LogicalLinkControl::push_back_u32le(message, number);
        list("sent", "", m_console.send(message, m_noise));
        qCDebug(category) << "sent message" << number;
    }

Q_SIGNALS:
    void changed();

private:
    void answer(const CapturedFrame &frame)
    {
        Bytes report = frame.payload;
        unsigned int position = 0;
        if (!frame.intact || LogicalLinkControl::retrieve_u8(report, position) != setHeartRate)
            return;
        report.front() = static_cast<unsigned char>(m_type);
        report.insert(report.begin(), heartRateReport);
        m_manikin.send(report, m_noise);
    }

    void read(const CapturedFrame &frame)
    {
        list("received", frame.intact ? "good" : "CRC error", m_console.line);
        Bytes report = frame.payload;
        unsigned int position = 0;
        if (!frame.intact || LogicalLinkControl::retrieve_u8(report, position) != heartRateReport)
            return;
        const char *const name = manikinTypeAsString(LogicalLinkControl::retrieve_u8(report, position));
        const int heartRate = LogicalLinkControl::retrieve_u16le(report, position);
        const unsigned int number = LogicalLinkControl::retrieve_u32le(report, position);
        m_report =
            text("%1 reports %2 beats/min, answering message %3").arg(text(name)).arg(heartRate).arg(number);
    }

    void list(const char *direction, const char *judgement, const QByteArray &frame)
    {
        m_frames.prepend(QStringList{text(direction), text(judgement), text(frame.toHex(' '))});
        if (m_frames.size() > shownFrames)
            m_frames.removeLast();
    }

    End m_console{[this](const CapturedFrame &frame) { read(frame); }};
    End m_manikin{[this](const CapturedFrame &frame) { answer(frame); }};
    double m_noise = 1;
    int m_type = 1;
    QString m_report;
    QVariantList m_frames;
};

void registerSimulatedManikin()
{
    registerModel<SimulatedManikin>("SimulatedManikin");
}

#include "SimulatedManikin.moc"
