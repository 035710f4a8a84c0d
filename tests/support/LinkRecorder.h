#ifndef LINKRECORDER_H
#define LINKRECORDER_H

#include "LinkData.h"

#include <algorithm>
#include <cstddef>
#include <utility>

/// What a receiver reports about a stream.
struct LinkEvent {
    unsigned int result;
    std::size_t offset; ///< in the stream, of the byte that the receiver stopped at
    LinkData::Bytes message; ///< what the message vector holds

    bool operator==(const LinkEvent &other) const
    {
        return result == other.result && offset == other.offset && message == other.message;
    }
};

/// Feeds a stream to a link in chunks and records the frames, and at the end the state.
template <typename Link> class LinkRecorder {
public:
    explicit LinkRecorder(Link link) : m_link(std::move(link)) { }

    void feed(LinkData::Bytes chunk)
    {
        unsigned int position = 0;
        while ((m_state = m_link.receive(chunk, position, m_message)) >= 3)
            m_events.push_back({m_state, m_offset + position, m_message});
        m_offset += position;
    }

    /// Feeds chunks whose sizes @p nextSize gives.
    template <typename NextSize> void feedAll(const LinkData::Bytes &stream, NextSize nextSize)
    {
        for (auto from = stream.begin(); from != stream.end();) {
            const auto left = static_cast<std::size_t>(stream.end() - from);
            const auto to = from + static_cast<std::ptrdiff_t>(std::min<std::size_t>(left, nextSize()));
            feed(LinkData::Bytes(from, to));
            from = to;
        }
    }

    std::vector<LinkEvent> events() const
    {
        std::vector<LinkEvent> result = m_events;
        result.push_back({m_state, m_offset, m_message});
        return result;
    }

private:
    Link m_link;
    unsigned int m_state = 0;
    std::size_t m_offset = 0;
    LinkData::Bytes m_message;
    std::vector<LinkEvent> m_events;
};

#endif
