#include "Report.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <cstdio>

namespace {

QString cellText(const QVariant &cell)
{
    if (cell.type() == QVariant::Bool)
        return cell.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    return cell.toString();
}

QStringList rowTexts(const QVariantList &row)
{
    QStringList texts;
    std::transform(row.cbegin(), row.cend(), std::back_inserter(texts), cellText);
    return texts;
}

QVector<int> columnWidths(const QVector<QStringList> &lines)
{
    QVector<int> widths(lines.isEmpty() ? 0 : lines.first().size(), 0);
    for (const QStringList &line : lines) {
        for (int i = 0; i < line.size(); ++i)
            widths[i] = std::max(widths.at(i), line.at(i).size());
    }
    return widths;
}

QString alignedLine(const QStringList &cells, const QVector<int> &widths)
{
    QString line = QStringLiteral(" ");
    for (int i = 0; i < cells.size(); ++i)
        line += QLatin1Char(' ') + cells.at(i).leftJustified(widths.at(i) + 1);
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line + QLatin1Char('\n');
}

QJsonArray toJsonArray(const Table &table)
{
    QJsonArray array;
    for (const QVariantList &row : table.rows) {
        QJsonObject object;
        for (int i = 0; i < row.size(); ++i)
            object.insert(table.columns.at(i), QJsonValue::fromVariant(row.at(i)));
        array.append(object);
    }
    return array;
}

} // namespace

QString Table::toText() const
{
    QVector<QStringList> lines;
    if (columns.size() > 2)
        lines.append(columns);
    std::transform(rows.cbegin(), rows.cend(), std::back_inserter(lines), rowTexts);

    const QVector<int> widths = columnWidths(lines);
    QString text = title + QLatin1Char('\n');
    for (const QStringList &line : qAsConst(lines))
        text += alignedLine(line, widths);
    return text;
}

QString Report::toText() const
{
    QString text;
    for (const Table &table : tables)
        text += table.toText() + QLatin1Char('\n');
    if (problems.isEmpty())
        return text + QLatin1String("Nothing wrong was found.\n");
    text += QLatin1String("Problems\n");
    for (const QString &problem : problems)
        text += QLatin1String("  ! ") + problem + QLatin1Char('\n');
    return text;
}

QByteArray Report::toJson() const
{
    QJsonObject object;
    for (const Table &table : tables)
        object.insert(table.title, toJsonArray(table));
    object.insert(QStringLiteral("problems"), QJsonArray::fromStringList(problems));
    return QJsonDocument(object).toJson();
}

int print(const Table &table)
{
    std::fputs(table.toText().toLocal8Bit().constData(), stdout);
    return 0;
}

int refuse(const QString &sentence)
{
    std::fprintf(stderr, "%s\n", qPrintable(sentence));
    return 2;
}
