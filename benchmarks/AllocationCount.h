#ifndef ALLOCATIONCOUNT_H
#define ALLOCATIONCOUNT_H

#include <atomic>

/// The calls of operator new so far, by all threads. AllocationCount.cpp, which must be part of the program,
/// replaces the operator.
extern std::atomic<long> allocationCount;

#endif
