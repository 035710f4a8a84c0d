// A manikin that exists in software only, and the link that the console has to it: a pair of connected local
// sockets with noise on the line.
//
// The console sends a command (8 bits), a number (32 bits), and a heart rate (16 bits) or the value of a
// state (32 bits) and the name of its enumeration with a closing zero. The manikin answers the command with
// its highest bit set, the number, its type (8 bits) and the rest as it came.

#include "CaptureDecoder.h"
#include "ConsoleTypes.h"

#include <Product.h>

#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLoggingCategory>
#include <QQueue>
#include <QRandomGenerator>
#include <QTime>

using Communication::LogicalLinkControl;
using Bytes = std::vector<unsigned char>;

namespace {

Q_LOGGING_CATEGORY(category, "Olvex.Console.Link", QtInfoMsg)

constexpr unsigned char setHeartRate = 0x01;
constexpr unsigned char setState = 0x02;
constexpr unsigned char answerTo = 0x80;
constexpr int typeAt = 5; // in an answer
constexpr int shownFrames = 40;

// What the line has done to a byte.
struct Fate {
    bool changed;
    bool last; // of its frame
};

struct Line {
    QByteArray bytes;
    QVariantList changed; // indexes
};

// One end of the link.
class End {
public:
    explicit End(const std::function<void(const CapturedFrame &)> &report) : m_decoder(report) { }

    void connectTo(QLocalSocket *socket, End *peer)
    {
        m_socket = socket;
        m_peer = peer;
        QObject::connect(socket, &QLocalSocket::readyRead, socket, [this] { receive(); });
    }

    // A bit is flipped in about `noise` percent of the bytes. Returns the frame as the line takes it.
    Line send(Bytes message, double noise)
    {
        QRandomGenerator &random = *QRandomGenerator::global();
        Bytes frame;
        m_encoder.encode_message(message, frame);
        Line line;
        for (const unsigned char byte : frame) {
            const bool changed = random.bounded(100.0) < noise;
            if (changed)
                line.changed << line.bytes.size();
            line.bytes += char(changed ? byte ^ (1u << random.bounded(8)) : byte);
            m_peer->m_coming.enqueue({changed, std::size_t(line.bytes.size()) == frame.size()});
        }
        m_socket->write(line.bytes);
        ++m_sent;
        return line;
    }

    const Line &line() const { return m_line; } // what has arrived since the last delimiter
    double sent() const { return m_sent; }

    // Messages sent and received, checksum errors, bytes discarded, and percent of the messages lost that
    // should have arrived, since the last reset.
    QVariantList counters() const
    {
        QVector<double> counted = counts();
        for (int i = 0; i < m_zero.size(); ++i)
            counted[i] -= m_zero[i];
        const double arrived = counted.takeLast();
        const double loss = arrived > 0 ? qMax(0.0, 100 * (1 - counted[1] / arrived)) : 0;
        return {counted[0], counted[1], counted[2], counted[3], loss};
    }

    void reset() { m_zero = counts(); }

private:
    void receive()
    {
        const QByteArray chunk = m_socket->readAll();
        for (const char byte : chunk) {
            const Fate fate = m_coming.dequeue();
            if (fate.changed)
                m_line.changed << m_line.bytes.size();
            m_line.bytes += byte;
            m_arrived += fate.last;
            m_decoder.feed(static_cast<unsigned char>(byte));
            if (byte == 0)
                m_line = {QByteArray(1, byte), fate.changed ? QVariantList{0} : QVariantList()};
        }
    }

    QVector<double> counts() const
    {
        const CaptureTotals totals = m_decoder.totals();
        return {m_sent, double(totals.intact), double(totals.damaged), double(totals.noise + totals.tooShort),
                m_arrived};
    }

    QLocalSocket *m_socket = nullptr;
    End *m_peer = nullptr;
    LogicalLinkControl m_encoder{64};
    CaptureDecoder m_decoder;
    Line m_line;
    QQueue<Fate> m_coming;
    double m_sent = 0;
    double m_arrived = 0; // messages, be they damaged or not
    QVector<double> m_zero; // the counts at the last reset
};

// The fields of a message.
QString words(Bytes message)
{
    unsigned int position = 0;
    const unsigned char command = LogicalLinkControl::retrieve_u8(message, position);
    const unsigned int number = LogicalLinkControl::retrieve_u32le(message, position);
    QString who = QCoreApplication::translate("SimulatedManikin", "Set");
    if (command & answerTo)
        who = text(manikinTypeAsString(LogicalLinkControl::retrieve_u8(message, position)));
    QString what;
    if ((command & ~answerTo) == setHeartRate) {
        what = QCoreApplication::translate("SimulatedManikin", "%1 beats/min")
                   .arg(LogicalLinkControl::retrieve_u16le(message, position));
    } else {
        const int value = static_cast<int>(LogicalLinkControl::retrieve_u32le(message, position));
        const char *const name = LogicalLinkControl::retrieve_string(message, position);
        what = text("%1 = %2").arg(text(name ? name : "?")).arg(value);
    }
    return QCoreApplication::translate("SimulatedManikin", "%1: %2 (message %3)").arg(who, what).arg(number);
}

} // namespace

