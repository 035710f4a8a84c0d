#include <communication/CrcCCITT.h>
#include <communication/LogicalLinkControl.h>

int main()
{
    Communication::LogicalLinkControl link(8);
    std::vector<unsigned char> message{1, 2, 3}, frame;
    const bool works =
        link.encode_message(message, frame) && Communication::CrcCCITT::calcCrc(nullptr, 0) == 0xFFFF;
    return works ? 0 : 1;
}
