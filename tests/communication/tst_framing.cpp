#include "AllocationCount.h"
#include "LinkProperties.h"

#include <gtest/gtest.h>

#include <type_traits>

using namespace LinkProperties;

static_assert(LogicalLinkControl::FRAMING_CHAR == 0);
static_assert(LogicalLinkControl::WAITING_FOR_FRAME == 1 && LogicalLinkControl::RECEIVING_FRAME == 2);
static_assert(LogicalLinkControl::CRC_ERROR == 3 && LogicalLinkControl::MESSAGE_RECEIVED == 4);
static_assert(!std::is_polymorphic_v<LogicalLinkControl>);

namespace {

const Bytes zeroFrame{0, 1, 3, 0xF0, 0xE1, 0}; // the message {0}

// The frame of a message of any length, whose checksum covers so many bytes.
Bytes frameOf(Bytes message, std::size_t checked)
{
    Bytes frame{0};
    LogicalLinkControl::push_back_u16le(message, static_cast<unsigned short>(crc(message, checked)));
    LogicalLinkControl::cobs_encode(message, frame);
    frame.push_back(0);
    return frame;
}

// Changes, adds or loses a byte, or loses a delimiter.
void damage(std::mt19937 &generator, Bytes &stream)
{
    const auto place = stream.begin() + static_cast<std::ptrdiff_t>(below(generator, stream.size()));
    const std::size_t kind = below(generator, 4);
    if (kind == 0)
        *place ^= static_cast<unsigned char>(1U << below(generator, 8));
    else if (kind == 1)
        stream.insert(place, static_cast<unsigned char>(below(generator, 3)));
    else
        stream.erase(kind == 2 ? place : std::find(place, stream.end() - 1, 0));
}

// A stream, and what a receiver reports about it.
// clang-format off
const std::pair<Bytes, std::vector<Event>> receptions[] = {
    {{}, {{1, 0, {}}}},
    {{7, 7, 7, 7}, {{1, 4, {}}}},
    {{0, 1, 3, 0xF0}, {{2, 4, {}}}},
    {zeroFrame, {{4, 5, {0}}, {2, 6, {0}}}},
    {{7, 7, 7, 7, 7, 7, 7, 7, 7, 0, 1, 3, 0xF0, 0xE1, 0}, {{4, 14, {0}}, {2, 15, {0}}}}, // noise in front
    {{0, 1, 3, 0xF0, 0xE1, 0, 2, 0x41, 3, 0x15, 0xB9, 0}, // one delimiter between two frames
     {{4, 5, {0}}, {3, 11, {0x41, 0}}, {2, 12, {0x41, 0}}}},
    {{0, 1, 3, 0xF0, 0xE2, 0}, {{3, 5, {0}}, {2, 6, {0}}}}, // wrong checksum
    {{0, 1, 3, 0xE1, 0xF0, 0}, {{3, 5, {0}}, {2, 6, {0}}}}, // its bytes swapped
    {{0, 1, 3, 0xF0, 0xE1, 0, 1, 0, 1, 1, 1, 0}, {{4, 5, {0}}, {2, 12, {0}}}}, // too short behind it
    {{0, 3, 1, 1, 0, 4, 1, 2, 3, 0}, {{3, 9, {1}}, {2, 10, {1}}}}, // too short, just long enough
};

// Calls with a chunk and a position, and the state and the position afterwards.
const std::tuple<Bytes, unsigned int, unsigned int, unsigned int> calls[] = {
    {{7}, 1, 1, 1}, {{0}, 2, 1, 2}, {{0}, ~0U, 1, ~0U}, {{0, 7}, 1, 1, 2},
    {{7, 0}, 1, 2, 2}, {{7}, 1, 2, 1}, {{0}, 2, 2, 2}, {{7}, ~0U, 2, ~0U},
};
// clang-format on

} // namespace

TEST(EncodeMessage, buildsTheFrame)
{
    LogicalLinkControl link(8);
    Bytes message{0};
    Bytes frame{1, 2, 3};
    EXPECT_TRUE(link.encode_message(message, frame));
    EXPECT_EQ(frame, zeroFrame);
    EXPECT_EQ(message, (Bytes{0, 0xF0, 0xE1})); // the checksum stays behind the message
    Bytes both{0};
    EXPECT_TRUE(link.encode_message(both, both));
    EXPECT_EQ(both, zeroFrame);
}

TEST(EncodeMessage, refusesWithoutEffect)
{
    const std::pair<unsigned char, std::size_t> refused[] = {{8, 0}, {8, 9}, {0, 1}, {255, 256}};
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

// Whatever is lost, an intact frame at the end is found.
TEST(Receive, readsDamagedStreams)
{
    std::mt19937 generator(4);
    for (unsigned char cuts = 0; cuts < 255; ++cuts) {
        Bytes stream;
        for (std::size_t size = 10; size < 300; size += 15)
            stream = stream + frameOf(anyBytes(generator, size), size % 256);
        for (int i = 0; i < 20; ++i)
            damage(generator, stream);
        stream = stream + zeroFrame;
        ASSERT_TRUE(isReceived(cuts, stream)) << int(cuts);
        const std::vector<Event> found = events(stream);
        ASSERT_EQ(found.at(found.size() - 2), Event(4, stream.size() - 1, Bytes{0})) << int(cuts);
    }
}

TEST(Receive, readsFromThePositionToTheEnd)
{
    LogicalLinkControl link(8);
    Bytes message{9};
    for (auto [chunk, position, state, positionAfter] : calls) {
        EXPECT_EQ(link.receive(chunk, position, message), state);
        EXPECT_EQ(position, positionAfter);
    }
    link.reset();
    Bytes rest{1, 3, 0xF0, 0xE1};
    unsigned int position = 0;
    EXPECT_EQ(link.receive(rest, position, message), 1U);
    EXPECT_EQ(message, Bytes{9});
}

// The length of the checksum has eight bits: of a message of n bytes it covers the first n % 256.
TEST(Receive, checksTheLengthModulo256)
{
    const auto result = [](std::size_t size, std::size_t checked) {
        const Bytes frame = frameOf(Bytes(size, 0x55), checked);
        return std::get<0>(received(frame, [] { return 4096; }).front());
    };
    EXPECT_EQ(result(255, 255), 4U);
    EXPECT_EQ(result(256, 0), 4U);
    EXPECT_EQ(result(256, 256), 3U);
    EXPECT_EQ(result(300, 44), 4U);
    EXPECT_EQ(result(300, 300), 3U);
}

TEST(Framing, allocatesNothingInSteadyState)
{
    LogicalLinkControl link(255);
    Bytes message;
    Bytes frame;
    long before = 0;
    for (std::size_t size = 255; size > 0; --size) {
        message.assign(size, 0x55);
        EXPECT_TRUE(link.encode_message(message, frame));
        unsigned int position = 0;
        EXPECT_EQ(link.receive(frame, position, message), 4U);
        if (size == 255)
            before = allocationCount;
    }
    EXPECT_EQ(allocationCount, before);
}
