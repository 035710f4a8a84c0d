// Programs as a person runs them. A text file shows the runs of one program, named like the file, as on a
// terminal:
//
//     # A comment.
//     $ --tmppath . --name "one word"
//     < v/Settings.ini [System]\nEnvironment=moon\n
//     @ NO_COLOR=1
//     in> 0102ff
//     *
//     ! The environment "moon" *
//     2> what comes through standard error
//     new> what was made in the working directory
//     exit 1
//
// "<" makes a file before the run, a second newer than the one before; "@" sets a variable of the
// environment, or without "=" takes it away; "in>" is standard input, in hexadecimal. What stands in front of
// the first run holds for all, with options behind "$$". The lines that come out are compared with their
// blanks simplified; "*" stands for any characters and lines, "?" for one character. What the run leaves in
// my.log follows behind "log> ". What a run of a tool makes or changes is "new".

#include "Cases.h"
#include "ChildProcess.h"

#include <QDirIterator>
#include <QTemporaryDir>

class tst_programs : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void shows_data();
    void shows();
};

namespace {

const struct {
    const char *file, *program;
} transcripts[] = {
    {"data/probe.txt", APPCONFIG_PROBE_PATH},
#ifdef Q_OS_WIN
    {"data/probe-windows.txt", APPCONFIG_PROBE_PATH},
#else
    {"data/probe-posix.txt", APPCONFIG_PROBE_PATH},
#endif
#ifdef OLVEX_SYNC_PATH
    {"data/doctor.txt", OLVEX_DOCTOR_PATH},           {"data/sync.txt", OLVEX_SYNC_PATH},
#    ifndef Q_OS_WIN
    {"data/doctor-posix.txt", OLVEX_DOCTOR_PATH},     {"data/sync-posix.txt", OLVEX_SYNC_PATH},
#    endif
#endif
#ifdef OLVEX_CONSOLE_PATH
    {"data/console.txt", OLVEX_CONSOLE_PATH},
#endif
};

// Each line of a text behind a prefix.
QByteArray marked(const QByteArray &text, const char *prefix)
{
    QByteArray result;
    const QByteArrayList lines = text.split('\n');
    for (const QByteArray &line : lines)
        result += line.trimmed().isEmpty() ? QByteArray() : prefix + line.simplified() + '\n';
    return result;
}

// What is in a directory, with sizes and times.
QMap<QString, QString> listing(const QDir &directory)
{
    QMap<QString, QString> entries;
    QDirIterator entry(directory.path(), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (entry.hasNext()) {
        const QFileInfo info(entry.next());
        entries.insert(directory.relativeFilePath(info.filePath()),
                       info.lastModified().toString(Qt::ISODateWithMs) + QString::number(info.size()));
    }
    return entries;
}

} // namespace

void tst_programs::shows_data()
{
    QTest::addColumn<QString>("program");
    QTest::addColumn<QString>("run");
    for (const auto &transcript : transcripts) {
        QFile file(QFINDTESTDATA(transcript.file));
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        QStringList runs = QString::fromUtf8(file.readAll()).split(QStringLiteral("\n$ "));
        const QString forAll = runs.takeFirst();
        for (const QString &run : qAsConst(runs))
            QTest::newRow(qPrintable(run.section(QLatin1Char('\n'), 0, 0)))
                << QString::fromLatin1(transcript.program) << forAll + QStringLiteral("\n$ ") + run;
    }
}

void tst_programs::shows()
{
    const QTemporaryDir sandbox;
    const QDir directory(sandbox.path());
    QFETCH(QString, program);
    QFETCH(QString, run);
    ChildCircumstances circumstances{
        {QStringLiteral("PATH=" STAND_IN_DIRECTORY) + QDir::listSeparator() + qEnvironmentVariable("PATH")},
        {}};
    QStringList arguments;
    QByteArray expected;
    QDateTime time = QDateTime::currentDateTime().addSecs(-60);
    const QStringList lines = run.split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QString mark = line.section(QLatin1Char(' '), 0, 0);
        const QString rest = line.section(QLatin1Char(' '), 1);
        if (mark == QLatin1String("$") || mark == QLatin1String("$$")) {
            arguments += QProcess::splitCommand(rest);
        } else if (mark == QLatin1String("@")) {
            circumstances.environment += rest;
        } else if (mark == QLatin1String("in>")) {
            circumstances.input = QByteArray::fromHex(rest.toLatin1());
        } else if (mark == QLatin1String("<")) {
            QFile file(directory.filePath(rest.section(QLatin1Char(' '), 0, 0)));
            const QByteArray contents = rest.section(QLatin1Char(' '), 1).toUtf8().replace("\\n", "\n");
            QVERIFY(directory.mkpath(QFileInfo(file).path()));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
            QVERIFY(file.flush() && file.setFileTime(time = time.addSecs(1), QFile::FileModificationTime));
        } else if (!line.isEmpty() && mark != QLatin1String("#")) {
            expected += line.toUtf8() + '\n';
        }
    }
    const QMap<QString, QString> before = listing(directory);
    const ChildResult result = runChild(program, arguments, directory.path(), circumstances);
    QFile log(directory.filePath(QStringLiteral("my.log")));
    QByteArray shown = marked(result.out, "") + marked(result.err, "2> ")
        + marked(log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray(), "log> ");
    const bool isTool =
        !QFileInfo(program).fileName().contains(QRegularExpression(QStringLiteral("probe|console")));
    const QMap<QString, QString> after = listing(directory);
    for (auto entry = after.cbegin(); entry != after.cend(); ++entry) {
        if ((isTool || arguments.first() == QLatin1String("--help")) && before.value(entry.key()) != *entry)
            shown += "new> " + entry.key().toUtf8() + '\n';
    }
    shown += "exit " + QByteArray::number(result.exitCode & 0xFF) + '\n';
    QVERIFY2(looksLike(shown, expected), shown);
}

QTEST_GUILESS_MAIN(tst_programs)
#include "tst_programs.moc"
