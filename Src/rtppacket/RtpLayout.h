#ifndef WRAPTON_RTPPACKET_RTPLAYOUT_H
#define WRAPTON_RTPPACKET_RTPLAYOUT_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "rtppacket/RtpFields.h"
#include "tool/ByteCursor.h"
#include "tool/StartCode.h"

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

    /// Bytes of the longest NAL unit that needs no FU-A fragments.
    /// @param first whether it is the first of its frame
    [[nodiscard]] size_t MostWhole(bool first) const noexcept;

    /// The packets of a NAL unit without FU-A headers, which may be empty. The size is that of all
    /// packets with what stands ahead of each, and the room has it.
    [[nodiscard]] uint64_t NalUnitSize(size_t unit_len) const noexcept;
    void PutNalUnit(std::span<unsigned char> room,
                    std::span<const unsigned char> unit,
                    uint16_t& sequence_number) const noexcept;

    /// The packets of a frame of any other encoding; likewise.
    [[nodiscard]] uint64_t PlainSize(size_t frame_len) const noexcept;
    void PutPlain(std::span<unsigned char> room,
                  std::span<const unsigned char> frame,
                  uint16_t& sequence_number) const noexcept;

    /// The FU-A fragments of a NAL unit of this length, RFC 6184 5.8.
    [[nodiscard]] uint64_t FragmentsSize(size_t unit_len) const noexcept;
    /// Writes the fragments of the unit that begins @p rest and ends at the next start code.
    /// @param room for a unit of all of @p rest
    /// @param rest longer than @p whole
    /// @param end the start code behind the unit
    /// @param sequence_number of the packet before the first; that of the last one afterwards
    /// @return the bytes written; 0, with nothing changed, for a unit of at most @p whole bytes
    size_t PutFragments(std::span<unsigned char> room,
                        std::span<const unsigned char> rest,
                        size_t whole,
                        StartCode& end,
                        uint16_t& sequence_number) const noexcept;

    /// The bytes of the packet at the beginning of @p packets, with what stands ahead of it.
    [[nodiscard]] static size_t FirstSize(std::span<const unsigned char> packets,
                                          size_t custom_len) noexcept;

private:
    [[nodiscard]] size_t AheadLen() const noexcept;
    /// The most payload of a packet, FU-A header included.
    [[nodiscard]] size_t PayloadRoom() const noexcept;
    /// Bytes of @p packets packets with @p payload_len bytes of payload in all.
    [[nodiscard]] uint64_t Size(uint64_t packets, uint64_t payload_len) const noexcept;

    /// Writes @p full_packets packets and a last one, which carries the marker.
    void PutPackets(std::span<unsigned char> room,
                    std::span<const unsigned char> data,
                    size_t full_packets,
                    uint16_t& sequence_number) const noexcept;
    void PutHeader(CMsbCursor& w,
                   size_t payload_len,
                   uint16_t sequence_number,
                   bool last) const noexcept;

    Rtp_FrameInfo m_info;
    size_t m_nHeaderLen;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_RTPPACKET_RTPLAYOUT_H
