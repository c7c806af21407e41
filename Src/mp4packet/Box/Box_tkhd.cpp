#include "mp4packet/Box/Box_tkhd.h"

#include "mp4packet/Box/HeaderFields.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kInMovieAndPreviews = 0x00000F;  // enabled, in movie, in preview, in poster

}  // namespace

CBox_tkhd::CBox_tkhd(uint32_t nMode) : CBox(TKHD, nMode)
{
    m_nDataLen = 84;
    CBox::Update();
}

void CBox_tkhd::Init(uint32_t nType, void* pInfo)
{
    if (m_bInited || pInfo == nullptr) return;

    m_Data.flags = kInMovieAndPreviews;
    m_Data.creation_time = get_current_mp4_time();
    m_Data.modification_time = m_Data.creation_time;
    m_Data.track_ID = nType;
    if (nType == MP4_VIDEO_TRAK)
    {
        const auto* video = static_cast<const Mp4_VideoInfo*>(pInfo);
        m_Data.track_width = video->width << 16;
        m_Data.track_height = video->heigth << 16;
    }
    else if (nType == MP4_AUDIO_TRAK)
    {
        m_Data.volume = 0x0100;
    }
    else
    {
        m_Data.flags = 0;
    }
    m_bInited = true;
    Update();
}

void CBox_tkhd::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_tkhd:WriteData error!\n");

    PutFullBox(w, m_Data.version, m_Data.flags);
    w.U32(m_Data.creation_time);
    w.U32(m_Data.modification_time);
    w.U32(m_Data.track_ID);
    w.Fill(4, 0);  // reserved
    w.U32(m_Data.duration);
    w.Fill(2 * 4, 0);  // reserved
    w.U16(m_Data.layer);
    w.U16(m_Data.alternate_group);
    w.U16(m_Data.volume);
    w.Fill(2, 0);  // reserved
    PutUnityMatrix(w);
    w.U32(m_Data.track_width);
    w.U32(m_Data.track_height);
}

}  // namespace Orbel::Wrapton
