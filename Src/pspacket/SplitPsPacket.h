#ifndef WRAPTON_PSPACKET_SPLITPSPACKET_H
#define WRAPTON_PSPACKET_SPLITPSPACKET_H

#include <cstdint>

#include "pspacket/PSPackaging.h"
#include "pspacket/VideoPackets.h"

namespace Orbel::Wrapton
{

/**
 * What the flavours that split pictures at their start codes have in common: the order of the
 * structures, and what is kept of the last I frame. Kept: the program stream map stands ahead of
 * the system header.
 */
class CSplitPsPacket : public IPSPackaging
{
public:
    int Packet_I_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength) final;
    int Packet_P_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength) final;

protected:
    CSplitPsPacket(uint32_t nDts, uint32_t nVideoPts, uint32_t nMapLen)
        : m_Video(nDts, nVideoPts), m_nMapLen(nMapLen)
    {
    }

    /// The map as @p frame carries it, m_nMapLen bytes.
    virtual void PutMap(CMsbCursor& w, const SGFrameInfo& frame) const = 0;

    /// Room for an audio frame: pack header, map when there is one, PES.
    static std::span<unsigned char> ClaimAudio(CPsOutput& output,
                                               const SGFrameInfo& frame,
                                               uint32_t map_len);
    /// Fills it. The pack header repeats the clock of the last picture.
    [[nodiscard]] int PutAudio(std::span<unsigned char> room,
                               const SGFrameInfo& frame,
                               bool with_map,
                               uint32_t pts) const;

    CVideoPackets m_Video;
    const uint32_t m_nMapLen;
    // Of the last I frame.
    uint32_t m_nFrameRate = 25;
    uint16_t m_nWidth = 352;
    uint16_t m_nHeight = 288;
    uint16_t m_nVideoEncode = 0;
    uint32_t m_VideoCount = 0;  // pictures packaged
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_SPLITPSPACKET_H
