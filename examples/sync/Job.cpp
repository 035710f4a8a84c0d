#include "Job.h"

#include "CommandLine.h"

#include <AppConfig.h>
#include <FileSync.h>

#include <QFileInfo>
#include <QRegularExpression>
#include <QStorageInfo>

#include <algorithm>

namespace {

// As a shell would have to be told.
QString quoted(QString word)
{
    static const QRegularExpression plain(text("^[\\w./:=@%+,-]+$"));
    if (plain.match(word).hasMatch())
        return word;
    return QLatin1Char('\'') + word.replace(QLatin1Char('\''), text("'\\''")) + QLatin1Char('\'');
}

QString absolute(const QString &path)
{
    return QDir::cleanPath(QDir::current().absoluteFilePath(path));
}

} // namespace

Job::Job(const CommandLine &line)
    : command(line.value("--command")), arguments(line.value("--arguments")),
      directory(line.value("--directory")), host(line.value("--host")), user(line.value("--user")),
      from(line.value("--from")), to(line.value("--to")), limit(line.value("--limit").toInt())
{
}

QString Job::problem() const
{
    if (command.isEmpty() && from.isEmpty())
        return text("There is nothing to do: give --command, or --from and --to, or see --help.");
    if (command.startsWith(QLatin1Char('-')) || user.startsWith(QLatin1Char('-')))
        return text("A command or an account cannot start with \"-\".");
    if (!command.isEmpty() && !from.isEmpty() && host.isEmpty())
        return text("A copy follows only a command on a --host.");
    if (!host.isEmpty() && command.isEmpty())
        return text("A copy alone is made here, without a --host.");
    if (!host.isEmpty() && !directory.isEmpty())
        return text("--directory is for commands that run here, not on a --host.");
    if (!directory.isEmpty() && !QFileInfo(directory).isDir())
        return text("There is no directory %1.").arg(directory);
    if (limit > 24 * 3600)
        return text("--limit goes from 1 to 86400 seconds.");
    return QString();
}

void Job::start(FileSync &sync) const
{
    const QString remote = arguments.isEmpty() ? command : command + QLatin1Char(' ') + arguments;
    if (command.isEmpty())
        sync.syncFile(from, to, host, false);
    else if (!from.isEmpty())
        sync.syncFile(remote, from, to, host, true);
    else if (!host.isEmpty())
        sync.executeCommand(command, {arguments}, host, QString());
    else
        sync.executeCommand(command, QProcess::splitCommand(arguments), QString(), directory);
}

QString Job::shown() const
{
    QStringList words{command};
    if (host.isEmpty()) {
        words += QProcess::splitCommand(arguments);
    } else {
        // What FileSync documents.
        words = text("ssh -o IPQos=0x00 -o ServerAliveInterval=5 -o StrictHostKeyChecking=no -i")
                    .split(QLatin1Char(' '));
        words << AppConfig::sharePath(text("certificates/%1_rsa").arg(user))
              << user + QLatin1Char('@') + host;
        if (from.isEmpty())
            words << command << arguments;
        else
            words << (arguments.isEmpty() ? command : command + QLatin1Char(' ') + arguments) << QString();
    }
    std::transform(words.cbegin(), words.cend(), words.begin(), quoted);
    QStringList steps;
    if (!command.isEmpty())
        steps << text("cd %1").arg(quoted(directory.isEmpty() ? QDir::rootPath() : absolute(directory)))
              << words.join(QLatin1Char(' '));
    if (!from.isEmpty())
        steps << text("cp %1 %2").arg(quoted(absolute(from)), quoted(absolute(to)));
    return steps.join(text(" && ")) + QLatin1Char('\n');
}

QString Job::copyProblem() const
{
    const QFileInfo source(from);
    const QFileInfo target(to);
    const QFileInfo directoryOfTarget(target.absolutePath());
    if (!source.exists())
        return text("%1 does not exist").arg(absolute(from));
    if (!source.isFile())
        return text("%1 is not a file").arg(absolute(from));
    if (!source.isReadable())
        return text("%1 cannot be read").arg(absolute(from));
    if (source == target)
        return text("%1 is the file itself").arg(absolute(to));
    if (target.isDir())
        return text("%1 is a directory: name the file in it").arg(absolute(to));
    if (!directoryOfTarget.isDir())
        return text("there is no directory %1").arg(directoryOfTarget.filePath());
    if (!directoryOfTarget.isWritable())
        return text("the directory %1 cannot be written").arg(directoryOfTarget.filePath());
    const QStorageInfo storage(directoryOfTarget.filePath());
    if (storage.isValid() && storage.bytesAvailable() < source.size())
        return text("%1 has only %2 MB left, and %3 MB are needed")
            .arg(storage.rootPath(), QString::number(storage.bytesAvailable() / 1000000),
                 QString::number(source.size() / 1000000));
    return text("%1 could not be written").arg(absolute(to));
}
