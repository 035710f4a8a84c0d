// olvex-doctor as the field engineer runs it.

#include "Transcript.h"

#include <QTemporaryDir>

class tst_doctor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void answers_data();
    void answers();
    void runsOnce();
    void decodesWhatComesThroughAPipe();
};

namespace {

const QString doctor = QStringLiteral(OLVEX_DOCTOR_PATH);

const QStringList always = {QStringLiteral("--null"), QStringLiteral("--varetcpath"), QStringLiteral("v")};

} // namespace

void tst_doctor::answers_data()
{
    addRuns({QFINDTESTDATA("data/doctor.txt")});
}

void tst_doctor::answers()
{
    const QTemporaryDir sandbox;
    checkRun(doctor, always, sandbox.path());
}

void tst_doctor::runsOnce()
{
    const QTemporaryDir sandbox;
    const QStringList options = always + QStringList{QStringLiteral("--single-instance")};
    QProcess first;
    startChild(first, doctor, options, sandbox.path());
    QVERIFY(first.waitForReadyRead());
    const ChildResult second = runChild(doctor, options, sandbox.path());
    QCOMPARE(second.exitCode, 3);
    QCOMPARE(second.err, QByteArray("Another instance is running.\n"));
#ifdef Q_OS_WIN
    first.kill(); // a console program has no other end there
    finishChild(first);
#else
    first.terminate();
    QCOMPARE(finishChild(first).exitCode, 0);
#endif
}

void tst_doctor::decodesWhatComesThroughAPipe()
{
    const QTemporaryDir sandbox;
    QProcess process;
    startChild(process, doctor, always + QStringList{QStringLiteral("--decode")}, sandbox.path());
    const QByteArray frame = QByteArray::fromHex("000103f0e100");
    process.write("\x07\x07" + frame);
    QByteArray out;
    while (!out.contains("good") && process.waitForReadyRead(30000))
        out += process.readAllStandardOutput().replace("\r\n", "\n");
    QVERIFY(out.endsWith("         2       1  good   00\n")); // while the rest is still to come

    // A shared delimiter and a wrong checksum, an empty frame, one too short, a good one, one unfinished.
    process.write(QByteArray::fromHex("024103150000030101") + frame + QByteArray::fromHex("040102"));
    process.closeWriteChannel();
    const ChildResult result = finishChild(process);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(result.out, QByteArray(R"(         7       1  wrong  41
        17       1  good   00
frames: 3, good: 2, with a wrong CRC: 1
bytes: 26, discarded: 8 (noise before the first delimiter: 2, too short: 3, unfinished: 3)
)"));
}

QTEST_GUILESS_MAIN(tst_doctor)
#include "tst_doctor.moc"
