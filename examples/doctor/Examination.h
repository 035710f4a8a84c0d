#ifndef EXAMINATION_H
#define EXAMINATION_H

#include "Report.h"

/// Looks at everything that an application finds when it starts, and changes nothing. AppConfig must be
/// initialised, and the deployment in force set in OXUrls.
/// @param application whose settings are looked at; empty for those of a new one
/// @param logFile the log file that it would write, or empty
Report examine(const QString &application, const QString &logFile);

#endif
