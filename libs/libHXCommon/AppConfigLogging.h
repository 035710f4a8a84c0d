#ifndef APPCONFIGLOGGING_H
#define APPCONFIGLOGGING_H

#include <QLoggingCategory>

// Private to AppConfig.

Q_DECLARE_LOGGING_CATEGORY(appConfigCategory)

/// Installs the filter that registers every log category in AppConfig::loggingCategories.
void installLoggingFilter();

/// Empties AppConfig::loggingCategories.
void forgetLoggingCategories();

/// Installs the handler that writes the log file, and keeps the previous one in AppConfig::oldMsgHandler.
void installLogHandler();

/// Gives its place back to AppConfig::oldMsgHandler.
void removeLogHandler();

#endif
