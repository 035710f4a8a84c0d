#ifndef ALLOCATIONCOUNT_H
#define ALLOCATIONCOUNT_H

#include <atomic>
#include <cstdlib>
#include <new>

// Replaces the global operator new: include it in one source file of a program.

namespace AllocationCounter {
inline std::atomic<long> count{0};
}

void *operator new(std::size_t size)
{
    AllocationCounter::count.fetch_add(1, std::memory_order_relaxed);
    if (void *memory = std::malloc(size))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void *memory) noexcept
{
    std::free(memory);
}

void operator delete(void *memory, std::size_t) noexcept
{
    std::free(memory);
}

/// Counts the calls of operator new since it was made, by all threads.
class AllocationCount {
public:
    long value() const { return AllocationCounter::count - m_start; }

private:
    long m_start = AllocationCounter::count;
};

#endif
