#include "pspacket/ps/StdsPsPacket.h"

#include "pspacket/PsHeaders.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kFirstDts = 50000;
constexpr uint32_t kFirstPts = 60000;
constexpr uint32_t kAudioFramesPerMap = 25;

}  // namespace

CStdsPsPacket::CStdsPsPacket() : CSplitPsPacket(kFirstDts, kFirstPts) {}

int CStdsPsPacket::Packet_Audio_frame(const SGFrameInfo* pFrame,
                                      CPsOutput& output,
                                      int& nLength,
                                      bool bWithMap)
{
    nLength = 0;
    if (pFrame->frame_encode != SG_ENCODE_AUDIO_MP2) return SG_ERR_ENCODE_UNSUPPORT;
    if (!HasData(pFrame)) return SG_ERR_PARAM_ERR;

    // Kept: the count moves with a map only, so the first such frame is the only one to carry it.
    const bool with_map = bWithMap && m_AudioCount % kAudioFramesPerMap == 0;
    nLength = PutAudio(output, *pFrame, with_map, m_pictures.m_Video.VideoPts());
    if (nLength == 0) return SG_ERR_PARAM_ERR;

    if (with_map) ++m_AudioCount;
    return nLength;
}

void CStdsPsPacket::PutMap(CMsbCursor& w, const SGFrameInfo& frame) const
{
    const bool mpeg4 = frame.frame_encode == SG_ENCODE_VIDEO_MPEG4;
    PutStreamMap(w,
                 {.video_stream_type = mpeg4 ? kStreamTypeMpeg4 : kStreamTypeH264,
                  .frame_rate = m_pictures.m_nFrameRate,
                  .width = m_pictures.m_nWidth,
                  .height = m_pictures.m_nHeight});
}

}  // namespace Orbel::Wrapton
