#include <communication/LogicalLinkControl.h>

#include "LinkData.h"

#include <gtest/gtest.h>

using LinkData::Bytes;
using Link = Communication::LogicalLinkControl;

TEST(Fields, readsWhatWasAppended)
{
    Bytes v{0x81};
    Link::push_back_u16le(v, 0x8382);
    Link::push_back_u32le(v, 0x87868584);
    v.insert(v.end(), {'a', 'b', 0, 0});
    EXPECT_EQ(v, (Bytes{0x81, 0x82, 0x83, 0x84, 0x85, 0x86, 0x87, 'a', 'b', 0, 0}));

    unsigned int position = 0;
    EXPECT_EQ(Link::retrieve_u8(v, position), 0x81);
    EXPECT_EQ(Link::retrieve_u16le(v, position), 0x8382);
    EXPECT_EQ(Link::retrieve_u32le(v, position), 0x87868584);
    const void *text = v.data() + position; // strings are read in place
    EXPECT_EQ(Link::retrieve_string(v, position), text);
    EXPECT_EQ(position, 10U);
    EXPECT_STREQ(Link::retrieve_string(v, position), "");
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
    for (const unsigned int start : {0U, 1U, 2U, 3U, 4U, 5U, ~0U - 3, ~0U - 2, ~0U - 1, ~0U}) {
        expectRead(Link::retrieve_u8, 1, start);
        expectRead(Link::retrieve_u16le, 2, start);
        expectRead(Link::retrieve_u32le, 4, start);
        expectRead(Link::retrieve_string, 5, start); // no terminator
    }
}
