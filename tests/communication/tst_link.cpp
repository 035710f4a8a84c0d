#include "LinkProperties.h"

#include <communication/CrcCCITT.h>

#include <gtest/gtest.h>

#include <type_traits>

using namespace LinkProperties;

static_assert(LogicalLinkControl::FRAMING_CHAR == 0);
static_assert(!std::is_polymorphic_v<LogicalLinkControl>);

namespace {

const Bytes zeroFrame{0, 1, 3, 0xF0, 0xE1, 0}; // the message {0}

// Data, its blocks, and whether an encoder writes them so: published examples, with any long run and with the
// block that this link always opens behind a full one; then malformed blocks, and what they give as far as
// they go.
const std::tuple<Bytes, Bytes, bool> blocks[] = {
    {{0x00}, {0x01, 0x01}, true},
    {{0x11, 0x22, 0x00, 0x33}, {0x03, 0x11, 0x22, 0x02, 0x33}, true},
    {{0x11, 0x00, 0x00, 0x00}, {0x02, 0x11, 0x01, 0x01, 0x01}, true},
    {Bytes(254, 7), Bytes{0xFF} + Bytes(254, 7) + Bytes{0x01}, true},
    {Bytes(255, 7), Bytes{0xFF} + Bytes(254, 7) + Bytes{0x02, 7}, true},
    {Bytes(254, 7) + Bytes{0}, Bytes{0xFF} + Bytes(254, 7) + Bytes{0x01, 0x01}, true},
    {{0x00, 0x11}, {0x00, 0x02, 0x11}, false}, // the code byte 0 counts as 1
    {{0x11, 0x00, 0x00}, {0x03, 0x11, 0x00, 0x01}, false}, // a zero among the data is data
    {{0x11}, {0x05, 0x11}, false}, // cut short
    {Bytes(254, 7), Bytes{0xFF} + Bytes(254, 7), false}, // nothing behind a full block
};

// A stream, and what a receiver reports about it.
// clang-format off
const std::pair<Bytes, std::vector<Event>> receptions[] = {
    {{}, {{1, 0, {}}}},
    {{7, 7, 7, 7}, {{1, 4, {}}}},
    {{0, 1, 3, 0xF0}, {{2, 4, {}}}},
    {{7, 7, 7, 7, 7, 7, 7, 7, 7, 0, 1, 3, 0xF0, 0xE1, 0}, {{4, 14, {0}}, {2, 15, {0}}}}, // noise in front
    {{0, 1, 3, 0xF0, 0xE1, 0, 2, 0x41, 3, 0x15, 0xB9, 0}, // one delimiter between two frames
     {{4, 5, {0}}, {3, 11, {0x41, 0}}, {2, 12, {0x41, 0}}}},
    {{0, 1, 3, 0xE1, 0xF0, 0}, {{3, 5, {0}}, {2, 6, {0}}}}, // the checksum's bytes swapped
    {{0, 1, 3, 0xF0, 0xE1, 0, 1, 0, 1, 1, 1, 0}, {{4, 5, {0}}, {2, 12, {0}}}}, // too short behind it
    {{0, 3, 1, 1, 0, 4, 1, 2, 3, 0}, {{3, 9, {1}}, {2, 10, {1}}}}, // too short, just long enough
};
// clang-format on

} // namespace

