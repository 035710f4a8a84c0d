#ifndef COBS_H
#define COBS_H

#include <cstddef>
#include <vector>

// Consistent Overhead Byte Stuffing, as LogicalLinkControl describes it. Not installed. The output must not
// overlap the input.
namespace Communication::Cobs {

constexpr std::size_t longestRun = 254; ///< Bytes without zero in the longest block.

/// The most that encoding @p size bytes writes.
constexpr std::size_t encodedLimit(std::size_t size)
{
    return size + 1 + size / longestRun;
}

/// Encodes @p size bytes into @p out, which has room for encodedLimit(), and returns the end of what it
/// wrote.
unsigned char *encode(const unsigned char *in, std::size_t size, unsigned char *out);

/// Appends the decoding of @p in, at least one byte, to @p out.
void appendDecoded(const std::vector<unsigned char> &in, std::vector<unsigned char> &out);

} // namespace Communication::Cobs

#endif
