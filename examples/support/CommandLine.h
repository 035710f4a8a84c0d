#ifndef COMMANDLINE_H
#define COMMANDLINE_H

#include "Text.h"

#include <QHash>
#include <QStringList>

#include <vector>

/// One option of a program, as its help, its manual page and the completion of the shell show it.
struct Option {
    enum Kind {
        Flag,
        Text, ///< one value that does not start with "--"
        Number, ///< one whole number
        FreeText, ///< one value, whatever it is but another option of the program
        Optional, ///< at most one value
        List ///< any number of values
    };

    const char *name;
    Kind kind;
    const char *help; ///< starts with the value as "<value>"
    /// The options, separated by blanks, of which one must be given with it, or "report" for no task; or
    /// "task" for an option that says what to do, of which only one can be given.
    const char *with = "";
    static constexpr char task[] = "task";
};

/// What a program says of itself.
struct Program {
    const char *name;
    const char *purpose; ///< one line, without a full stop
    const char *usage; ///< behind the name
    std::vector<Option> options;
    const char *details; ///< paragraphs, or ""
    const char *examples; ///< command lines
    const char *statuses; ///< lines "number  meaning"
    int refusal; ///< exit status for a wrong command line
};

/**
 * The command line of a tool, read strictly: nothing runs unless every word has its meaning.
 *
 * The library reads its own options from the arguments of the process, and passes over what it does not know.
 * So leave it only what is meant for it, before AppConfig::initialize().
 */
class CommandLine {
public:
    /// @p program must outlive it.
    CommandLine(const Program &program, const QStringList &arguments);

    /// Whether there is nothing to do but to end with status(): help was asked for and has been printed, or
    /// something is wrong, which has been said in one sentence.
    bool isAnswered() const;
    int status() const { return m_problem.isEmpty() ? 0 : m_program.refusal; }

    bool has(const char *option) const { return m_values.contains(QString::fromLatin1(option)); }
    QStringList values(const char *option) const { return m_values.value(QString::fromLatin1(option)); }
    QString value(const char *option, const QString &otherwise = QString()) const
    {
        return values(option).value(0, otherwise);
    }
    /// The name of the task that was asked for, or an empty text.
    QString task() const { return m_task; }

    /// Takes all words from the arguments of the process but the library's own options, of these also those
    /// in @p withheld.
    void leaveToLibrary(int &argc, char **argv, const QStringList &withheld) const;

private:
    void read(const QStringList &arguments);
    int take(const QStringList &arguments, int index);
    void checkCompany();
    const Option *find(const QString &name) const;
    QString unknown(const QString &word) const;
    bool isValue(const Option &option, const QString &word) const;

    QString helpText() const;
    QString manualPage() const;
    QString completion() const;

    const Program &m_program;
    std::vector<Option> m_options; ///< the program's own and then the library's
    QHash<QString, QStringList> m_values;
    QHash<int, QString> m_libraryWords; ///< positions, and the options they belong to
    QString m_task;
    QString m_problem;
};

/// Prints one sentence on standard error; returns @p status.
int fail(int status, const QString &sentence);

/// Prints on standard output.
void print(const QString &text);

/// The end of a program that prints: @p status, or if standard output could not be written a sentence and 1.
int finish(int status);

/// Breaks a text between words into lines of at most @p width characters, without a line end at the end; all
/// but the first start with @p indent blanks.
QString wrapped(const QString &text, int width, int indent);

#endif
