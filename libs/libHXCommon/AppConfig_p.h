#ifndef APPCONFIG_P_H
#define APPCONFIG_P_H

#include <QLoggingCategory>

Q_DECLARE_LOGGING_CATEGORY(appConfigCategory)

/// Installs the filter that registers every log category in AppConfig::loggingCategories.
void installLoggingFilter();

/// Empties AppConfig::loggingCategories.
void forgetLoggingCategories();

/// Installs the handler that writes the log file, and keeps the previous one in AppConfig::oldMsgHandler.
void installLogHandler();

/// Gives its place back to AppConfig::oldMsgHandler.
void removeLogHandler();

/// The console control handler that AppConfig::cleanExit() installs on Windows. Runs on a thread of the
/// operating system, which ends the process when this returns; waits 5 s for the event loop to wind down.
/// @return true: handled
bool cleanWindowsExit(unsigned long event);

#endif
