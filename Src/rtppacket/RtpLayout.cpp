#include "rtppacket/RtpLayout.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kRtpVersion = 2;
constexpr size_t kLengthLen = 2;
constexpr size_t kWordLen = 4;

constexpr size_t Words(size_t bytes)
{
    return (bytes + kWordLen - 1) / kWordLen;
}

size_t HeaderLen(size_t extension_len)
{
    if (extension_len == 0) return CRtpFields::kFixedLen;
    return CRtpFields::kFixedLen + CRtpFields::kExtensionFixedLen + kWordLen * Words(extension_len);
}

/// Packets ahead of the last one of a NAL unit.
size_t FullPackets(size_t unit_len, size_t chunk_len)
{
    return unit_len == 0 ? 0 : (unit_len - 1) / chunk_len;
}

}  // namespace

CRtpLayout::CRtpLayout(const Rtp_FrameInfo& info) noexcept
    : m_info(info), m_nHeaderLen(HeaderLen(info.extension.size()))
{
}

bool CRtpLayout::HasRoom() const noexcept
{
    return m_info.custom.size() + m_nHeaderLen + CRtpFields::kFuaLen + 1 <= m_info.limit;
}

size_t CRtpLayout::AheadLen() const noexcept
{
    return m_info.custom.size() + kLengthLen;
}

size_t CRtpLayout::PayloadRoom() const noexcept
{
    assert(HasRoom());
    return m_info.limit - m_info.custom.size() - m_nHeaderLen;
}

size_t CRtpLayout::MostWhole(bool first) const noexcept
{
    // Kept: the estimate counts the extension twice and its fixed part not at all, and behind the
    // frame's first unit the custom bytes twice. A unit may be fragmented that would have fitted,
    // and one may be cut without FU-A headers that does not fit.
    const size_t extension = m_info.extension.size();
    const size_t around = kWordLen * Words(extension) + extension + m_info.custom.size() +
                          CRtpFields::kFixedLen + (first ? 0 : m_info.custom.size());
    return m_info.limit - std::min<size_t>(around, m_info.limit);
}

uint64_t CRtpLayout::Size(uint64_t packets, uint64_t payload_len) const noexcept
{
    return packets * (AheadLen() + m_nHeaderLen) + payload_len;
}

uint64_t CRtpLayout::NalUnitSize(size_t unit_len) const noexcept
{
    return Size(FullPackets(unit_len, PayloadRoom()) + 1, unit_len);
}

uint64_t CRtpLayout::PlainSize(size_t frame_len) const noexcept
{
    return Size(frame_len / PayloadRoom() + 1, frame_len);
}

uint64_t CRtpLayout::FragmentsSize(size_t unit_len) const noexcept
{
    const uint64_t packets = FullPackets(unit_len, PayloadRoom() - CRtpFields::kFuaLen) + 1;
    return Size(packets, packets * CRtpFields::kFuaLen + unit_len);
}

void CRtpLayout::PutNalUnit(std::span<unsigned char> room,
                            std::span<const unsigned char> unit,
                            uint16_t& sequence_number) const noexcept
{
    PutPackets(room, unit, FullPackets(unit.size(), PayloadRoom()), sequence_number);
}

void CRtpLayout::PutPlain(std::span<unsigned char> room,
                          std::span<const unsigned char> frame,
                          uint16_t& sequence_number) const noexcept
{
    // Kept: the last packet is never full. Data that end with a full packet are closed by an empty
    // one.
    PutPackets(room, frame, frame.size() / PayloadRoom(), sequence_number);
}

void CRtpLayout::PutPackets(std::span<unsigned char> room,
                            std::span<const unsigned char> data,
                            size_t full_packets,
                            uint16_t& sequence_number) const noexcept
{
    CMsbCursor w(room);
    for (size_t number = 0; number <= full_packets; ++number)
    {
        const bool last = number == full_packets;
        const size_t length = last ? data.size() : PayloadRoom();
        PutHeader(w, length, ++sequence_number, last);
        w.Bytes(data.first(length));
        data = data.subspan(length);
    }
    assert(w.Produced() == room.size());
}

/// Flat, so that the cursor lives in registers.
[[gnu::flatten]] size_t CRtpLayout::PutFragments(std::span<unsigned char> room,
                                                 std::span<const unsigned char> rest,
                                                 size_t whole,
                                                 StartCode& end,
                                                 uint16_t& sequence_number) const noexcept
{
    assert(rest.size() > whole && !rest.empty());
    const size_t chunk_len = PayloadRoom() - CRtpFields::kFuaLen;
    const size_t around = AheadLen() + m_nHeaderLen + CRtpFields::kFuaLen;
    const uint8_t nal_header = rest.front();

    CMsbCursor w(room);
    constexpr size_t kBegin = 1;  // behind the NAL unit header, which the FU-A headers repeat
    for (size_t from = kBegin;;)
    {
        const bool first = from == kBegin;
        // The payload comes ahead of its header, which tells how long it is and whether it is the
        // last. The first one is copied until the unit is known to be longer than a packet; what is
        // too much is written over. Its NAL unit header falls into the place of the FU header.
        const size_t ahead = first ? 1 : 0;
        const size_t most = first ? 1 + std::max(chunk_len, whole) : chunk_len;
        const StartCode next =
            CopyToStartCode(rest, from - ahead, w.Left().subspan(around - ahead).data(), most);
        if (first && next.begin <= whole) return 0;

        const size_t length = std::min(next.begin - from, chunk_len);
        const bool last = length < chunk_len;
        // Kept: the fragments of a unit count its whole length although its header byte is not
        // among their data. The byte that makes up for it is the one behind the unit. This is 0
        // everywhere: the first byte of the next start code, or a zero put behind the frame's end.
        const size_t added = last ? 1 : 0;
        PutHeader(w, CRtpFields::kFuaLen + length + added, ++sequence_number, last);
        // Kept: a unit whose only fragment is the last one has no start bit.
        PutFuaHeader(w, nal_header, first && !last, last);
        w.Skip(length);
        w.Fill(added, 0);
        assert(!w.Overrun());
        if (last)
        {
            end = next;
            return w.Produced();
        }

        from += length;
    }
}

/// RFC 3550 5.1 and, with an extension, 5.3.1, behind what stands ahead of every packet.
void CRtpLayout::PutHeader(CMsbCursor& w,
                           size_t payload_len,
                           uint16_t sequence_number,
                           bool last) const noexcept
{
    const bool extended = !m_info.extension.empty();

    w.Bytes(m_info.custom);
    w.Bits<48>(Field<16>(static_cast<uint32_t>(m_nHeaderLen + payload_len)),  // up to the limit
               Field<2>(kRtpVersion),
               Field<1>(0),  // padding
               Field<1>(extended ? 1 : 0),
               Field<4>(0),  // contributing sources
               Field<1>(last ? 1 : 0),
               Field<7>(m_info.payload_type),
               Field<16>(sequence_number));
    w.Bits<64>(Field<32>(m_info.timestamp), Field<32>(m_info.ssrc));
    if (!extended) return;

    const size_t words = Words(m_info.extension.size());
    w.U16(0);  // no profile is agreed upon
    w.U16(static_cast<uint32_t>(words));
    w.Bytes(m_info.extension);
    w.Fill(kWordLen * words - m_info.extension.size(), 0);
}

size_t CRtpLayout::FirstSize(std::span<const unsigned char> packets, size_t custom_len) noexcept
{
    const auto length = packets.subspan(custom_len, kLengthLen);
    return custom_len + kLengthLen + static_cast<size_t>(length[0] << 8 | length[1]);
}

}  // namespace Orbel::Wrapton
