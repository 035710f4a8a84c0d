#include "Outcome.h"

#include "CommandLine.h"
#include "Job.h"
#include "Terminal.h"

#include <AppConfig.h>
#include <FileSync.h>

#include <QCoreApplication>
#include <QFileInfo>
#include <QMetaEnum>

#include <cstdio>

namespace {

constexpr int limitReached = 124;
constexpr char fullDisk[] = "No space left on device (28)"; // what FileSync looks for

void passOnTo(std::FILE *stream, const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, std::size_t(bytes.size()), stream);
    std::fflush(stream);
}

} // namespace

Outcome::Outcome(const Job &job, FileSync &sync)
    : m_job(job), m_sync(sync), m_process(sync.findChild<QProcess *>())
{
    terminal::setBinary(stdout); // line ends are the child's own
    terminal::setBinary(stderr);
    QObject::connect(m_process, &QProcess::readyReadStandardOutput, &sync, [this] { passOn(); });
    QObject::connect(m_process, &QProcess::readyReadStandardError, &sync, [this] { passOn(); });
    QObject::connect(m_process, &QProcess::stateChanged, &sync, [this] { watchCopy(); });
    if (job.command.isEmpty())
        watchCopy();
    QObject::connect(&sync, &FileSync::completed, &sync, [this](int status) { enter(status); });
}

void Outcome::passOn()
{
    passOnTo(stdout, m_process->readAllStandardOutput());
    const QByteArray errors = m_process->readAllStandardError();
    passOnTo(stderr, errors);
    m_lastErrors += errors;
    m_diskFull = m_diskFull || m_lastErrors.contains(fullDisk);
    m_lastErrors = m_lastErrors.right(int(sizeof fullDisk));
}

// The copy follows when the command has ended.
void Outcome::watchCopy()
{
    if (!m_job.from.isEmpty() && m_process->state() == QProcess::NotRunning)
        m_progress = std::make_unique<CopyProgress>(m_job.from, m_job.to);
}

void Outcome::stopAtLimit()
{
    m_process->waitForFinished(0); // it may have ended without this program knowing yet
    if (m_process->state() == QProcess::NotRunning)
        return;
    m_words = text("Stopped at the limit of %1 s.").arg(m_job.limit);
    m_sync.deleteLater();
    AppConfig::exit(limitReached);
}

void Outcome::enter(int status)
{
    m_progress.reset();
    passOn();
    if (status > 0 && m_diskFull)
        status = FileSync::NoSpaceLeftOnDevice;
    m_words = wordsFor(status);
    AppConfig::exit(status & 0xff);
}

QString Outcome::wordsFor(int status) const
{
    const bool ran = m_process->error() != QProcess::FailedToStart && !m_job.command.isEmpty();
    const bool isCopy = !m_job.from.isEmpty()
        && (m_job.command.isEmpty()
            || (ran && m_process->exitCode() == 0 && m_process->exitStatus() == QProcess::NormalExit));
    if (status == FileSync::Success)
        return text(isCopy ? "Done: the copy is complete." : "Done: exit code 0.");
    if (status == FileSync::NoSpaceLeftOnDevice)
        return text("Failed: the disk is full.");
    if (isCopy)
        return text("The copy failed: %1.").arg(m_job.copyProblem());
    const QString program = m_job.host.isEmpty() ? m_job.command : text("ssh");
    if (!ran)
        return text("%1 could not be started: %2.").arg(program, m_process->errorString());
    if (status == FileSync::UnknownError)
        return text("%1 crashed.").arg(program);
    if (status == 255 && !m_job.host.isEmpty())
        return text("Failed: exit code 255, most likely of ssh itself: see what it says above.");
    const char *const name = QMetaEnum::fromType<FileSync::fileSyncStatus>().valueToKey(status);
    if (name && QFileInfo(m_job.command.section(QLatin1Char(' '), 0, 0)).baseName() == text("rsync"))
        return text("Failed: exit code %1 of rsync, %2.").arg(QString::number(status), text(name));
    return text("Failed: exit code %1.").arg(status);
}
