#include "hxspinlocker.h"

#include <QByteArray>
#include <QLoggingCategory>
#include <QThread>

#include <algorithm>

namespace {

// Made when the library is loaded and never destroyed: asking whether they are enabled costs one load, and a
// lock may be used by whatever is destroyed last.
const QLoggingCategory &lockCategory = *new QLoggingCategory("Olvex.HXSpinLocker.Lock", QtWarningMsg);
const QLoggingCategory &referenceCategory =
    *new QLoggingCategory("Olvex.HXSpinLocker.Reference", QtWarningMsg);

// QThread::currentThread() alone would be half the price of an uncontended lock.
QThread *currentThread()
{
#if defined(__GNUC__) && defined(__ELF__)
    [[gnu::tls_model("initial-exec")]] // one load instead of a call
#endif
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
    if (referenceCategory.isInfoEnabled())
        traceReference("ref", m_count.fetch_add(0), function, info);

    // A free lock has no owner, so that asking for the owner first spares the look at the count.
    QThread *owner = nullptr;
    bool waited = false;
    if (!m_owner.compare_exchange_strong(owner, current) && (owner != current || m_count.fetch_add(0) <= 0)) {
        wait(current, function, info);
        waited = true;
    }
    m_count.fetch_add(1);

    if (lockCategory.isInfoEnabled()) {
        setTraceInformation(info);
        if (waited)
            traceHolder("Lock obtained by", function);
    }
}

void HXAtomicLock::wait(QThread *current, const char *function, const char *info)
{
    if (lockCategory.isInfoEnabled()) {
        qCInfo(lockCategory, "%s Locked by %s (%s) requested by %s (%s)", orEmpty(function),
               read(m_holderName).constData(), m_traceText.load(), currentThreadName().constData(),
               orEmpty(info));
    }
    QThread *none = nullptr;
    while (!m_owner.compare_exchange_strong(none, current)) {
        none = nullptr;
        QThread::yieldCurrentThread();
    }
}

void HXAtomicLock::traceHolder(const char *event, const char *function) const
{
    qCDebug(lockCategory, "%s %s %s (%s)", orEmpty(function), event, read(m_holderName).constData(),
            m_traceText.load());
}

void HXAtomicLock::unlock(const char *function, const char *info)
{
    if (referenceCategory.isInfoEnabled())
        traceReference("unref", m_count.fetch_add(0), function, info);

    if (m_count.fetch_sub(1) != 1)
        return;

    if (lockCategory.isInfoEnabled()) {
        traceHolder("Lock Released by", function);
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
