#ifndef FUZZINPUT_H
#define FUZZINPUT_H

#include "LinkData.h"

#include <cstdint>
#include <cstdlib>

/// Ends the program, so that the fuzzer keeps the input, unless @p holds.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}

/// The input of a fuzz target, of which parts are taken from the front; 0 and nothing once it is used up.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t *data, std::size_t size) : m_bytes(data, data + size) { }

    unsigned char takeByte() { return m_next < m_bytes.size() ? m_bytes[m_next++] : 0; }

    LinkData::Bytes takeRest()
    {
        const auto from = m_bytes.begin() + static_cast<std::ptrdiff_t>(m_next);
        m_next = m_bytes.size();
        return LinkData::Bytes(from, m_bytes.end());
    }

private:
    LinkData::Bytes m_bytes;
    std::size_t m_next = 0;
};

#endif
