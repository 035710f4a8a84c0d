#ifndef RUNGUARD_H
#define RUNGUARD_H

#include "HXCommonExport.h"

#include <QObject>
#include <QSharedMemory>
#include <QString>
#include <QSystemSemaphore>

#include <memory>

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
 * A guard belongs to the thread that constructs it. Errors of the operating system are not told apart:
 * whoever cannot create the segment may not run.
 */
class HXCOMMON_EXPORT RunGuard : public QObject {
    Q_OBJECT

public:
    /// Prepares a guard for the instances that share the name @p key. It may wait while another process is
    /// starting.
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

    std::unique_ptr<Turn> turn; // first, so that it outlives the others in the destructor
    const QString key;
    const QString memLockKey;
    const QString sharedMemKey;
    QSharedMemory sharedMem;
    QSystemSemaphore memLock;
};

#endif
