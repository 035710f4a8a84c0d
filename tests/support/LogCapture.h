#ifndef LOGCAPTURE_H
#define LOGCAPTURE_H

#include <QLoggingCategory>
#include <QStringList>

#include <mutex>

/// Takes over the message handler for its lifetime and keeps every message; any thread may log. One at a
/// time.
class LogCapture {
public:
    LogCapture()
    {
        self() = this;
        m_previous = qInstallMessageHandler(&LogCapture::handle);
    }

    ~LogCapture()
    {
        qInstallMessageHandler(m_previous);
        self() = nullptr;
    }

    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// The texts of all messages so far, in order.
    QStringList texts() const
    {
        return collect([](const Message &message) { return message.text; });
    }

    /// All messages so far as "category.level: text", with the levels debug, info, warning, critical.
    QStringList lines() const
    {
        return collect([](const Message &message) {
            static const char *const levels[] = {"debug", "warning", "critical", "fatal", "info"};
            return QStringLiteral("%1.%2: %3")
                .arg(message.category, QLatin1String(levels[message.type]), message.text);
        });
    }

    /// Whether the text of some message contains @p fragment.
    bool contains(const QString &fragment) const { return !texts().filter(fragment).isEmpty(); }

private:
    struct Message {
        QtMsgType type;
        QString category;
        QString text;
    };

    template <typename Format> QStringList collect(Format format) const
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        QStringList result;
        for (const Message &message : m_messages)
            result << format(message);
        return result;
    }

    static LogCapture *&self()
    {
        static LogCapture *current = nullptr;
        return current;
    }

    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        LogCapture *const capture = self();
        const std::lock_guard<std::mutex> guard(capture->m_mutex);
        capture->m_messages.push_back({type, QString::fromLatin1(context.category), text});
    }

    QtMessageHandler m_previous;
    mutable std::mutex m_mutex;
    QVector<Message> m_messages;
};

#endif
