#ifndef WRAPTON_PSPACKET_VIDEOPACKETS_H
#define WRAPTON_PSPACKET_VIDEOPACKETS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/**
 * The pictures of a flavour that splits frames at their start codes: clocks and PES packets.
 *
 * Every unit behind a four-byte start code becomes a packet, start code included. Kept: bytes ahead
 * of the first such start code are left out, only the last unit (or a frame without start codes) is
 * cut into packets of 61440 bytes, and a longer unit ahead of it gets a length field that wraps.
 */
class CVideoPackets
{
public:
    CVideoPackets(uint32_t nDts, uint32_t nVideoPts) : m_nDts(nDts), m_nVideoPts(nVideoPts) {}

    /// Moves the clocks by @p ticks.
    void Advance(uint32_t ticks);

    /// The PES packets of a picture; one that is not to be @p split is cut by length alone.
    void Put(CMsbCursor& w, std::span<const unsigned char> frame, bool split) const;
    /// They are written: the first packet of all carried the DTS, those from now on do not.
    void Settle() { m_bFirst = false; }

    [[nodiscard]] uint32_t Scr() const { return m_nScrb; }
    [[nodiscard]] uint32_t VideoPts() const { return m_nVideoPts; }

private:
    void PutHeader(CMsbCursor& w, uint32_t payload_len, bool with_dts) const;

    // In 90 kHz units, of which 32 bits are kept.
    uint32_t m_nScrb = 0;
    uint32_t m_nDts;
    uint32_t m_nVideoPts;
    bool m_bFirst = true;  // no packet has been written
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_VIDEOPACKETS_H
