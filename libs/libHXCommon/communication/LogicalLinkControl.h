#ifndef LOGICALLINKCONTROL_H
#define LOGICALLINKCONTROL_H

#include <communication/CommunicationExport.h>

#include <cstddef>
#include <vector>

namespace Communication {

/**
 * The link layer of a device byte stream: finds messages in the stream and proves them intact.
 *
 * On the wire a message M is the frame
 *
 *     0x00  COBS(M, CRC low byte, CRC high byte)  0x00
 *
 * with the checksum of CrcCCITT over M and Consistent Overhead Byte Stuffing, which leaves no zero byte
 * between the two delimiters. Two frames may share the delimiter between them. A receiver that joins late, or
 * meets damage, is back in step at the next delimiter: a damaged frame never costs the frame after it.
 *
 * Sending:
 * @code
 * Communication::LogicalLinkControl link(64);
 * std::vector<unsigned char> message, frame;
 * message.push_back(commandId);
 * Communication::LogicalLinkControl::push_back_u16le(message, heartRate);
 * if (link.encode_message(message, frame))
 *     port.write(frame);
 * @endcode
 *
 * Receiving, with chunks cut anywhere:
 * @code
 * unsigned int position = 0, result;
 * do {
 *     result = link.receive(chunk, position, message);
 *     if (result == Communication::LogicalLinkControl::MESSAGE_RECEIVED)
 *         handle(message);
 *     else if (result == Communication::LogicalLinkControl::CRC_ERROR)
 *         ++damagedFrames;
 * } while (result >= Communication::LogicalLinkControl::CRC_ERROR);
 * @endcode
 *
 * The field functions build and read message bodies. A failed read has no value of its own: a reader that has
 * to tell a missing field from a stored 0 compares the position before and after.
 *
 * Nothing here throws for bad data, and no input is undefined behaviour. Reused vectors keep their capacity,
 * so that a running link allocates nothing. Positions are 32 bits wide: bytes of a vector beyond the first
 * 4294967295 cannot be reached.
 *
 * An object serves one thread at a time; the static functions keep no state.
 */
class HXCOMMON_COMMUNICATION_EXPORT LogicalLinkControl {
public:
    /// The byte that opens and closes a frame and occurs nowhere in it.
    static constexpr unsigned char FRAMING_CHAR = 0x00;

    /// The results of receive(); the first two are also the states between its calls.
    enum ReceiveResult : unsigned int {
        WAITING_FOR_FRAME = 1, ///< Everything read, no frame open: bytes before a delimiter are discarded.
        RECEIVING_FRAME = 2, ///< Everything read, a frame is open: its bytes so far are kept.
        CRC_ERROR = 3, ///< A frame ended whose checksum does not match; its payload is in the message.
        MESSAGE_RECEIVED = 4 ///< A frame ended and is intact; its payload is in the message.
    };

    /**
     * A link that is waiting for a frame.
     * @param maxMessageSize longest message that encode_message() accepts, in bytes; it does not limit what
     *        is received. The receive buffer is reserved for it once (maxMessageSize + 3 bytes; messages of
     * 252 bytes and more may need one byte more and then grow it once).
     */
    explicit LogicalLinkControl(unsigned char maxMessageSize);

    /// Forgets a frame that is being received and waits for the next delimiter.
    void reset();

    /**
     * Builds the frame of a message.
     *
     * The checksum covers the first (size modulo 256) bytes.
     * @param message 1 to maxMessageSize bytes; afterwards it also holds the two bytes of its checksum, so
     *        clear it before the next one
     * @param frame replaced by the frame, both delimiters included; one vector for both ends as the frame
     * @return false for an empty or too long message, and both vectors are as they were
     */
    bool encode_message(std::vector<unsigned char> &message, std::vector<unsigned char> &frame);

    /**
     * Reads received bytes up to the end of the next frame.
     *
     * Call it with the same chunk and position until it returns WAITING_FOR_FRAME or RECEIVING_FRAME; the
     * position is then at the end of the chunk. After a frame, the position is at its closing delimiter,
     * which the next call takes as the opening one of the next frame. A frame with three or fewer stuffed
     * bytes is too short for a checksum and is dropped silently.
     *
     * A frame of any length is received; its checksum covers the first (size modulo 256) bytes of the
     * payload. A stream without delimiters after the first one therefore grows the receive buffer without
     * limit.
     * @param input received bytes, cut anywhere; not changed
     * @param position index of the first byte to read; from the size of @p input on, nothing is read
     * @param message replaced by the payload when a frame ends, intact or not; a frame that is not reported
     *        leaves it alone
     * @return a value of ReceiveResult
     */
    unsigned int receive(std::vector<unsigned char> &input, unsigned int &position,
                         std::vector<unsigned char> &message);

    /**
     * Appends the COBS encoding of @p in to @p out.
     *
     * A run of 254 bytes without zero always opens another block, also at the end of the input: 254 such
     * bytes give 0xFF, the bytes, 0x01. In general n bytes give at most n + 1 + n / 254.
     * @return false when @p in is empty, and also when @p out is: at least the opening delimiter must be
     * there
     */
    static bool cobs_encode(const std::vector<unsigned char> &in, std::vector<unsigned char> &out);

    /**
     * Appends the decoding of the COBS block @p in to @p out.
     *
     * A block that ends too early is decoded as far as it goes, and a code byte 0x00, which no encoder
     * writes, counts as 0x01: the checksum finds the damage. The result is shorter than @p in.
     * @return false when @p in has fewer than 2 bytes
     */
    static bool cobs_decode(const std::vector<unsigned char> &in, std::vector<unsigned char> &out);

    /// Appends the low byte of @p value, then the high byte.
    static void push_back_u16le(std::vector<unsigned char> &v, unsigned short value);

    /// Appends the four bytes of @p value, least significant first.
    static void push_back_u32le(std::vector<unsigned char> &v, unsigned int value);

    /// The byte at @p position, which moves on by 1; 0 and an unchanged position where @p v has ended.
    static unsigned char retrieve_u8(std::vector<unsigned char> &v, unsigned int &position);

    /// The two bytes at @p position, which moves on by 2; 0 and an unchanged position if they are not all
    /// there.
    static unsigned short retrieve_u16le(std::vector<unsigned char> &v, unsigned int &position);

    /// The four bytes at @p position, which moves on by 4; 0 and an unchanged position if they are not all
    /// there.
    static unsigned int retrieve_u32le(std::vector<unsigned char> &v, unsigned int &position);

    /**
     * The zero-terminated string at @p position, which moves on behind the terminator.
     * @return the characters inside @p v, valid until it is changed; null, and an unchanged position, where
     * no terminator follows
     */
    static const char *retrieve_string(std::vector<unsigned char> &v, unsigned int &position);

private:
    unsigned int receiveChunk(const std::vector<unsigned char> &input, unsigned int &position,
                              std::vector<unsigned char> &message);
    unsigned int readBlock(const unsigned char *first, std::size_t available);
    unsigned int closeFrame(std::vector<unsigned char> &message) const;

    unsigned char m_maxMessageSize;
    std::vector<unsigned char> m_buffer;
    unsigned int m_state = WAITING_FOR_FRAME;
};

} // namespace Communication

#endif
