#ifndef LINKDATA_H
#define LINKDATA_H

#include <cstddef>
#include <random>
#include <string>
#include <vector>

/// Bytes for the tests and benchmarks of the device link, the same on every platform for the same seed.
namespace LinkData {

using Bytes = std::vector<unsigned char>;

/// How often a zero comes among otherwise random bytes.
struct Mix {
    const char *name;
    unsigned int zeros; ///< so many ...
    unsigned int among; ///< ... of so many bytes are zero on average
};

constexpr Mix random{"random", 1, 256};
constexpr Mix zeroFree{"zero-free", 0, 1};
constexpr Mix allZero{"all-zero", 1, 1};
constexpr Mix sparse{"sparse", 1, 16};
constexpr Mix dense{"dense", 1, 2};
constexpr Mix mixes[] = {random, zeroFree, allZero, sparse, dense};

inline std::size_t below(std::mt19937 &generator, std::size_t limit)
{
    return generator() % limit;
}

inline Bytes bytes(std::mt19937 &generator, const Mix &mix, std::size_t size)
{
    Bytes result(size);
    for (unsigned char &byte : result)
        byte = below(generator, mix.among) < mix.zeros
            ? 0
            : static_cast<unsigned char>(1 + below(generator, 255));
    return result;
}

inline Bytes fromText(const std::string &text)
{
    return Bytes(text.begin(), text.end());
}

inline void append(Bytes &to, const Bytes &more)
{
    to.insert(to.end(), more.begin(), more.end());
}

} // namespace LinkData

#endif
