#ifndef PLAINLINK_H
#define PLAINLINK_H

#include <vector>

/// The device link written down step by step, one byte and one push_back at a time. Slow on purpose.
namespace PlainLink {

using Bytes = std::vector<unsigned char>;

inline unsigned short calcCrc(const unsigned char *data, unsigned long long length)
{
    unsigned short x = 0xFFFF;
    for (unsigned long long i = 0; i < length; ++i) {
        x = static_cast<unsigned short>(x >> 8 | x << 8);
        x = static_cast<unsigned short>(x ^ data[i]);
        x = static_cast<unsigned short>(x ^ (x & 0xFF) >> 4);
        x = static_cast<unsigned short>(x ^ x << 12);
        x = static_cast<unsigned short>(x ^ (x & 0xFF) << 5);
    }
    return x;
}

inline unsigned short messageCrc(const Bytes &message)
{
    return calcCrc(message.data(), message.size() % 256);
}

inline bool cobsEncode(const Bytes &in, Bytes &out)
{
    if (in.empty() || out.empty())
        return false;
    std::size_t placeholder = out.size();
    out.push_back(1);
    unsigned char code = 1;
    for (const unsigned char byte : in) {
        if (byte != 0) {
            out.push_back(byte);
            ++code;
        }
        if (byte == 0 || code == 0xFF) {
            out[placeholder] = code;
            code = 1;
            placeholder = out.size();
            out.push_back(1);
        }
    }
    out[placeholder] = code;
    return true;
}

inline bool cobsDecode(const Bytes &in, Bytes &out)
{
    if (in.size() < 2)
        return false;
    for (std::size_t i = 0; i < in.size();) {
        const unsigned char code = in[i++];
        for (int copied = 1; copied < code && i < in.size(); ++copied)
            out.push_back(in[i++]);
        if (code != 0xFF && i < in.size())
            out.push_back(0);
    }
    return true;
}

/// Appends @p crc to @p message and builds its frame.
inline void buildFrame(Bytes &message, unsigned int crc, Bytes &frame)
{
    message.push_back(static_cast<unsigned char>(crc & 0xFF));
    message.push_back(static_cast<unsigned char>(crc >> 8));
    frame.clear();
    frame.push_back(0);
    cobsEncode(message, frame);
    frame.push_back(0);
}

class Link {
public:
    explicit Link(unsigned char maxMessageSize) : m_maxMessageSize(maxMessageSize)
    {
        m_buffer.reserve(maxMessageSize + 3U);
    }

    bool encode_message(Bytes &message, Bytes &frame) const
    {
        if (message.empty() || message.size() > m_maxMessageSize)
            return false;
        buildFrame(message, messageCrc(message), frame);
        return true;
    }

    unsigned int receive(const Bytes &input, unsigned int &position, Bytes &message)
    {
        for (; position < input.size(); ++position) {
            if (input[position] != 0) {
                if (m_state == 2)
                    m_buffer.push_back(input[position]);
            } else if (m_state == 2 && m_buffer.size() > 3) {
                m_state = 1;
                return closeFrame(message);
            } else {
                m_buffer.clear();
                m_state = 2;
            }
        }
        return m_state;
    }

private:
    unsigned int closeFrame(Bytes &message) const
    {
        message.clear();
        cobsDecode(m_buffer, message);
        const int high = message.back();
        message.pop_back();
        const int low = message.back();
        message.pop_back();
        return messageCrc(message) == (high << 8 | low) ? 4 : 3;
    }

    unsigned char m_maxMessageSize;
    Bytes m_buffer;
    unsigned int m_state = 1;
};

} // namespace PlainLink

#endif
