// olvex-doctor as the field engineer runs it.

#include "Cases.h"
#include "ChildProcess.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace {

// The whole line, with anything in place of "*".
QRegularExpression anythingFor(const char *line)
{
    const QString pattern = QRegularExpression::escape(QString::fromLatin1(line));
    return QRegularExpression(QRegularExpression::anchoredPattern(
        QString(pattern).replace(QLatin1String("\\*"), QLatin1String(".*"))));
}

} // namespace

class tst_doctor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void reportsSoundStart();
    void namesProblems_data();
    void namesProblems();
    void answersQuestions_data();
    void answersQuestions();
    void runsOnce();
    void decodesWhatComesThroughAPipe();

private:
    ChildResult run(const QString &options) const;
    void write(const char *path, const char *contents) const;

    QScopedPointer<QTemporaryDir> m_sandbox;
};

void tst_doctor::init()
{
    m_sandbox.reset(new QTemporaryDir);
    write("data/etc/OlvexUrls.json",
          R"({"environment": {"production": {"account": {"baseUrl": "https://account.example.com",
              "regions": {"eu": {"baseUrl": "https://eu.example.com"}}}},
              "staging": {"extra": {"baseUrl": "https://extra.example.com"}},
              "dead": {"account": {"baseUrl": "http://127.0.0.1:1"}}}})");
    write("v/Settings.ini", "[System]\nEnvironment=staging\nRegion=eu\n");
}

ChildResult tst_doctor::run(const QString &options) const
{
    const QStringList fixed = {QStringLiteral("--null"), QStringLiteral("--varetcpath"), QStringLiteral("v")};
    return runChild(QStringLiteral(OLVEX_DOCTOR_PATH),
                    fixed + options.split(QLatin1Char(' '), Qt::SkipEmptyParts), m_sandbox->path());
}

void tst_doctor::write(const char *path, const char *contents) const
{
    QFile file(m_sandbox->filePath(QString::fromLatin1(path)));
    QVERIFY(QDir().mkpath(QFileInfo(file).path()));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(contents);
}

void tst_doctor::reportsSoundStart()
{
    const ChildResult result = run(QStringLiteral("--json --logoutput my.log"));
    QCOMPARE(result.exitCode, 0);
    const QJsonObject report = QJsonDocument::fromJson(result.out).object();
    QCOMPARE(report.value(QStringLiteral("problems")).toArray(), QJsonArray());
    QCOMPARE(report.value(QStringLiteral("Directories")).toArray().size(), 13);
    const QJsonArray services = report.value(QStringLiteral("Services")).toArray();
    QCOMPARE(services.size(), 2);
    QCOMPARE(services.at(0).toObject().value(QStringLiteral("URL")),
             QStringLiteral("https://eu.example.com"));
    QCOMPARE(services.at(0).toObject().value(QStringLiteral("by region")), true);
    QVERIFY(result.out.contains("migrated: a copy of the old")
            && result.out.contains("Olvex.NetworkManager"));
    QVERIFY(QFileInfo::exists(m_sandbox->filePath(QStringLiteral("my.log"))));
}

namespace {

const struct {
    const char *name; // the problem
    const char *options;
    const char *document;
    const char *settings;
} problems[] = {
    {"The configuration directory ", "--confpath none", "", ""},
    {"OlvexUrls.json cannot be read: ", "--confpath none", "", ""},
    {"The variable data directory ", "--varpath data/etc/OlvexUrls.json/x", "", ""},
    {"The log file none/x.log cannot be written: ", "--logoutput none/x.log", "", ""},
    {"The option --unknown is unknown and was ignored.", "--unknown --tmppath . x", "", ""},
    {"is damaged at byte 1: ", "", "{", ""},
    {"names no environment.", "", "[]", ""},
    {"The service \"a\" has no usable URL.", "", R"({"environment": {"production": {"a": {}}}})", ""},
    {"The environment \"moon\" is not in the service table", "", "", "[System]\nEnvironment=moon\n"},
    {"is damaged: what cannot be read has its default.", "", "", "\x01[[=\n[x\n"},
};

} // namespace

void tst_doctor::namesProblems_data()
{
    addCases(problems);
}

void tst_doctor::namesProblems()
{
    const auto &c = currentCase(problems);
    if (*c.document)
        write("data/etc/OlvexUrls.json", c.document);
    if (*c.settings)
        write("v/Settings.ini", c.settings);
    const ChildResult result = run(QString::fromLatin1(c.options));
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.out.mid(result.out.indexOf("\nProblems\n")).contains(c.name), result.out.constData());
}

