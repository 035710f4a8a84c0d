#ifndef LOCALSSHD_H
#define LOCALSSHD_H

#include "SyncJob.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTcpServer>

#include <unistd.h>

/// A secure-shell server on loopback with keys and a port of its own, run as the current user; stopped by the
/// destructor.
class LocalSshd {
public:
    /// @param directory where it keeps its files; "authorized_keys" there names the accepted keys
    explicit LocalSshd(const QString &directory) : m_directory(directory) { }

    ~LocalSshd()
    {
        m_process.terminate();
        m_process.waitForFinished();
        if (m_madeRunDirectory)
            QDir().rmdir(runDirectory());
    }

    /// The path of the server program, empty when it is not installed.
    static QString program()
    {
        return QStandardPaths::findExecutable(
            QStringLiteral("sshd"), {QStringLiteral("/usr/sbin"), QStringLiteral("/usr/local/sbin")});
    }

    static bool makeKey(const QString &path)
    {
        return QProcess::execute(QStringLiteral("ssh-keygen"),
                                 {QStringLiteral("-q"), QStringLiteral("-t"), QStringLiteral("ed25519"),
                                  QStringLiteral("-N"), QString(), QStringLiteral("-f"), path})
            == 0;
    }

    /// @return whether the server listens
    bool start()
    {
        m_madeRunDirectory = ::geteuid() == 0 && QDir().mkdir(runDirectory()); // root's server insists on it
        m_port = freePort();
        const QString config = QDir(m_directory).filePath(QStringLiteral("sshd_config"));
        if (!makeKey(QDir(m_directory).filePath(QStringLiteral("host_key")))
            || !writeFile(config, settings()))
            return false;
        m_process.setReadChannel(QProcess::StandardError);
        m_process.start(program(),
                        {QStringLiteral("-D"), QStringLiteral("-e"), QStringLiteral("-f"), config});
        QByteArray output;
        while (!output.contains("Server listening") && m_process.waitForReadyRead(10000))
            output += m_process.readAllStandardError();
        return output.contains("Server listening");
    }

    quint16 port() const { return m_port; }

    /// A port on which nothing listens.
    static quint16 freePort()
    {
        QTcpServer server;
        server.listen(QHostAddress::LocalHost);
        return server.serverPort();
    }

private:
    static QString runDirectory() { return QStringLiteral("/run/sshd"); }

    QByteArray settings() const
    {
        return QByteArray(R"(ListenAddress 127.0.0.1
Port @port
HostKey "@dir/host_key"
AuthorizedKeysFile "@dir/authorized_keys"
PidFile none
StrictModes no
UsePAM no
PermitRootLogin yes
PasswordAuthentication yes
)")
            .replace("@port", QByteArray::number(m_port))
            .replace("@dir", m_directory.toLocal8Bit());
    }

    QString m_directory;
    quint16 m_port = 0;
    bool m_madeRunDirectory = false;
    QProcess m_process;
};

#endif
