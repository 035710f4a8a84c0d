#ifndef CHILDPROCESS_H
#define CHILDPROCESS_H

#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryFile>

/// How a child process ended and what it printed, with "\n" at the end of every line on every system.
struct ChildResult {
    int exitCode;
    bool crashed;
    QByteArray out;
    QByteArray err;
};

/// What a child process finds.
struct ChildCircumstances {
    QStringList environment; ///< variables to set, "NAME=value", or to take away, "NAME"
    QByteArray input;
};

/// Starts a program in @p directory with the environment of this process and APPDATA set to "appdata" in
/// there. Ends this process if the system has none left: Qt then goes on with the id -1, and to signal that,
/// as the destructor of QProcess does, ends every process of the user.
inline void startChild(QProcess &process, const QString &program, const QStringList &arguments,
                       const QString &directory, const QStringList &variables = {})
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("APPDATA"), directory + QStringLiteral("/appdata"));
    for (const QString &variable : variables) {
        const QString name = variable.section(QLatin1Char('='), 0, 0);
        environment.remove(name);
        if (name != variable)
            environment.insert(name, variable.section(QLatin1Char('='), 1));
    }
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(directory);
    process.start(program, arguments);
    if (process.state() != QProcess::NotRunning && process.processId() <= 0)
        qFatal("The system has no process left for %s", qPrintable(program));
}

/// Waits for the end; a child that hangs is killed after a minute and counts as crashed.
inline ChildResult finishChild(QProcess &process, QIODevice *out = nullptr, QIODevice *err = nullptr)
{
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
    }
    return {process.exitCode(), process.exitStatus() != QProcess::NormalExit,
            (out ? out->readAll() : process.readAllStandardOutput()).replace("\r\n", "\n"),
            (err ? err->readAll() : process.readAllStandardError()).replace("\r\n", "\n")};
}

/// Runs a program to its end. Its output goes through files: Wine now and then loses what is still in a pipe
/// when the writer ends.
inline ChildResult runChild(const QString &program, const QStringList &arguments, const QString &directory,
                            const ChildCircumstances &circumstances = {})
{
    QTemporaryFile in;
    QTemporaryFile out;
    QTemporaryFile err;
    QProcess process;
    if (!in.open() || in.write(circumstances.input) == -1 || !in.flush() || !out.open() || !err.open())
        qFatal("There is no place for the input and the output of a program");
    process.setStandardInputFile(in.fileName());
    process.setStandardOutputFile(out.fileName());
    process.setStandardErrorFile(err.fileName());
    startChild(process, program, arguments, directory, circumstances.environment);
    return finishChild(process, &out, &err);
}

#endif
