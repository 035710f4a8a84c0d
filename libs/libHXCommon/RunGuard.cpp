#include "RunGuard.h"

#include "platform/Platform.h"

#include <QCryptographicHash>
#include <QDebug>
#include <QDir>

#include <utility>

namespace {

QString derivedName(const QString &key, QLatin1String suffix)
{
    const QByteArray text = (key + suffix).toUtf8();
    return QString::fromLatin1(QCryptographicHash::hash(text, QCryptographicHash::Sha1).toHex());
}

void removeOrphanedSemaphore(const QString &key)
{
    // Qt names both kinds of key files alike, and tells the name of this one.
    QString path = QSharedMemory(key).nativeKey();
    path.replace(QLatin1String("qipc_sharedmemory_"), QLatin1String("qipc_systemsem_"));
    platform::removeOrphanedSemaphore(QFile::encodeName(path).constData());
}

} // namespace

// One process at a time makes, uses or removes the segment and the semaphores of a name. Qt's System V
// semaphores are removed by the process that made them, whoever waits for them, and have no value for a
// moment after they were made: with many processes starting and leaving at once, that lets none or two of
// them run, or blocks all for good.
class RunGuard::Turn {
public:
    explicit Turn(RunGuard *guard)
    {
        const QString path = QDir::temp().filePath(QLatin1String("RunGuard_")
                                                   + derivedName(guard->key, QLatin1String("_turn")));
        m_lock = platform::lockFile(QFile::encodeName(path).constData(), &guard->patience);
        if (m_lock == -1 && std::exchange(guard->patience, -1) != -1)
            qWarning() << "RunGuard: no turn for" << guard->key << "at" << path;
    }
    ~Turn() { platform::unlockFile(m_lock); }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

private:
    int m_lock;
};

RunGuard::RunGuard(const QString &name, QObject *parent)
    : QObject(parent), key(name), memLockKey(derivedName(key, QLatin1String("_memLockKey"))),
      sharedMemKey(derivedName(key, QLatin1String("_sharedMemKey")))
{
    const Turn turn(this);
    removeOrphanedSemaphore(memLockKey);
    removeOrphanedSemaphore(sharedMemKey); // QSharedMemory has one of its own
    sharedMem.emplace(sharedMemKey);
    memLock.emplace(memLockKey, 1);
    // The last detach removes a segment that a killed owner left behind.
    QSharedMemory stale(sharedMemKey);
    stale.attach();
}

RunGuard::~RunGuard()
{
    const Turn turn(this);
    memLock.reset();
    sharedMem.reset();
}

bool RunGuard::tryToRun()
{
    const Turn turn(this);
    memLock->acquire();
    const bool created = !sharedMem->isAttached() && sharedMem->create(8); // Windows would create it again
    memLock->release();
    return created;
}
