#include "CommandLine.h"

#include "Terminal.h"

#include <AppConfig.h>

#include <QRegularExpression>

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace {

constexpr int lineWidth = 80;

const Option common[] = {
    {"--help", Option::Flag, "Prints this help and ends; also -h"},
    {"--all", Option::Flag, "Adds the options that every Olvex executable has", "--help"},
};

// For those who build the packages.
const Option helpFormat{"--help-format", Option::Text, "<man|completion>"};

Option fromLibrary(const AppConfig::cmdArg_t &argument)
{
    const bool isNumber = qstrncmp(argument.help, "<level>", 7) == 0;
    const auto kind = argument.valueCount == 0 ? Option::Flag : isNumber ? Option::Number : Option::Text;
    return {argument.name, kind, argument.help};
}

bool isLibrarys(const Option &option)
{
    return std::any_of(AppConfig::cmdArgs.cbegin(), AppConfig::cmdArgs.cend(),
                       [&option](const auto &argument) { return argument.name == option.name; });
}

bool isTask(const Option &option)
{
    return qstrcmp(option.with, Option::task) == 0;
}

bool isNumberFor(const Option &option, const QString &word)
{
    bool isNumber = false;
    const int number = word.toInt(&isNumber);
    return isNumber && (number > 0 || isLibrarys(option));
}

// How many letters to add, take away, replace or swap with the next turn one text into the other.
int distance(const QString &left, const QString &right)
{
    std::vector<std::vector<int>> steps(std::size_t(left.size() + 1),
                                        std::vector<int>(std::size_t(right.size() + 1)));
    for (int i = 0; i <= left.size(); ++i) {
        for (int j = 0; j <= right.size(); ++j) {
            int &best = steps[std::size_t(i)][std::size_t(j)];
            const auto earlier = [&](int di, int dj) {
                return steps[std::size_t(i - di)][std::size_t(j - dj)];
            };
            best = i + j;
            if (i == 0 || j == 0)
                continue;
            const bool same = left.at(i - 1) == right.at(j - 1);
            best = std::min({earlier(1, 0) + 1, earlier(0, 1) + 1, earlier(1, 1) + (same ? 0 : 1)});
            if (i > 1 && j > 1 && left.at(i - 1) == right.at(j - 2) && left.at(i - 2) == right.at(j - 1))
                best = std::min(best, earlier(2, 2) + 1);
        }
    }
    return steps.back().back();
}

QString withoutDashes(const QString &word)
{
    const int start = word.indexOf(QRegularExpression(text("[A-Za-z]")));
    return start == -1 ? QString() : word.mid(start).toLower();
}

QString valueName(const Option &option)
{
    const QString help = text(option.help);
    return help.startsWith(QLatin1Char('<')) ? help.section(QLatin1Char('>'), 0, 0) + QLatin1Char('>')
                                             : QString();
}

QString shownName(const Option &option)
{
    const QString value = valueName(option);
    switch (option.kind) {
    case Option::Flag:
        return text(option.name);
    case Option::Optional:
        return text("%1 [%2]").arg(text(option.name), value);
    case Option::List:
        return text("%1 [%2...]").arg(text(option.name), value);
    default:
        return text("%1 %2").arg(text(option.name), value);
    }
}

QString shownHelp(const Option &option)
{
    return text(option.help).mid(valueName(option).size()).trimmed();
}

QString listed(const Option &option)
{
    constexpr int column = 26;
    const QString name = text("  ") + shownName(option);
    const QString start = name.size() < column - 1
        ? name.leftJustified(column)
        : name + QLatin1Char('\n') + QString(column, QLatin1Char(' '));
    return start + wrapped(shownHelp(option), lineWidth - column, column) + QLatin1Char('\n');
}

QString indented(const char *lines)
{
    return text("  ") + text(lines).trimmed().replace(QLatin1Char('\n'), text("\n  ")) + QLatin1Char('\n');
}

// For troff: a backslash, a hyphen that is typed, and a point at the start of a line have meanings there.
QString roff(QString words)
{
    words.replace(QLatin1Char('\\'), text("\\e")).replace(QLatin1Char('-'), text("\\-"));
    return words.replace(QRegularExpression(text("^([.'])"), QRegularExpression::MultilineOption),
                         text("\\&\\1"));
}

QString roffOptions(const std::vector<Option> &options, bool ofLibrary)
{
    QString page;
    for (const Option &option : options) {
        if (isLibrarys(option) == ofLibrary)
            page += text(".TP\n.B %1\n%2\n").arg(roff(shownName(option)), roff(shownHelp(option)));
    }
    return page;
}

QString roffLiteral(const char *lines)
{
    return text(".nf\n%1\n.fi\n").arg(roff(text(lines).trimmed()));
}

} // namespace

