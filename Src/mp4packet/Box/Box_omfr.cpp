#include "mp4packet/Box/Box_omfr.h"

namespace Orbel::Wrapton
{

CBox_omfr::CBox_omfr(uint32_t nMode) : CBox(OMFR, nMode)
{
    m_nDataLen = kVisualEntryLen - 1;
    CBox::Update();
}

void CBox_omfr::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_omfr::WriteData error!\n");

    PutVisualEntry(w, m_Data);
    w.U8(0xFF);  // pre_defined
}

}  // namespace Orbel::Wrapton
