#ifndef RUNGUARD_H
#define RUNGUARD_H

#include "HXCommonExport.h"

#include <QObject>
#include <QSharedMemory>
#include <QString>
#include <QSystemSemaphore>

#include <optional>

/**
 * Lets an executable run only once at a time.
 *
 * Guards with the same name compete, in whatever process they live: the first one whose tryToRun() succeeds
 * is the running instance until the guard object is destroyed or its process ends, be it by a crash or by a
 * kill signal.
 *
 * @code
 * const QCoreApplication application(argc, argv);
 * RunGuard guard(QStringLiteral("Olvex instructor"));
 * if (!guard.tryToRun()) {
 *     qWarning() << "Another instance is running.";
 *     return 3;
 * }
 * return application.exec();
 * @endcode
 *
 * The name may hold any characters and have any length. The running instance is the one that could create a
 * named shared-memory segment; a named semaphore serialises the attempts.
 *
 * Where a segment outlives a process that was killed (System V shared memory), the constructor of the next
 * guard with the same name removes it. A guard that was constructed before the running instance was killed
 * does not: construct a guard anew for every attempt.
 *
 * The names of segment and semaphore are resolved in the directory for temporary files. Processes with
 * different temporary directories (TMPDIR, containers) therefore do not see each other. Users who share that
 * directory do: one of them runs, the others are refused. The segment that a killed process left behind can
 * only be removed by a process of the same user or of the administrator.
 *
 * What cleans that directory must spare files named "qipc_*": without them two instances can run.
 *
 * Guards with one name take turns, each for a moment; other names do not matter. A guard that has waited for
 * 10 s in all, for its turns together, warns (default log category) and goes on without.
 *
 * A guard belongs to the thread that constructs it. Errors of the operating system are not told apart:
 * whoever cannot create the segment may not run.
 */
class HXCOMMON_EXPORT RunGuard : public QObject {
    Q_OBJECT

public:
    /// Prepares a guard for the instances that share the name @p key. It may wait while another such
    /// process is starting.
    explicit RunGuard(const QString &key, QObject *parent = nullptr);

    /// Gives up the claim if this guard holds it.
    ~RunGuard() override;

    /**
     * Tries to become the running instance; call it once per guard. It may wait while another process is
     * starting.
     * @return true if this process may run, until the guard is destroyed; false if another guard with this
     * name holds the claim, in this process or in another, and also if this guard itself holds it already
     */
    bool tryToRun();

private:
    class Turn;

    const QString key;
    const QString memLockKey;
    const QString sharedMemKey;
    std::optional<QSharedMemory> sharedMem; // these two are made, used and removed in turn
    std::optional<QSystemSemaphore> memLock;
    int patience = 10000; // ms, for all its turns together; -1 when one was not to be had
};

#endif
