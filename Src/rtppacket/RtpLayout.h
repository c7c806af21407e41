#ifndef WRAPTON_RTPPACKET_RTPLAYOUT_H
#define WRAPTON_RTPPACKET_RTPLAYOUT_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "rtppacket/RtpFields.h"
#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// What all packets of one frame have in common.
struct Rtp_FrameInfo
{
    std::span<const unsigned char> custom;     // stands ahead of every packet
    std::span<const unsigned char> extension;  // empty: no header extension
    uint32_t timestamp = 0;
    uint32_t ssrc = 0;
    uint32_t payload_type = 0;  // 7 bits of it are written
    uint32_t limit = 0;         // bytes of a packet and the custom bytes ahead of it, at most 65535
};

/// How a piece of a frame is cut into packets.
struct Rtp_Cut
{
    std::span<const unsigned char> data;
    uint64_t full_packets = 0;  // ahead of the last one, which carries the marker
    bool fragmented = false;    // as FU-A; the data then begin behind the NAL unit's header
    uint8_t nal_header = 0;     // of a fragmented unit

    /// Payload bytes of all packets, FU-A headers not counted. Kept: the fragments of a unit count
    /// its whole length although its header byte is not among their data. The byte that makes up
    /// for it is the one behind the unit. This is 0 everywhere: the first byte of the next start
    /// code, or a zero put behind the frame's end.
    [[nodiscard]] size_t PayloadLen() const noexcept { return data.size() + (fragmented ? 1 : 0); }
};

/**
 * Cuts pieces of one frame into RTP packets and lays these out, RFC 3550 and RFC 6184.
 *
 * Every packet stands behind the custom bytes and its own length in 2 bytes.
 */
class CRtpLayout
{
public:
    explicit CRtpLayout(const Rtp_FrameInfo& info) noexcept;

    /// Whether header, FU-A header and one byte fit into a packet. The other operations need this.
    [[nodiscard]] bool HasRoom() const noexcept;

    /// Cuts a NAL unit, which may be empty.
    /// @param first whether it is the first of its frame
    /// @param may_fragment whether FU-A is an option; a unit without it is cut like any data
    [[nodiscard]] Rtp_Cut CutNalUnit(std::span<const unsigned char> unit,
                                     bool first,
                                     bool may_fragment) const noexcept;

    /// Cuts a frame of any other encoding.
    [[nodiscard]] Rtp_Cut CutPlain(std::span<const unsigned char> frame) const noexcept;

    /// Bytes of all packets of a cut, with what stands ahead of each.
    [[nodiscard]] uint64_t Size(const Rtp_Cut& cut) const noexcept;

    /// Writes the packets of a cut into Size() bytes.
    /// @param sequence_number of the packet before the first; that of the last one afterwards
    void Put(std::span<unsigned char> room,
             const Rtp_Cut& cut,
             uint16_t& sequence_number) const noexcept;

    /// The bytes of the packet at the beginning of @p packets, with what stands ahead of it.
    [[nodiscard]] static size_t FirstSize(std::span<const unsigned char> packets,
                                          size_t custom_len) noexcept;

private:
    [[nodiscard]] size_t AheadLen() const noexcept;
    /// The most payload of a packet, FU-A header included.
    [[nodiscard]] size_t PayloadRoom() const noexcept;
    /// The most payload of a packet of @p cut, FU-A header not counted.
    [[nodiscard]] size_t ChunkLen(const Rtp_Cut& cut) const noexcept;
    [[nodiscard]] bool NeedsFragments(size_t unit_len, bool first) const noexcept;

    void PutHeader(CMsbCursor& w, uint16_t sequence_number, bool last) const noexcept;

    Rtp_FrameInfo m_info;
    size_t m_nHeaderLen;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_RTPPACKET_RTPLAYOUT_H
