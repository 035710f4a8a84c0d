// Decodes anything as the plain steps do, behind what the output held before.

#include "FuzzInput.h"
#include "PlainLink.h"

#include <communication/LogicalLinkControl.h>

using Communication::LogicalLinkControl;
using LinkData::Bytes;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const Bytes before(input.takeByte() % 20, 0xEE);
    const Bytes stuffed = input.takeRest();

    Bytes expected = before;
    Bytes decoded = before;
    require(LogicalLinkControl::cobs_decode(stuffed, decoded) == PlainLink::cobsDecode(stuffed, expected));
    require(decoded == expected);

    Bytes expectedEncoding = before;
    Bytes encoded = before;
    require(LogicalLinkControl::cobs_encode(stuffed, encoded)
            == PlainLink::cobsEncode(stuffed, expectedEncoding));
    require(encoded == expectedEncoding);
    return 0;
}
