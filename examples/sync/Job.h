#ifndef JOB_H
#define JOB_H

#include <QStringList>

class CommandLine;
class FileSync;

/// What the command line asks olvex-sync to do.
struct Job {
    QString command;
    QString arguments;
    QString directory;
    QString host;
    QString user;
    QString from;
    QString to;
    int limit; ///< seconds, 0 for none

    explicit Job(const CommandLine &line);

    /// One sentence about what does not fit together, or an empty text.
    QString problem() const;
    /// Starts it, by the call of FileSync that does it.
    void start(FileSync &sync) const;
    /// The same as a person would type it.
    QString shown() const;
    /// Why the copy cannot be made, as far as it can be seen from outside.
    QString copyProblem() const;
};

#endif
