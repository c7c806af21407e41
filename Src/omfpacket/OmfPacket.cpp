#include "omfpacket/OmfPacket.h"

#include <array>
#include <cassert>
#include <climits>

#include "tool/CacheLine.h"
#include "tool/Clock.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

using HeaderBytes = std::array<unsigned char, kOmfHeaderLen>;
using TailerBytes = std::array<unsigned char, kOmfTailerLen>;

/// What a frame has beside its payload and extension headers.
constexpr uint32_t kFixedLen = kOmfHeaderLen + kOmfTailerLen;

HeaderBytes MakeHeader(const Omf_Header& header)
{
    HeaderBytes bytes;
    CLsbCursor w(bytes);
    w.FourCC(kOmfHeaderTag);
    w.U8(header.frame_type);
    w.U8(header.frame_sub_type);
    w.U8(header.channel);
    w.U8(header.frame_sub_num);
    w.U32(header.frame_num);
    w.U32(header.frame_length);
    w.U32(header.frame_date);
    w.U16(header.frame_time_stamp);
    w.U8(header.frame_length_ex);
    w.U8(GetSum8(bytes.data(), static_cast<int32_t>(w.Produced())));
    assert(w.Produced() == bytes.size());
    return bytes;
}

void PutTailer(CLsbCursor& w, const Omf_Header& header)
{
    w.FourCC(kOmfTailerTag);
    w.U32(header.frame_length);
}

bool IsKeyFrame(const SGFrameInfo& frame)
{
    return frame.frame_sub_type == SG_FRAME_SUB_TYPE_I ||
           frame.frame_sub_type == SG_FRAME_SUB_TYPE_JPEG_FRAME;
}

Omf_VideoFormat DescribeVideo(const SGFrameInfo& frame)
{
    return {.encode = frame.frame_encode,
            .deinterlace = frame.deinter_lace,
            .width = frame.width,
            .height = frame.heigth,
            .frame_rate = frame.frame_rate};
}

Omf_AudioFormat DescribeAudio(const SGFrameInfo& frame)
{
    return {.encode = frame.frame_encode,
            .channels = frame.channels,
            .sample_rate = frame.sample_rate,
            .bit_rate = frame.bit_rate};
}

}  // namespace

COmfPacket::COmfPacket(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam)
{
}

int COmfPacket::Init()
{
    return SG_ERR_NOERR;
}

int COmfPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int COmfPacket::CreateHeader(SGHeaderInfo* /*pHeader*/, unsigned int /*nReserved*/)
{
    m_nBaseTime = get_current_utc_time();
    m_state.m_nCurTime = m_nBaseTime;
    return SG_ERR_NOERR;
}

int COmfPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    return InputFrame(pFrame, nullptr);
}

int COmfPacket::InputData(SGFrameInfo* pFrame, PacketBuffer& packet)
{
    const int result = InputFrame(pFrame, &packet);
    // A frame that went out has made the packet as long already. A refusal remains the answer when
    // there is no memory for the old length.
    packet.Resize(m_PacketHeader.frame_length);
    return result;
}

int COmfPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int COmfPacket::InputFrame(const SGFrameInfo* pFrame, PacketBuffer* pPacket)
{
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;

    Draft draft{.frame = *pFrame, .packet = pPacket, .next = m_state, .header = {}};
    switch (pFrame->frame_type)
    {
        case SG_FRAME_TYPE_VIDEO:
            return InputVideoData(draft);
        case SG_FRAME_TYPE_AUDIO:
            return InputAudioData(draft);
        case SG_FRAME_TYPE_EXT:
            return InputExtData(draft);
        default:
            return SG_ERR_PARAM_ERR;
    }
}

int COmfPacket::InputVideoData(Draft& draft)
{
    const SGFrameInfo& frame = draft.frame;
    if (IsKeyFrame(frame))
    {
        draft.next.m_bVideo = true;
        draft.next.m_video = DescribeVideo(frame);
    }
    if (!draft.next.m_bVideo) return SG_ERR_PARAM_ERR;

    draft.header.frame_type = OmfVideoFrameType(frame.frame_encode, frame.frame_sub_type);
    draft.header.frame_num = draft.next.m_nVFrameNum++;
    SetVideoTime(draft);
    return OutputFrame(draft);
}

int COmfPacket::InputAudioData(Draft& draft)
{
    draft.header.frame_type = kOmfFrameAudio;
    draft.header.frame_num = draft.next.m_nAFrameNum++;
    SetFollowingTime(draft);
    return OutputFrame(draft);
}

int COmfPacket::InputExtData(Draft& draft)
{
    draft.header.frame_type = kOmfFrameExt;
    draft.header.frame_sub_type = static_cast<uint8_t>(draft.frame.frame_sub_type);
    draft.header.frame_num = draft.next.m_nAFrameNum++;
    SetFollowingTime(draft);
    return OutputFrame(draft);
}

void COmfPacket::SetVideoTime(Draft& draft) const
{
    State& next = draft.next;
    const uint32_t time = draft.frame.frame_time;
    const uint32_t rate = next.m_video.frame_rate;
    if (time == 0 && rate != 0)
    {
        const uint32_t counted = next.m_nVFrameNum;
        next.m_nCurTime = m_nBaseTime + counted / rate;
        // In 32 bits, wrapping. Kept: the stamp is a frame behind the date.
        next.m_nTimeOffset = (counted * 1000 - 1000) / rate & 0xFFFF;
        draft.header.frame_time_stamp = static_cast<uint16_t>(next.m_nTimeOffset);
        return;
    }
    next.m_nCurTime = m_nBaseTime + time / 1000;
    draft.header.frame_time_stamp = static_cast<uint16_t>(time);
}

