#include "CrcCCITT.h"

namespace Communication {

unsigned short CrcCCITT::calcCrc(unsigned char *data, unsigned long long length)
{
    // The textbook step swaps the halves of the register, adds the byte and folds the register three times,
    // each time waiting for the fold before. With the halves apart and the folds multiplied out, a byte waits
    // for four operations of the one before; all others run beside them.
    unsigned int high = 0xFF;
    unsigned int low = 0xFF;
    for (const unsigned char *end = data + length; data != end; ++data) {
        const unsigned int top = high ^ *data;
        const unsigned int folded = top ^ (top >> 4);
        high = low ^ (folded >> 3) ^ ((top ^ (top << 4)) & 0xF0);
        low = (folded ^ (folded << 5)) & 0xFF;
    }
    return static_cast<unsigned short>(high << 8 | low);
}

} // namespace Communication
