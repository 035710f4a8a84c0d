#ifndef FILESYNC_H
#define FILESYNC_H

#include "HXCommonExport.h"

#include <QDir>
#include <QObject>
#include <QProcess>
#include <QStringList>

/**
 * One synchronisation job: a child process, here or on a remote host through ssh, and a report of its
 * outcome.
 *
 * A job is made on the heap, started once, reports once and deletes itself:
 *
 * @code
 * FileSync::setRemoteUser(QStringLiteral("olvex")); // before the first job is made
 * FileSync *const job = new FileSync(this);
 * connect(job, &FileSync::completed, this, [](int status) {
 *     if (status == FileSync::NoSpaceLeftOnDevice)
 *         qWarning("The disk is full");
 * });
 * job->syncFile(QStringLiteral("tar -cf /srv/log.tar -C /var log"), QStringLiteral("/mnt/manikin/log.tar"),
 *               AppConfig::tmpPath(QStringLiteral("log.tar")), QStringLiteral("manikin-7"), true);
 * @endcode
 *
 * <b>Reports.</b> completed() is emitted exactly once for every job that was started, whatever became of the
 * child: an exit code, a crash, a failed start. Connect to it before the start: a start can fail at once.
 * Only two things end without a report: a remote syncFile() with an empty host name, and the destruction of
 * the job. A second start of a job is refused with a warning. A slot of its signals may delete the job, or
 * its parent.
 *
 * <b>Stopping a job.</b> Delete it. A running child is killed and reaped by the destructor, so that none
 * outlives its job; what the child itself has started, such as the command at the far end of an ssh, may go
 * on. There is no time-out: the caller bounds a job.
 *
 * @code
 * QTimer::singleShot(60000, job, &QObject::deleteLater); // no report then; cancelled by the end of the job
 * @endcode
 *
 * <b>Waiting for a password.</b> ssh asks for a password, or for the passphrase of the key, when the remote
 * host does not accept the key alone. It asks on the terminal that the process was started from, or through
 * the program named by SSH_ASKPASS, never on standard input, and then waits for ever. Without either it gives
 * up and the job reports 255, the exit code of ssh for all failures of its own. Where nobody can type, bound
 * the job as above, or put "BatchMode yes" into the ssh configuration of the account. A connection that dies
 * is noticed after about 15 s (three unanswered ServerAliveInterval of 5 s), a host that never answers after
 * the system's own connection time-out; both report 255.
 *
 * <b>The child.</b> Standard input is at its end from the beginning. The output is kept in memory until it is
 * read or the job ends; of the errors of a failed command the last 64 KiB are logged. Names reach the child
 * as given, in the local 8-bit encoding, and no shell of this side sees them; the @e remote shell does
 * interpret command and arguments.
 *
 * The class belongs to the thread that owns the object, which needs an event loop; local copies and host
 * changes block it. Log category: "Olvex.FileSync".
 */
class HXCOMMON_EXPORT FileSync : public QObject {
    Q_OBJECT

public:
    /**
     * What completed() reports. The positive values are the exit codes of rsync; a command may report others,
     * such as the 255 of ssh. StartSync, InProgress and ErrorSavingLog are vocabulary for the application and
     * never reported.
     */
    enum fileSyncStatus {
        StartSync = -254, ///< For the application: about to start.
        InProgress = -253, ///< For the application: running.
        ErrorSavingLog = -3, ///< For the application: the log could not be saved.
        NoSpaceLeftOnDevice = -2, ///< The command failed and reported a full disk on standard error.
        UnknownError = -1, ///< The command did not start or crashed, or the local copy failed.
        Success = 0, ///< The command, and the local copy if there was one, succeeded.
        SyntaxError = 1, ///< rsync: wrong syntax or usage.
        ProtocolIncompatibility = 2, ///< rsync: the two ends speak different protocols.
        ErrorsSelectingFiles = 3, ///< rsync: input or output files or directories could not be selected.
        RequestedActionNotSupported = 4, ///< rsync: the other end or the platform cannot do what was asked.
        ErrorStartingClientServerProtocol = 5, ///< rsync: the client-server protocol did not start.
        DaemonUnableToAppendToLogfile = 6, ///< rsync: the daemon cannot write its log.
        ErrorInSocketIO = 10, ///< rsync: socket error.
        ErrorInFileIO = 11, ///< rsync: file error.
        ErrorInRsyncProtocolDataStream = 12, ///< rsync: the data stream broke.
        ErrorsWithProgramDiagnostics = 13, ///< rsync: diagnostics failed.
        ErrorInIPCCode = 14, ///< rsync: inter-process communication failed.
        ReceivedSIGUSR1orSIGINT = 20, ///< rsync: stopped by a signal.
        SomeErrorReturnedByWaitpid = 21, ///< rsync: waitpid() failed.
        ErrorAllocatingCoreMemoryBuffers = 22, ///< rsync: out of memory.
        PartialTransferDueToError = 23, ///< rsync: some files were not transferred, because of an error.
        PartialTransferDueToVanishedSourceFiles = 24, ///< rsync: some source files vanished meanwhile.
        MaxDeleteLimitStoppedDeletions = 25, ///< rsync: --max-delete stopped the deletions.
        TimeoutInDataSendReceive = 30, ///< rsync: --timeout passed without data.
        TimeoutWaitingForDaemonConnection = 35 ///< rsync: --contimeout passed without a connection.
    };
    Q_ENUM(fileSyncStatus)

