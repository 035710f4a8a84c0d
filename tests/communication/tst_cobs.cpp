#include "LinkProperties.h"

#include <gtest/gtest.h>

using namespace LinkProperties;

namespace {

// The output of a codec that holds something already.
Bytes appended(bool (*codec)(const Bytes &, Bytes &), const Bytes &in)
{
    Bytes out{0xEE};
    EXPECT_TRUE(codec(in, out));
    return out;
}

using Vector = std::pair<Bytes, Bytes>; // the data and the blocks

// The published examples, with any long run, and with the block that this link always opens behind a full
// one.
const Vector published[] = {
    {{0x00}, {0x01, 0x01}},
    {{0x00, 0x11, 0x00}, {0x01, 0x02, 0x11, 0x01}},
    {{0x11, 0x22, 0x00, 0x33}, {0x03, 0x11, 0x22, 0x02, 0x33}},
    {{0x11, 0x00, 0x00, 0x00}, {0x02, 0x11, 0x01, 0x01, 0x01}},
    {Bytes(253, 7), Bytes{0xFE} + Bytes(253, 7)},
    {Bytes(254, 7), Bytes{0xFF} + Bytes(254, 7) + Bytes{0x01}},
    {Bytes{0} + Bytes(254, 7), Bytes{0x01, 0xFF} + Bytes(254, 7) + Bytes{0x01}},
    {Bytes(255, 7), Bytes{0xFF} + Bytes(254, 7) + Bytes{0x02, 7}},
    {Bytes(254, 7) + Bytes{0}, Bytes{0xFF} + Bytes(254, 7) + Bytes{0x01, 0x01}},
    {Bytes(253, 7) + Bytes{0, 1}, Bytes{0xFE} + Bytes(253, 7) + Bytes{0x02, 1}},
};

// Malformed blocks, and what they give as far as they go.
const Vector malformed[] = {
    {{0x00}, {0x00, 0x00}}, // the code byte 0 counts as 1
    {{0x00, 0x11}, {0x00, 0x02, 0x11}},
    {{0x11, 0x00, 0x00}, {0x03, 0x11, 0x00, 0x01}}, // a zero among the data is data
    {{0x11}, {0x05, 0x11}}, // cut short
    {{0x11}, {0xFF, 0x11}},
    {Bytes(254, 7), Bytes{0xFF} + Bytes(254, 7)}, // nothing behind a full block
    {{0x11, 0x00}, {0x02, 0x11, 0x05}},
};

} // namespace

TEST(Cobs, appendsPublishedValues)
{
    for (const auto &[data, stuffed] : published) {
        EXPECT_EQ(appended(LogicalLinkControl::cobs_encode, data), Bytes{0xEE} + stuffed);
        EXPECT_EQ(appended(LogicalLinkControl::cobs_decode, stuffed), Bytes{0xEE} + data);
    }
    for (const auto &[data, stuffed] : malformed)
        EXPECT_EQ(appended(LogicalLinkControl::cobs_decode, stuffed), Bytes{0xEE} + data);
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

TEST(Cobs, appendsToItsOwnInput)
{
    for (const auto codec : {LogicalLinkControl::cobs_encode, LogicalLinkControl::cobs_decode}) {
        Bytes apart(700, 7);
        Bytes both = apart;
        EXPECT_TRUE(codec(Bytes(700, 7), apart));
        EXPECT_TRUE(codec(both, both));
        EXPECT_EQ(both, apart);
    }
}
