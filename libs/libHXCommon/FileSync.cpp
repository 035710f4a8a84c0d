#include "FileSync.h"

#include "AppConfig.h"
#include "FileSync_p.h"
#include "platform/Platform.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QPointer>
#include <QRegExp>
#include <QTimer>

#include <utility>

int filesync::terminateTimeout = 30000;

[[gnu::init_priority(101)]] QString FileSync::m_RemoteUser;

namespace {

Q_LOGGING_CATEGORY(category, "Olvex.FileSync")

constexpr int copyReportDelay = 10; // ms
constexpr int loggedErrorOutput = 64 * 1024; // bytes at most

// The target is never opened: QFile copies to a temporary file beside it and renames that.
bool replaceByCopy(const QString &source, const QString &target)
{
    if (QFileInfo::exists(source) && platform::isSameEntry(source, target))
        return false;
    // Deliberate: the old target goes first, also when the copy then fails.
    QFile::remove(target);
    return QFileInfo(source).isFile() && QFile::copy(source, target); // a FIFO would block
}

// Returns the end of it. In pieces, because all of it at once need not fit into memory twice.
QByteArray readErrorOutput(QProcess *process, bool *tellsOfFullDisk)
{
    QByteArray end;
    for (QByteArray piece; !(piece = process->read(loggedErrorOutput)).isEmpty();) {
        end += piece;
        *tellsOfFullDisk = *tellsOfFullDisk || end.contains("No space left on device (28)");
        end = end.right(loggedErrorOutput);
    }
    return end;
}

void endProcess(QProcess *process)
{
    process->terminate();
    process->waitForFinished(filesync::terminateTimeout);
    if (process->state() == QProcess::NotRunning)
        return;
    process->kill();
    process->waitForFinished();
}

// Tells whether the job is still there: a receiver may delete it. Its process, a signal of which may be on
// the stack, then lives until control returns to the event loop.
bool emitSignal(FileSync *job, void (FileSync::*signal)(int), int value, QProcess *process)
{
    const auto release = [process] { process->setParent(nullptr); };
    const auto connection = QObject::connect(job, &QObject::destroyed, process, release);
    Q_EMIT(job->*signal)(value);
    QObject::disconnect(connection);
    if (process->parent())
        return true;
    process->deleteLater();
    return false;
}

// Qt 5.15 goes on with the id -1 when the system refuses a process. A signal to that id, which Qt sends when
// it destroys a running process, would end every process of the user.
void keepFromRunning(QProcess *process)
{
    // Not derived from in earnest: Qt notices the end of such a process in a less dependable way.
    struct Access : QProcess {
        using QProcess::setProcessState;
    };
    const auto stop = [process] { (process->*&Access::setProcessState)(QProcess::NotRunning); };
    // Again and again, because Qt takes the end of its pipes for the success of the start.
    QObject::connect(process, &QProcess::stateChanged, process, stop);
    stop();
}

} // namespace

FileSync::FileSync(QObject *parent)
    : QObject(parent), m_process(new QProcess(this)),
      m_keyFile(AppConfig::sharePath(QStringLiteral("certificates/%1_rsa").arg(m_RemoteUser)))
{
    m_process->setWorkingDirectory(QDir::rootPath());
    m_process->setStandardInputFile(QProcess::nullDevice());
    // Deliberate: the output is not connected to onFileSyncReadyRead(), so nothing emits transferProgress().
    connect(m_process, qOverload<int, QProcess::ExitStatus>(&QProcess::finished), this,
            &FileSync::onFinished);
    connect(m_process, &QProcess::errorOccurred, this, &FileSync::onError);
}

FileSync::~FileSync()
{
    if (!m_process)
        return;
    m_process->disconnect(this);
    m_process->kill();
    m_process->waitForFinished();
}

void FileSync::setRemoteUser(const QString &user)
{
    m_RemoteUser = user;
}

bool FileSync::canStart() const
{
    if (m_process && m_process->state() == QProcess::NotRunning)
        return true;
    qCWarning(category) << "A job can be started only once";
    return false;
}

void FileSync::executeCommand(const QString &command, const QStringList &arguments, const QString &host,
                              const QString &workingDirectory)
{
    if (!canStart())
        return;
    m_host = host;
    m_arguments = arguments;
    m_command = command;
    if (!workingDirectory.isEmpty())
        m_process->setWorkingDirectory(workingDirectory);
    if (host.isEmpty()) {
        start(command, arguments);
        return;
    }

    const QString destination = QStringLiteral("%2@%1").arg(host, m_RemoteUser);
    if (destination.startsWith(QLatin1Char('-')) || command.startsWith(QLatin1Char('-'))) {
        qCWarning(category) << "Refused, ssh would read options from:" << destination << command;
        report(UnknownError);
        return;
    }
    start(QStringLiteral("ssh"),
          {QStringLiteral("-o"), QStringLiteral("IPQos=0x00"), QStringLiteral("-o"),
           QStringLiteral("ServerAliveInterval=5"), QStringLiteral("-o"),
           QStringLiteral("StrictHostKeyChecking=no"), QStringLiteral("-i"), m_keyFile, destination, command,
           arguments.join(QLatin1Char(' '))});
}

// The start can fail at once and then has reported when it returns.
void FileSync::start(const QString &program, const QStringList &arguments)
{
    qCInfo(category) << program + QLatin1Char(' ') + arguments.join(QLatin1Char(' '));
    QProcess *const process = m_process; // a receiver of the report may delete the job
    process->start(program, arguments, QIODevice::ReadOnly);
    if (process->state() == QProcess::NotRunning || process->processId() > 0)
        return;
    qCWarning(category) << "The system refuses another process";
    keepFromRunning(process);
    report(UnknownError);
}

