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

static QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_console_closing::leavesNothingBehind()
{
    const QTemporaryDir directory;
    const QString log = directory.filePath(QStringLiteral("console.log"));
    qputenv("QT_LOGGING_RULES", "Olvex.Console.Link.debug=true");
    QProcess console;
    const QString options =
        QStringLiteral("--load --null --logoutput console.log --confpath " EXAMPLE_DATA "/etc");
    startChild(console, QStringLiteral(OLVEX_CONSOLE_PATH), options.split(QLatin1Char(' ')),
               directory.path());
    QTRY_VERIFY_WITH_TIMEOUT(contents(log).contains("sent message 3000\n"), 120000);
    QCOMPARE(runChild(console.program(), {}, directory.path()).exitCode, 3); // only one at a time
    console.terminate();
    const ChildResult result = finishChild(console);
    QVERIFY(result.exitCode == 0 && !result.crashed);

    const QFileInfoList processes = QDir(QStringLiteral("/proc")).entryInfoList({QStringLiteral("[0-9]*")});
    for (const QFileInfo &process : processes)
        QVERIFY(QFile::symLinkTarget(process.filePath() + QStringLiteral("/cwd")) != directory.path());

    int sent = 0;
    const QList<QByteArray> lines = contents(log).split('\n');
    for (const QByteArray &line : lines) {
        if (line.contains("sent message "))
            QCOMPARE(line.mid(line.lastIndexOf(' ') + 1).toInt(), ++sent);
        QVERIFY2(!line.contains(" | W | "), line.constData());
    }
    QVERIFY(contents(log).contains("messages sent: " + QByteArray::number(sent) + '\n'));
}

QTEST_GUILESS_MAIN(tst_console_closing)
#include "tst_console_closing.moc"
