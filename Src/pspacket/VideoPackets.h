#ifndef WRAPTON_PSPACKET_VIDEOPACKETS_H
#define WRAPTON_PSPACKET_VIDEOPACKETS_H

#include <cstdint>
#include <span>
#include <vector>

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

    /// Finds where @p frame splits; a frame that is not to be split is cut by length alone.
    /// @return the length of its packets, which Put() writes
    [[nodiscard]] size_t Plan(std::span<const unsigned char> frame, bool split);

    /// Moves the clocks by @p ticks.
    void Advance(uint32_t ticks);

    /// The PES packets of the frame planned last. The first packet of all carries the DTS.
    void Put(CMsbCursor& w, std::span<const unsigned char> frame);

    [[nodiscard]] uint32_t Scr() const { return m_nScrb; }
    [[nodiscard]] uint32_t VideoPts() const { return m_nVideoPts; }

private:
    void PutPackets(CMsbCursor& w, std::span<const unsigned char> frame) const;
    void PutPacket(CMsbCursor& w, std::span<const unsigned char> payload, bool with_dts) const;

    // In 90 kHz units, of which 32 bits are kept.
    uint32_t m_nScrb = 0;
    uint32_t m_nDts;
    uint32_t m_nVideoPts;
    bool m_bFirst = true;              // no packet has been written
    std::vector<uint32_t> m_nal_list;  // where the frame's four-byte start codes begin
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_VIDEOPACKETS_H
