#ifndef CAPTUREDECODER_H
#define CAPTUREDECODER_H

#include <communication/LogicalLinkControl.h>

#include <functional>
#include <vector>

/// A frame found in a capture of a device stream.
struct CapturedFrame {
    unsigned long long offset; ///< of its opening delimiter in the capture
    std::vector<unsigned char> payload;
    bool intact; ///< whether its checksum matches
};

/// What a capture consists of. Every byte counts once: as part of a reported frame, as discarded or as a
/// delimiter.
struct CaptureTotals {
    unsigned long long bytes = 0;
    unsigned long long intact = 0; ///< frames
    unsigned long long damaged = 0; ///< frames with a wrong checksum
    unsigned long long noise = 0; ///< bytes before the first delimiter
    unsigned long long tooShort = 0; ///< bytes of frames too short for a checksum
    unsigned long long unfinished = 0; ///< bytes behind the last delimiter

    unsigned long long discarded() const { return noise + tooShort + unfinished; }
};

/// Finds the frames of a capture while it comes in.
class CaptureDecoder {
public:
    explicit CaptureDecoder(std::function<void(const CapturedFrame &)> report);

    /// Takes the next byte; a frame is reported with its closing delimiter.
    void feed(unsigned char byte);

    /// The totals so far: what stands behind the last delimiter counts as unfinished.
    CaptureTotals totals() const;

private:
    void closeRun(bool isFrame);

    std::function<void(const CapturedFrame &)> m_report;
    Communication::LogicalLinkControl m_link;
    CapturedFrame m_frame{};
    std::vector<unsigned char> m_chunk;
    CaptureTotals m_totals; ///< without the run that is open
    unsigned long long m_run = 0; ///< bytes since the last delimiter
    bool m_delimiterSeen = false;
};

#endif
