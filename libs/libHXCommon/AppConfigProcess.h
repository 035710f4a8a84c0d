#ifndef APPCONFIGPROCESS_H
#define APPCONFIGPROCESS_H

// Private to AppConfig.

/// The console control handler that AppConfig::cleanExit() installs on Windows. Runs on a thread of the
/// operating system, which ends the process when this returns; waits 5 s for the event loop to wind down.
/// @return true: handled
bool cleanWindowsExit(unsigned long event);

#endif
