#ifndef SOAKLOADS_H
#define SOAKLOADS_H

#include <QTimer>

#include <atomic>
#include <deque>
#include <limits>
#include <memory>
#include <vector>

/// A number of the report, good while it is between 0 and @p most.
struct SoakCount {
    SoakCount(const char *name_, qint64 most_) : name(name_), most(most_) { }

    const char *name;
    qint64 most;
    std::atomic<qint64> value{0}; ///< Any thread may change it.
};

/// One kind of work, which can be started and stopped again and again.
class SoakLoad : public QObject {
public:
    virtual void start() { m_timer.start(); }
    virtual void stop() { m_timer.stop(); } ///< Starts nothing more.
    virtual bool isIdle() const { return true; } ///< Whether all that was started has ended.

    /// The one that shows the progress comes first. Final once the load was stopped and is idle.
    const std::deque<SoakCount> &counts() const { return m_counts; }

protected:
    SoakLoad() = default;

    /// Calls @p work every so many milliseconds while it runs.
    template <typename Work> SoakLoad(int interval, Work work)
    {
        m_timer.setInterval(interval);
        connect(&m_timer, &QTimer::timeout, this, work);
    }

    using Count = std::atomic<qint64>;

    /// Adds a number to the report.
    Count &count(const char *name, qint64 most = std::numeric_limits<qint64>::max())
    {
        return m_counts.emplace_back(name, most).value;
    }

private:
    QTimer m_timer;
    std::deque<SoakCount> m_counts;
};

using SoakLoads = std::vector<std::unique_ptr<SoakLoad>>;

/// Log messages of several threads; framed messages and noise through a local socket, which is made in
/// @p directory; pausing timers.
void addLocalLoads(const QString &directory, SoakLoads *loads);

/// Connectivity checks of a server with faults; synchronisation jobs, which work in @p directory.
void addOutsideLoads(const QString &directory, SoakLoads *loads);

#endif
