#ifndef WRAPTON_PSPACKET_PSPACKAGING_H
#define WRAPTON_PSPACKET_PSPACKAGING_H

#include <cstdint>
#include <span>

#include "Wrapton.h"
#include "pspacket/PsOutput.h"

namespace Orbel::Wrapton
{

/**
 * A flavour of program stream.
 *
 * Each packet operation writes one frame to the output and gives the bytes written, in the result
 * and in @p nLength. A refused frame leaves the flavour as it was, writes nothing and has the
 * length 0; the result is then the operation's own code.
 */
class IPSPackaging
{
public:
    IPSPackaging() = default;
    IPSPackaging(const IPSPackaging&) = delete;
    IPSPackaging& operator=(const IPSPackaging&) = delete;
    virtual ~IPSPackaging() = default;

    virtual int Packet_I_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength) = 0;
    virtual int Packet_P_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength) = 0;
    virtual int Packet_Audio_frame(const SGFrameInfo* pFrame,
                                   CPsOutput& output,
                                   int& nLength,
                                   bool bWithMap) = 0;

    /// The 90 kHz ticks of an audio frame; 0 when the record does not say enough. Kept: an AAC
    /// frame counts as 2048 bytes of samples and an MPEG layer II frame as 2304, whatever its
    /// channels.
    [[nodiscard]] virtual uint32_t GetDuration(const SGFrameInfo* pFrame) const;

protected:
    /// The result of a refused frame where no other is named.
    static constexpr int kRefused = -1;

    /// Larger video frames are refused.
    static constexpr uint32_t kMostVideoLen = 0xFFFFF;

    static bool HasData(const SGFrameInfo* pFrame);
    static bool IsVideoPackable(const SGFrameInfo* pFrame);
    static std::span<const unsigned char> BytesOf(const SGFrameInfo* pFrame);
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_PSPACKAGING_H