CommandLine::CommandLine(const Program &program, const QStringList &arguments)
    : m_program(program), m_options(program.options)
{
    m_options.insert(m_options.end(), std::begin(common), std::end(common));
    for (const AppConfig::cmdArg_t &argument : AppConfig::cmdArgs) {
        if (qstrcmp(argument.name, "--help") != 0)
            m_options.push_back(fromLibrary(argument));
    }
    read(arguments);
}

void CommandLine::read(const QStringList &arguments)
{
    for (int i = 1; i < arguments.size() && m_problem.isEmpty();)
        i = take(arguments, i);
    if (m_problem.isEmpty() && !has("--help"))
        checkCompany();
    if (m_problem.isEmpty() && has("--all") && !has("--help"))
        m_problem = text("--all goes with --help.");
}

// Enters the option at a position with its values; returns the position behind them.
int CommandLine::take(const QStringList &arguments, int index)
{
    const QString word = arguments.at(index) == text("-h") ? text("--help") : arguments.at(index);
    const Option *const option = find(word);
    if (!option) {
        m_problem = unknown(word);
        return index;
    }
    if (m_values.contains(word))
        m_problem = text("%1 is given twice.").arg(word);

    const bool needsOne =
        option->kind == Option::Text || option->kind == Option::Number || option->kind == Option::FreeText;
    const int most = option->kind == Option::Flag ? 0 : option->kind == Option::List ? arguments.size() : 1;
    QStringList &values = m_values[word];
    int end = index + 1;
    while (end < arguments.size() && values.size() < most && isValue(*option, arguments.at(end)))
        values << arguments.at(end++);

    if (needsOne && values.isEmpty())
        m_problem = text("%1 needs a value: %2.").arg(word, shownName(*option));
    else if (option->kind == Option::Number && !isNumberFor(*option, values.first()))
        m_problem = text("%1 takes a whole number above 0, not \"%2\".").arg(word, values.first());
    else if (isTask(*option) && !m_task.isEmpty())
        m_problem = text("%1 and %2 are two tasks: ask for one.").arg(m_task, word);
    if (isTask(*option))
        m_task = word;
    for (int i = index; i < end && isLibrarys(*option); ++i)
        m_libraryWords.insert(i, word);
    return end;
}

bool CommandLine::isValue(const Option &option, const QString &word) const
{
    if (option.kind == Option::FreeText) {
        const Option *const other = find(word);
        return !other || isLibrarys(*other);
    }
    return !word.isEmpty() && !word.startsWith(text("--"));
}

void CommandLine::checkCompany()
{
    for (const Option &option : m_options) {
        const QStringList wanted = text(option.with).split(QLatin1Char(' '), Qt::SkipEmptyParts);
        const auto isGiven = [this](const QString &name) {
            return name == text("report") ? m_task.isEmpty() : m_values.contains(name);
        };
        if (!has(option.name) || isTask(option) || wanted.isEmpty()
            || std::any_of(wanted.cbegin(), wanted.cend(), isGiven))
            continue;
        m_problem = text("%1 goes with %2.").arg(text(option.name), wanted.join(text(" or ")));
        return;
    }
}

const Option *CommandLine::find(const QString &name) const
{
    if (name == text(helpFormat.name))
        return &helpFormat;
    const auto option = std::find_if(m_options.cbegin(), m_options.cend(), [&name](const Option &candidate) {
        return name == text(candidate.name);
    });
    return option == m_options.cend() ? nullptr : &*option;
}

QString CommandLine::unknown(const QString &word) const
{
    const QString name = word.section(QLatin1Char('='), 0, 0);
    if (name != word && find(name))
        return text("The value of %1 is a word of its own: %1 %2.").arg(name, word.mid(name.size() + 1));

    const QString plain = withoutDashes(name);
    QString nearest;
    int least = std::max(1, plain.size() / 3) + 1;
    for (const Option &option : m_options) {
        const int steps = distance(plain, text(option.name).mid(2).toLower());
        if (steps < least) {
            least = steps;
            nearest = text(option.name);
        }
    }
    const QString sentence = word.startsWith(QLatin1Char('-')) ? text("There is no option %1; %2")
                                                               : text("There is no place for \"%1\"; %2");
    return sentence.arg(name,
                        nearest.isEmpty() ? text("see --help.") : text("did you mean %1?").arg(nearest));
}

