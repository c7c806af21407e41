#include "mp4packet/Box/Box_stsz.h"

#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

CBox_stsz::CBox_stsz(uint32_t nMode) : CBox(STSZ, nMode)
{
    CBox_stsz::Update();
}

void CBox_stsz::InputData(uint32_t nType, void* /*pInfo*/)
{
    m_table.Append(nType);
}

void CBox_stsz::Update()
{
    m_nDataLen = 4 + 4 + 4 + 4 * m_table.Count();
    CBox::Update();
}

void CBox_stsz::PutData(CMsbCursor& w) const
{
    // Kept: the line names the sync sample box.
    const CPayloadCheck check(w, m_nDataLen, "CBox_stss:WriteData error!\n");

    PutFullBox(w, 0, 0);
    w.U32(0);  // sample_size: see the table
    w.U32(m_table.Count());
    w.Bytes(m_table.Bytes());
}

}  // namespace Orbel::Wrapton
