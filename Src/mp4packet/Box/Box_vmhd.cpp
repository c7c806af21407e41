#include "mp4packet/Box/Box_vmhd.h"

#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CBox_vmhd::CBox_vmhd(uint32_t nMode) : CBox(VMHD, nMode)
{
    m_nDataLen = 12;
    CBox::Update();
}

void CBox_vmhd::PutData(CMsbCursor& w) const
{
    PutFullBox(w, m_Data.version, m_Data.flags);
    w.Fill(2, 0);      // graphicsmode: copy
    w.Fill(3 * 2, 0);  // opcolor
}

}  // namespace Orbel::Wrapton
