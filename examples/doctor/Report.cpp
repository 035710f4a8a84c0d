#include "Report.h"

#include "CommandLine.h"
#include "Terminal.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <numeric>

namespace {

using Widths = std::vector<int>;

QString cellText(const QVariant &cell)
{
    if (!cell.isValid())
        return text("-");
    if (cell.type() == QVariant::Bool)
        return text(cell.toBool() ? "yes" : "no");
    if (cell.type() == QVariant::Map)
        return text("%1..%2")
            .arg(cell.toMap().value(text("min")).toInt())
            .arg(cell.toMap().value(text("max")).toInt());
    return cell.canConvert<QVariantList>() ? cell.toStringList().join(text(", ")) : cell.toString();
}

QStringList rowTexts(const QVariantList &row)
{
    QStringList texts;
    std::transform(row.cbegin(), row.cend(), std::back_inserter(texts), cellText);
    return texts;
}

int longestWord(const QString &cell)
{
    const QStringList words = cell.split(QLatin1Char(' '));
    return std::max_element(
               words.cbegin(), words.cend(),
               [](const QString &left, const QString &right) { return left.size() < right.size(); })
        ->size();
}

// The widest column gives way first, and words are broken last.
Widths columnWidths(const QVector<QStringList> &lines, int width)
{
    constexpr int gap = 2;
    Widths widths(std::size_t(lines.first().size()), 0);
    Widths words = widths;
    for (const QStringList &line : lines) {
        for (int i = 0; i < line.size(); ++i) {
            const auto column = std::size_t(i);
            widths[column] = std::max(widths[column], line.at(i).size());
            words[column] = std::max(words[column], longestWord(line.at(i)));
        }
    }
    while (width > 0 && std::accumulate(widths.cbegin(), widths.cend(), gap * int(widths.size())) > width) {
        std::size_t widest = 0;
        for (std::size_t i = 1; i < widths.size(); ++i) {
            const bool canBreak = widths[i] > words[i];
            const bool couldBreak = widths[widest] > words[widest];
            if (canBreak != couldBreak ? canBreak : widths[i] > widths[widest])
                widest = i;
        }
        --widths[widest];
    }
    return widths;
}

// The part of a cell that fits, with whole words if there are any, is taken from it.
QString takeLine(QString &cell, int width)
{
    int end = cell.size() <= width ? cell.size() : cell.lastIndexOf(QLatin1Char(' '), width);
    if (end <= 0)
        end = std::max(1, width);
    QString line = cell.left(end);
    cell = cell.mid(end).trimmed();
    return line;
}

QString alignedLines(QStringList cells, const Widths &widths)
{
    QString lines;
    do {
        QString line;
        for (int i = 0; i < cells.size(); ++i)
            line +=
                text("  ") + takeLine(cells[i], widths[std::size_t(i)]).leftJustified(widths[std::size_t(i)]);
        while (line.endsWith(QLatin1Char(' ')))
            line.chop(1);
        lines += line + QLatin1Char('\n');
    } while (std::any_of(cells.cbegin(), cells.cend(), [](const QString &cell) { return !cell.isEmpty(); }));
    return lines;
}

QStringList headings(const QStringList &columns)
{
    QStringList names;
    for (const QString &column : columns)
        names << column.section(QLatin1Char('|'), 0, 0);
    return names;
}

QString key(const QString &name)
{
    return name.section(QLatin1Char('|'), -1).toLower().replace(QLatin1Char(' '), QLatin1Char('_'));
}

} // namespace

QString Table::toText(int width) const
{
    QVector<QStringList> lines;
    if (rows.isEmpty())
        lines.append({::text("none")});
    else if (columns.size() > 2)
        lines.append(headings(columns));
    std::transform(rows.cbegin(), rows.cend(), std::back_inserter(lines), rowTexts);

    const Widths widths = columnWidths(lines, width);
    QString text = title + QLatin1Char('\n');
    for (const QStringList &line : qAsConst(lines))
        text += alignedLines(line, widths);
    return text;
}

QJsonValue Table::toJson() const
{
    QJsonObject items;
    QJsonArray array;
    for (const QVariantList &row : rows) {
        QJsonObject object;
        for (int i = 0; i < row.size(); ++i)
            object.insert(::key(columns.at(i)), QJsonValue::fromVariant(row.at(i)));
        array.append(object);
        items.insert(::key(row.first().toString()), array.last().toObject().value(text("value")));
    }
    return columns.first() == text("item") ? QJsonValue(items) : QJsonValue(array);
}

QString Report::toText(int width, bool coloured) const
{
    QString summary = text("Nothing wrong was found.");
    if (!problems.isEmpty())
        summary = text(problems.size() == 1 ? "1 problem was found:" : "%1 problems were found:")
                      .arg(problems.size());
    if (coloured)
        summary = text("\033[1;3%1m%2\033[0m").arg(problems.isEmpty() ? 2 : 1).arg(summary);
    summary += QLatin1Char('\n');
    int number = 0;
    for (const Problem &problem : problems) {
        constexpr int indent = 5;
        const int most = width == 0 ? INT_MAX : width - indent;
        summary += text("%1. %2\n     %3\n")
                       .arg(++number, 3)
                       .arg(wrapped(problem.text, most, indent), wrapped(problem.advice, most, indent));
    }
    for (const Table &table : tables)
        summary += QLatin1Char('\n') + table.toText(width);
    return summary;
}

QJsonObject Report::toJson() const
{
    QJsonObject object;
    for (const Table &table : tables)
        object.insert(table.key, table.toJson());
    QJsonArray array;
    for (const Problem &problem : problems)
        array.append(QJsonObject{
            {text("code"), problem.code}, {text("text"), problem.text}, {text("advice"), problem.advice}});
    object.insert(text("problems"), array);
    return object;
}

int outputWidth()
{
    return terminal::isTerminal(stdout) ? 80 : 0;
}

int print(const Table &table, bool asJson)
{
    if (asJson)
        print(QJsonObject{{table.key, table.toJson()}});
    else
        print(table.toText(outputWidth()));
    return 0;
}

void print(QJsonObject object, bool inOneLine)
{
    object.insert(text("schema"), 1);
    const QByteArray json =
        QJsonDocument(object).toJson(inOneLine ? QJsonDocument::Compact : QJsonDocument::Indented);
    std::fputs(json.constData(), stdout);
    if (inOneLine)
        std::fputs("\n", stdout);
}
