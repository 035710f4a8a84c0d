#ifndef OUTCOME_H
#define OUTCOME_H

#include "CopyProgress.h"

#include <QByteArray>

class FileSync;
class QProcess;
struct Job;

/// Passes on what a job prints, as it prints it, and puts into words how it ends.
class Outcome {
public:
    /// Both must outlive it, until the job has reported.
    Outcome(const Job &job, FileSync &sync);

    /// Stops the job, unless it is over.
    void stopAtLimit();

    /// One sentence about how the job ended.
    QString words() const { return m_words; }

private:
    void passOn();
    void watchCopy();
    void enter(int status);
    QString wordsFor(int status) const;

    const Job &m_job;
    FileSync &m_sync;
    QProcess *m_process;
    QString m_words;
    QByteArray m_lastErrors; ///< the end of standard error, long enough for a full disk to be found in it
    bool m_diskFull = false;
    std::unique_ptr<CopyProgress> m_progress;
};

#endif