namespace {

const struct {
    const char *name; // the options
    int exitCode;
    const char *line; // with its blanks simplified; * for what varies
} questions[] = {
    {"", 0, "Nothing wrong was found."},
    {"--rhythms", 0, "138 vt range 120..240 180 - 300 200"},
    {"--rhythms --json", 0, "166 avBlock2I ratios 50, 60, 65 (3:2, 4:3, 5:4) 4:3 0, 3, 6, 4 300 200"},
    {"--rhythms child", 0, "175 torsadeDePoint fixed 180 - - 300 200"},
    {"--rhythms infant", 0, "103 aFlutter rates 75, 100, 150 100 - 300 200"},
    {"--rhythms baby", 0, "146 vf amplitude 10..100 40 - 0 0"},
    {"--rhythms Baby", 2, "There is no age \"Baby\": choose one of adult, child, infant, baby."},
    {"--rhythm 138 --age baby --rate 400", 0, "heart rate 320"},
    {"--rhythm 138 --rate -400", 0, "heart rate 120"},
    {"--rhythm 166 --rate 62", 0, "ratio 4:3"},
    {"--rhythm 7 --rate 80", 0, "can have extrasystoles yes"},
    {"--rhythm 7 --rate 80 --age old", 2, "There is no age \"old\": *"},
    {"--rhythm 999 --rate 80", 2, "There is no rhythm \"999\": --rhythms lists the ids."},
    {"--rhythm --rate 80", 2, "There is no rhythm \"\": --rhythms lists the ids."},
    {"--rhythm 7 --rate fast", 2, "\"fast\" is no heart rate: --rate takes a whole number."},
    {"--rhythm 7", 2, "\"\" is no heart rate: --rate takes a whole number."},
    {"--products", 0, "150 Model 26 31 PRODUCT_MODEL_31"},
    {"--products", 0, "40 Model 60 - -"},
    {"--check --selftest", 0, "account ok * http://127.0.0.1:*/account"},
    {"--check extra --selftest", 0, "extra ok * http://127.0.0.1:*/extra"},
    {"--check --environment dead", 1, "account failed * http://127.0.0.1:1 Connection refused"},
    {"--check account moon", 2, "There is no service \"moon\": choose from account, extra."},
    {"--check --confpath none", 1, "The service table */none/OlvexUrls.json cannot be read: *"},
    {"--region us", 0, "account no https://account.example.com"},
    {"--environment dead --region us", 0, "account no http://127.0.0.1:1"},
    {"--encode 00", 0, "000103f0e100"},
    {"--encode 0", 2, "*is not hexadecimal*"},
    {"--encode 0g", 2, "*is not hexadecimal*"},
    {"--encode", 2, "*A message has 1 to 255 bytes, not 0."},
    {"--decode none.bin", 1, "*none.bin cannot be read: *"},
};

} // namespace

void tst_doctor::answersQuestions_data()
{
    addCases(questions);
}

void tst_doctor::answersQuestions()
{
    const auto &c = currentCase(questions);
    const ChildResult result = run(QString::fromLatin1(c.name));
    QCOMPARE(result.exitCode, c.exitCode);
    QStringList lines = QString::fromLocal8Bit(result.out + result.err).split(QLatin1Char('\n'));
    for (QString &line : lines)
        line = line.simplified();
    QVERIFY2(!lines.filter(anythingFor(c.line)).isEmpty(), result.out + result.err);
}

void tst_doctor::runsOnce()
{
    const QStringList options = {QStringLiteral("--null"), QStringLiteral("--single-instance")};
    QProcess first;
    startChild(first, QStringLiteral(OLVEX_DOCTOR_PATH), options, m_sandbox->path());
    QVERIFY(first.waitForReadyRead());
    const ChildResult second = run(QStringLiteral("--single-instance"));
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
    QProcess doctor;
    startChild(doctor, QStringLiteral(OLVEX_DOCTOR_PATH),
               {QStringLiteral("--null"), QStringLiteral("--decode")}, m_sandbox->path());
    const QByteArray frame = QByteArray::fromHex("000103f0e100");
    doctor.write("\x07\x07" + frame);
    QByteArray out;
    while (!out.contains("good") && doctor.waitForReadyRead(30000))
        out += doctor.readAllStandardOutput().replace("\r\n", "\n");
    QVERIFY(out.endsWith("         2       1  good   00\n")); // while the rest is still to come

    // A shared delimiter and a wrong checksum, an empty frame, one too short, a good one, one unfinished.
    doctor.write(QByteArray::fromHex("0241031500") + QByteArray::fromHex("00030101") + frame
                 + QByteArray::fromHex("040102"));
    doctor.closeWriteChannel();
    const ChildResult result = finishChild(doctor);
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(QString::fromLatin1(result.out),
             QStringLiteral("         7       1  wrong  41\n"
                            "        17       1  good   00\n"
                            "frames: 3, good: 2, with a wrong CRC: 1\n"
                            "bytes: 26, discarded: 8 (noise before the first delimiter: 2, too short: 3, "
                            "unfinished: 3)\n"));
}

QTEST_GUILESS_MAIN(tst_doctor)
#include "tst_doctor.moc"
