#include "hxspinlocker.h"

#include <QByteArray>
#include <QLoggingCategory>
#include <QThread>

#include <algorithm>

namespace {

// Like Q_LOGGING_CATEGORY, without a call: both are asked at every lock and unlock.
Q_ALWAYS_INLINE const QLoggingCategory &lockCategory()
{
    static const QLoggingCategory category("Olvex.HXSpinLocker.Lock", QtWarningMsg);
    return category;
}

Q_ALWAYS_INLINE const QLoggingCategory &referenceCategory()
{
    static const QLoggingCategory category("Olvex.HXSpinLocker.Reference", QtWarningMsg);
    return category;
}

// QThread::currentThread() would cost as much as half of an uncontended lock.
QThread *currentThread()
{
    static thread_local QThread *cached = nullptr;
    if (Q_UNLIKELY(!cached))
        cached = QThread::currentThread();
    return cached;
}

QByteArray currentThreadName()
{
    return QThread::currentThread()->objectName().toUtf8();
}

const char *orEmpty(const char *text)
{
    return text ? text : "";
}

template <std::size_t Size> QByteArray read(const std::atomic<char> (&name)[Size])
{
    char copy[Size];
    std::copy(name, name + Size, copy);
    return copy; // the last byte is never written but with zero
}

// What is too long is cut in front of a letter.
template <std::size_t Size> void write(std::atomic<char> (&name)[Size], const QByteArray &text)
{
    const char *const bytes = text.constData();
    std::size_t length = std::min(std::size_t(text.size()), Size - 1);
    while (length > 0 && (bytes[length] & 0xC0) == 0x80)
        --length;
    for (std::size_t i = 0; i < Size; ++i)
        name[i].store(i < length ? bytes[i] : '\0', std::memory_order_relaxed);
}

Q_DECL_COLD_FUNCTION void traceReference(const char *what, int count, const char *function, const char *info)
{
    qCInfo(referenceCategory, "%s: %d, %s, %s, %s", what, count, currentThreadName().constData(),
           orEmpty(function), orEmpty(info));
}

} // namespace

void HXAtomicLock::lock(const char *function, const char *info)
{
    QThread *const current = currentThread();
    if (Q_UNLIKELY(referenceCategory().isInfoEnabled()))
        traceReference("ref", m_count.fetch_add(0), function, info);

    const bool waits = !tryOwn(current) && !isHeldBy(current);
    if (waits)
        waitFor(current, function, info);
    m_count.fetch_add(1);
    if (Q_UNLIKELY(lockCategory().isInfoEnabled()))
        traceLocked(function, info, waits);
}

void HXAtomicLock::unlock(const char *function, const char *info)
{
    if (Q_UNLIKELY(referenceCategory().isInfoEnabled()))
        traceReference("unref", m_count.fetch_add(0), function, info);

    if (m_count.fetch_sub(1) != 1)
        return;
    if (Q_UNLIKELY(lockCategory().isInfoEnabled()))
        traceUnlocked(function);
    m_owner.exchange(nullptr);
}

bool HXAtomicLock::isLocked() const
{
    return isHeldBy(currentThread());
}

void HXAtomicLock::setTraceInformation(const char *info)
{
    write(m_holderName, currentThreadName());
    m_traceText = orEmpty(info);
}

bool HXAtomicLock::tryOwn(QThread *thread)
{
    QThread *expected = nullptr;
    return m_owner.compare_exchange_strong(expected, thread);
}

bool HXAtomicLock::isHeldBy(QThread *thread) const
{
    QThread *expected = thread;
    return m_count.fetch_add(0) > 0 && m_owner.compare_exchange_strong(expected, thread);
}

void HXAtomicLock::waitFor(QThread *thread, const char *function, const char *info)
{
    qCInfo(lockCategory, "%s Locked by %s (%s) requested by %s (%s)", orEmpty(function),
           read(m_holderName).constData(), m_traceText.load(), currentThreadName().constData(),
           orEmpty(info));
    do {
        QThread::yieldCurrentThread();
    } while (!tryOwn(thread));
}

Q_DECL_COLD_FUNCTION void HXAtomicLock::traceLocked(const char *function, const char *info, bool waited)
{
    setTraceInformation(info);
    if (waited)
        qCDebug(lockCategory, "%s Lock obtained by %s (%s)", orEmpty(function),
                read(m_holderName).constData(), m_traceText.load());
}

Q_DECL_COLD_FUNCTION void HXAtomicLock::traceUnlocked(const char *function)
{
    qCDebug(lockCategory, "%s Lock Released by %s (%s)", orEmpty(function), read(m_holderName).constData(),
            m_traceText.load());
    write(m_holderName, QByteArray());
    m_traceText = "";
}
