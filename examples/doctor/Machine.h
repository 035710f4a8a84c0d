#ifndef MACHINE_H
#define MACHINE_H

#include "Report.h"

/// Reports on the programs, the clock, the directories and the disks that an application finds.
QVector<Table> examineMachine(QVector<Problem> &problems);

/// Reports on the log file @p path, if there is one, and on the directory of log files.
Table examineLogs(const QString &path, QVector<Problem> &problems);

/// The log files that there are: @p path, if it is not empty, and those in their directory.
QStringList logFiles(const QString &path);

/// Reports on what olvex-sync needs to reach a host.
Table examineRemoteAccess(QVector<Problem> &problems);

#endif
