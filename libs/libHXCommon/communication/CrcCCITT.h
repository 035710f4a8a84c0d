#ifndef CRCCCITT_H
#define CRCCCITT_H

#include <communication/CommunicationExport.h>

/// The device link: framing of messages on a byte stream, with the standard library alone.
namespace Communication {

/**
 * The checksum of the device link: CRC-16/CCITT-FALSE, catalogued as CRC-16/IBM-3740.
 *
 * Polynomial 0x1021, initial value 0xFFFF, neither input nor output reflected, no final xor. The checksum of
 * the nine ASCII digits "123456789" is 0x29B1.
 *
 * @code
 * std::vector<unsigned char> message{0x31, 0x32, 0x33};
 * const unsigned short crc = Communication::CrcCCITT::calcCrc(message.data(), message.size());
 * @endcode
 *
 * Keeps no state: any thread may call it. Uses no table, so it leaves the cache to the caller.
 */
class HXCOMMON_COMMUNICATION_EXPORT CrcCCITT {
public:
    /**
     * The checksum of a block of bytes.
     * @param data the first byte; only read, and not looked at when @p length is 0
     * @param length number of bytes
     * @return the 16-bit checksum; 0xFFFF for a length of 0
     */
    static unsigned short calcCrc(unsigned char *data, unsigned long long length);
};

} // namespace Communication

#endif
