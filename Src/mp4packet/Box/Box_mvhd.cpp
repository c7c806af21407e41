#include "mp4packet/Box/Box_mvhd.h"

#include "mp4packet/Box/HeaderFields.h"
#include "tool/Clock.h"

namespace Orbel::Wrapton
{

CBox_mvhd::CBox_mvhd(uint32_t nMode) : CBox(MVHD, nMode)
{
    m_Data.creation_time = get_current_mp4_time();
    m_Data.modification_time = m_Data.creation_time;
    m_nDataLen = 100;
    CBox::Update();
}

void CBox_mvhd::Init(uint32_t nType, void* /*pInfo*/)
{
    m_Data.next_track_id = nType + 1;
    Update();
}

void CBox_mvhd::PutData(CMsbCursor& w) const
{
    PutFullBox(w, m_Data.version, m_Data.flags);
    w.U32(m_Data.creation_time);
    w.U32(m_Data.modification_time);
    w.U32(m_Data.time_scale);
    w.U32(m_Data.duration);
    w.U32(m_Data.rate);
    w.U16(m_Data.volume);
    w.Fill(2, 0);      // reserved
    w.Fill(2 * 4, 0);  // reserved
    PutUnityMatrix(w);
    w.Fill(6 * 4, 0);  // pre_defined
    w.U32(m_Data.next_track_id);
}

}  // namespace Orbel::Wrapton
