// What an executable that starts up through AppConfig shows as a process: printouts, messages, exit codes.

#include "Transcript.h"

#include <QTemporaryDir>

class tst_AppConfigProcess : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shows_data();
    void shows();
};

void tst_AppConfigProcess::shows_data()
{
#ifdef Q_OS_WIN
    const QString own = QFINDTESTDATA("data/probe-windows.txt");
#else
    const QString own = QFINDTESTDATA("data/probe-posix.txt");
#endif
    addRuns({QFINDTESTDATA("data/probe.txt"), own});
}

void tst_AppConfigProcess::shows()
{
    const QTemporaryDir sandbox;
    checkRun(QStringLiteral(APPCONFIG_PROBE_PATH), {}, sandbox.path());
    const bool helped = QByteArray(QTest::currentDataTag()).startsWith("--help");
    QVERIFY(!helped || QDir(sandbox.path()).isEmpty()); // nothing is set up
}

QTEST_GUILESS_MAIN(tst_AppConfigProcess)
#include "tst_AppConfigProcess.moc"
