#include "omfpacket/OmfPacket.h"

#include <algorithm>
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

/// What a frame has beside its payload and extension headers.
constexpr uint32_t kFixedLen = kOmfHeaderLen + kOmfTailerLen;

/// The sum of a word's bytes in its lowest 8 bits.
constexpr uint64_t SumOfBytes(uint64_t word)
{
    constexpr uint64_t kEveryOther = 0x00FF00FF00FF00FF;
    const uint64_t pairs = (word & kEveryOther) + (word >> 8 & kEveryOther);
    return pairs * 0x0001000100010001 >> 48 & 0xFF;
}
static_assert(SumOfBytes(0x0102030405060708) == 36);
static_assert(SumOfBytes(UINT64_MAX) == (8 * 0xFF & 0xFF));

/// Made of words that never leave the registers: adding up bytes that were stored a moment ago, and
/// moving them on in wider pieces, makes the processor wait for the stores.
void PutHeader(CLsbCursor& w, const Omf_Header& header)
{
    const uint64_t kind = LsbWordOf(FourCCField(kOmfHeaderTag),
                                    Field<8>(header.frame_type),
                                    Field<8>(header.frame_sub_type),
                                    Field<8>(header.channel),
                                    Field<8>(header.frame_sub_num));
    const uint64_t extent = LsbWordOf(Field<32>(header.frame_num), Field<32>(header.frame_length));
    const uint64_t time = LsbWordOf(Field<32>(header.frame_date),
                                    Field<16>(header.frame_time_stamp),
                                    Field<8>(header.frame_length_ex));
    const uint64_t sum = SumOfBytes(kind) + SumOfBytes(extent) + SumOfBytes(time);
    w.U64(kind);
    w.U64(extent);
    w.U64(time | sum << 56);
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

int COmfPacket::OutputFrame(Draft& draft)
{
    constexpr uint32_t kPayloadMax = INT_MAX - kFixedLen;
    const uint32_t payload_len = draft.frame.frame_size;
    if (payload_len > kPayloadMax) return SG_ERR_PARAM_ERR;

    Front front;
    CLsbCursor ex_headers(std::span(front.room).subspan(kOmfHeaderLen));
    front.check_at = kOmfHeaderLen + AddExHeader(ex_headers, draft);
    assert(!ex_headers.Overrun());
    const auto ex_len = static_cast<uint32_t>(ex_headers.Produced());
    front.length = kOmfHeaderLen + ex_len;
    if (ex_len > kPayloadMax - payload_len) return SG_ERR_PARAM_ERR;

    draft.header.frame_date = m_date.At(draft.frame.frame_data != 0 ? long{draft.frame.frame_data}
                                                                    : draft.next.m_nCurTime);
    // The longest run of extension headers passes 8 bits; the frame's length counts all of it.
    draft.header.frame_length_ex = static_cast<uint8_t>(ex_len);
    draft.header.frame_length = kFixedLen + ex_len + payload_len;
    CLsbCursor header(std::span(front.room).first(kOmfHeaderLen));
    PutHeader(header, draft.header);
    assert(header.Produced() == kOmfHeaderLen);
    return draft.packet != nullptr ? OutputPacket(draft, front) : OutputWhole(draft, front);
}

int COmfPacket::OutputWhole(const Draft& draft, const Front& front)
{
    const uint32_t length = draft.header.frame_length;
    m_pDynamicBuffer.Clear();
    if (m_pDynamicBuffer.Reserve(length) != SG_ERR_NOERR) return SG_ERR_MEMORY_OUT;

    const auto block = AlignPayload(
        {m_pDynamicBuffer.GetPointer(), static_cast<size_t>(m_pDynamicBuffer.MaxSize())},
        front.length,
        length);
    // Ahead of the payload, so that the processor need not wait for the room's stores.
    std::copy_n(front.room.begin(), front.length, block.begin());
    const uint32_t check = OmfCopyAndCheck(
        m_nCheckType, draft.Payload(), block.subspan(front.length).data());
    LSB_uint32_to_memory(block.data() + front.check_at, check);
    CLsbCursor back(block.subspan(front.length + draft.frame.frame_size));
    PutTailer(back, draft.header);
    assert(front.length + draft.frame.frame_size + back.Produced() == length);

    Settle(draft);
    Emit(block.data(), length, Origin::kCurrent, 0);
    return SG_ERR_NOERR;
}

int COmfPacket::OutputPacket(const Draft& draft, Front& front)
{
    const uint32_t length = draft.header.frame_length;
    PacketBuffer& packet = *draft.packet;
    if (!packet.Resize(length)) return SG_ERR_MEMORY_OUT;

    const std::span<unsigned char> room(packet.Data(), length);
    const uint32_t check = OmfCheckValue(m_nCheckType, draft.Payload());
    LSB_uint32_to_memory(front.room.data() + front.check_at, check);
    std::copy(front.room.begin() + kOmfHeaderLen, front.room.begin() + front.length, room.begin());
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
