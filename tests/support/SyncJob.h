#ifndef SYNCJOB_H
#define SYNCJOB_H

#include <AppConfig.h>
#include <FileSync.h>

#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTextCodec>

#include <csignal>
#include <functional>

inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

inline bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

/// The content of a file, null if there is none.
inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Writes a program in the language of sh.
inline bool writeProgram(const QString &path, const QByteArray &script)
{
    return writeFile(path, "#!/bin/sh\n" + script)
        && QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

inline bool isAlive(qint64 pid)
{
    return pid > 0 && ::kill(pid_t(pid), 0) == 0;
}

/// A directory that is the working directory, the share root and the per-user base; its "bin" is first in
/// PATH.
class SyncSandbox {
public:
    SyncSandbox()
    {
        QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); // for names in any locale
        QDir::setCurrent(m_dir.path());
        QDir().mkdir(text("bin"));
        qputenv("PATH", path("bin").toLocal8Bit() + ':' + qgetenv("PATH"));
        qputenv("APPDATA", m_dir.path().toLocal8Bit());
        AppConfig::instance()->setupConfigPaths();
        AppConfig::sharePath(QString()); // settles the share root
    }

    QString root() const { return m_dir.path(); }
    QString path(const char *name) const { return m_dir.filePath(text(name)); }

private:
    QTemporaryDir m_dir;
};

inline QProcess *processOf(const FileSync &job)
{
    return job.findChild<QProcess *>();
}

/// Waits until the child has printed something.
inline bool waitForOutput(const FileSync &job)
{
    return QSignalSpy(processOf(job), &QProcess::readyReadStandardOutput).wait(20000);
}

/// Runs one job until it has deleted itself.
/// @return all that it has reported
inline QList<int> runJob(const std::function<void(FileSync &)> &start)
{
    auto *const job = new FileSync(nullptr);
    QSignalSpy completed(job, &FileSync::completed);
    QSignalSpy gone(job, &QObject::destroyed);
    start(*job);
    if (gone.isEmpty() && !gone.wait(20000))
        delete job;
    QList<int> reports;
    while (!completed.isEmpty())
        reports << completed.takeFirst().constFirst().toInt();
    return reports;
}

inline QList<int> runJob(const QString &command, const QStringList &arguments,
                         const QString &host = QString(), const QString &workingDirectory = QString())
{
    return runJob([&](FileSync &job) { job.executeCommand(command, arguments, host, workingDirectory); });
}

#endif
