#include "mp4packet/Box/Box_stts.h"

#include "Wrapton.h"
#include "mp4packet/Box/HeaderFields.h"
#include "mp4packet/Box/MovieTime.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kAacSamplesPerFrame = 1024;
constexpr uint32_t kMp2SamplesPerFrame = 1152;

}  // namespace

CBox_stts::CBox_stts(uint32_t nMode) : CBox(STTS, nMode)
{
    m_nDataLen = 16;
    CBox::Update();
}

void CBox_stts::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;

    if (nType == MP4_VIDEO_TRAK)
    {
        const uint32_t frame_rate = static_cast<const Mp4_VideoInfo*>(pInfo)->frame_rate;
        if (frame_rate != 0) m_nSampleDelta = kMovieTimeScale / frame_rate;
    }
    else if (nType == MP4_AUDIO_TRAK)
    {
        const uint32_t encode = static_cast<const Mp4_AudioInfo*>(pInfo)->encode_type;
        if (encode == SG_ENCODE_AUDIO_AAC) m_nSampleDelta = kAacSamplesPerFrame;
        if (encode == SG_ENCODE_AUDIO_MP2) m_nSampleDelta = kMp2SamplesPerFrame;
    }
}

void CBox_stts::InputData(uint32_t /*nType*/, void* /*pInfo*/)
{
    ++m_nSampleCount;
}

void CBox_stts::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_stts:WriteData error!\n");

    PutFullBox(w, 0, 0);
    w.U32(m_nEntryCount);
    w.U32(m_nSampleCount);
    w.U32(m_nSampleDelta);
}

}  // namespace Orbel::Wrapton
