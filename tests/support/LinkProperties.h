#ifndef LINKPROPERTIES_H
#define LINKPROPERTIES_H

#include "LinkData.h"

#include <communication/LogicalLinkControl.h>

#include <algorithm>
#include <tuple>

/// What holds for all bytes: the tests try random ones, the fuzz targets look for a counterexample.
namespace LinkProperties {

using namespace LinkData;
using Communication::LogicalLinkControl;

// ---- the link by its definition

/// The checksum of the first @p size bytes, bit by bit.
inline unsigned int crc(const Bytes &data, std::size_t size)
{
    unsigned int value = 0xFFFF;
    for (std::size_t i = 0; i < size * 8; ++i) {
        const unsigned int carry = (value >> 15) ^ (data[i / 8] >> (7 - i % 8) & 1U);
        value = (value << 1 & 0xFFFF) ^ carry * 0x1021;
    }
    return value;
}

/// What COBS blocks stand for, as far as they go.
inline Bytes decoded(const Bytes &in)
{
    Bytes out;
    for (std::size_t i = 0; i < in.size();) {
        const unsigned char code = in[i++];
        for (int copied = 1; copied < code && i < in.size(); ++copied)
            out.push_back(in[i++]);
        if (code != 0xFF && i < in.size())
            out.push_back(0);
    }
    return out;
}

/// What a receiver reports: its result, the offset in the stream of the byte that it stopped at, and what the
/// message vector holds.
using Event = std::tuple<unsigned int, std::size_t, Bytes>;

/// What lies between two zeros is a frame, unless it is too short.
/// @return the frames of a stream, and as the last event the state at its end
inline std::vector<Event> events(const Bytes &stream)
{
    std::vector<Event> result;
    Bytes message;
    const auto first = std::find(stream.begin(), stream.end(), 0);
    for (auto open = first; open != stream.end();) {
        const auto close = std::find(open + 1, stream.end(), 0);
        if (close != stream.end() && close - open > 4) {
            message = decoded(Bytes(open + 1, close));
            const std::size_t size = message.size() - 2;
            const unsigned int sum = message[size] + message[size + 1] * 256U;
            message.resize(size);
            result.emplace_back(crc(message, size % 256) == sum ? 4 : 3, close - stream.begin(), message);
        }
        open = close;
    }
    result.emplace_back(first == stream.end() ? 1 : 2, stream.size(), message);
    return result;
}

// ---- the library

/// What a link reports about a stream that comes in chunks whose sizes @p nextSize gives; the last event is
/// the state at the end.
template <typename NextSize> std::vector<Event> received(const Bytes &stream, NextSize nextSize)
{
    LogicalLinkControl link(8);
    std::vector<Event> result;
    Bytes message;
    unsigned int state;
    std::size_t offset = 0;
    do {
        const unsigned char *from = stream.data() + offset;
        Bytes chunk(from, from + std::min<std::size_t>(nextSize(), stream.size() - offset));
        unsigned int position = 0;
        while ((state = link.receive(chunk, position, message)) >= LogicalLinkControl::CRC_ERROR)
            result.emplace_back(state, offset + position, message);
        offset += position;
    } while (offset < stream.size());
    result.emplace_back(state, offset, message);
    return result;
}

// Each takes a number that varies what it does, and any bytes.

/// Bytes are encoded and decoded, behind @p before + 1 others in the output, or behind themselves.
inline bool isCoded(unsigned char before, const Bytes &bytes)
{
    const auto appended = [before](auto codec, const Bytes &in) {
        Bytes out(before + 1U);
        codec(in, out);
        return Bytes(out.begin() + before + 1, out.end());
    };
    const auto doubled = [&bytes](auto codec) {
        Bytes both = bytes;
        codec(both, both);
        return Bytes(both.begin() + std::ptrdiff_t(bytes.size()), both.end());
    };
    const Bytes stuffed = appended(LogicalLinkControl::cobs_encode, bytes);
    // Whatever follows, an encoding stands for the bytes and a zero: its last block is never a full one.
    return bytes.size() < 2
        || (std::count(stuffed.begin(), stuffed.end(), 0) == 0
            && decoded(stuffed + Bytes{1}) == bytes + Bytes{0}
            && appended(LogicalLinkControl::cobs_decode, stuffed) == bytes
            && appended(LogicalLinkControl::cobs_decode, bytes) == decoded(bytes)
            && doubled(LogicalLinkControl::cobs_encode) == stuffed
            && doubled(LogicalLinkControl::cobs_decode) == decoded(bytes));
}

/// A stream is received as a whole, in equal chunks, and in random ones.
inline bool isReceived(unsigned char cuts, const Bytes &stream)
{
    std::minstd_rand generator(cuts + 1U);
    const std::vector<Event> expected = events(stream);
    return received(stream, [&] { return stream.size(); }) == expected
        && received(stream, [&] { return cuts + std::size_t(1); }) == expected
        && received(stream, [&] { return std::size_t(1) << generator() % 9; }) == expected;
}

/// A message is framed, and found behind noise, which is its own first bytes.
inline bool isFoundBehindNoise(unsigned char noise, const Bytes &bytes)
{
    Bytes message = bytes;
    Bytes frame;
    if (!LogicalLinkControl(254).encode_message(message, frame))
        return bytes.empty() || bytes.size() > 254;
    const Bytes stream =
        Bytes(bytes.data(), bytes.data() + std::min<std::size_t>(noise, bytes.size())) + frame;
    const std::vector<Event> found = events(stream);
    return found.size() > 1 && found[found.size() - 2] == Event(4, stream.size() - 1, bytes)
        && isReceived(noise, stream);
}

} // namespace LinkProperties

#endif
