#include <communication/LogicalLinkControl.h>

#include "LinkData.h"

#include <gtest/gtest.h>

#include <limits>

using LinkData::Bytes;
using Link = Communication::LogicalLinkControl;

namespace {

constexpr unsigned int lastPosition = std::numeric_limits<unsigned int>::max();

template <auto retrieve> unsigned int read(Bytes &v, unsigned int &position)
{
    return retrieve(v, position);
}

struct NumberRead {
    unsigned int (*read)(Bytes &, unsigned int &);
    unsigned int position;
    unsigned int value;
    unsigned int positionAfter;
};

constexpr auto u8 = read<Link::retrieve_u8>;
constexpr auto u16 = read<Link::retrieve_u16le>;
constexpr auto u32 = read<Link::retrieve_u32le>;

// Of the six bytes 81 82 83 84 85 86. A failed read gives 0 and leaves the position.
// clang-format off
const NumberRead numberReads[] = {
    {u8, 0, 0x81, 1}, {u8, 5, 0x86, 6}, {u8, 6, 0, 6}, {u8, lastPosition, 0, lastPosition},
    {u16, 0, 0x8281, 2}, {u16, 4, 0x8685, 6}, {u16, 5, 0, 5}, {u16, lastPosition, 0, lastPosition},
    {u32, 0, 0x84838281, 4}, {u32, 2, 0x86858483, 6}, {u32, 3, 0, 3}, {u32, lastPosition - 2, 0, lastPosition - 2},
};
// clang-format on

struct StringRead {
    const char *text;
    unsigned int position;
    unsigned int positionAfter;
};

// Of the bytes "ab" 0 0 "c".
const StringRead stringReads[] = {
    {"ab", 0, 3},
    {"b", 1, 3},
    {"", 2, 3},
    {"", 3, 4},
    {nullptr, 4, 4},
    {nullptr, 5, 5},
    {nullptr, lastPosition, lastPosition},
};

} // namespace

TEST(Fields, readsNumbers)
{
    Bytes v{0x81, 0x82, 0x83, 0x84, 0x85, 0x86};
    for (const NumberRead &row : numberReads) {
        unsigned int position = row.position;
        EXPECT_EQ(row.read(v, position), row.value) << row.position;
        EXPECT_EQ(position, row.positionAfter);
    }
}

TEST(Fields, readsStringsInPlace)
{
    Bytes v{'a', 'b', 0, 0, 'c'};
    for (const StringRead &row : stringReads) {
        unsigned int position = row.position;
        const char *text = Link::retrieve_string(v, position);
        EXPECT_STREQ(text, row.text) << row.position;
        EXPECT_EQ(position, row.positionAfter);
        if (text != nullptr) {
            EXPECT_EQ(static_cast<const void *>(text), v.data() + row.position);
        }
    }
}

TEST(Fields, appendsLittleEndian)
{
    Bytes v{7};
    Link::push_back_u16le(v, 0x8281);
    Link::push_back_u32le(v, 0x86858483);
    EXPECT_EQ(v, (Bytes{7, 0x81, 0x82, 0x83, 0x84, 0x85, 0x86}));
}
