#ifndef EIGHTBYTES_H
#define EIGHTBYTES_H

#include <cstddef>
#include <cstdint>
#include <cstring>

// Eight bytes of a buffer looked at together. Not installed.
namespace Communication::EightBytes {

constexpr std::size_t count = 8;
constexpr std::uint64_t allOne = 0x0101010101010101;

inline std::uint64_t load(const unsigned char *bytes)
{
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Not 0 if at least one byte is: subtracting 1 sets the top bit of a zero byte, and if of none else, then
/// only of those above one. A test for eight bytes without the call that memchr is, which does not pay where
/// zeros are dense.
inline std::uint64_t zeros(const unsigned char *bytes)
{
    const std::uint64_t word = load(bytes);
    return (word - allOne) & ~word & (allOne << 7);
}

} // namespace Communication::EightBytes

#endif
