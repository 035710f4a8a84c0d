// olvex-console asked to end while it is busy.

#include "ChildProcess.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

class tst_console_closing : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void leavesNothingBehind();
};

namespace {

QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The processes whose command line holds a text.
int countProcesses(const QByteArray &commandLine)
{
    int count = 0;
    const QStringList ids = QDir(QStringLiteral("/proc")).entryList({QStringLiteral("[0-9]*")});
    for (const QString &id : ids)
        count += contents(QStringLiteral("/proc/%1/cmdline").arg(id)).contains(commandLine);
    return count;
}

} // namespace

void tst_console_closing::leavesNothingBehind()
{
    const QTemporaryDir directory;
    const QString log = directory.filePath(QStringLiteral("console.log"));
    const QStringList options = {QStringLiteral("--load"),      QStringLiteral("--null"),
                                 QStringLiteral("--confpath"),  QStringLiteral(EXAMPLE_DATA "/etc"),
                                 QStringLiteral("--logoutput"), log};
    qputenv("QT_LOGGING_RULES", "Olvex.Console.Link.debug=true");
    QProcess console;
    startChild(console, QStringLiteral(OLVEX_CONSOLE_PATH), options, directory.path());
    QTRY_VERIFY_WITH_TIMEOUT(contents(log).contains("sent message 3000\n"), 120000);
    const QString other = directory.filePath(QStringLiteral("other.log"));
    const ChildResult second = runChild(QStringLiteral(OLVEX_CONSOLE_PATH),
                                        {QStringLiteral("--logoutput"), other}, directory.path());
    QCOMPARE(second.exitCode, 3);
    QVERIFY(second.err.contains("Another instance is running.\n"));

    console.terminate();
    const ChildResult result = finishChild(console);
    QCOMPARE(result.crashed, false);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(countProcesses(log.toUtf8()), 0);

    int sent = 0;
    bool counted = false;
    const QList<QByteArray> lines = contents(log).split('\n');
    for (const QByteArray &line : lines) {
        if (line.contains("sent message "))
            QCOMPARE(line.mid(line.lastIndexOf(' ') + 1).toInt(), ++sent);
        counted = counted || line.endsWith(" messages sent: " + QByteArray::number(sent));
        QVERIFY2(!line.contains(" | W | "), line.constData());
    }
    QVERIFY(sent >= 3000 && counted);
}

QTEST_GUILESS_MAIN(tst_console_closing)
#include "tst_console_closing.moc"
