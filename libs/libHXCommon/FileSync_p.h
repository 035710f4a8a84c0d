#ifndef FILESYNC_P_H
#define FILESYNC_P_H

namespace filesync {

/// How long a host change waits for the old child before it kills it, in ms; a test may shorten it.
extern int terminateTimeout;

} // namespace filesync

#endif
