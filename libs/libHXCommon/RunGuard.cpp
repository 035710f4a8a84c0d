#include "RunGuard.h"

#include "platform/Platform.h"

#include <QCryptographicHash>
#include <QDir>

namespace {

QString derivedName(const QString &key, QLatin1String suffix)
{
    const QByteArray text = (key + suffix).toUtf8();
    return QString::fromLatin1(QCryptographicHash::hash(text, QCryptographicHash::Sha1).toHex());
}

} // namespace

// One process at a time makes, uses or removes segments and semaphores. Qt's System V semaphores are removed
// by the process that made them, whoever waits for them, and have no value for a moment after they were made:
// with many processes starting and leaving at once, that lets none or two of them run, or blocks all for
// good.
class RunGuard::Turn {
public:
    Turn() : m_lock(platform::lockDirectory(QFile::encodeName(QDir::tempPath()).constData(), 10000)) { }
    ~Turn() { platform::unlockDirectory(m_lock); }
    Turn(const Turn &) = delete;
    Turn &operator=(const Turn &) = delete;

private:
    int m_lock;
};

RunGuard::RunGuard(const QString &name, QObject *parent)
    : QObject(parent), turn(new Turn), key(name), memLockKey(derivedName(key, QLatin1String("_memLockKey"))),
      sharedMemKey(derivedName(key, QLatin1String("_sharedMemKey"))), sharedMem(sharedMemKey),
      memLock(memLockKey, 1)
{
    {
        // The last detach removes a segment that a killed owner left behind.
        QSharedMemory stale(sharedMemKey);
        stale.attach();
    }
    turn.reset();
}

RunGuard::~RunGuard()
{
    turn = std::make_unique<Turn>();
}

bool RunGuard::tryToRun()
{
    const Turn now;
    memLock.acquire();
    const bool created = !sharedMem.isAttached() && sharedMem.create(8); // Windows would create it again
    memLock.release();
    return created;
}