TEST(CrcCCITT, givesPublishedValues)
{
    Bytes digits{'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(Communication::CrcCCITT::calcCrc(digits.data(), 9), 0x29B1);
    EXPECT_EQ(Communication::CrcCCITT::calcCrc(nullptr, 0), 0xFFFF);
}

TEST(Cobs, appendsPublishedValues)
{
    for (const auto &[data, stuffed, encodes] : blocks) {
        Bytes in{0xEE};
        Bytes out{0xEE};
        EXPECT_TRUE(LogicalLinkControl::cobs_decode(stuffed, in));
        EXPECT_TRUE(LogicalLinkControl::cobs_encode(data, out));
        EXPECT_EQ(in, Bytes{0xEE} + data);
        EXPECT_EQ(out == Bytes{0xEE} + stuffed, encodes);
    }
}

// Up to beyond the fourth block, so that blocks end at every offset in a word and in a window.
TEST(Cobs, codesEverySize)
{
    std::mt19937 generator(2);
    for (std::size_t i = 0; i < 10000; ++i)
        ASSERT_TRUE(isCoded(7, anyBytes(generator, i % 1100))) << i;
}

TEST(Cobs, refusesWithoutEffect)
{
    Bytes none;
    Bytes out{0x07};
    EXPECT_FALSE(LogicalLinkControl::cobs_encode({}, out));
    EXPECT_FALSE(LogicalLinkControl::cobs_encode({0x11}, none));
    EXPECT_FALSE(LogicalLinkControl::cobs_decode({0x02}, out));
    EXPECT_EQ(out, Bytes{0x07});
    EXPECT_EQ(none, Bytes());
}

TEST(EncodeMessage, buildsTheFrame)
{
    LogicalLinkControl link(8);
    Bytes message{0};
    Bytes frame{1, 2, 3};
    EXPECT_TRUE(link.encode_message(message, frame));
    EXPECT_EQ(frame, zeroFrame);
    EXPECT_EQ(message, (Bytes{0, 0xF0, 0xE1})); // the checksum stays behind the message
    message = {0};
    EXPECT_TRUE(link.encode_message(message, message));
    EXPECT_EQ(message, zeroFrame);
}

TEST(EncodeMessage, refusesWithoutEffect)
{
    const std::pair<unsigned char, std::size_t> refused[] = {{8, 0}, {8, 9}, {255, 256}};
    for (const auto &[maximum, size] : refused) {
        Bytes message(size, 7);
        Bytes frame{1};
        EXPECT_FALSE(LogicalLinkControl(maximum).encode_message(message, frame)) << size;
        EXPECT_EQ(message, Bytes(size, 7));
        EXPECT_EQ(frame, Bytes{1});
    }
}

TEST(EncodeMessage, isFoundBehindNoise)
{
    std::mt19937 generator(3);
    for (unsigned char noise = 0; noise < 255; ++noise) {
        const Bytes message = anyBytes(generator, 1 + below(generator, 254));
        ASSERT_TRUE(isFoundBehindNoise(noise, message)) << int(noise);
    }
}

TEST(Receive, reportsFramesAndPositions)
{
    for (const auto &[stream, expected] : receptions) {
        for (std::size_t size = 1; size <= stream.size() + 1; ++size)
            EXPECT_EQ(received(stream, [size] { return size; }), expected) << size;
    }
}

TEST(Receive, readsNothingBeyondTheEnd)
{
    LogicalLinkControl link(8);
    Bytes chunk{0, 1, 3};
    Bytes message{9};
    unsigned int position = 0;
    EXPECT_EQ(link.receive(chunk, position, message), 2U);
    EXPECT_EQ(link.receive(chunk, position = ~0U, message), 2U);
    link.reset();
    EXPECT_EQ(link.receive(chunk, position, message), 1U);
    EXPECT_EQ(position, ~0U);
    EXPECT_EQ(message, Bytes{9});
}

// The length of the checksum has eight bits: of a message of n bytes it covers the first n % 256.
TEST(Receive, checksTheLengthModulo256)
{
    for (const std::size_t size : {255U, 256U, 300U}) {
        Bytes message(size, 0x55);
        Bytes frame{0};
        LogicalLinkControl::push_back_u16le(message, static_cast<unsigned short>(crc(message, size % 256)));
        LogicalLinkControl::cobs_encode(message, frame);
        EXPECT_EQ(std::get<0>(received(frame + Bytes{0}, [] { return 4096; }).front()), 4U) << size;
    }
}

TEST(Fields, readsWhatWasAppended)
{
    Bytes v{0x81};
    LogicalLinkControl::push_back_u16le(v, 0x8382);
    LogicalLinkControl::push_back_u32le(v, 0x87868584);
    EXPECT_EQ(v, (Bytes{0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87}));
    v = v + Bytes{'a', 'b', 0, 0};
    unsigned int position = 0;
    EXPECT_EQ(LogicalLinkControl::retrieve_u8(v, position), 0x81);
    EXPECT_EQ(LogicalLinkControl::retrieve_u16le(v, position), 0x8382);
    EXPECT_EQ(LogicalLinkControl::retrieve_u32le(v, position), 0x87868584);
    const void *text = v.data() + position; // strings are read in place
    EXPECT_EQ(LogicalLinkControl::retrieve_string(v, position), text);
    EXPECT_EQ(position, 10U);
    EXPECT_STREQ(LogicalLinkControl::retrieve_string(v, position), "");
    EXPECT_EQ(position, v.size());
}

// A field that is not all there reads as 0 and moves nothing.
TEST(Fields, readsNothingBeyondTheEnd)
{
    Bytes v{0x81, 0x82, 0x83, 0x84};
    const auto expectRead = [&v](auto retrieve, unsigned int size, unsigned int start) {
        unsigned int position = start;
        const bool there = start <= 4 && size <= 4 - start;
        EXPECT_EQ(static_cast<bool>(retrieve(v, position)), there) << start;
        EXPECT_EQ(position, there ? start + size : start) << start;
    };
    for (const unsigned int start : {0U, 1U, 2U, 3U, 4U, 5U, ~0U - 3, ~0U - 1, ~0U}) {
        expectRead(LogicalLinkControl::retrieve_u8, 1, start);
        expectRead(LogicalLinkControl::retrieve_u16le, 2, start);
        expectRead(LogicalLinkControl::retrieve_u32le, 4, start);
        expectRead(LogicalLinkControl::retrieve_string, 5, start); // no terminator
    }
}
