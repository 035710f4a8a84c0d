#ifndef APPCONFIGPROCESS_H
#define APPCONFIGPROCESS_H

#include "HXCommonExport.h"

// Private to AppConfig, and exported for its tests.

/// The console control handler that AppConfig::cleanExit() installs on Windows. Runs on a thread of the
/// operating system, which ends the process when this returns; waits 5 s for the event loop to wind down.
/// @return true: handled
HXCOMMON_EXPORT bool cleanWindowsExit(unsigned long event);

#endif
