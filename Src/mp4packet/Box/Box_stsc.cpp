#include "mp4packet/Box/Box_stsc.h"

#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CBox_stsc::CBox_stsc(uint32_t nMode) : CBox(STSC, nMode)
{
    m_nDataLen = 20;
    CBox::Update();
}

void CBox_stsc::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_stsc:WriteData error!\n");

    PutFullBox(w, 0, 0);
    w.U32(1);  // entry_count
    w.U32(1);  // first_chunk
    w.U32(1);  // samples_per_chunk
    w.U32(1);  // sample_description_index
}

}  // namespace Orbel::Wrapton
