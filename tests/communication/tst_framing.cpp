#include <communication/LogicalLinkControl.h>

#include "AllocationCount.h"
#include "LinkRecorder.h"
#include "PlainLink.h"

#include <gtest/gtest.h>

#include <limits>
#include <type_traits>

using Communication::LogicalLinkControl;
using LinkData::Bytes;

static_assert(LogicalLinkControl::FRAMING_CHAR == 0);
static_assert(LogicalLinkControl::WAITING_FOR_FRAME == 1 && LogicalLinkControl::RECEIVING_FRAME == 2);
static_assert(LogicalLinkControl::CRC_ERROR == 3 && LogicalLinkControl::MESSAGE_RECEIVED == 4);
static_assert(!std::is_polymorphic_v<LogicalLinkControl>);

namespace {

constexpr unsigned int lastPosition = std::numeric_limits<unsigned int>::max();

const Bytes zeroFrame{0x00, 0x01, 0x03, 0xF0, 0xE1, 0x00}; // the message {0x00}

// A frame of any payload, with the given checksum.
Bytes frameOf(Bytes payload, unsigned int crc)
{
    Bytes frame{0x00};
    payload.push_back(static_cast<unsigned char>(crc & 0xFF));
    payload.push_back(static_cast<unsigned char>(crc >> 8));
    PlainLink::cobsEncode(payload, frame);
    frame.push_back(0x00);
    return frame;
}

struct Reception {
    const char *name;
    std::vector<Bytes> chunks;
    std::vector<LinkEvent> events; // the last one is the state at the end
};

const Reception receptions[] = {
    {"nothing", {{}}, {{1, 0, {}}}},
    {"one frame", {zeroFrame}, {{4, 5, {0}}, {2, 6, {0}}}},
    {"two frames that share a delimiter",
     {{0, 1, 3, 0xF0, 0xE1, 0, 2, 0x41, 3, 0x15, 0xB9, 0}},
     {{4, 5, {0}}, {3, 11, {0x41, 0}}, {2, 12, {0x41, 0}}}},
    {"noise in front", {{7, 7, 7, 7, 7, 7, 7, 7, 7, 7}, {7}, zeroFrame}, {{4, 16, {0}}, {2, 17, {0}}}},
    {"only noise", {{7, 7, 7}, {7}}, {{1, 4, {}}}},
    {"cut inside a frame", {{0, 1, 3}, {0xF0}, {0xE1}, {0}}, {{4, 5, {0}}, {2, 6, {0}}}},
    {"cut before the closing delimiter", {{0, 1, 3, 0xF0, 0xE1}, {0, 0}}, {{4, 5, {0}}, {2, 7, {0}}}},
    {"wrong checksum", {{0, 1, 3, 0xF0, 0xE2, 0}}, {{3, 5, {0}}, {2, 6, {0}}}},
    {"checksum with its bytes swapped", {{0, 1, 3, 0xE1, 0xF0, 0}}, {{3, 5, {0}}, {2, 6, {0}}}},
    {"too short", {{0, 0, 1, 0, 1, 1, 0, 1, 1, 1, 0}}, {{2, 11, {}}}},
    {"shortest frame", {{0, 4, 1, 2, 3, 0}}, {{3, 5, {1}}, {2, 6, {1}}}},
    {"too short before a good one", {{0, 3, 1, 1}, zeroFrame}, {{4, 9, {0}}, {2, 10, {0}}}},
    {"unfinished", {{0, 1, 3, 0xF0}}, {{2, 4, {}}}},
};

} // namespace

TEST(EncodeMessage, buildsTheFrame)
{
    LogicalLinkControl link(8);
    Bytes message{0x00};
    Bytes frame{1, 2, 3};
    EXPECT_TRUE(link.encode_message(message, frame));
    EXPECT_EQ(frame, zeroFrame);
    EXPECT_EQ(message, (Bytes{0x00, 0xF0, 0xE1})); // the checksum stays behind the message
    Bytes both{0x00};
    EXPECT_TRUE(link.encode_message(both, both));
    EXPECT_EQ(both, zeroFrame);
}

