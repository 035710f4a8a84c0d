#ifndef LINKDATA_H
#define LINKDATA_H

#include <cstddef>
#include <random>
#include <vector>

/// Bytes for the tests and benchmarks of the device link, the same on every platform for the same seed.
namespace LinkData {

using Bytes = std::vector<unsigned char>;

inline std::size_t below(std::mt19937 &generator, std::size_t limit)
{
    return generator() % limit;
}

/// Random bytes, one of @p zeroInterval of which is zero on average.
inline Bytes bytes(std::mt19937 &generator, std::size_t zeroInterval, std::size_t size)
{
    Bytes result(size);
    for (unsigned char &byte : result) {
        if (below(generator, zeroInterval) > 0)
            byte = static_cast<unsigned char>(1 + below(generator, 255));
    }
    return result;
}

/// Bytes among which zeros are as frequent as in random data, sparse, dense, everywhere or nowhere.
inline Bytes anyBytes(std::mt19937 &generator, std::size_t size)
{
    constexpr std::size_t zeroIntervals[] = {256, 16, 2, 1, 1U << 31};
    return bytes(generator, zeroIntervals[below(generator, std::size(zeroIntervals))], size);
}

inline Bytes operator+(Bytes left, const Bytes &right)
{
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

} // namespace LinkData

#endif
