#include "LogicalLinkControl.h"

#include "Cobs.h"
#include "CrcCCITT.h"
#include "EightBytes.h"

#include <algorithm>
#include <limits>

namespace Communication {

namespace {

using Byte = unsigned char;
using Bytes = std::vector<Byte>;

constexpr std::size_t crcSize = 2;
constexpr std::size_t tooShort = 3; // stuffed bytes that cannot hold a payload and its checksum

// The bytes that a 32-bit position can move over.
std::size_t reachable(const Bytes &v)
{
    return std::min<std::size_t>(v.size(), std::numeric_limits<unsigned int>::max());
}

// Whether so many bytes without a delimiter follow that the block functions pay. They do not where a chunk or
// a frame is about to end.
bool startsBlock(const Byte *bytes, std::size_t available)
{
    return available >= EightBytes::count && EightBytes::zeros(bytes) == 0;
}

unsigned short messageCrc(Bytes &message)
{
    // Deliberate: the length is taken modulo 256. Do not "fix" it for long messages: both ends must do the
    // same.
    return CrcCCITT::calcCrc(message.data(), message.size() % 256);
}

template <typename Unsigned> Unsigned retrieve_le(const Bytes &v, unsigned int &position)
{
    const std::size_t size = reachable(v);
    if (position >= size || size - position < sizeof(Unsigned))
        return 0;
    Unsigned value = 0;
    for (std::size_t i = 0; i < sizeof value; ++i)
        value = static_cast<Unsigned>(value | static_cast<Unsigned>(v[position++]) << (8 * i));
    return value;
}

} // namespace

LogicalLinkControl::LogicalLinkControl(unsigned char maxMessageSize) : m_maxMessageSize(maxMessageSize)
{
    m_buffer.reserve(maxMessageSize + std::size_t(3));
}

void LogicalLinkControl::reset()
{
    m_state = WAITING_FOR_FRAME;
    m_buffer.clear();
}

bool LogicalLinkControl::encode_message(Bytes &message, Bytes &frame)
{
    if (message.empty() || message.size() > m_maxMessageSize)
        return false;
    if (&message == &frame) {
        Bytes copy = message;
        return encode_message(copy, frame);
    }
    // Deliberate: the checksum stays in the caller's message.
    push_back_u16le(message, messageCrc(message));
    // Not cleared first: resizing a frame that had this size before costs nothing.
    frame.resize(Cobs::encodedLimit(message.size()) + 2);
    frame.front() = FRAMING_CHAR;
    Byte *end = Cobs::encode(message.data(), message.size(), frame.data() + 1);
    *end++ = FRAMING_CHAR;
    frame.resize(static_cast<std::size_t>(end - frame.data()));
    return true;
}

unsigned int LogicalLinkControl::receive(Bytes &input, unsigned int &position, Bytes &message)
{
    // Where bytes are read one by one, most calls end here and skip the preparations of the loop.
    if (m_state == RECEIVING_FRAME && position == 0 && input.size() == 1 && input[0] != FRAMING_CHAR) {
        position = 1;
        m_buffer.push_back(input[0]);
        return RECEIVING_FRAME;
    }
    return receiveChunk(input, position, message);
}

unsigned int LogicalLinkControl::receiveChunk(const Bytes &input, unsigned int &position, Bytes &message)
{
    const std::size_t size = reachable(input);
    while (position < size) {
        const Byte *next = input.data() + position;
        if (startsBlock(next, size - position)) {
            position += readBlock(next, size - position);
        } else if (*next != FRAMING_CHAR) {
            ++position;
            if (m_state == RECEIVING_FRAME)
                m_buffer.push_back(*next);
        } else if (m_state == WAITING_FOR_FRAME) {
            ++position;
            m_buffer.clear();
            m_state = RECEIVING_FRAME;
        } else {
            // Deliberate: the closing delimiter is not consumed, it opens the next frame.
            m_state = WAITING_FOR_FRAME;
            if (const unsigned int result = closeFrame(message))
                return result;
        }
    }
    return m_state;
}

// Takes all bytes up to the next delimiter and returns how many.
// Deliberate: the buffer has no upper bound, the maximum message size limits what is sent only.
unsigned int LogicalLinkControl::readBlock(const Byte *first, std::size_t available)
{
    const void *delimiter = std::memchr(first, FRAMING_CHAR, available);
    const Byte *last = delimiter == nullptr ? first + available : static_cast<const Byte *>(delimiter);
    if (m_state == RECEIVING_FRAME)
        m_buffer.insert(m_buffer.end(), first, last);
    return static_cast<unsigned int>(last - first);
}

// The result of a frame whose closing delimiter has come; 0 where it is too short to be one.
unsigned int LogicalLinkControl::closeFrame(Bytes &message) const
{
    if (m_buffer.size() <= tooShort)
        return 0;
    message.clear();
    cobs_decode(m_buffer, message);
    if (message.size() <= crcSize)
        return 0;
    const std::size_t size = message.size() - crcSize;
    const int crc = message[size] | message[size + 1] << 8;
    message.resize(size);
    return messageCrc(message) == crc ? MESSAGE_RECEIVED : CRC_ERROR;
}

bool LogicalLinkControl::cobs_encode(const Bytes &in, Bytes &out)
{
    // Deliberate: an empty output is refused, as it lacks the opening delimiter.
    if (in.empty() || out.empty())
        return false;
    const std::size_t size = in.size();
    const std::size_t start = out.size();
    out.resize(start + Cobs::encodedLimit(size));
    const Byte *end = Cobs::encode(in.data(), size, out.data() + start);
    out.resize(static_cast<std::size_t>(end - out.data()));
    return true;
}

bool LogicalLinkControl::cobs_decode(const Bytes &in, Bytes &out)
{
    if (in.size() < 2)
        return false;
    if (&in == &out)
        return cobs_decode(Bytes(in), out);
    Cobs::appendDecoded(in, out);
    return true;
}

void LogicalLinkControl::push_back_u16le(Bytes &v, unsigned short value)
{
    v.push_back(static_cast<Byte>(value & 0xFF));
    v.push_back(static_cast<Byte>(value >> 8 & 0xFF));
}

void LogicalLinkControl::push_back_u32le(Bytes &v, unsigned int value)
{
    push_back_u16le(v, static_cast<unsigned short>(value & 0xFFFF));
    push_back_u16le(v, static_cast<unsigned short>(value >> 16));
}

unsigned char LogicalLinkControl::retrieve_u8(Bytes &v, unsigned int &position)
{
    return retrieve_le<unsigned char>(v, position);
}

unsigned short LogicalLinkControl::retrieve_u16le(Bytes &v, unsigned int &position)
{
    return retrieve_le<unsigned short>(v, position);
}

unsigned int LogicalLinkControl::retrieve_u32le(Bytes &v, unsigned int &position)
{
    return retrieve_le<unsigned int>(v, position);
}

const char *LogicalLinkControl::retrieve_string(Bytes &v, unsigned int &position)
{
    const std::size_t size = reachable(v);
    if (position >= size)
        return nullptr;
    const Byte *text = v.data() + position;
    const void *terminator = std::memchr(text, 0, size - position);
    if (terminator == nullptr)
        return nullptr;
    position += static_cast<unsigned int>(static_cast<const Byte *>(terminator) - text + 1);
    return reinterpret_cast<const char *>(text);
}

} // namespace Communication
