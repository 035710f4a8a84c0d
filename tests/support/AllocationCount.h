#ifndef ALLOCATIONCOUNT_H
#define ALLOCATIONCOUNT_H

/// Counts the calls of operator new since it was made, by all threads. AllocationCount.cpp, which must be
/// part of the program, replaces the operator.
class AllocationCount {
public:
    long value() const { return total() - m_start; }

private:
    static long total();

    long m_start = total();
};

#endif
