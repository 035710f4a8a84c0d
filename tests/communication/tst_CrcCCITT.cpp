#include <communication/CrcCCITT.h>

#include "LinkData.h"
#include "PlainLink.h"

#include <gtest/gtest.h>

using LinkData::Bytes;

namespace {

struct Vector {
    Bytes data;
    unsigned short crc;
};

// The catalogue's check value and the examples published for the automotive profile of the same checksum.
const Vector vectors[] = {
    {{}, 0xFFFF},
    {LinkData::fromText("123456789"), 0x29B1},
    {{0x00, 0x00, 0x00, 0x00}, 0x84C0},
    {{0xF2, 0x01, 0x83}, 0xD374},
    {{0x0F, 0xAA, 0x00, 0x55}, 0x2023},
    {{0x00, 0xFF, 0x55, 0x11}, 0xB8F9},
    {{0x33, 0x22, 0x55, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}, 0xF53F},
    {{0x92, 0x6B, 0x55}, 0x0745},
    {{0xFF, 0xFF, 0xFF, 0xFF}, 0x1D0F},
};

} // namespace

TEST(CrcCCITT, matchesPublishedValues)
{
    for (Vector vector : vectors)
        EXPECT_EQ(Communication::CrcCCITT::calcCrc(vector.data.data(), vector.data.size()), vector.crc);
}

TEST(CrcCCITT, matchesTheStepsForEveryLength)
{
    std::mt19937 generator(1);
    for (std::size_t size = 0; size < 600; ++size) {
        Bytes data = LinkData::bytes(generator, LinkData::random, size);
        ASSERT_EQ(Communication::CrcCCITT::calcCrc(data.data(), size), PlainLink::calcCrc(data.data(), size));
    }
}
