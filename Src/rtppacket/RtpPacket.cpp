#include "rtppacket/RtpPacket.h"

#include <algorithm>
#include <cstring>

#include "tool/Clock.h"
#include "tool/StartCode.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr int kPackBufLen = 0x100000;
constexpr int kLengthLen = 2;
/// The length of a packet is told in 2 bytes.
constexpr int kMostMaxPacketSize = 65535 + kLengthLen;
constexpr uint32_t kMostExtensionLen = 65535 * 4;
constexpr uint32_t kVideoClockPerMillisecond = 90;

std::span<const unsigned char> BytesOf(const SGFrameInfo& frame)
{
    return {frame.frame_pointer, frame.frame_size};
}

}  // namespace

CRtpPacket::CRtpPacket(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam), m_nSsrc(get_random())
{
}

int CRtpPacket::Init()
{
    return SG_ERR_NOERR;
}

int CRtpPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int CRtpPacket::CreateHeader(SGHeaderInfo* /*pHeader*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int CRtpPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;
    if (m_pActualPackBuf == nullptr) m_pActualPackBuf = Allocate(kPackBufLen);
    if (m_pActualPackBuf == nullptr) return SG_ERR_MEMORY_OUT;

    m_pPackBuf = m_pActualPackBuf.get();
    return Package(*pFrame);
}

int CRtpPacket::InputData(SGFrameInfo* pFrame, PacketBuffer& packet)
{
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;

    m_pPackBuf = packet.Data();
    m_pPacket = &packet;
    const int result = Package(*pFrame);
    m_pPacket = nullptr;
    packet.Resize(static_cast<size_t>(m_nPackLen));  // never grows here
    return result;
}

int CRtpPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int CRtpPacket::SetParam(const void* pParam, int nLength)
{
    // A length past 31 bits arrives here as a negative one.
    const auto length = static_cast<uint32_t>(nLength);
    if (pParam != nullptr && length > kMostExtensionLen) return 0;

    // The body may be the one that GetParam() gave out.
    std::vector<unsigned char> body;
    if (pParam != nullptr)
    {
        const auto* const bytes = static_cast<const unsigned char*>(pParam);
        body.assign(bytes, bytes + length);
    }
    m_spExternalExtensionData = std::move(body);
    return 1;
}

int CRtpPacket::GetParam(void*& pParam, int& nLength)
{
    const bool empty = m_spExternalExtensionData.empty();
    pParam = empty ? nullptr : m_spExternalExtensionData.data();
    nLength = static_cast<int>(m_spExternalExtensionData.size());
    return SG_ERR_NOERR;
}

bool CRtpPacket::AppendHeader(const void* pData, signed char nLength) noexcept
{
    m_nUserDefinedDataLength = 0;
    if (pData == nullptr || nLength <= 0) return true;

    m_nUserDefinedDataLength = static_cast<unsigned char>(nLength);
    // The bytes may be those that GetHeader() gave out.
    std::memmove(m_spUserDefinedData.data(), pData, m_nUserDefinedDataLength);
    return true;
}

void CRtpPacket::GetHeader(const unsigned char*& pData, uint32_t& nLength) const noexcept
{
    pData = m_nUserDefinedDataLength != 0 ? m_spUserDefinedData.data() : nullptr;
    nLength = m_nUserDefinedDataLength;
}

uint32_t CRtpPacket::EncodeTypeToRTPPlayLoadType(uint32_t /*nEncode*/) const noexcept
{
    return m_nPayloadType;
}

uint32_t CRtpPacket::Limit() const noexcept
{
    const int size = m_nMaxPacketSize != 0 ? m_nMaxPacketSize : kDefaultMaxPacketSize;
    return static_cast<uint32_t>(std::clamp(size, kLengthLen, kMostMaxPacketSize) - kLengthLen);
}

std::span<const unsigned char> CRtpPacket::CustomBytes() const noexcept
{
    return std::span(m_spUserDefinedData).first(m_nUserDefinedDataLength);
}

/// The clock that @p frame is stamped with: it has advanced since the frame before.
uint32_t CRtpPacket::StampOf(const SGFrameInfo& frame) const noexcept
{
    const uint32_t elapsed = (frame.frame_time - *m_nTimestampPrevFrame) & 0xFFFF;
    if (frame.frame_type != SG_FRAME_TYPE_AUDIO)
    {
        return m_timeStamp + elapsed * kVideoClockPerMillisecond;
    }
    return m_timeStamp + static_cast<uint32_t>(uint64_t{elapsed} * m_nAudioSample / 1000);
}