TEST(EncodeMessage, acceptsUpToTheMaximum)
{
    for (const unsigned int maximum : {0U, 1U, 8U, 252U, 253U, 255U}) {
        LogicalLinkControl link(static_cast<unsigned char>(maximum));
        for (const std::size_t size : {std::size_t(0), std::size_t(maximum), maximum + std::size_t(1)}) {
            const Bytes original(size, 0x55);
            Bytes message = original;
            Bytes frame{1, 2, 3};
            const bool expected = size > 0 && size <= maximum;
            ASSERT_EQ(link.encode_message(message, frame), expected) << size;
            if (expected) {
                EXPECT_EQ(frame, frameOf(original, PlainLink::calcCrc(original.data(), size)));
            } else {
                EXPECT_EQ(message, original);
                EXPECT_EQ(frame, (Bytes{1, 2, 3}));
            }
        }
    }
}

TEST(Receive, reportsFramesAndPositions)
{
    for (const Reception &reception : receptions) {
        LinkRecorder recorder{LogicalLinkControl(8)};
        for (const Bytes &chunk : reception.chunks)
            recorder.feed(chunk);
        EXPECT_EQ(recorder.events(), reception.events) << reception.name;
    }
}

TEST(Receive, startsAnywhereAndNeverReadsBeyondTheEnd)
{
    struct Row {
        Bytes chunk;
        unsigned int start;
        unsigned int state;
    };
    LogicalLinkControl link(8);
    Bytes message{9};
    for (Row row :
         {Row{{0, 7, 7}, 1, 1}, Row{{7}, 0, 1}, Row{{7, 0}, 1, 2}, Row{{7}, 0, 2}, Row{{0}, 1, 2}}) {
        const auto size = static_cast<unsigned int>(row.chunk.size());
        unsigned int position = row.start;
        EXPECT_EQ(link.receive(row.chunk, position, message), row.state);
        EXPECT_EQ(position, size);
        for (const unsigned int beyond : {size, size + 1, lastPosition}) {
            position = beyond;
            EXPECT_EQ(link.receive(row.chunk, position, message), row.state);
            EXPECT_EQ(position, beyond);
        }
    }
    EXPECT_EQ(message, Bytes{9});
}

TEST(Receive, resetForgetsTheFrame)
{
    LogicalLinkControl link(8);
    Bytes message;
    for (Bytes chunk : {Bytes{0, 1, 3}, Bytes{0xF0, 0xE1, 0}}) {
        unsigned int position = 0;
        link.reset();
        EXPECT_EQ(link.receive(chunk, position, message), 2U);
        EXPECT_EQ(position, chunk.size());
    }
}

// The length of the checksum has eight bits: of a message of n bytes it covers the first n % 256.
TEST(Receive, checksTheLengthModulo256)
{
    std::mt19937 generator(5);
    for (const std::size_t size : {255U, 256U, 257U, 300U, 511U, 512U, 700U}) {
        Bytes payload = LinkData::bytes(generator, LinkData::sparse, size);
        const unsigned int crc = PlainLink::calcCrc(payload.data(), size % 256);
        const auto result = [&] {
            LinkRecorder recorder{LogicalLinkControl(8)};
            recorder.feed(frameOf(payload, crc));
            const LinkEvent event = recorder.events().front();
            EXPECT_EQ(event.message, payload);
            return event.result;
        };
        EXPECT_EQ(result(), 4U) << size;
        payload.back() ^= 1;
        EXPECT_EQ(result(), size < 256 ? 3U : 4U) << size;
        payload.front() ^= 1;
        EXPECT_EQ(result(), size % 256 == 0 ? 4U : 3U) << size;
    }
}

TEST(Framing, allocatesNothingInSteadyState)
{
    LogicalLinkControl link(255);
    Bytes message;
    Bytes frame;
    const auto exchange = [&](std::size_t size) {
        message.assign(size, 0x55);
        EXPECT_TRUE(link.encode_message(message, frame));
        unsigned int position = 0;
        EXPECT_EQ(link.receive(frame, position, message), 4U);
        EXPECT_EQ(message.size(), size);
    };
    exchange(255);
    const AllocationCount allocations;
    for (std::size_t size = 1; size <= 255; ++size)
        exchange(size);
    EXPECT_EQ(allocations.value(), 0);
}
