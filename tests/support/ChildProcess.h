#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include <QProcess>
#include <QProcessEnvironment>
#include <QString>

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

/// Runs a program to its end.
inline ChildResult runChild(const QString &program, const QStringList &arguments, const QString &directory)
{
    QProcess process;
    startChild(process, program, arguments, directory);
    return finishChild(process);
}

#endif