int CRtpPacket::Package(const SGFrameInfo& frame)
{
    m_nPackLen = 0;
    // Kept: a clock that stands at 0 is set, not only that of the first frame.
    if (m_timeStamp == 0) m_timeStamp = m_nTimestamp;
    if (!m_nTimestampPrevFrame.has_value()) m_nTimestampPrevFrame = frame.frame_time;

    Rtp_FrameInfo info;
    info.custom = CustomBytes();
    info.extension = m_spExternalExtensionData;
    info.timestamp = StampOf(frame);
    info.ssrc = m_nSsrc;
    info.payload_type = EncodeTypeToRTPPlayLoadType(frame.frame_encode);
    info.limit = Limit();
    const CRtpLayout layout(info);
    if (!layout.HasRoom()) return SG_ERR_PARAM_ERR;

    uint16_t sequence = m_nSeqNumber;
    int result = SG_ERR_PARAM_ERR;
    switch (frame.frame_type)
    {
        case SG_FRAME_TYPE_VIDEO:
            result = InputVideoData(frame, layout, sequence);
            break;
        case SG_FRAME_TYPE_AUDIO:
        case SG_FRAME_TYPE_EXT:
            result = InputPlainData(frame, layout, sequence);
            break;
        default:
            break;
    }
    if (result != SG_ERR_NOERR)
    {
        m_nPackLen = 0;
        return result;
    }

    m_nSeqNumber = sequence;
    m_timeStamp = info.timestamp;
    m_nTimestampPrevFrame = frame.frame_time;
    OutputData();
    return SG_ERR_NOERR;
}

int CRtpPacket::InputVideoData(const SGFrameInfo& frame,
                               const CRtpLayout& layout,
                               uint16_t& sequence)
{
    switch (frame.frame_encode)
    {
        case SG_ENCODE_VIDEO_HI_H264:
        case SG_ENCODE_VIDEO_QV_H264:
            return InputH264Data(frame, layout, sequence);
        case SG_ENCODE_VIDEO_MPEG4:
        case SG_ENCODE_VIDEO_JPEG:
            return InputPlainData(frame, layout, sequence);
        default:
            return SG_ERR_PARAM_ERR;  // Kept: SG_ENCODE_VIDEO_STD_H264 is among these
    }
}

int CRtpPacket::InputH264Data(const SGFrameInfo& frame,
                              const CRtpLayout& layout,
                              uint16_t& sequence)
{
    const auto bytes = BytesOf(frame);
    // Kept: the fragments of other pictures carry no FU-A headers.
    const bool may_fragment = frame.frame_sub_type <= SG_FRAME_SUB_TYPE_P;

    const StartCode code = FindStartCode(bytes, 0);
    // Without a start code the frame is one unit.
    auto rest = code.begin == bytes.size() ? bytes : bytes.subspan(code.unit);
    bool first = true;
    bool more = true;
    while (more)
    {
        const size_t whole = may_fragment ? layout.MostWhole(first) : bytes.size();
        StartCode end;
        const int result = AppendUnit(layout, rest, whole, end, sequence);
        if (result != SG_ERR_NOERR) return result;

        first = false;
        more = end.begin < rest.size();
        rest = rest.subspan(end.unit);
    }
    return SG_ERR_NOERR;
}

int CRtpPacket::InputPlainData(const SGFrameInfo& frame,
                               const CRtpLayout& layout,
                               uint16_t& sequence)
{
    const auto room = Claim(layout.PlainSize(frame.frame_size));
    if (room.empty()) return SG_ERR_MEMORY_OUT;

    layout.PutPlain(room, BytesOf(frame), sequence);
    m_nPackLen += static_cast<int>(room.size());
    return SG_ERR_NOERR;
}

