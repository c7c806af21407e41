#include "tspacket/TsPacket.h"

#include <algorithm>
#include <climits>

#include "tspacket/TsPack.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr int kWorkLen = 0x100000;

TS_TYPE VideoType(uint32_t encode)
{
    return encode == SG_ENCODE_VIDEO_MPEG4 ? PLY_BK_MPEG4 : PLY_BK_H264;
}

bool HasData(const SGFrameInfo& frame)
{
    return frame.frame_pointer != nullptr && frame.frame_size != 0;
}

}  // namespace

CTsPacket::CTsPacket(const SGCreateParam* pCreateParam) : CPackage(SG_STREAM_TYPE_TS, pCreateParam)
{
}

int CTsPacket::Init()
{
    return SG_ERR_NOERR;
}

int CTsPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int CTsPacket::CreateHeader(SGHeaderInfo* /*pHeader*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int CTsPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    return SG_ERR_NOERR;
}

int CTsPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    if (pFrame == nullptr) return SG_ERR_NOERR;
    if (m_spPacketBuffer == nullptr) m_spPacketBuffer = Allocate(kWorkLen);
    if (m_spPacketBuffer == nullptr) return SG_ERR_NOERR;

    const Decision decision = Decide(*pFrame);
    if (decision == Decision::kIgnore || decision == Decision::kDrop) return SG_ERR_NOERR;

    Convert(decision, *pFrame, m_spPacketBuffer.get(), kWorkLen);
    return SG_ERR_NOERR;
}

int CTsPacket::InputData(SGFrameInfo* pFrame, PacketBuffer& packet)
{
    if (pFrame == nullptr) return SG_ERR_NOERR;

    const Decision decision = Decide(*pFrame);
    if (decision == Decision::kIgnore) return SG_ERR_NOERR;
    if (decision == Decision::kDrop)
    {
        packet.Resize(0);
        return SG_ERR_NOERR;
    }

    const size_t needed = Needed(decision, *pFrame);
    // Where there is no memory the packet stays too small, which drops the frame.
    if (needed > packet.Size() && needed <= INT_MAX) packet.ResizeUnset(needed);
    packet.Resize(Convert(decision, *pFrame, packet.Data(), packet.Size()));
    return SG_ERR_NOERR;
}

CTsPacket::Decision CTsPacket::Decide(const SGFrameInfo& frame)
{
    if (frame.frame_type == SG_FRAME_TYPE_VIDEO) return DecideVideo(frame);
    if (frame.frame_type == SG_FRAME_TYPE_AUDIO) return DecideAudio(frame);
    return Decision::kIgnore;
}

CTsPacket::Decision CTsPacket::DecideVideo(const SGFrameInfo& frame)
{
    const bool key = frame.frame_sub_type == SG_FRAME_SUB_TYPE_I;
    if (!key && frame.frame_sub_type != SG_FRAME_SUB_TYPE_P) return Decision::kIgnore;
    if (!HasData(frame)) return Decision::kDrop;

    if (key) m_bFindIFrame = true;
    return m_bFindIFrame ? Decision::kVideo : Decision::kDrop;
}

CTsPacket::Decision CTsPacket::DecideAudio(const SGFrameInfo& frame) const
{
    const bool known =
        frame.frame_encode == SG_ENCODE_AUDIO_AAC || frame.frame_encode == SG_ENCODE_AUDIO_MP2;
    return m_bFindIFrame && known && HasData(frame) ? Decision::kAudio : Decision::kDrop;
}

size_t CTsPacket::Needed(Decision decision, const SGFrameInfo& frame) const
{
    return decision == Decision::kAudio
               ? TsLength(frame.frame_size, m_nAudioTSFrameNum, PLK_BK_AUDIO)
               : TsLength(frame.frame_size, m_nVideoTSFrameNum, VideoType(frame.frame_encode));
}

size_t CTsPacket::Convert(Decision decision,
                          const SGFrameInfo& frame,
                          unsigned char* out,
                          size_t size)
{
    auto length = static_cast<int32_t>(std::min<size_t>(size, INT_MAX));
    if (decision == Decision::kAudio)
    {
        Audio2Ts(out,
                 length,
                 frame.frame_pointer,
                 frame.frame_size,
                 m_nTimeStamp,
                 m_nAudioTSFrameNum,
                 m_audio_current_continuity_counter);
    }
    else
    {
        Video2Ts(out,
                 length,
                 frame.frame_pointer,
                 frame.frame_size,
                 m_nTimeStamp,
                 frame.frame_rate,
                 m_nLastFPS,
                 m_nVideoTSFrameNum,
                 m_video_current_continuity_counter,
                 VideoType(frame.frame_encode));
    }
    return static_cast<size_t>(length);
}

}  // namespace Orbel::Wrapton
