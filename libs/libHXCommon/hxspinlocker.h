#ifndef HXSPINLOCKER_H
#define HXSPINLOCKER_H

#include "HXCommonExport.h"

#include <atomic>

class QThread;

/**
 * A recursive lock for short critical sections, acquired by busy-waiting with thread yields.
 *
 * It keeps, for diagnosis, the name of the holding thread and a text of the caller, and reports contention
 * and every acquire and release through the log categories "Olvex.HXSpinLocker.Lock" and
 * "Olvex.HXSpinLocker.Reference". Both have the threshold warning: the trace costs nothing until logging
 * rules switch their info messages on (the lines " Lock obtained by " and " Lock Released by " need debug
 * messages, too).
 *
 * The texts given to lock() and unlock() must live as long as the process: function names, literals. A null
 * pointer reads as an empty text.
 *
 * Any number of threads may use one lock. Waiting costs processor time: there is no sleep and no time-out.
 * Misuse is not detected: an unlock() too many leaves the lock inconsistent for good.
 *
 * Use HXSpinLocker to hold it for a block.
 */
class HXCOMMON_EXPORT HXAtomicLock {
public:
    /// A free lock.
    HXAtomicLock() = default;
    HXAtomicLock(const HXAtomicLock &) = delete;
    HXAtomicLock &operator=(const HXAtomicLock &) = delete;

    /**
     * Acquires the lock, or one more level of it if the calling thread holds it already.
     * @param function name of the calling function, for the trace
     * @param info what the lock is taken for, for the trace
     */
    void lock(const char *function, const char *info);

    /// Releases one level; the last one frees the lock. The arguments are those of lock().
    void unlock(const char *function, const char *info);

    /// Whether the calling thread holds the lock; false when another thread does.
    bool isLocked() const;

    /// Records the calling thread's object name, at most 63 bytes of UTF-8, and @p info as the holder; called
    /// by lock() while tracing is on.
    void setTraceInformation(const char *info);

private:
    bool tryOwn(QThread *thread);
    bool isHeldBy(QThread *thread) const;
    void waitFor(QThread *thread, const char *function, const char *info);
    void traceLocked(const char *function, const char *info, bool waited);
    void traceUnlocked(const char *function);

    // Waiting threads read the trace without synchronisation: it may show a torn or stale value, never freed
    // memory.
    using TraceName = std::atomic<char>[64];

    TraceName m_holderName{};
    mutable std::atomic<int> m_count{0}; // depth of the owner's locks
    mutable std::atomic<QThread *> m_owner{nullptr};
    std::atomic<const char *> m_traceText{""};
};

/**
 * Holds an HXAtomicLock for the lifetime of a block.
 *
 * @code
 * const HXSpinLocker locker(&m_lock, Q_FUNC_INFO, "update");
 * @endcode
 */
class HXCOMMON_EXPORT HXSpinLocker {
public:
    /// Acquires @p lock, which is not null and must outlive this object. The texts are those of
    /// HXAtomicLock::lock().
    HXSpinLocker(HXAtomicLock *lock, const char *function, const char *info)
        : m_lock(lock), m_locked(false), m_function(function), m_info(info)
    {
        this->lock();
    }

    HXSpinLocker(const HXSpinLocker &) = delete;
    HXSpinLocker &operator=(const HXSpinLocker &) = delete;

    /// Releases the lock unless unlock() has done so.
    ~HXSpinLocker() { unlock(); }

    /// Acquires the lock again. Called while it is held, it nests a level that a single unlock() does not
    /// release.
    void lock()
    {
        m_lock->lock(m_function, m_info);
        m_locked = true;
    }

    /// Releases one level of the lock; does nothing when this object holds none.
    void unlock()
    {
        if (!m_locked)
            return;
        m_locked = false;
        m_lock->unlock(m_function, m_info);
    }

private:
    HXAtomicLock *m_lock;
    bool m_locked;
    const char *m_function;
    const char *m_info;
};

#endif