int CRtpPacket::AppendUnit(const CRtpLayout& layout,
                           std::span<const unsigned char> rest,
                           size_t whole,
                           StartCode& end,
                           uint16_t& sequence)
{
    // Most likely a unit that is longer than a packet: its end is looked for on the way, unless
    // there has to be more room first.
    if (rest.size() > whole && HasRoom(layout.FragmentsSize(rest.size())) &&
        AppendFragments(layout, rest, whole, end, sequence))
    {
        return SG_ERR_NOERR;
    }
    end = FindStartCode(rest, 0, whole + 1);
    if (end.begin > whole) return AppendLongUnit(layout, rest, whole, end, sequence);

    const auto unit = rest.first(end.begin);
    const auto room = Claim(layout.NalUnitSize(unit.size()));
    if (room.empty()) return SG_ERR_MEMORY_OUT;

    layout.PutNalUnit(room, unit, sequence);
    m_nPackLen += static_cast<int>(room.size());
    return SG_ERR_NOERR;
}

int CRtpPacket::AppendLongUnit(const CRtpLayout& layout,
                               std::span<const unsigned char> rest,
                               size_t whole,
                               StartCode& end,
                               uint16_t& sequence)
{
    if (AppendFragments(layout, rest, whole, end, sequence)) return SG_ERR_NOERR;

    // There is no memory for all that is left. A unit that ends ahead of it may do with less.
    end = FindStartCode(rest, whole);
    if (end.begin == rest.size()) return SG_ERR_MEMORY_OUT;

    StartCode unit_end;
    const auto unit = rest.first(end.begin);
    const bool appended = AppendFragments(layout, unit, whole, unit_end, sequence);
    return appended ? SG_ERR_NOERR : SG_ERR_MEMORY_OUT;
}

bool CRtpPacket::AppendFragments(const CRtpLayout& layout,
                                 std::span<const unsigned char> rest,
                                 size_t whole,
                                 StartCode& end,
                                 uint16_t& sequence)
{
    const auto room = Claim(layout.FragmentsSize(rest.size()));
    if (room.empty()) return false;

    const size_t size = layout.PutFragments(room, rest, whole, end, sequence);
    m_nPackLen += static_cast<int>(size);
    return size != 0;
}

std::span<unsigned char> CRtpPacket::Claim(uint64_t len) noexcept
{
    if (!Reserve(len)) return {};
    return {m_pPackBuf + m_nPackLen, static_cast<size_t>(len)};
}

bool CRtpPacket::HasRoom(uint64_t len) const noexcept
{
    const size_t capacity = m_pPacket != nullptr
                                ? m_pPacket->Size()
                                : static_cast<size_t>(m_pActualPackBuf.get_deleter().size);
    return len <= capacity - static_cast<size_t>(m_nPackLen);
}

bool CRtpPacket::Reserve(uint64_t len) noexcept
{
    const auto used = static_cast<uint32_t>(m_nPackLen);
    if (len > INT_MAX - used) return false;  // a block's size is a signed 32-bit number
    if (HasRoom(len)) return true;

    const auto needed = static_cast<uint32_t>(used + len);
    return m_pPacket != nullptr ? GrowPacket(needed) : GrowActual(needed);
}

bool CRtpPacket::GrowPacket(uint32_t len) noexcept
{
    if (!m_pPacket->Resize(len)) return false;

    m_pPackBuf = m_pPacket->Data();
    return true;
}

bool CRtpPacket::GrowActual(uint32_t len) noexcept
{
    const int capacity = m_pActualPackBuf.get_deleter().size;
    // By half of itself at least, so that many small units do not move the buffer again and again.
    const int enlarged = capacity <= INT_MAX - capacity / 2 ? capacity + capacity / 2 : INT_MAX;
    CallerBuffer larger = Allocate(std::max(enlarged, static_cast<int>(len)));
    if (larger == nullptr) return false;

    std::memcpy(larger.get(), m_pActualPackBuf.get(), static_cast<size_t>(m_nPackLen));
    m_pActualPackBuf = std::move(larger);
    m_pPackBuf = m_pActualPackBuf.get();
    return true;
}

void CRtpPacket::OutputData()
{
    std::span<const unsigned char> packets(m_pPackBuf, static_cast<size_t>(m_nPackLen));
    if (m_rtpOutputAllFlag == 1)
    {
        Emit(packets.data(), static_cast<uint32_t>(packets.size()), Origin::kCurrent, 0);
        return;
    }
    const size_t custom_len = m_nUserDefinedDataLength;
    while (!packets.empty())
    {
        const size_t size = CRtpLayout::FirstSize(packets, custom_len);
        Emit(packets.data(), static_cast<uint32_t>(size), Origin::kCurrent, 0);
        packets = packets.subspan(size);
    }
}

}  // namespace Orbel::Wrapton
