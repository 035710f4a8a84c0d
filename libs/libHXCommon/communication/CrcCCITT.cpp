#include "CrcCCITT.h"

namespace Communication {

unsigned short CrcCCITT::calcCrc(unsigned char *data, unsigned long long length)
{
    // The textbook step swaps the halves of the register, adds the byte and folds the register three times,
    // each time waiting for the fold before. With the halves apart the swap is no work, and both new halves
    // follow from one fold of the byte. Bits above the lowest eight of a half are never looked at.
    unsigned int high = 0xFF;
    unsigned int low = 0xFF;
    for (const unsigned char *end = data + length; data != end; ++data) {
        unsigned int byte = (high ^ *data) & 0xFF;
        byte ^= byte >> 4;
        high = low ^ (byte << 4) ^ (byte >> 3);
        low = byte ^ (byte << 5);
    }
    return static_cast<unsigned short>((high & 0xFF) << 8 | (low & 0xFF));
}

} // namespace Communication
