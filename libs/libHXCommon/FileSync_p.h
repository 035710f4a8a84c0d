#ifndef FILESYNC_P_H
#define FILESYNC_P_H

#include "HXCommonExport.h"

namespace filesync {

/// How long a host change waits for the old child before it kills it, in ms; a test may shorten it.
HXCOMMON_EXPORT extern int terminateTimeout;

} // namespace filesync

#endif
