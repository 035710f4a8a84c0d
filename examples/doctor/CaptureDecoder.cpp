#include "CaptureDecoder.h"

#include <utility>

using Communication::LogicalLinkControl;

CaptureDecoder::CaptureDecoder(std::function<void(const CapturedFrame &)> report)
    : m_report(std::move(report)), m_link(255), m_chunk(1)
{
}

void CaptureDecoder::feed(unsigned char byte)
{
    m_chunk[0] = byte;
    unsigned int position = 0;
    const unsigned int result = m_link.receive(m_chunk, position, m_frame.payload);
    const bool isFrame = result >= LogicalLinkControl::CRC_ERROR;
    if (isFrame) {
        m_frame.intact = result == LogicalLinkControl::MESSAGE_RECEIVED;
        ++(m_frame.intact ? m_totals.intact : m_totals.damaged);
        m_report(m_frame);
        m_link.receive(m_chunk, position, m_frame.payload); // the same delimiter opens the next frame
    }
    if (byte == LogicalLinkControl::FRAMING_CHAR)
        closeRun(isFrame);
    else
        ++m_run;
    ++m_totals.bytes;
}

void CaptureDecoder::closeRun(bool isFrame)
{
    if (!isFrame)
        (m_delimiterSeen ? m_totals.tooShort : m_totals.noise) += m_run;
    m_delimiterSeen = true;
    m_run = 0;
    m_frame.offset = m_totals.bytes;
}

CaptureTotals CaptureDecoder::totals() const
{
    CaptureTotals totals = m_totals;
    (m_delimiterSeen ? totals.unfinished : totals.noise) += m_run;
    return totals;
}
