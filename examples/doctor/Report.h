#ifndef REPORT_H
#define REPORT_H

#include <QStringList>
#include <QVariant>
#include <QVector>

/// One part of the report: rows of facts under named columns. A boolean prints as "yes" or "no".
struct Table {
    QString title;
    QStringList columns;
    QVector<QVariantList> rows;

    /// The title and the aligned rows, with a line of headings when there are more than two columns.
    QString toText() const;
};

/// What the doctor found: facts in tables, and one plain sentence for each wrong thing.
struct Report {
    QVector<Table> tables;
    QStringList problems;

    QString toText() const;
    /// An object with one array per table, whose elements are objects keyed by column, and the array
    /// "problems".
    QByteArray toJson() const;
};

/// Prints a table as the answer to a question; the exit status is 0.
int print(const Table &table);

/// Prints one sentence on standard error; the exit status is 2, for a wrong command line.
int refuse(const QString &sentence);

#endif