bool CommandLine::isAnswered() const
{
    const QString format = value(helpFormat.name);
    if (!m_problem.isEmpty())
        fail(0, m_problem);
    else if (format == text("man"))
        print(manualPage());
    else if (!format.isEmpty())
        print(completion());
    else if (has("--help"))
        print(helpText());
    else
        return false;
    return true;
}

void CommandLine::leaveToLibrary(int &argc, char **argv, const QStringList &withheld) const
{
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        if (m_libraryWords.contains(i) && !withheld.contains(m_libraryWords.value(i)))
            argv[kept++] = argv[i];
    }
    argc = kept;
    argv[argc] = nullptr;
}

QString CommandLine::helpText() const
{
    QString help = text("%1: %2.\n\nUsage: %1 %3\n\n")
                       .arg(text(m_program.name), text(m_program.purpose), text(m_program.usage));
    for (const Option &option : m_options) {
        if (!isLibrarys(option))
            help += listed(option);
    }
    if (has("--all")) {
        help += text("\nOptions of every Olvex executable:\n\n");
        for (const Option &option : m_options) {
            if (isLibrarys(option))
                help += listed(option);
        }
    }
    if (*m_program.details != '\0')
        help += QLatin1Char('\n') + text(m_program.details);
    return help + text("\nExamples:\n\n") + indented(m_program.examples) + text("\nExit status:\n\n")
        + indented(m_program.statuses);
}

QString CommandLine::manualPage() const
{
    const QString name = text(m_program.name);
    return text(".TH %1 1 \"\" \"Olvex\" \"Olvex programs\"\n.SH NAME\n%2 \\- %3\n.SH SYNOPSIS\n.B %2\n%4\n")
               .arg(roff(name.toUpper()), roff(name), roff(text(m_program.purpose)),
                    roff(text(m_program.usage)))
        + (*m_program.details == '\0' ? QString()
                                      : text(".SH DESCRIPTION\n") + roffLiteral(m_program.details))
        + text(".SH OPTIONS\n") + roffOptions(m_options, false)
        + text(".SH OPTIONS OF EVERY OLVEX EXECUTABLE\n") + roffOptions(m_options, true)
        + text(".SH EXAMPLES\n") + roffLiteral(m_program.examples) + text(".SH EXIT STATUS\n")
        + roffLiteral(m_program.statuses);
}

// Words that are no options complete as files do.
QString CommandLine::completion() const
{
    QStringList names;
    for (const Option &option : m_options)
        names << text(option.name);
    const QString function = text(m_program.name).replace(QLatin1Char('-'), QLatin1Char('_'));
    return text("_%1() {\n    COMPREPLY=()\n    [[ $2 != -* ]] || mapfile -t COMPREPLY < <(compgen -W \"%2\" "
                "-- \"$2\")\n}\n"
                "complete -o default -F _%1 %3\n")
        .arg(function, names.join(QLatin1Char(' ')), text(m_program.name));
}

int fail(int status, const QString &sentence)
{
    std::fflush(stdout);
    // The error texts of Windows end with a full stop of their own.
    std::fprintf(stderr, "%s\n", qPrintable(QString(sentence).replace(text(".."), text("."))));
    return status;
}

void print(const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stdout);
}

int finish(int status)
{
    errno = 0;
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0)
        return status;
    if (!terminal::isBrokenPipe(errno))
        fail(0,
             text("Standard output cannot be written: %1.")
                 .arg(errno == 0 ? text("it was cut short") : qt_error_string(errno)));
    return status == 0 ? 1 : status;
}

QString wrapped(const QString &text, int width, int indent)
{
    QString result;
    int used = 0;
    const QStringList words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    for (const QString &word : words) {
        const bool fits = used + 1 + word.size() <= width;
        if (used > 0)
            result +=
                fits ? QString(QLatin1Char(' ')) : QLatin1Char('\n') + QString(indent, QLatin1Char(' '));
        used = used > 0 && fits ? used + 1 + word.size() : word.size();
        result += word;
    }
    return result;
}
