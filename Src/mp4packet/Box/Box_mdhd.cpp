#include "mp4packet/Box/Box_mdhd.h"

#include "mp4packet/Box/HeaderFields.h"
#include "mp4packet/Box/MovieTime.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{

CBox_mdhd::CBox_mdhd(uint32_t nMode) : CBox(MDHD, nMode)
{
    m_Data.creation_time = get_current_mp4_time();
    m_Data.modification_time = m_Data.creation_time;
    m_nDataLen = 24;
    CBox::Update();
}

void CBox_mdhd::Init(uint32_t nType, void* pInfo)
{
    if (nType == MP4_VIDEO_TRAK)
    {
        m_Data.time_scale = kMovieTimeScale;
    }
    else if (nType == MP4_AUDIO_TRAK && pInfo != nullptr)
    {
        m_Data.time_scale = static_cast<const Mp4_AudioInfo*>(pInfo)->sample_rate;
    }
    Update();
}

void CBox_mdhd::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_mdhd:WriteData error!\n");

    PutFullBox(w, m_Data.version, m_Data.flags);
    w.U32(m_Data.creation_time);
    w.U32(m_Data.modification_time);
    w.U32(m_Data.time_scale);
    w.U32(m_Data.duration);
    w.U16(m_Data.language);
    w.U16(m_Data.quality);
}

}  // namespace Orbel::Wrapton
