// olvex-doctor as the field engineer runs it.

#include "ChildProcess.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

class tst_doctor : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void reportsSoundStart();
    void printsAlignedTables();
    void namesProblems_data();
    void namesProblems();
    void listsItsOptionsAfterTheBuiltInOnes();

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
              "staging": {"extra": {"baseUrl": "https://extra.example.com"}}}})");
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
    QCOMPARE(services.at(0).toObject().value(QStringLiteral("URL")).toString(),
             QStringLiteral("https://eu.example.com"));
    QCOMPARE(services.at(0).toObject().value(QStringLiteral("by region")).toBool(), true);

    QVERIFY(QString::fromUtf8(result.out).contains(QStringLiteral("migrated: a copy of the old")));
    QVERIFY(QString::fromUtf8(result.out).contains(QStringLiteral("Olvex.NetworkManager")));
    QVERIFY(QFileInfo::exists(m_sandbox->filePath(QStringLiteral("my.log"))));
}

void tst_doctor::printsAlignedTables()
{
    const QString out = QString::fromLocal8Bit(run(QString()).out);
    const QStringList lines = out.split(QLatin1Char('\n'));
    const int first = lines.indexOf(QStringLiteral("Services"));
    QVERIFY(first > 0);
    const int column = lines.at(first + 1).indexOf(QStringLiteral("URL"));
    QCOMPARE(lines.at(first + 2).indexOf(QStringLiteral("https://")), column);
    QCOMPARE(lines.at(first + 3).indexOf(QStringLiteral("https://")), column);
    QVERIFY(out.endsWith(QStringLiteral("Nothing wrong was found.\n")));
}

void tst_doctor::namesProblems_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QByteArray>("document");
    QTest::addColumn<QByteArray>("settings");
    QTest::addColumn<QString>("problem");
    const auto row = [](const char *options, const char *document, const char *settings,
                        const char *problem) {
        QTest::newRow(problem) << QString::fromLatin1(options) << QByteArray(document) << QByteArray(settings)
                               << QString::fromLatin1(problem);
    };
    row("--confpath none", "", "", "The configuration directory ");
    row("--confpath none", "", "", "OlvexUrls.json cannot be read: ");
    row("--varpath data/etc/OlvexUrls.json/x", "", "", "The variable data directory ");
    row("--logoutput none/x.log", "", "", "The log file none/x.log cannot be written: ");
    row("--unknown --tmppath . x", "", "", "The option --unknown is unknown and was ignored.");
    row("", "{", "", "is damaged at byte 1: ");
    row("", "[]", "", "names no environment.");
    row("", R"({"environment": {"production": {"a": {}}}})", "", "The service \"a\" has no usable URL.");
    row("", "", "[System]\nEnvironment=moon\n", "The environment \"moon\" is not in the service table");
    row("", "", "\x01[[=\n[x\n", "is damaged: what cannot be read has its default.");
}

void tst_doctor::namesProblems()
{
    QFETCH(QString, options);
    QFETCH(QByteArray, document);
    QFETCH(QByteArray, settings);
    QFETCH(QString, problem);
    if (!document.isEmpty())
        write("data/etc/OlvexUrls.json", document.constData());
    if (!settings.isEmpty())
        write("v/Settings.ini", settings.constData());
    const ChildResult result = run(options);
    QCOMPARE(result.exitCode, 1);
    const QString out = QString::fromLocal8Bit(result.out);
    QVERIFY2(out.section(QStringLiteral("\nProblems\n"), 1).contains(problem), result.out.constData());
}

void tst_doctor::listsItsOptionsAfterTheBuiltInOnes()
{
    const QStringList lines = QString::fromLocal8Bit(run(QStringLiteral("--help")).out)
                                  .split(QLatin1Char('\n'))
                                  .filter(QStringLiteral(" --"));
    QVERIFY(lines.size() > 23);
    QVERIFY(lines.at(22).startsWith(QStringLiteral(" --persistentpath ")));
    QVERIFY(lines.at(23).startsWith(QStringLiteral(" --json ")));
}

QTEST_GUILESS_MAIN(tst_doctor)
#include "tst_doctor.moc"
