#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QTemporaryFile>

/// How a child process ended and what it printed, with "\n" at the end of every line on every system.
struct ChildResult {
    int exitCode;
    bool crashed;
    QByteArray out;
    QByteArray err;
};

/// Starts a program in @p directory with the environment of this process and APPDATA set to "appdata" in
/// there.
inline void startChild(QProcess &process, const QString &program, const QStringList &arguments,
                       const QString &directory)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("APPDATA"), directory + QStringLiteral("/appdata"));
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
}

/// Waits for the end; a child that hangs is killed after a minute and counts as crashed.
inline ChildResult finishChild(QProcess &process)
{
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
    }
    return {process.exitCode(), process.exitStatus() != QProcess::NormalExit,
            process.readAllStandardOutput().replace("\r\n", "\n"),
            process.readAllStandardError().replace("\r\n", "\n")};
}

/// Runs a program to its end. Its output goes through files: Wine now and then loses what is still in a pipe
/// when the writer ends.
inline ChildResult runChild(const QString &program, const QStringList &arguments, const QString &directory)
{
    QTemporaryFile out;
    QTemporaryFile err;
    QProcess process;
    if (!out.open() || !err.open())
        qFatal("There is no place for the output of a program");
    process.setStandardOutputFile(out.fileName());
    process.setStandardErrorFile(err.fileName());
    startChild(process, program, arguments, directory);
    ChildResult result = finishChild(process);
    result.out = out.readAll().replace("\r\n", "\n");
    result.err = err.readAll().replace("\r\n", "\n");
    return result;
}

#endif
