#include "mp4packet/Box/Box_frma.h"

namespace Orbel::Wrapton
{

CBox_frma::CBox_frma(uint32_t nMode) : CBox(FRMA, nMode)
{
    m_nDataLen = 4;
    CBox::Update();
}

void CBox_frma::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_frma::WriteData error!\n");

    PutBoxType(w, m_Data);
}

}  // namespace Orbel::Wrapton
