#ifndef WRAPTON_PSPACKET_GAYS_GAYSPSPACKET_H
#define WRAPTON_PSPACKET_GAYS_GAYSPSPACKET_H

#include <cstdint>

#include "pspacket/PSPackaging.h"
#include "pspacket/gays/PackVideo.h"

namespace Orbel::Wrapton
{

/**
 * The GAYS flavour: pictures cut by length alone, and audio of any encoding, all stamped by one
 * clock of 33 bits that moves in whole milliseconds.
 */
class CGaysPsPacket final : public IPSPackaging
{
public:
    /// A frame without a rate is refused.
    int Packet_I_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength) override;
    int Packet_P_frame(const SGFrameInfo* pFrame, CPsOutput& output, int& nLength) override;
    /// A PES alone. G.711 A-law is refused unless it has 8000 Hz.
    int Packet_Audio_frame(const SGFrameInfo* pFrame,
                           CPsOutput& output,
                           int& nLength,
                           bool bWithMap) override;

private:
    /// Moves the clock on by a frame; the first call of all only starts it.
    void calc_scr();
    /// Writes the frame's chunks, stamped with the clock as it stands. @return the length; 0
    /// without room
    int PutFrame(CPsOutput& output, const SGFrameInfo& frame, uint8_t frame_type) const;

    /// What a picture changes; one that is refused changes nothing.
    struct Clock
    {
        int64_t m_nTimeStamp = 0;  // ms
        int64_t m_nSrc = 0;        // SCR, 33 bits
        int32_t m_nRate = 0;       // of the last I frame
        bool m_bStarted = false;   // calc_scr() has been called
    };
    Clock m_clock;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_GAYS_GAYSPSPACKET_H
