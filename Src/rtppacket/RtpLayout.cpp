#include "rtppacket/RtpLayout.h"

#include <algorithm>
#include <cassert>

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

size_t CRtpLayout::ChunkLen(const Rtp_Cut& cut) const noexcept
{
    return PayloadRoom() - (cut.fragmented ? CRtpFields::kFuaLen : 0);
}

bool CRtpLayout::NeedsFragments(size_t unit_len, bool first) const noexcept
{
    // Kept: the estimate counts the extension twice and its fixed part not at all, and behind the
    // frame's first unit the custom bytes twice. A unit may be fragmented that would have fitted,
    // and one may be cut without FU-A headers that does not fit.
    const size_t extension = m_info.extension.size();
    const size_t estimate = kWordLen * Words(extension) + m_info.custom.size() + extension +
                            CRtpFields::kFixedLen + unit_len;
    return estimate > m_info.limit - (first ? 0 : m_info.custom.size());
}

Rtp_Cut CRtpLayout::CutNalUnit(std::span<const unsigned char> unit,
                               bool first,
                               bool may_fragment) const noexcept
{
    Rtp_Cut cut;
    cut.data = unit;
    if (unit.empty()) return cut;

    if (may_fragment && NeedsFragments(unit.size(), first))
    {
        cut.fragmented = true;
        cut.nal_header = unit.front();
        cut.data = unit.subspan(1);
    }
    cut.full_packets = (unit.size() - 1) / ChunkLen(cut);
    return cut;
}

Rtp_Cut CRtpLayout::CutPlain(std::span<const unsigned char> frame) const noexcept
{
    Rtp_Cut cut;
    cut.data = frame;
    // Kept: the last packet is never full. Data that end with a full packet are closed by an empty
    // one.
    cut.full_packets = frame.size() / ChunkLen(cut);
    return cut;
}

uint64_t CRtpLayout::Size(const Rtp_Cut& cut) const noexcept
{
    const uint64_t around =
        AheadLen() + m_nHeaderLen + (cut.fragmented ? CRtpFields::kFuaLen : size_t{0});
    return (cut.full_packets + 1) * around + cut.PayloadLen();
}

/// RFC 3550 5.1 and, with an extension, 5.3.1.
void CRtpLayout::PutHeader(CMsbCursor& w, uint16_t sequence_number, bool last) const noexcept
{
    const bool extended = !m_info.extension.empty();

    w.Bits<16>(Field<2>(kRtpVersion),
               Field<1>(0),  // padding
               Field<1>(extended ? 1 : 0),
               Field<4>(0),  // contributing sources
               Field<1>(last ? 1 : 0),
               Field<7>(m_info.payload_type));
    w.U16(sequence_number);
    w.U32(m_info.timestamp);
    w.U32(m_info.ssrc);
    if (!extended) return;

    const size_t words = Words(m_info.extension.size());
    w.U16(0);  // no profile is agreed upon
    w.U16(static_cast<uint32_t>(words));
    w.Bytes(m_info.extension);
    w.Fill(kWordLen * words - m_info.extension.size(), 0);
}

void CRtpLayout::Put(std::span<unsigned char> room,
                     const Rtp_Cut& cut,
                     uint16_t& sequence_number) const noexcept
{
    assert(room.size() == Size(cut));
    const size_t fua_len = cut.fragmented ? CRtpFields::kFuaLen : 0;
    const size_t chunk_len = ChunkLen(cut);
    const size_t around = AheadLen() + m_nHeaderLen + fua_len;
    auto data = cut.data;
    size_t left = cut.PayloadLen();
    for (uint64_t number = 0; number <= cut.full_packets; ++number)
    {
        const bool last = number == cut.full_packets;
        const size_t payload_len = last ? left : chunk_len;
        const auto bytes = data.first(std::min(payload_len, data.size()));

        CMsbCursor w(room.first(around + payload_len));
        w.Bytes(m_info.custom);
        w.U16(static_cast<uint32_t>(m_nHeaderLen + fua_len + payload_len));  // at most the limit
        PutHeader(w, ++sequence_number, last);
        // Kept: a unit whose only fragment is the last one has no start bit.
        if (cut.fragmented) PutFuaHeader(w, cut.nal_header, number == 0 && !last, last);
        w.Bytes(bytes);
        w.Fill(payload_len - bytes.size(), 0);  // the byte behind the unit

        room = room.subspan(around + payload_len);
        data = data.subspan(bytes.size());
        left -= payload_len;
    }
}

size_t CRtpLayout::FirstSize(std::span<const unsigned char> packets, size_t custom_len) noexcept
{
    const auto length = packets.subspan(custom_len, kLengthLen);
    return custom_len + kLengthLen + static_cast<size_t>(length[0] << 8 | length[1]);
}

}  // namespace Orbel::Wrapton