void FileSync::syncFile(const QString &command, const QString &from, const QString &to,
                        const QString &hostName, bool hostFrom)
{
    qCInfo(category) << "command:" << command << "from:" << from << "to:" << to << "hostName:" << hostName
                     << "hostFrom:" << hostFrom;
    // Deliberate: no host, no job and no report.
    if (hostName.isEmpty() || !canStart())
        return;
    m_copyPending = true;
    m_source = from;
    m_target = to;
    m_copyFromHost = hostFrom;
    executeCommand(command, QStringList(), hostName, QString());
}

void FileSync::syncFile(const QString &source, const QString &target, const QString &hostName, bool hostFrom)
{
    const DebugInfoEnterExit trace(Q_FUNC_INFO, 1);
    const QString targetPath = QDir::toNativeSeparators(QDir::cleanPath(target));
    const QString sourcePath =
        QDir::toNativeSeparators(QDir::cleanPath(QDir::current().absoluteFilePath(source)));
    qCInfo(category) << "SourcePath:" << sourcePath << "TargetPath:" << targetPath << "hostName:" << hostName
                     << "hostFrom:" << hostFrom;
    m_status = replaceByCopy(sourcePath, targetPath) ? Success : UnknownError;
    QTimer::singleShot(copyReportDelay, this, SLOT(onCopyComplete()));
}

void FileSync::onCopyComplete()
{
    if (!m_process)
        return;
    if (m_status != Success)
        qCWarning(category, "FileSync Failed(%d)\n", m_status);
    report(m_status);
}

// A crash has been reported as an error by the time it arrives here.
void FileSync::onFinished(int exitCode, QProcess::ExitStatus)
{
    const DebugInfoEnterExit trace(Q_FUNC_INFO, 1);
    if (m_restarting || !m_process)
        return;

    int result = exitCode;
    if (exitCode == 0) {
        qCInfo(category) << "exitCode:" << exitCode;
    } else {
        const QProcess::ProcessChannel channel = m_process->readChannel();
        m_process->setReadChannel(QProcess::StandardError);
        const qint64 omitted = m_process->bytesAvailable() - loggedErrorOutput;
        if (omitted > 0)
            qCInfo(category) << "Left out of standard error:" << omitted << "bytes, the end is";
        bool tellsOfFullDisk = false;
        const QByteArray errors = readErrorOutput(m_process, &tellsOfFullDisk);
        m_process->setReadChannel(channel);
        result = tellsOfFullDisk ? NoSpaceLeftOnDevice : exitCode;
        qCInfo(category) << "Failed(" << result
                         << "):" << QString::fromLocal8Bit(errors.constData(), errors.size());
    }

    m_process->terminate(); // has an effect only when this slot was called by name
    if (m_copyPending && result == 0) {
        m_copyPending = false;
        syncFile(m_source, m_target, m_host, m_copyFromHost);
        return;
    }
    report(result);
}

void FileSync::onError(QProcess::ProcessError processError)
{
    if (m_restarting || !m_process)
        return;
    qCInfo(category) << "Failed(" << processError << ")" << m_process->errorString();
    // After these two the child has been reaped, and its id may belong to another process.
    if (processError != QProcess::FailedToStart && processError != QProcess::Crashed)
        m_process->terminate();
    report(UnknownError);
}

// Nothing is released before the receivers return: one that runs an event loop would see the job deleted in
// the middle of its signal.
void FileSync::report(int status)
{
    if (emitSignal(this, &FileSync::completed, status, std::exchange(m_process, nullptr)))
        deleteLater(); // and the process with it
}

void FileSync::onFileSyncReadyRead()
{
    if (!m_process)
        return;
    // Up to the first zero byte.
    const QString text = QString::fromLocal8Bit(m_process->readAllStandardOutput().constData());
    qCDebug(category) << text;
    // Deliberate: the greedy start leaves the capture only the last digit, so "45%" gives 5.
    QRegExp percentage(QStringLiteral(".*(\\d+)%.*"), Qt::CaseSensitive, QRegExp::RegExp2);
    if (!percentage.exactMatch(text))
        return;
    const int progress = percentage.cap(1).toInt();
    qCInfo(category) << "Progress:" << progress;
    emitSignal(this, &FileSync::transferProgress, progress, m_process);
}

void FileSync::onHostChanged(const QString &a_newHost)
{
    if (!m_process || m_restarting)
        return;
    qCInfo(category) << "New host:" << a_newHost << "Current host:" << m_host;
    if (a_newHost.isEmpty() || a_newHost == m_host)
        return;

    const bool wasRunning = m_process->state() != QProcess::NotRunning;
    const QPointer<FileSync> self(this); // the child may report progress to a receiver that deletes it
    m_restarting = true;
    endProcess(m_process);
    if (!self)
        return;
    m_restarting = false;
    if (!m_host.isEmpty())
        m_arguments.replaceInStrings(m_host, a_newHost);
    m_host = a_newHost;
    // Deliberate: the command itself is started, here, even if it ran through ssh before.
    if (wasRunning)
        start(m_command, m_arguments);
}

// Deliberate: the result tells of failure, and that of a directory entry replaces what was noted before it.
bool FileSync::removeDirectory(QDir dir)
{
    return platform::removeDirectory(dir, [](const QString &path) { qCInfo(category) << "Dir:" << path; });
}
