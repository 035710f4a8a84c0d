#include <communication/LogicalLinkControl.h>

#include "LinkData.h"
#include "PlainLink.h"

#include <gtest/gtest.h>

#include <numeric>

using Communication::LogicalLinkControl;
using LinkData::Bytes;

namespace {

// The bytes from `first` to `last`, wrapping behind 0xFF.
Bytes counting(int first, int last)
{
    Bytes bytes(static_cast<std::size_t>(last - first + 1));
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(first));
    return bytes;
}

Bytes operator+(Bytes left, const Bytes &right)
{
    LinkData::append(left, right);
    return left;
}

using Codec = bool (*)(const Bytes &, Bytes &);

// What a codec appends to one byte, which the encoders want in front.
template <Codec codec> Bytes appended(const Bytes &in)
{
    Bytes out{0xEE};
    EXPECT_TRUE(codec(in, out));
    EXPECT_EQ(out.front(), 0xEE);
    return Bytes(out.begin() + 1, out.end());
}

constexpr auto encoded = appended<LogicalLinkControl::cobs_encode>;
constexpr auto decoded = appended<LogicalLinkControl::cobs_decode>;
constexpr auto plainEncoded = appended<PlainLink::cobsEncode>;
constexpr auto plainDecoded = appended<PlainLink::cobsDecode>;

struct Vector {
    Bytes data;
    Bytes stuffed;
};

// The published examples, with the block that this link always opens behind a full one.
const Vector vectors[] = {
    {{0x00}, {0x01, 0x01}},
    {{0x00, 0x11, 0x00}, {0x01, 0x02, 0x11, 0x01}},
    {{0x11, 0x22, 0x00, 0x33}, {0x03, 0x11, 0x22, 0x02, 0x33}},
    {{0x11, 0x00, 0x00, 0x00}, {0x02, 0x11, 0x01, 0x01, 0x01}},
    {counting(0x01, 0xFD), Bytes{0xFE} + counting(0x01, 0xFD)},
    {counting(0x01, 0xFE), Bytes{0xFF} + counting(0x01, 0xFE) + Bytes{0x01}},
    {counting(0x00, 0xFE), Bytes{0x01, 0xFF} + counting(0x01, 0xFE) + Bytes{0x01}},
    {counting(0x01, 0xFF), Bytes{0xFF} + counting(0x01, 0xFE) + Bytes{0x02, 0xFF}},
    {counting(0x02, 0x100), Bytes{0xFF} + counting(0x02, 0xFF) + Bytes{0x01, 0x01}},
    {counting(0x03, 0x101), Bytes{0xFE} + counting(0x03, 0xFF) + Bytes{0x02, 0x01}},
    {Bytes(507, 7), Bytes{0xFF} + Bytes(254, 7) + Bytes{0xFE} + Bytes(253, 7)},
    {Bytes(508, 7), Bytes{0xFF} + Bytes(254, 7) + Bytes{0xFF} + Bytes(254, 7) + Bytes{0x01}},
};

// Malformed blocks, and what they give as far as they go.
const Vector malformed[] = {
    {{0x00}, {0x00, 0x00}}, // the code byte 0 counts as 1
    {{0x00, 0x11}, {0x00, 0x02, 0x11}},
    {{0x11, 0x00, 0x00}, {0x03, 0x11, 0x00, 0x01}}, // a zero among the data is data
    {{0x11}, {0x05, 0x11}}, // cut short
    {{0x11}, {0xFF, 0x11}},
    {{0x11, 0x00}, {0x02, 0x11, 0x05}},
};

} // namespace

TEST(Cobs, matchesPublishedValues)
{
    for (const Vector &vector : vectors) {
        EXPECT_EQ(encoded(vector.data), vector.stuffed);
        EXPECT_EQ(decoded(vector.stuffed), vector.data);
    }
}

// Every size up to beyond the fourth block, so that blocks end at every offset in a word and in a window.
TEST(Cobs, matchesTheStepsForEverySize)
{
    std::mt19937 generator(2);
    for (const LinkData::Mix &mix : LinkData::mixes) {
        for (std::size_t size = 1; size < 1100; ++size) {
            const Bytes data = LinkData::bytes(generator, mix, size);
            const Bytes stuffed = encoded(data);
            ASSERT_EQ(stuffed, plainEncoded(data)) << mix.name << size;
            ASSERT_EQ(decoded(stuffed), data) << mix.name << size;
        }
    }
}

TEST(Cobs, decodesDamageAsFarAsItGoes)
{
    for (const Vector &vector : malformed)
        EXPECT_EQ(decoded(vector.stuffed), vector.data);

    std::mt19937 generator(3);
    for (const LinkData::Mix &mix : LinkData::mixes) {
        const Bytes whole = encoded(LinkData::bytes(generator, mix, 600));
        for (std::size_t size = 2; size < whole.size(); ++size) {
            const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
            ASSERT_EQ(decoded(cut), plainDecoded(cut)) << mix.name << size;
            const Bytes noise = LinkData::bytes(generator, mix, size);
            ASSERT_EQ(decoded(noise), plainDecoded(noise)) << mix.name << size;
        }
    }
}

TEST(Cobs, refusesWithoutEffect)
{
    Bytes none;
    Bytes out{0x07};
    EXPECT_FALSE(LogicalLinkControl::cobs_encode({}, out));
    EXPECT_FALSE(LogicalLinkControl::cobs_encode({0x11}, none));
    EXPECT_FALSE(LogicalLinkControl::cobs_decode({}, out));
    EXPECT_FALSE(LogicalLinkControl::cobs_decode({0x02}, out));
    EXPECT_EQ(out, Bytes{0x07});
    EXPECT_EQ(none, Bytes());
}

TEST(Cobs, appendsToItsOwnInput)
{
    std::mt19937 generator(4);
    const Bytes data = LinkData::bytes(generator, LinkData::sparse, 700);
    Bytes both = data;
    EXPECT_TRUE(LogicalLinkControl::cobs_encode(both, both));
    EXPECT_EQ(both, data + encoded(data));
    both = data;
    EXPECT_TRUE(LogicalLinkControl::cobs_decode(both, both));
    EXPECT_EQ(both, data + decoded(data));
}
