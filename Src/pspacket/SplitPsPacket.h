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
    CSplitPsPacket(uint32_t nDts, uint32_t nVideoPts)
        : m_pictures{.m_Video = CVideoPackets(nDts, nVideoPts)}
    {
    }

    /// The map as @p frame carries it.
    virtual void PutMap(CMsbCursor& w, const SGFrameInfo& frame) const = 0;

    /// Writes an audio frame: pack header, map when there is one, PES. The pack header repeats the
    /// clock of the last picture. @return the length; 0 without room
    [[nodiscard]] int PutAudio(CPsOutput& output,
                               const SGFrameInfo& frame,
                               bool with_map,
                               uint32_t pts) const;

    /// What a picture changes; one that is refused changes nothing.
    struct Pictures
    {
        CVideoPackets m_Video;
        // Of the last I frame.
        uint32_t m_nFrameRate = 25;
        uint16_t m_nWidth = 352;
        uint16_t m_nHeight = 288;
        uint16_t m_nVideoEncode = 0;
        uint32_t m_VideoCount = 0;  // pictures packaged
    };
    Pictures m_pictures;

private:
    /// Writes a picture. @return the length; 0 without room
    int PutPicture(const SGFrameInfo& frame, CPsOutput& output, bool with_headers);
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_SPLITPSPACKET_H
