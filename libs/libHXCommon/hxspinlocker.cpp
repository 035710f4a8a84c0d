#include "hxspinlocker.h"

#include <QByteArray>
#include <QLoggingCategory>
#include <QThread>

#include <algorithm>

namespace {

Q_LOGGING_CATEGORY(lockCategory, "Olvex.HXSpinLocker.Lock", QtWarningMsg)
Q_LOGGING_CATEGORY(referenceCategory, "Olvex.HXSpinLocker.Reference", QtWarningMsg)

// QThread::currentThread() would be half the price of an uncontended lock.
QThread *currentThread()
{
    static thread_local QThread *cached = nullptr;
    if (!cached)
        cached = QThread::currentThread();
    return cached;
}

QByteArray currentThreadName()
{
    return currentThread()->objectName().toUtf8();
}

const char *orEmpty(const char *text)
{
    return text ? text : "";
}

QByteArray read(const std::atomic<char> (&name)[64])
{
    QByteArray copy;
    for (const std::atomic<char> &c : name) {
        const char value = c.load(std::memory_order_relaxed);
        if (value == '\0')
            break;
        copy.append(value);
    }
    return copy;
}

void write(std::atomic<char> (&name)[64], const QByteArray &text)
{
    const int length = std::min(text.size(), 63);
    for (int i = 0; i < 64; ++i)
        name[i].store(i < length ? text.at(i) : '\0', std::memory_order_relaxed);
}

void traceReference(const char *what, int count, const char *function, const char *info)
{
    qCInfo(referenceCategory, "%s: %d, %s, %s, %s", what, count, currentThreadName().constData(),
           orEmpty(function), orEmpty(info));
}

} // namespace

void HXAtomicLock::lock(const char *function, const char *info)
{
    QThread *const current = currentThread();
    if (referenceCategory().isInfoEnabled())
        traceReference("ref", m_count.fetch_add(0), function, info);

    QThread *expected = current;
    if (m_count.fetch_add(0) > 0 && m_owner.compare_exchange_strong(expected, current)) {
        m_count.fetch_add(1);
        if (lockCategory().isInfoEnabled())
            setTraceInformation(info);
        return;
    }

    bool waited = false;
    for (expected = nullptr; !m_owner.compare_exchange_weak(expected, current); expected = nullptr) {
        if (!waited && lockCategory().isInfoEnabled()) {
            qCInfo(lockCategory, "%s Locked by %s (%s) requested by %s (%s)", orEmpty(function),
                   read(m_holderName).constData(), m_traceText.load(), currentThreadName().constData(),
                   orEmpty(info));
        }
        waited = true;
        QThread::yieldCurrentThread();
    }
    m_count.fetch_add(1);

    if (lockCategory().isInfoEnabled()) {
        setTraceInformation(info);
        if (waited)
            qCDebug(lockCategory, "%s Lock obtained by %s (%s)", orEmpty(function),
                    read(m_holderName).constData(), m_traceText.load());
    }
}

void HXAtomicLock::unlock(const char *function, const char *info)
{
    if (referenceCategory().isInfoEnabled())
        traceReference("unref", m_count.fetch_add(0), function, info);

    if (m_count.fetch_sub(1) != 1)
        return;

    if (lockCategory().isInfoEnabled()) {
        qCDebug(lockCategory, "%s Lock Released by %s (%s)", orEmpty(function),
                read(m_holderName).constData(), m_traceText.load());
        write(m_holderName, QByteArray());
        m_traceText = "";
    }
    m_owner.exchange(nullptr);
}

bool HXAtomicLock::isLocked() const
{
    QThread *expected = currentThread();
    return m_count.fetch_add(0) > 0 && m_owner.compare_exchange_strong(expected, expected);
}

void HXAtomicLock::setTraceInformation(const char *info)
{
    write(m_holderName, currentThreadName());
    m_traceText = orEmpty(info);
}

HXSpinLocker::HXSpinLocker(HXAtomicLock *lock, const char *function, const char *info)
    : m_lock(lock), m_locked(false), m_function(function), m_info(info)
{
    this->lock();
}

HXSpinLocker::~HXSpinLocker()
{
    unlock();
}

void HXSpinLocker::lock()
{
    m_lock->lock(m_function, m_info);
    m_locked = true;
}

void HXSpinLocker::unlock()
{
    if (!m_locked)
        return;
    m_locked = false;
    m_lock->unlock(m_function, m_info);
}
