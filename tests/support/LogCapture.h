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
        s_current = this;
        // cppcheck-suppress useInitializationList ; the handler needs s_current
        m_previous = qInstallMessageHandler(&LogCapture::handle);
    }

    ~LogCapture()
    {
        qInstallMessageHandler(m_previous);
        s_current = nullptr;
    }

    LogCapture(const LogCapture &) = delete;
    LogCapture &operator=(const LogCapture &) = delete;

    /// All messages so far, in order, as "category.level: text", with the levels debug, info, warning,
    /// critical.
    QStringList lines() const
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return m_lines;
    }

    /// Whether some message contains @p fragment.
    bool contains(const QString &fragment) const { return !lines().filter(fragment).isEmpty(); }

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
    {
        static const char *const levels[] = {"debug", "warning", "critical", "fatal", "info"};
        const std::lock_guard<std::mutex> guard(s_current->m_mutex);
        s_current->m_lines << QStringLiteral("%1.%2: %3")
                                  .arg(QLatin1String(context.category), QLatin1String(levels[type]), text);
    }

    static inline LogCapture *s_current = nullptr;
    QtMessageHandler m_previous;
    mutable std::mutex m_mutex;
    QStringList m_lines;
};

#endif
