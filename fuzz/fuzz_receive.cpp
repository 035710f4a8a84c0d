// Receives any stream, cut into any chunks, as the plain steps do from the whole. The first byte seeds the
// cuts.

#include "FuzzInput.h"
#include "LinkRecorder.h"
#include "PlainLink.h"

#include <communication/LogicalLinkControl.h>

using Communication::LogicalLinkControl;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    std::minstd_rand cuts(input.takeByte() + 1U);
    const LinkData::Bytes stream = input.takeRest();

    LinkRecorder whole{PlainLink::Link<>(255)};
    whole.feed(stream);
    LinkRecorder inPieces{LogicalLinkControl(255)};
    inPieces.feedAll(stream, [&cuts] { return std::size_t(1) << cuts() % 9; });
    LinkRecorder atOnce{LogicalLinkControl(8)};
    atOnce.feed(stream);
    require(stream.empty() || inPieces.events() == whole.events());
    require(atOnce.events() == whole.events());
    return 0;
}
