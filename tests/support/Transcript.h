#ifndef TRANSCRIPT_H
#define TRANSCRIPT_H

#include "Cases.h"
#include "ChildProcess.h"

#include <QDir>

// Runs of a program that a text file shows as on a terminal:
//
//     # A comment.
//     $ --tmppath .
//     < v/Settings.ini [System]\nEnvironment=moon\n
//     *
//     ! The environment "moon" *
//     2> what comes through standard error
//     exit 1
//
// "<" makes a file before the run, a second newer than the one before; what stands in front of the first run
// holds for all. The lines that come out are compared with their blanks simplified; "*" stands for any
// characters and lines, "?" for one character. What the run leaves in my.log follows behind "log> ".

/// The data of a test: a row for each run in the files.
inline void addRuns(const QStringList &transcripts)
{
    QTest::addColumn<QString>("run");
    for (const QString &path : transcripts) {
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly | QIODevice::Text));
        QStringList runs = QString::fromUtf8(file.readAll()).split(QStringLiteral("\n$ "));
        const QString forAll = runs.takeFirst();
        for (const QString &run : qAsConst(runs)) {
            const QString options = run.section(QLatin1Char('\n'), 0, 0);
            const QStringList lines = {options, forAll, run.section(QLatin1Char('\n'), 1)};
            QTest::newRow(qPrintable(options)) << lines.join(QLatin1Char('\n'));
        }
    }
}

/// Each line of a text behind a prefix.
inline QByteArray marked(const QByteArray &text, const char *prefix)
{
    QByteArray result;
    const QByteArrayList lines = text.split('\n');
    for (const QByteArray &line : lines)
        result += line.trimmed().isEmpty() ? QByteArray() : prefix + line.simplified() + '\n';
    return result;
}

/// The test: @p options come before those of the row.
inline void checkRun(const QString &program, const QStringList &options, const QDir &directory)
{
    QFETCH(QString, run);
    QStringList lines = run.split(QLatin1Char('\n'));
    const QStringList arguments = options + lines.takeFirst().split(QLatin1Char(' '));
    QByteArray expected;
    QDateTime time = QDateTime::currentDateTime().addSecs(-60);
    for (const QString &line : qAsConst(lines)) {
        if (line.startsWith(QLatin1String("< "))) {
            QFile file(directory.filePath(line.section(QLatin1Char(' '), 1, 1)));
            const QByteArray contents = line.section(QLatin1Char(' '), 2).toUtf8().replace("\\n", "\n");
            QVERIFY(directory.mkpath(QFileInfo(file).path()));
            QVERIFY(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
            QVERIFY(file.flush() && file.setFileTime(time = time.addSecs(1), QFile::FileModificationTime));
        } else if (!line.isEmpty() && !line.startsWith(QLatin1Char('#'))) {
            expected += line.toUtf8() + '\n';
        }
    }
    const ChildResult result = runChild(program, arguments, directory.path());
    QFile log(directory.filePath(QStringLiteral("my.log")));
    const QByteArray logged = log.open(QIODevice::ReadOnly) ? log.readAll() : QByteArray();
    const QByteArray shown = marked(result.out, "") + marked(result.err, "2> ") + marked(logged, "log> ")
        + "exit " + QByteArray::number(result.exitCode & 0xFF) + '\n';
    QVERIFY2(looksLike(shown, expected), shown);
}

#endif