void COmfPacket::SetFollowingTime(Draft& draft)
{
    const uint32_t time = draft.frame.frame_time;
    draft.header.frame_time_stamp =
        static_cast<uint16_t>(time != 0 ? time : draft.next.m_nTimeOffset);
}

size_t COmfPacket::AddExHeader(CLsbCursor& w, const Draft& draft) const
{
    const SGFrameInfo& frame = draft.frame;
    const Omf_VideoFormat& video = draft.next.m_video;
    if (frame.frame_type == SG_FRAME_TYPE_VIDEO && video.width != 0 && video.height != 0 &&
        video.encode != 0)
    {
        AddExHeaderImageSize(w, video);
        AddExHeaderPlayBack(w, video);
    }
    if (frame.frame_type == SG_FRAME_TYPE_AUDIO) AddExHeaderAudioFormat(w, DescribeAudio(frame));
    const size_t check_at = AddExHeaderDataCheck(w, m_nCheckType);
    if (frame.split_info.flag != 0) AddExHeaderSplit(w, frame.split_info, video);
    if (frame.rotation_angle != 0 && frame.frame_sub_type == SG_FRAME_SUB_TYPE_I)
    {
        AddExHeaderRotation(w, frame.rotation_angle);
    }
    if (frame.company_type != 0)
    {
        AddExHeaderCompanyType(w, frame.company_type, frame._3rdstream_header_length);
    }
    return check_at;
}

void COmfPacket::ExHeaders::SetCheck(uint32_t value)
{
    CLsbCursor w{std::span(room).subspan(check_at)};
    w.U32(value);
}

std::span<const unsigned char> COmfPacket::ExHeaders::Bytes() const
{
    return std::span(room).first(length);
}

int COmfPacket::OutputFrame(Draft& draft)
{
    constexpr uint32_t kPayloadMax = INT_MAX - kFixedLen;
    const uint32_t payload_len = draft.frame.frame_size;
    if (payload_len > kPayloadMax) return SG_ERR_PARAM_ERR;

    ExHeaders ex_headers;
    CLsbCursor w(ex_headers.room);
    ex_headers.check_at = AddExHeader(w, draft);
    ex_headers.length = w.Produced();
    assert(!w.Overrun());
    const auto ex_len = static_cast<uint32_t>(w.Produced());
    if (ex_len > kPayloadMax - payload_len) return SG_ERR_PARAM_ERR;

    // The longest run of extension headers passes 8 bits; the frame's length counts all of it.
    draft.header.frame_length_ex = static_cast<uint8_t>(ex_len);
    draft.header.frame_length = kFixedLen + ex_len + payload_len;
    draft.header.frame_date = m_date.At(draft.frame.frame_data != 0 ? long{draft.frame.frame_data}
                                                                    : draft.next.m_nCurTime);
    return draft.packet != nullptr ? OutputPacket(draft, ex_headers)
                                   : OutputWhole(draft, ex_headers);
}

int COmfPacket::OutputWhole(const Draft& draft, ExHeaders& ex_headers)
{
    const uint32_t length = draft.header.frame_length;
    m_pDynamicBuffer.Clear();
    if (m_pDynamicBuffer.Reserve(length) != SG_ERR_NOERR) return SG_ERR_MEMORY_OUT;

    const size_t ahead = kOmfHeaderLen + ex_headers.length;
    const auto block = AlignPayload(
        {m_pDynamicBuffer.GetPointer(), static_cast<size_t>(m_pDynamicBuffer.MaxSize())},
        ahead,
        length);
    ex_headers.SetCheck(
        OmfCopyAndCheck(m_nCheckType, draft.Payload(), block.subspan(ahead).data()));
    CLsbCursor front(block.first(ahead));
    front.Bytes(MakeHeader(draft.header));
    front.Bytes(ex_headers.Bytes());
    CLsbCursor back(block.subspan(ahead + draft.frame.frame_size));
    PutTailer(back, draft.header);
    assert(ahead + draft.frame.frame_size + back.Produced() == length);

    Settle(draft);
    Emit(block.data(), length, Origin::kCurrent, 0);
    return SG_ERR_NOERR;
}

int COmfPacket::OutputPacket(const Draft& draft, ExHeaders& ex_headers)
{
    const uint32_t length = draft.header.frame_length;
    PacketBuffer& packet = *draft.packet;
    if (!packet.Resize(length)) return SG_ERR_MEMORY_OUT;

    const std::span<unsigned char> room(packet.Data(), length);
    ex_headers.SetCheck(OmfCheckValue(m_nCheckType, draft.Payload()));
    CLsbCursor front(room);
    front.Bytes(ex_headers.Bytes());
    CLsbCursor w(room.subspan(kOmfHeaderLen));
    w.Bytes(draft.Payload());
    PutTailer(w, draft.header);

    Settle(draft);
    Emit(packet.Data(), length, Origin::kCurrent, 0);
    return SG_ERR_NOERR;
}

void COmfPacket::Settle(const Draft& draft)
{
    m_state = draft.next;
    m_PacketHeader = draft.header;
}

}  // namespace Orbel::Wrapton
