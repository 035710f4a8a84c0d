// olvex-doctor as the field engineer runs it.

#include "Cases.h"
#include "ChildProcess.h"

#include <QDir>
#include <QTemporaryDir>

class tst_doctor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void answers_data();
    void answers();
    void runsOnce();
    void decodesWhatComesThroughAPipe();

private:
    QScopedPointer<QTemporaryDir> m_sandbox;
};

namespace {

const QString doctor = QStringLiteral(OLVEX_DOCTOR_PATH);

QStringList options(const char *more)
{
    return QStringLiteral("--null --varetcpath v %1")
        .arg(QLatin1String(more))
        .split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

const char serviceTable[] = R"({"environment": {
    "production": {"account": {"baseUrl": "https://account.example.com",
                               "regions": {"eu": {"baseUrl": "https://eu.example.com"}}}},
    "staging": {"extra": {"baseUrl": "https://extra.example.com"}},
    "dead": {"account": {"baseUrl": "http://127.0.0.1:1"}}}})";

const struct {
    const char *name; // the options
    int exitCode;
    const char *lines; // that come one after the other, with their blanks simplified; * for what varies
    const char *settings = "[System]\nEnvironment=staging\nRegion=eu\n";
    const char *services = serviceTable;
} questions[] = {
    {"", 0,
     "temporary --tmppath yes yes *\nconfiguration --confpath yes yes */data/etc\n"
     "*origin migrated: a copy of the old */v/Settings.ini\n*\nkeys 2\n"
     "*\nOlvex.NetworkManager no yes yes yes\n*\nNothing wrong was found."},
    {"--json --logoutput my.log", 0,
     "\"URL\": \"https://eu.example.com\",\n\"by region\": true,\n\"service\": \"account\"\n"
     "*\n\"problems\": [\n]\n}"},
    {"--logoutput my.log", 0, "file */my.log\nopen yes"},
    {"--region us", 0, "account no https://account.example.com"},
    {"--environment dead --region us", 0, "account no http://127.0.0.1:1"},
    {"--confpath none", 1,
     "! The configuration directory */none does not exist.\n"
     "! The service table */none/OlvexUrls.json cannot be read: *"},
    {"--varpath v/Settings.ini/x --logoutput none/x.log --unknown --tmppath . x", 1,
     "! The option --unknown is unknown and was ignored.\n! The variable data directory * does not exist.\n"
     "! The log file none/x.log cannot be written: *"},
    {"--tmppath .", 1,
     "! The environment \"moon\" is not in the service table: \"production\" is used instead.",
     "[System]\nEnvironment=moon\n"},
    {"--sharepath .", 1, "! The settings file * is damaged: what cannot be read has its default.",
     "\x01[[=\n[x\n"},
    {"--binpath .", 1, "! The settings file * is damaged: what cannot be read has its default.",
     "[System]\nRegion\n"},
    {"--json", 1, "*The service table * is damaged at byte 1: *", "", "{"},
    {"--confpath data/etc", 1, "! The service table * names no environment.", "", "[]"},
    {"--datapath data", 1, "! The service \"a\" has no usable URL.", "",
     R"({"environment": {"production": {"a": {}}}})"},

    {"--rhythms", 0, "138 vt range 120..240 180 - 300 200"},
    {"--rhythms adult", 0, "166 avBlock2I ratios 50, 60, 65 (3:2, 4:3, 5:4) 4:3 0, 3, 6, 4 300 200"},
    {"--rhythms child", 0, "175 torsadeDePoint fixed 180 - - 300 200"},
    {"--rhythms infant", 0, "103 aFlutter rates 75, 100, 150 100 - 300 200"},
    {"--rhythms baby", 0, "146 vf amplitude 10..100 40 - 0 0"},
    {"--rhythms Baby", 2, "There is no age \"Baby\": choose one of adult, child, infant, baby."},
    {"--rhythm 138 --age baby --rate 400", 0, "heart rate 320"},
    {"--rhythm 166 --rate 62", 0, "heart rate 60\nratio 4:3\ncan have extrasystoles yes"},
    {"--rhythm 7 --rate 80 --age old", 2, "There is no age \"old\": *"},
    {"--rhythm 999 --rate 80", 2, "There is no rhythm \"999\": --rhythms lists the ids."},
    {"--rhythm --rate 80", 2, "There is no rhythm \"\": --rhythms lists the ids."},
    {"--rhythm 7 --rate fast", 2, "\"fast\" is no heart rate: --rate takes a whole number."},
    {"--products", 0, "40 Model 60 - -\n*150 Model 26 31 PRODUCT_MODEL_31"},

    {"--check --selftest", 0, "account ok * http://127.0.0.1:*/account\nextra ok * http://127.0.0.1:*/extra"},
    {"--check extra --selftest", 0, "service status ms URL error\nextra ok * http://127.0.0.1:*/extra"},
    {"--check --environment dead", 1, "account failed * http://127.0.0.1:1 Connection refused"},
    {"--check account moon", 2, "There is no service \"moon\": choose from account, extra."},
    {"--check --confpath none", 1, "The service table */none/OlvexUrls.json cannot be read: *"},

    {"--encode 00", 0, "000103f0e100"},
    {"--encode 0", 2, "*is not hexadecimal*"},
    {"--encode 0g", 2, "*is not hexadecimal*"},
    {"--encode", 2, "A message has 1 to 255 bytes, not 0."},
    {"--decode none.bin", 1, "*none.bin cannot be read: *"},
};

} // namespace

void tst_doctor::init()
{
    m_sandbox.reset(new QTemporaryDir);
    const QDir directory(m_sandbox->path());
    QVERIFY(directory.mkpath(QStringLiteral("data/etc")) && directory.mkpath(QStringLiteral("v")));
    const auto &c = QTest::currentDataTag() ? currentCase(questions) : questions[0];
    for (const auto &[path, contents] :
         {std::pair("data/etc/OlvexUrls.json", c.services), std::pair("v/Settings.ini", c.settings)}) {
        QFile file(directory.filePath(QString::fromLatin1(path)));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(contents) >= 0);
    }
}

void tst_doctor::answers_data()
{
    addCases(questions);
}

void tst_doctor::answers()
{
    const auto &c = currentCase(questions);
    const ChildResult result = runChild(doctor, options(c.name), m_sandbox->path());
    QByteArray output = "\n";
    for (const QByteArray &line : (result.out + result.err).split('\n'))
        output += line.simplified() + '\n';
    QVERIFY2(looksLike(output, QByteArray("*\n") + c.lines + "\n*"), output);
    QCOMPARE(result.exitCode, c.exitCode);
}

void tst_doctor::runsOnce()
{
    QProcess first;
    startChild(first, doctor, options("--single-instance"), m_sandbox->path());
    QVERIFY(first.waitForReadyRead());
    const ChildResult second = runChild(doctor, options("--single-instance"), m_sandbox->path());
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
    QProcess process;
    startChild(process, doctor, options("--decode"), m_sandbox->path());
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
