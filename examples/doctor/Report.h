#ifndef REPORT_H
#define REPORT_H

#include <QJsonObject>
#include <QStringList>
#include <QVariant>
#include <QVector>

/**
 * Rows of facts under named columns; those of the columns "item" and "value" are one object in JSON.
 *
 * A cell is a text, a number, a truth ("yes" or "no"), a list ("1, 2"), a map with "min" and "max" ("1..2"),
 * or invalid ("-").
 */
struct Table {
    QString key; ///< in JSON
    QString title;
    QStringList columns; ///< "heading" or "heading|name in JSON", there in lower case with "_" for a blank
    QVector<QVariantList> rows;

    /// The title and the aligned rows, with a line of headings when there are more than two columns; cells
    /// are broken where it would be wider than @p width. 0 is any width.
    QString toText(int width) const;
    QJsonValue toJson() const;
};

/// Something wrong, and what to do about it.
struct Problem {
    QString code; ///< stable, for programs
    QString text;
    QString advice;
};

/// What the doctor found.
struct Report {
    QVector<Table> tables;
    QVector<Problem> problems;

    /// A summary, the problems, and then the tables.
    QString toText(int width, bool coloured) const;
    /// An object with the tables under their keys, the array "problems" and the number "schema".
    QJsonObject toJson() const;
};

/// The width that tables may have on standard output: 80 on a terminal, else 0 for any.
int outputWidth();

/// Prints the answer to a question; the exit status is 0.
int print(const Table &table, bool asJson);

/// Prints an object with the number "schema" as one document, or in one line.
void print(QJsonObject object, bool inOneLine = false);

#endif
