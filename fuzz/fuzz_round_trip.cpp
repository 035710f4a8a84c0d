// What is encoded arrives, behind any noise and in front of anything: the first byte gives the length of the
// noise, the second that of the message.

#include "FuzzInput.h"
#include "LinkRecorder.h"

#include <communication/LogicalLinkControl.h>

using Communication::LogicalLinkControl;
using LinkData::Bytes;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    Bytes noise(input.takeByte());
    Bytes message(input.takeByte());
    for (unsigned char &byte : noise)
        byte = input.takeByte();
    for (unsigned char &byte : message)
        byte = input.takeByte();

    LogicalLinkControl sender(254);
    const Bytes original = message;
    Bytes frame;
    const bool encoded = sender.encode_message(message, frame);
    require(encoded == (!original.empty() && original.size() <= 254));
    if (!encoded) {
        require(message == original && frame.empty());
        return 0;
    }
    require(std::count(frame.begin(), frame.end(), 0) == 2);

    LinkRecorder receiver{LogicalLinkControl(0)};
    receiver.feed(noise);
    receiver.feed(frame);
    const std::vector<LinkEvent> events = receiver.events();
    require(events.size() > 1);
    require(events[events.size() - 2] == LinkEvent{4, noise.size() + frame.size() - 1, original});
    return 0;
}
