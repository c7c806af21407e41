#include "mp4packet/Box/Box_smhd.h"

#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CBox_smhd::CBox_smhd(uint32_t nMode) : CBox(SMHD, nMode)
{
    m_nDataLen = 8;
    CBox::Update();
}

void CBox_smhd::PutData(CMsbCursor& w) const
{
    PutFullBox(w, m_Data.version, m_Data.flags);
    w.U16(m_Data.balance);
    w.U16(m_Data.reserved);
}

}  // namespace Orbel::Wrapton
