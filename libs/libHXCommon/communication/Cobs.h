#ifndef COBS_H
#define COBS_H

#include <cstddef>

// Consistent Overhead Byte Stuffing between plain memory blocks, as LogicalLinkControl describes it. Not
// installed. The output must not overlap the input.
namespace Communication::Cobs {

constexpr std::size_t longestRun = 254; ///< Bytes without zero in the longest block.

/// The most that encoding @p size bytes writes.
constexpr std::size_t encodedLimit(std::size_t size)
{
    return size + 1 + size / longestRun;
}

/// Encodes @p size bytes into @p out and returns the end of what it wrote.
unsigned char *encode(const unsigned char *in, std::size_t size, unsigned char *out);

/// Decodes @p size bytes, at least one, and returns the end of the result. All of them but the first have
/// been copied to @p out already, where the result replaces them.
unsigned char *decodeCopy(const unsigned char *in, std::size_t size, unsigned char *out);

} // namespace Communication::Cobs

#endif