class SimulatedManikin : public QObject {
    Q_OBJECT
    Q_PROPERTY(double noise MEMBER m_noise NOTIFY changed) // percent of the bytes
    Q_PROPERTY(int type MEMBER m_type NOTIFY changed)

public:
    SimulatedManikin()
    {
        m_server.setSocketOptions(QLocalServer::UserAccessOption);
        m_server.listen(text("olvex-console-%1-%2")
                            .arg(QCoreApplication::applicationPid())
                            .arg(QRandomGenerator::global()->generate()));
        m_socket.connectToServer(m_server.serverName());
        m_server.waitForNewConnection(1000);
        QLocalSocket *const other = m_server.nextPendingConnection();
        if (!other)
            qCCritical(category) << "there is no link to the simulated manikin:" << m_server.errorString();
        else
            m_manikin.connectTo(other, &m_console);
        m_console.connectTo(&m_socket, &m_manikin);
        m_server.close();
        qCDebug(category) << "linked through" << m_socket.fullServerName();
    }

    ~SimulatedManikin() override { qCInfo(category) << "messages sent:" << qint64(m_console.sent()); }

    // The console's last frames, the latest first, the last report in words, and for each end its name and
    // its counters. A busy link changes too often for signals.
    Q_INVOKABLE QVariantMap state() const
    {
        return {{text("frames"), m_frames},
                {text("report"), m_report},
                {text("counters"),
                 QVariantList{tr("Console")} + m_console.counters() + QVariantList{tr("Manikin")}
                     + m_manikin.counters()}};
    }

    Q_INVOKABLE void sendHeartRate(int heartRate)
    {
        Bytes message = begin(setHeartRate);
        LogicalLinkControl::push_back_u16le(message, static_cast<unsigned short>(heartRate));
        send(message);
    }

    // The name is that of an enumeration, "Eyes.pupilSize_t".
    Q_INVOKABLE void sendState(const QString &name, int value)
    {
        Bytes message = begin(setState);
        LogicalLinkControl::push_back_u32le(message, static_cast<unsigned int>(value));
        const QByteArray bytes = name.toLatin1();
        message.insert(message.end(), bytes.constData(), bytes.constData() + bytes.size() + 1);
        send(message);
    }

    Q_INVOKABLE void reset()
    {
        m_console.reset();
        m_manikin.reset();
        m_frames.clear();
    }

    // To the clipboard, one on a line, the oldest first.
    Q_INVOKABLE void copyFrames() const
    {
        QStringList lines;
        for (const QVariant &frame : m_frames)
            lines.prepend(frame.toMap().value(text("hex")).toString());
        QGuiApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
    }

Q_SIGNALS:
    void changed();

private:
    Bytes begin(unsigned char command) const
    {
        Bytes message{command};
        LogicalLinkControl::push_back_u32le(message, static_cast<unsigned int>(m_console.sent()) + 1);
        return message;
    }

    void send(const Bytes &message)
    {
        list(tr("sent"), true, message, m_console.send(message, m_noise));
        qCDebug(category) << "sent message" << qint64(m_console.sent());
    }

    void answer(const CapturedFrame &frame)
    {
        Bytes message = frame.payload;
        if (!frame.intact || message.size() < std::size_t(typeAt)) // the noise may hit upon a good checksum
            return;
        message.front() |= answerTo;
        message.insert(message.begin() + typeAt, static_cast<unsigned char>(m_type));
        m_manikin.send(message, m_noise);
    }

    void read(const CapturedFrame &frame)
    {
        list(tr("received"), frame.intact, frame.payload, m_console.line());
        if (frame.intact)
            m_report = words(frame.payload);
    }

    void list(const QString &direction, bool intact, const Bytes &message, const Line &line)
    {
        m_frames.prepend(QVariantMap{{text("time"), QTime::currentTime().toString(text("hh:mm:ss.zzz"))},
                                     {text("direction"), direction},
                                     {text("intact"), intact},
                                     {text("words"), intact ? words(message) : QString()},
                                     {text("hex"), text(line.bytes.toHex(' '))},
                                     {text("changed"), line.changed}});
        if (m_frames.size() > shownFrames)
            m_frames.removeLast();
    }

    End m_console{[this](const CapturedFrame &frame) { read(frame); }};
    End m_manikin{[this](const CapturedFrame &frame) { answer(frame); }};
    QLocalServer m_server; // it owns the manikin's socket
    QLocalSocket m_socket;
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