    /// Makes a job. It settles on its private key now, by m_RemoteUser and AppConfig::sharePath(), so
    /// AppConfig is to be initialised first.
    explicit FileSync(QObject *parent);

    /// Kills a running child and waits for its end; reports nothing.
    ~FileSync() override;

    /// Sets the account on remote hosts for all jobs made from now on; call it before any job is made.
    static void setRemoteUser(const QString &user);

    /**
     * Runs a command and reports its exit code.
     *
     * With a host it runs there, through ssh (found in PATH) with exactly these arguments: "-o",
     * "IPQos=0x00", "-o", "ServerAliveInterval=5", "-o", "StrictHostKeyChecking=no", "-i", the key file,
     * user\@host, the command, and all arguments joined by blanks into one. The key file is
     * "certificates/<user>_rsa" of the share root, provisioned by others; ssh expands "%", "~" and "${}" in
     * its path. Host keys are accepted unseen.
     *
     * A user or a remote command that starts with a dash is refused and reported as -1, because ssh would
     * take it for one of its own options, which can name programs to run here.
     *
     * @param command a program in PATH or a path; with a host, text for the remote shell
     * @param arguments the program's arguments; with a host, more text for the remote shell, so quote them
     * @param host where to run it; empty: here, without ssh
     * @param workingDirectory of the local process; empty: the root of the file system
     */
    void executeCommand(const QString &command, const QStringList &arguments, const QString &host,
                        const QString &workingDirectory);

    /**
     * Runs a command on a remote host and, if it exits with 0, copies a local file; reports the outcome of
     * the last step.
     *
     * An empty @p hostName does nothing at all: no process, no copy, no report; the job then stays for its
     * parent or caller to delete.
     * @param command text for the remote shell; see executeCommand()
     * @param from source of the local copy, a regular file
     * @param to its target, removed first
     * @param hostName the remote host
     * @param hostFrom whether the transfer comes from the host; only logged
     */
    void syncFile(const QString &command, const QString &from, const QString &to, const QString &hostName,
                  bool hostFrom);

    /**
     * Copies a local file before it returns, and reports 0 or -1 about 10 ms later.
     *
     * The target is removed first and then either is a complete copy or does not exist. If it is the source
     * itself, or leads to it, also through another mount of its directory, nothing is touched and the copy
     * fails; another hard link to the source is replaced. A missing directory is not made.
     * @param source a regular file; a relative path starts in the working directory of this process
     * @param target the file to write
     * @param hostName only logged
     * @param hostFrom only logged
     */
    void syncFile(const QString &source, const QString &target, const QString &hostName, bool hostFrom);

    /**
     * Removes a directory tree.
     *
     * Hidden entries, broken links and special files are not removed; they keep their directory from being
     * removed and so make the result true. A symbolic link is removed and never followed, also as @p dir; on
     * POSIX systems not even one that another process puts in the place of a directory meanwhile. There each
     * level takes a descriptor while it is worked on, and what is deeper than there are descriptors is left.
     * @return whether it @e failed: false when nothing is left or nothing was there, true when something is
     * left
     */
    static bool removeDirectory(QDir dir);

    /// The account on remote hosts, empty at start; set by setRemoteUser().
    static QString m_RemoteUser;

Q_SIGNALS:
    /// The job is over. @p status is the exit code of the command or a fileSyncStatus. The job deletes itself
    /// when control returns to the event loop.
    void completed(int status);

    /**
     * The last digit in front of the last "%" that the command has printed: 5 for 45 %.
     *
     * Emitted only by the slot onFileSyncReadyRead(), which nothing calls: an application that wants it
     * connects the readyReadStandardOutput() signal of the QProcess, the job's only child object, to that
     * slot by name.
     */
    void transferProgress(int progress);

public Q_SLOTS:
    /**
     * Stops the running command and starts it against another host.
     *
     * The current host is replaced by @p a_newHost wherever it occurs in the arguments. The command is then
     * run @e here with these arguments, not through ssh, also if it ran on the old host: host changes are for
     * commands that name the host in their own arguments. Blocks until the old child has ended, up to 30 s; a
     * child that does not end by then is killed. A job without a running command only stores the host; an
     * empty or unchanged host changes nothing, nor does a call while it blocks.
     */
    void onHostChanged(const QString &a_newHost);

private Q_SLOTS:
    void onFinished(int exitCode, QProcess::ExitStatus exitStatus);
    void onError(QProcess::ProcessError processError);
    void onFileSyncReadyRead();
    void onCopyComplete();

private:
    bool canStart() const;
    void start(const QString &program, const QStringList &arguments);
    void report(int status);

    QProcess *m_process; // null once the job has reported
    QString m_keyFile;
    qint32 m_status = -1;
    QString m_host;
    QString m_source;
    QString m_target;
    bool m_copyFromHost = false;
    bool m_copyPending = false;
    QString m_command;
    QStringList m_arguments;
    bool m_restarting = false;
};

#endif
