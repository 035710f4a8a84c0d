#include <communication/CrcCCITT.h>

#include <gtest/gtest.h>

#include <vector>

// The catalogue's check value, and the examples published for the automotive profile of the same checksum.
TEST(CrcCCITT, givesPublishedValues)
{
    const std::pair<std::vector<unsigned char>, unsigned short> values[] = {
        {{}, 0xFFFF},
        {{'1', '2', '3', '4', '5', '6', '7', '8', '9'}, 0x29B1},
        {{0x00, 0x00, 0x00, 0x00}, 0x84C0},
        {{0xF2, 0x01, 0x83}, 0xD374},
        {{0x0F, 0xAA, 0x00, 0x55}, 0x2023},
        {{0x00, 0xFF, 0x55, 0x11}, 0xB8F9},
        {{0x33, 0x22, 0x55, 0xAA, 0xBB, 0xCC, 0xDD, 0xEE, 0xFF}, 0xF53F},
        {{0x92, 0x6B, 0x55}, 0x0745},
        {{0xFF, 0xFF, 0xFF, 0xFF}, 0x1D0F},
    };
    for (auto [data, crc] : values)
        EXPECT_EQ(Communication::CrcCCITT::calcCrc(data.data(), data.size()), crc);
}
