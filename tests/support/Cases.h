#ifndef CASES_H
#define CASES_H

#include <QDir>
#include <QRegularExpression>
#include <QtTest>

// A data-driven test over a static table: each row is a struct with the member `name`.
//
//     void tst_X::works_data() { addCases(cases); }
//     void tst_X::works() { const Case &c = currentCase(cases); ... }

template <typename Case, std::size_t count> void addCases(const Case (&cases)[count])
{
    QTest::addColumn<int>("index");
    for (std::size_t i = 0; i < count; ++i)
        QTest::newRow(cases[i].name) << int(i);
}

template <typename Case, std::size_t count> const Case &currentCase(const Case (&cases)[count])
{
    return cases[*static_cast<int *>(QTest::qData("index", QMetaType::Int))];
}

inline QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

/// What is in a file, with "\n" at the end of its lines; nothing if it cannot be read.
inline QByteArray contents(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Text) ? file.readAll() : QByteArray();
}

/// Makes a file of these bytes, and the directories above it. Returns whether it is there.
inline bool write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return QDir().mkpath(QFileInfo(path).path()) && file.open(QIODevice::WriteOnly)
        && file.write(bytes) == bytes.size();
}

/// Whether all of a text, of one line or many, looks like @p pattern: "*" stands for any characters, "?" for
/// one.
inline bool looksLike(const QByteArray &text, const QByteArray &pattern)
{
    QString expression = QRegularExpression::escape(QString::fromUtf8(pattern));
    expression.replace(QLatin1String("\\*"), QLatin1String(".*"))
        .replace(QLatin1String("\\?"), QLatin1String("."));
    return QRegularExpression(QRegularExpression::anchoredPattern(expression),
                              QRegularExpression::DotMatchesEverythingOption)
        .match(QString::fromUtf8(text))
        .hasMatch();
}

#endif
